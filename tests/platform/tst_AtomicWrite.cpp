#include "FatalCheck.h"
#include "Obstacles.h"
#include "Restrictions.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "platform/FileSystem.h"

#include <QFileInfo>
#include <QTest>

#include <sys/stat.h>

#include <atomic>
#include <csignal>
#include <thread>
#include <vector>

// FileSystem::writeAtomically.
class TestAtomicWrite : public QObject
{
    Q_OBJECT

private slots:
    void writesWholeFiles_data();
    void writesWholeFiles();
    void replacesALinkAndLeavesItsTarget_data();
    void replacesALinkAndLeavesItsTarget();
    void keepsThePermissionsOfTheFileItReplaces_data();
    void keepsThePermissionsOfTheFileItReplaces();
    void makesNewFilesAsTheUserWantsThem();
    void leavesWhatIsThereWhenItCannotWrite_data();
    void leavesWhatIsThereWhenItCannotWrite();
    void leavesWhatIsThereInAFolderOfAnotherUser();
    void leavesTheOldFileWhenTheDiskIsFull_data();
    void leavesTheOldFileWhenTheDiskIsFull();
    void takesOverWhatAKilledWriterLeft_data();
    void takesOverWhatAKilledWriterLeft();
    void neverWritesThroughALinkInPlaceOfAPart();
    void removesOnlyWhatAKilledWriteLeft();
    void neverTearsAFileThatManyWrite();
    void keepsLongNamesApart();
};

namespace {

constexpr auto ChildFolder = "QUELLMOOR_TEST_FOLDER";
const auto LongName = QString(255, QLatin1Char('n'));

} // namespace

void TestAtomicWrite::writesWholeFiles_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("new") << "new" << QByteArray("text");
    QTest::newRow("in place of an old one") << "file" << QByteArray("new");
    QTest::newRow("shorter than the old one") << "file" << QByteArray("n");
    QTest::newRow("empty") << "file" << QByteArray();
    QTest::newRow("any bytes") << "new" << QByteArray("\0\xff\r\n\x1a", 5);
    QTest::newRow("large") << "new" << QByteArray(5'000'000, 'x');
    QTest::newRow("255 bytes of name") << LongName << QByteArray("text");
    QTest::newRow("254 bytes of name") << LongName.left(254) << QByteArray("text");
    QTest::newRow("255 bytes in fewer letters")
        << QString(127, QChar(0xe4)) + QLatin1Char('n') << QByteArray("text");
    QTest::newRow("room for the part's name") << LongName.left(239) << QByteArray("text");
    QTest::newRow("no room for the part's name") << LongName.left(240) << QByteArray("text");
    QTest::newRow("not ASCII") << QStringLiteral(u"\u00c4 \u9f8d \U0001f409") << QByteArray("text");
    QTest::newRow("hidden") << ".hidden" << QByteArray("text");
    QTest::newRow("spaces and line ends") << " a b\n" << QByteArray("text");
    QTest::newRow("one letter") << "a" << QByteArray("text");
    QTest::newRow("the name of a part") << ".file.quellmoor-part" << QByteArray("text");
    QTest::newRow("below a link to a folder") << "linked/new" << QByteArray("text");
}

void TestAtomicWrite::writesWholeFiles()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    const TestFolder folder;
    folder.write(QStringLiteral("file"), "the old text");
    folder.makeFolder(QStringLiteral("below"));
    folder.link(folder.path(QStringLiteral("below")), QStringLiteral("linked"));
    const QStringList before = folder.tree();
    const bool isNew = !FileSystem::exists(folder.path(name));
    const auto error = FileSystem::writeAtomically(folder.path(name), bytes);
    QVERIFY2(!error, qPrintable(error.value_or(Error()).localizedDescription));
    QVERIFY(folder.read(name) == bytes);
    QCOMPARE(folder.tree().size(), before.size() + (isNew ? 1 : 0));
}

void TestAtomicWrite::replacesALinkAndLeavesItsTarget_data()
{
    addNames({QStringLiteral("link"), QStringLiteral("dangling")});
}

void TestAtomicWrite::replacesALinkAndLeavesItsTarget()
{
    QFETCH(QString, name);
    const TestFolder folder;
    addObstacles(folder);
    QVERIFY(!FileSystem::writeAtomically(folder.path(name), "new"));
    QVERIFY(!QFileInfo(folder.path(name)).isSymbolicLink());
    QCOMPARE(folder.read(name), QByteArray("new"));
    QCOMPARE(folder.read(QStringLiteral("file")), QByteArray("old"));
    QVERIFY(!FileSystem::exists(folder.path(QStringLiteral("nowhere"))));
}

void TestAtomicWrite::keepsThePermissionsOfTheFileItReplaces_data()
{
    QTest::addColumn<unsigned>("before");
    QTest::addColumn<unsigned>("after");
    for (const unsigned mode : {0644U, 0600U, 0755U, 0700U, 0666U, 0777U, 0640U})
        QTest::addRow("%o", mode) << mode << mode;
    QTest::newRow("its owner can read and write it") << 0044U << 0644U;
    QTest::newRow("no more rights than of reading and running") << 04755U << 0755U;
}

void TestAtomicWrite::keepsThePermissionsOfTheFileItReplaces()
{
    QFETCH(unsigned, before);
    QFETCH(unsigned, after);
    const TestFolder folder;
    folder.write(QStringLiteral("file"), "old");
    folder.setMode(QStringLiteral("file"), before);
    QVERIFY(!FileSystem::writeAtomically(folder.path(QStringLiteral("file")), "new"));
    QCOMPARE(modeOf(folder.path(QStringLiteral("file"))), mode_t(after));
}

void TestAtomicWrite::makesNewFilesAsTheUserWantsThem()
{
    const TestFolder folder;
    const mode_t before = umask(027);
    QVERIFY(!FileSystem::writeAtomically(folder.path(QStringLiteral("atomic")), "new"));
    QVERIFY(!FileSystem::write(folder.path(QStringLiteral("in place")), "new"));
    umask(before);
    QCOMPARE(modeOf(folder.path(QStringLiteral("atomic"))), mode_t(0640));
    QCOMPARE(modeOf(folder.path(QStringLiteral("in place"))), mode_t(0640));
}

void TestAtomicWrite::leavesWhatIsThereWhenItCannotWrite_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("an empty folder in its place") << "empty";
    QTest::newRow("a folder in its place") << "full";
    QTest::newRow("a missing folder") << "missing/file";
    QTest::newRow("a file for a folder") << "file/below";
    QTest::newRow("a dangling link for a folder") << "dangling/below";
    QTest::newRow("a name too long") << QString(256, QLatin1Char('n'));
    QTest::newRow("no name") << "full/";
}

void TestAtomicWrite::leavesWhatIsThereWhenItCannotWrite()
{
    QFETCH(QString, name);
    const TestFolder folder;
    addObstacles(folder);
    const QStringList before = folder.tree();
    const auto error = FileSystem::writeAtomically(folder.path(name), "new");
    QVERIFY(error);
    QVERIFY(error->code != 0);
    QVERIFY(error->localizedDescription.contains(folder.path(name)));
    QCOMPARE(folder.tree(), before);
}

void TestAtomicWrite::leavesWhatIsThereInAFolderOfAnotherUser()
{
    const TestFolder folder;
    folder.write(QStringLiteral("folder/file"), "old");
    folder.setMode(QString(), 0755);
    folder.setMode(QStringLiteral("folder"), 0555);
    const QStringList before = folder.tree();
    std::optional<Error> error;
    {
        const WithoutPrivileges ordinary;
        error = FileSystem::writeAtomically(folder.path(QStringLiteral("folder/file")), "new");
    }
    QVERIFY(error);
    QCOMPARE(error->code, EACCES);
    QCOMPARE(folder.tree(), before);
    folder.setMode(QStringLiteral("folder"), 0755);
}

void TestAtomicWrite::leavesTheOldFileWhenTheDiskIsFull_data()
{
    addNames({QStringLiteral("file"), QStringLiteral("new"), LongName});
}

void TestAtomicWrite::leavesTheOldFileWhenTheDiskIsFull()
{
    QFETCH(QString, name);
    const TestFolder folder;
    folder.write(QStringLiteral("file"), "old");
    const QStringList before = folder.tree();
    std::optional<Error> error;
    {
        const FileSizeLimit limit(1000);
        error = FileSystem::writeAtomically(folder.path(name), QByteArray(100'000, 'x'));
    }
    QVERIFY(error);
    QCOMPARE(error->code, EFBIG);
    QCOMPARE(folder.tree(), before);
}

void TestAtomicWrite::takesOverWhatAKilledWriterLeft_data()
{
    addNames({QStringLiteral("file"), LongName});
}

void TestAtomicWrite::takesOverWhatAKilledWriterLeft()
{
    QFETCH(QString, name);
    if (FatalCheck::isChild()) {
        const FileSizeLimit limit(1000);
        std::signal(SIGXFSZ, SIG_DFL); // kills in the midst of the write
        FileSystem::writeAtomically(qEnvironmentVariable(ChildFolder) + QLatin1Char('/') + name,
                                    QByteArray(100'000, 'x'));
        return;
    }
    const TestFolder folder;
    folder.write(name, "old");
    qputenv(ChildFolder, folder.path().toUtf8());
    QVERIFY(FatalCheck::runChild("AtomicWrite").hasCrashed);
    QCOMPARE(folder.read(name), QByteArray("old"));
    QCOMPARE(folder.tree().size(), 2);
    QVERIFY(!FileSystem::writeAtomically(folder.path(name), "new"));
    QCOMPARE(folder.tree(), QStringList{name + QStringLiteral("=new")});
}

void TestAtomicWrite::neverWritesThroughALinkInPlaceOfAPart()
{
    const TestFolder folder;
    folder.write(QStringLiteral("victim"), "precious");
    folder.link(folder.path(QStringLiteral("victim")), QStringLiteral(".file.quellmoor-part"));
    QVERIFY(!FileSystem::writeAtomically(folder.path(QStringLiteral("file")), "new"));
    QCOMPARE(folder.tree(),
             QStringList({QStringLiteral("file=new"), QStringLiteral("victim=precious")}));
}

void TestAtomicWrite::removesOnlyWhatAKilledWriteLeft()
{
    const TestFolder folder;
    const auto part = QStringLiteral(".file.quellmoor-part");
    const QString path = folder.path(QStringLiteral("file"));
    folder.write(QStringLiteral("file"), "old");
    folder.write(QStringLiteral("victim"), "precious");
    const QStringList before = folder.tree();
    FileSystem::removeUnfinishedWrite(path);
    QCOMPARE(folder.tree(), before);
    folder.write(part, "ne");
    FileSystem::removeUnfinishedWrite(path);
    QCOMPARE(folder.tree(), before);
    folder.link(folder.path(QStringLiteral("victim")), part);
    FileSystem::removeUnfinishedWrite(path);
    QCOMPARE(folder.tree(), before);
    QVERIFY(QDir(folder.path()).mkdir(part));
    FileSystem::removeUnfinishedWrite(path);
    QVERIFY(QDir(folder.path()).exists(part));
    QCOMPARE(folder.tree().size(), before.size() + 1);
}

void TestAtomicWrite::neverTearsAFileThatManyWrite()
{
    constexpr int Writers = 4;
    constexpr int Size = 300'000;
    const TestFolder folder;
    const QString path = folder.path(QStringLiteral("file"));
    folder.write(QStringLiteral("file"), QByteArray(Size, 'o'));
    std::atomic<int> running = Writers;
    std::atomic<int> failures = 0;
    std::vector<std::thread> writers;
    for (int number = 0; number < Writers; ++number) {
        writers.emplace_back([&, number] {
            for (int i = 0; i < 50; ++i)
                failures += FileSystem::writeAtomically(path, QByteArray(Size, char('a' + number)))
                                .has_value();
            --running;
        });
    }
    int gaps = 0;
    std::thread watcher([&] {
        while (running > 0)
            gaps += !FileSystem::exists(path);
    });
    int torn = 0;
    while (running > 0) {
        const QByteArray bytes = readInPieces(path).value_or(QByteArray());
        torn += bytes.size() != Size || bytes.count(bytes.at(0)) != Size;
    }
    for (std::thread &writer : writers)
        writer.join();
    watcher.join();
    QCOMPARE(failures.load(), 0);
    QCOMPARE(gaps, 0);
    QCOMPARE(torn, 0);
    QCOMPARE(folder.tree().size(), 1);
}

void TestAtomicWrite::keepsLongNamesApart()
{
    constexpr int Names = 8;
    const TestFolder folder;
    std::atomic<int> failures = 0;
    std::vector<std::thread> writers;
    QStringList expected;
    for (int number = 0; number < Names; ++number) {
        const QString name = LongName.left(254) + QString::number(number);
        expected += name + QLatin1Char('=') + QString(5000, QChar('0' + number));
        writers.emplace_back([&folder, &failures, name, number] {
            for (int i = 0; i < 50; ++i)
                failures += FileSystem::writeAtomically(folder.path(name),
                                                        QByteArray(5000, char('0' + number)))
                                .has_value();
        });
    }
    for (std::thread &writer : writers)
        writer.join();
    QCOMPARE(failures.load(), 0);
    QVERIFY(folder.tree() == expected);
}

QUELLMOOR_TEST(TestAtomicWrite, "AtomicWrite")
#include "tst_AtomicWrite.moc"

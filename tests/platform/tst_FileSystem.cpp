#include "Obstacles.h"
#include "Restrictions.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "platform/FileSystem.h"
#include "platform/linux/PieceReader.h"

#include <QFileInfo>
#include <QTemporaryFile>
#include <QTest>

#include <fcntl.h>
#include <unistd.h>

class TestFileSystem : public QObject
{
    Q_OBJECT

private slots:
    void writesInPlace_data();
    void writesInPlace();
    void failsToWriteInPlace_data();
    void failsToWriteInPlace();
    void makesFilesExecutable();
    void makesOnlyRegularFilesExecutable_data();
    void makesOnlyRegularFilesExecutable();
    void makesFoldersWithThoseAbove();
    void makesNoFolderInPlaceOfSomethingElse_data();
    void makesNoFolderInPlaceOfSomethingElse();
    void seesWhateverHasAName_data();
    void seesWhateverHasAName();
    void tellsTheModificationDateToTheNanosecond_data();
    void tellsTheModificationDateToTheNanosecond();
    void tellsNoDateOfWhatIsNoRegularFile_data();
    void tellsNoDateOfWhatIsNoRegularFile();
    void tellsNoDateInAFolderThatIsNone();
    void neverWaitsForWhatIsToBeRead();
    void readsAFileInOrder_data();
    void readsAFileInOrder();
    void readsALargeFileWithoutAnotherThread();
    void failsToReadPieces_data();
    void failsToReadPieces();
    void readsOnlyRegularFiles_data();
    void readsOnlyRegularFiles();
    void synchronizesWhatIsThere();
    void knowsTheFoldersOfThisUser();
};

void TestFileSystem::writesInPlace_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("written");
    QTest::newRow("new") << "new"
                         << "new";
    QTest::newRow("shorter than the old one") << "file"
                                              << "file";
    QTest::newRow("through a link") << "link"
                                    << "file";
}

void TestFileSystem::writesInPlace()
{
    QFETCH(QString, name);
    QFETCH(QString, written);
    const TestFolder folder;
    addObstacles(folder);
    QVERIFY(!FileSystem::write(folder.path(name), "n"));
    QCOMPARE(folder.read(written), QByteArray("n"));
}

void TestFileSystem::failsToWriteInPlace_data()
{
    addNames(
        {QStringLiteral("full"), QStringLiteral("missing/file"), QStringLiteral("file/below")});
}

void TestFileSystem::failsToWriteInPlace()
{
    QFETCH(QString, name);
    const TestFolder folder;
    addObstacles(folder);
    const QStringList before = folder.tree();
    const auto error = FileSystem::write(folder.path(name), "new");
    QVERIFY(error && error->code != 0);
    QCOMPARE(folder.tree(), before);
    const FileSizeLimit limit(1000);
    const auto full =
        FileSystem::write(folder.path(QStringLiteral("file")), QByteArray(100'000, 'x'));
    QVERIFY(full && full->code == EFBIG);
}

void TestFileSystem::makesFilesExecutable()
{
    const TestFolder folder;
    folder.write(QStringLiteral("file"), "#!/bin/sh\n");
    folder.setMode(QStringLiteral("file"), 0600);
    QVERIFY(!FileSystem::makeExecutable(folder.path(QStringLiteral("file"))));
    QCOMPARE(modeOf(folder.path(QStringLiteral("file"))), mode_t(0755));
}

void TestFileSystem::makesOnlyRegularFilesExecutable_data()
{
    addNames({QStringLiteral("link"), QStringLiteral("dangling"), QStringLiteral("empty"),
              QStringLiteral("pipe"), QStringLiteral("missing")});
}

void TestFileSystem::makesOnlyRegularFilesExecutable()
{
    QFETCH(QString, name);
    const TestFolder folder;
    addObstacles(folder);
    folder.setMode(QStringLiteral("file"), 0600);
    folder.setMode(QStringLiteral("empty"), 0700);
    const auto error = FileSystem::makeExecutable(folder.path(name));
    QVERIFY(error && error->code != 0);
    QCOMPARE(modeOf(folder.path(QStringLiteral("file"))), mode_t(0600));
    QCOMPARE(modeOf(folder.path(QStringLiteral("empty"))), mode_t(0700));
}

void TestFileSystem::makesFoldersWithThoseAbove()
{
    const TestFolder folder;
    const auto name = QStringLiteral(u"one/\u00e4 b/three");
    QVERIFY(!FileSystem::createDirectory(folder.path(name)));
    QVERIFY(!FileSystem::createDirectory(folder.path(name)));
    QVERIFY(QFileInfo(folder.path(name)).isDir());
}

void TestFileSystem::makesNoFolderInPlaceOfSomethingElse_data()
{
    addNames({QStringLiteral("file"), QStringLiteral("file/below"), QStringLiteral("dangling"),
              QStringLiteral("link"), QStringLiteral("pipe")});
}

void TestFileSystem::makesNoFolderInPlaceOfSomethingElse()
{
    QFETCH(QString, name);
    const TestFolder folder;
    addObstacles(folder);
    const QStringList before = folder.tree();
    const auto error = FileSystem::createDirectory(folder.path(name));
    QVERIFY(error && error->code != 0);
    QVERIFY(error->localizedDescription.contains(folder.path(name)));
    QCOMPARE(folder.tree(), before);
}

void TestFileSystem::seesWhateverHasAName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isThere");
    for (const char *name : {"file", "link", "dangling", "empty", "full", "full/inner", "pipe"})
        QTest::newRow(name) << QString::fromLatin1(name) << true;
    for (const char *name : {"missing", "missing/file", "file/below", "dangling/below"})
        QTest::newRow(name) << QString::fromLatin1(name) << false;
}

void TestFileSystem::seesWhateverHasAName()
{
    QFETCH(QString, name);
    QFETCH(bool, isThere);
    const TestFolder folder;
    addObstacles(folder);
    QCOMPARE(FileSystem::exists(folder.path(name)), isThere);
}

void TestFileSystem::tellsTheModificationDateToTheNanosecond_data()
{
    QTest::addColumn<qint64>("nanoseconds");
    QTest::newRow("now or so") << 1'700'000'000'123'456'789LL;
    QTest::newRow("a full second") << 1'700'000'000'000'000'000LL;
    QTest::newRow("one nanosecond less") << 1'699'999'999'999'999'999LL;
    QTest::newRow("one nanosecond") << 1LL;
    QTest::newRow("the beginning") << 0LL;
    QTest::newRow("before it") << -1'000'000'001LL;
    QTest::newRow("after 2038") << 4'000'000'000'000'000'001LL;
}

void TestFileSystem::tellsTheModificationDateToTheNanosecond()
{
    QFETCH(qint64, nanoseconds);
    const TestFolder folder;
    folder.write(QStringLiteral("file"), "text");
    folder.setModified(QStringLiteral("file"), Date(std::chrono::nanoseconds(nanoseconds)));
    const std::optional<Date> expected{std::chrono::nanoseconds(nanoseconds)};
    QCOMPARE(FileSystem::modificationDate(folder.path(QStringLiteral("file"))), expected);
    QCOMPARE(FileSystem::Folder(folder.path()).modificationDate("file"), expected);
}

void TestFileSystem::tellsNoDateOfWhatIsNoRegularFile_data()
{
    addNames({QStringLiteral("link"), QStringLiteral("dangling"), QStringLiteral("empty"),
              QStringLiteral("full"), QStringLiteral("pipe"), QStringLiteral("missing"),
              QStringLiteral("file/below"), QStringLiteral("file/")});
}

void TestFileSystem::tellsNoDateOfWhatIsNoRegularFile()
{
    QFETCH(QString, name);
    const TestFolder folder;
    addObstacles(folder);
    QVERIFY(!FileSystem::modificationDate(folder.path(name)));
    QVERIFY(!FileSystem::Folder(folder.path()).modificationDate(name.toUtf8()));
}

void TestFileSystem::tellsNoDateInAFolderThatIsNone()
{
    const TestFolder folder;
    addObstacles(folder);
    for (const auto &name :
         {QStringLiteral("missing"), QStringLiteral("pipe"), QStringLiteral("file")})
        QVERIFY(!FileSystem::Folder(folder.path(name)).modificationDate("file"));
}

void TestFileSystem::neverWaitsForWhatIsToBeRead()
{
    const TestFolder folder;
    addObstacles(folder);
    for (const auto &name : {QStringLiteral("pipe"), QStringLiteral("full"), QStringLiteral("link"),
                             QStringLiteral("missing"), QStringLiteral("file")})
        FileSystem::willRead(folder.path(name));
    QCOMPARE(folder.read(QStringLiteral("file")), folder.read(QStringLiteral("link")));
}

void TestFileSystem::readsAFileInOrder_data()
{
    QTest::addColumn<int>("size");
    // The last ones are read ahead by another thread, further than it may be ahead.
    for (const int size : {0, 1, 131'071, 131'072, 131'073, 524'287, 524'288, 1'048'576, 5'000'011})
        QTest::addRow("%d", size) << size;
}

void TestFileSystem::readsAFileInOrder()
{
    QFETCH(int, size);
    QByteArray bytes(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        bytes[i] = char((i * 31 + i / 251) & 0xff);
    const TestFolder folder;
    folder.write(QStringLiteral("file"), bytes);
    QVERIFY(readInPieces(folder.path(QStringLiteral("file"))) == bytes);
}

void TestFileSystem::readsALargeFileWithoutAnotherThread()
{
    const QByteArray bytes = QByteArray("quellmoor").repeated(300'000);
    QTemporaryFile file;
    QVERIFY(file.open());
    QCOMPARE(file.write(bytes), bytes.size());
    QVERIFY(file.flush() && lseek(file.handle(), 0, SEEK_SET) == 0);
    QByteArray read;
    const WithoutNewThreads restriction;
    QVERIFY(readPieces(file.handle(), bytes.size(), [&read](const char *piece, size_t count) {
        read.append(piece, qsizetype(count));
    }));
    QVERIFY(read == bytes);
}

void TestFileSystem::failsToReadPieces_data()
{
    QTest::addColumn<qint64>("size");
    QTest::newRow("on one thread") << qint64(1000);
    QTest::newRow("ahead, on another thread") << qint64(1'000'000);
}

void TestFileSystem::failsToReadPieces()
{
    QFETCH(qint64, size);
    const int unreadable = open("/dev/null", O_WRONLY | O_CLOEXEC);
    QVERIFY(unreadable >= 0);
    qint64 count = 0;
    const bool isWhole = readPieces(unreadable, size, [&count](const char *, size_t) { ++count; });
    close(unreadable);
    QVERIFY(!isWhole);
    QCOMPARE(count, 0);
}

void TestFileSystem::readsOnlyRegularFiles_data()
{
    addNames({QStringLiteral("link"), QStringLiteral("dangling"), QStringLiteral("empty"),
              QStringLiteral("full"), QStringLiteral("pipe"), QStringLiteral("missing"),
              QStringLiteral("file/below")});
}

void TestFileSystem::readsOnlyRegularFiles()
{
    QFETCH(QString, name);
    const TestFolder folder;
    addObstacles(folder);
    QVERIFY(!readInPieces(folder.path(name)));
}

void TestFileSystem::synchronizesWhatIsThere()
{
    const TestFolder folder;
    folder.write(QStringLiteral("file"), "text");
    QVERIFY(!FileSystem::synchronize(folder.path()));
    QVERIFY(!FileSystem::synchronize(folder.path(QStringLiteral("file"))));
    const auto error = FileSystem::synchronize(folder.path(QStringLiteral("missing")));
    QVERIFY(error);
    QCOMPARE(error->code, ENOENT);
}

void TestFileSystem::knowsTheFoldersOfThisUser()
{
    QCOMPARE(FileSystem::applicationSupportDirectory(), qEnvironmentVariable("XDG_DATA_HOME"));
    const QString temporary = FileSystem::temporaryDirectory();
    QCOMPARE(FileSystem::temporaryDirectory(), temporary);
    QVERIFY(QFileInfo(temporary).isDir());
    QCOMPARE(modeOf(temporary), mode_t(0700));
}

QUELLMOOR_TEST(TestFileSystem, "FileSystem")
#include "tst_FileSystem.moc"

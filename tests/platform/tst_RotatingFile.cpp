#include "Obstacles.h"
#include "Restrictions.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "platform/linux/RotatingFile.h"

#include <QTest>

#include <thread>

namespace {

const auto Name = QStringLiteral("log");

// A line that fills a quarter of a file.
QByteArray quarter(char letter)
{
    return QByteArray(int(RotatingFile::SizeLimit / 4) - 1, letter); // and its line break
}

void fill(RotatingFile &file, char letter)
{
    for (int i = 0; i < 4; ++i)
        QVERIFY(file.write(quarter(letter)));
}

} // namespace

class TestRotatingFile : public QObject
{
    Q_OBJECT

private slots:
    void makesTheFileWithItsFirstLine();
    void appendsToWhatIsThere();
    void isReadableByItsOwnerOnly();
    void setsAFullFileAsideAndDropsTheOldest();
    void neverGrowsBeyondItsLimit();
    void cutsALineThatNoFileCanHold();
    void startsAnewWhenTheFileWasRemoved();
    void writesOnOnceThereIsSpaceAgain();
    void writesNothingToWhatIsNoFile_data();
    void writesNothingToWhatIsNoFile();
    void losesNoLineOfTwoWriters();
};

void TestRotatingFile::makesTheFileWithItsFirstLine()
{
    const TestFolder folder;
    RotatingFile file(folder.path(QStringLiteral("deep/down/log")));
    QCOMPARE(folder.tree(), QStringList());
    QVERIFY(file.write("line"));
    QCOMPARE(folder.read(QStringLiteral("deep/down/log")), QByteArray("line\n"));
    QCOMPARE(modeOf(folder.path(QStringLiteral("deep/down"))), 0700U);
}

void TestRotatingFile::appendsToWhatIsThere()
{
    const TestFolder folder;
    folder.write(Name, "old\n");
    QVERIFY(RotatingFile(folder.path(Name)).write("one"));
    QVERIFY(RotatingFile(folder.path(Name)).write("two"));
    QCOMPARE(folder.read(Name), QByteArray("old\none\ntwo\n"));
}

void TestRotatingFile::isReadableByItsOwnerOnly()
{
    const TestFolder folder;
    QVERIFY(RotatingFile(folder.path(Name)).write("new"));
    QCOMPARE(modeOf(folder.path(Name)), 0600U);
    folder.setMode(Name, 0644);
    QVERIFY(RotatingFile(folder.path(Name)).write("there before"));
    QCOMPARE(modeOf(folder.path(Name)), 0600U);
}

void TestRotatingFile::setsAFullFileAsideAndDropsTheOldest()
{
    const TestFolder folder;
    RotatingFile file(folder.path(Name));
    for (const char letter : {'a', 'b', 'c', 'd', 'e', 'f', 'g'})
        fill(file, letter);
    QString found;
    for (const auto *name : {"log", "log.1", "log.2", "log.3", "log.4"})
        found += QLatin1Char(folder.read(QString::fromLatin1(name)).value_or("-").at(0));
    QCOMPARE(found, QStringLiteral("gfedc"));
    QCOMPARE(folder.tree().size(), RotatingFile::FileCount);
}

void TestRotatingFile::neverGrowsBeyondItsLimit()
{
    const TestFolder folder;
    RotatingFile file(folder.path(Name));
    fill(file, 'a');
    QCOMPARE(folder.read(Name)->size(), RotatingFile::SizeLimit);
    QVERIFY(file.write("one more"));
    QCOMPARE(folder.read(Name), QByteArray("one more\n"));
    QCOMPARE(folder.read(QStringLiteral("log.1"))->size(), RotatingFile::SizeLimit);
}

void TestRotatingFile::cutsALineThatNoFileCanHold()
{
    const TestFolder folder;
    RotatingFile file(folder.path(Name));
    QVERIFY(file.write(QByteArray(int(RotatingFile::SizeLimit) * 2, 'x')));
    QVERIFY(file.write("next"));
    QCOMPARE(folder.read(Name), QByteArray("next\n"));
    QVERIFY(folder.read(QStringLiteral("log.1"))->size() < RotatingFile::SizeLimit);
}

void TestRotatingFile::startsAnewWhenTheFileWasRemoved()
{
    const TestFolder folder;
    RotatingFile file(folder.path(Name));
    QVERIFY(file.write("gone"));
    QVERIFY(QFile::remove(folder.path(Name)));
    QVERIFY(file.write("there"));
    QCOMPARE(folder.read(Name), QByteArray("there\n"));
}

void TestRotatingFile::writesOnOnceThereIsSpaceAgain()
{
    const TestFolder folder;
    RotatingFile file(folder.path(Name));
    QVERIFY(file.write("1234"));
    {
        const FileSizeLimit limit(8);
        QVERIFY(!file.write("torn line"));
        QVERIFY(!file.write("lost"));
    }
    QVERIFY(file.write("whole"));
    QCOMPARE(folder.read(Name), QByteArray("1234\ntor\nwhole\n"));
}

void TestRotatingFile::writesNothingToWhatIsNoFile_data()
{
    addNames({QStringLiteral("link"), QStringLiteral("dangling"), QStringLiteral("empty"),
              QStringLiteral("pipe"), QStringLiteral("file/below")});
}

void TestRotatingFile::writesNothingToWhatIsNoFile()
{
    QFETCH(QString, name);
    const TestFolder folder;
    addObstacles(folder);
    const QStringList before = folder.tree();
    RotatingFile file(folder.path(name));
    QVERIFY(!file.write("line"));
    QCOMPARE(folder.tree(), before);
}

void TestRotatingFile::losesNoLineOfTwoWriters()
{
    constexpr int Lines = 600;
    const TestFolder folder;
    const auto writeLines = [&folder](char letter) {
        RotatingFile file(folder.path(Name));
        for (int i = 0; i < Lines; ++i)
            file.write(QByteArray(2000, letter));
    };
    std::thread other(writeLines, 'a');
    writeLines('b');
    other.join();
    QByteArray all;
    for (const auto *name : {"log.2", "log.1", "log"})
        all += folder.read(QString::fromLatin1(name)).value_or(QByteArray());
    QCOMPARE(all.count(QByteArray(2000, 'a') + '\n'), Lines);
    QCOMPARE(all.count(QByteArray(2000, 'b') + '\n'), Lines);
}

QUELLMOOR_TEST(TestRotatingFile, "RotatingFile")
#include "tst_RotatingFile.moc"

#include "LogCapture.h"
#include "TestMain.h"
#include "app/SingleInstance.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <thread>

class TestSingleInstance : public QObject
{
    Q_OBJECT

private slots:
    void bringsTheFirstForwardAndEndsTheSecond();
    void letsTheNextBeFirstWhenTheFirstHasGone();
    void keepsFoldersApart();
    void takesOverTheLockOfAKilledLauncher_data();
    void takesOverTheLockOfAKilledLauncher();
    void leavesNothingBehind();
    void goesOnWithALogLineWhenTheFolderCannotBeLocked();
    void claimsQuietlyOnlyWhenNobodyIsThere();
    void keepsOneThatComesBeforeItListensWaiting();
};

namespace {

// `asked` counts how often the first was asked to come forward.
void refusesASecondWhichAsks(const QString &folder, const int &asked)
{
    bool isSecondAllowed = true;
    std::jthread second([&] { isSecondAllowed = SingleInstance(folder).claim(); });
    QTRY_COMPARE(asked, 1);
    second.join();
    QVERIFY(!isSecondAllowed);
}

} // namespace

void TestSingleInstance::bringsTheFirstForwardAndEndsTheSecond()
{
    const QTemporaryDir folder;
    int asked = 0;
    SingleInstance first(folder.path());
    QVERIFY(first.claim());
    first.listen([&asked] { ++asked; });

    refusesASecondWhichAsks(folder.path(), asked);
}

void TestSingleInstance::letsTheNextBeFirstWhenTheFirstHasGone()
{
    const QTemporaryDir folder;
    {
        SingleInstance first(folder.path());
        QVERIFY(first.claim());
    }
    SingleInstance next(folder.path());
    QVERIFY(next.claim());
}

void TestSingleInstance::keepsFoldersApart()
{
    const QTemporaryDir one;
    const QTemporaryDir other;
    SingleInstance first(one.path());
    SingleInstance second(other.path());
    QVERIFY(first.claim() && second.claim());
}

void TestSingleInstance::takesOverTheLockOfAKilledLauncher_data()
{
    QTest::addColumn<QByteArray>("contents");
    const QByteArray number = QByteArray::number(QCoreApplication::applicationPid());
    QTest::newRow("in the moment it was made") << QByteArray();
    QTest::newRow("whose number another process has by now") << number;
    QTest::newRow("when the machine had another name") << number + "\ntest_app\nelsewhere\n";
}

void TestSingleInstance::takesOverTheLockOfAKilledLauncher()
{
    QFETCH(const QByteArray, contents);
    const QTemporaryDir folder;
    QFile lock(folder.filePath(QStringLiteral(".launcher.lock")));
    QVERIFY(lock.open(QIODevice::WriteOnly));
    QCOMPARE(lock.write(contents), contents.size());
    lock.close();
    SingleInstance next(folder.path());
    QVERIFY(next.claimQuietly());
}

void TestSingleInstance::leavesNothingBehind()
{
    const QTemporaryDir folder;
    {
        SingleInstance first(folder.path());
        QVERIFY(first.claimQuietly());
        // One that was refused leaves the file to who holds it.
        QVERIFY(!SingleInstance(folder.path()).claimQuietly());
        QVERIFY(!SingleInstance(folder.path()).claimQuietly());
    }
    QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
}

void TestSingleInstance::goesOnWithALogLineWhenTheFolderCannotBeLocked()
{
    const LogCapture log;
    SingleInstance instance(QStringLiteral("/proc/no-folder-can-be-made-here"));
    QVERIFY(instance.claimQuietly());
    QVERIFY(log.lines().contains(
        QStringLiteral("+[ErrorHandler log:] [line 14]: Cannot lock the launcher data folder.")));
}

void TestSingleInstance::claimsQuietlyOnlyWhenNobodyIsThere()
{
    const QTemporaryDir folder;
    int asked = 0;
    SingleInstance first(folder.path());
    QVERIFY(first.claim());
    first.listen([&asked] { ++asked; });
    QVERIFY(!SingleInstance(folder.path()).claimQuietly());
    QCoreApplication::processEvents();
    QCOMPARE(asked, 0);
}

void TestSingleInstance::keepsOneThatComesBeforeItListensWaiting()
{
    const QTemporaryDir folder;
    int asked = 0;
    SingleInstance first(folder.path());
    QVERIFY(first.claim());
    std::atomic<bool> hasBegun = false;
    bool isSecondAllowed = true;
    std::jthread second([&] {
        SingleInstance instance(folder.path());
        hasBegun = true;
        isSecondAllowed = instance.claim();
    });
    QTRY_VERIFY(hasBegun);
    first.listen([&asked] { ++asked; });
    QTRY_COMPARE(asked, 1);
    second.join();
    QVERIFY(!isSecondAllowed);
}

QUELLMOOR_TEST(TestSingleInstance, "SingleInstance")
#include "tst_SingleInstance.moc"

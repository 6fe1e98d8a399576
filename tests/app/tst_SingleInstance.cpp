#include "LogCapture.h"
#include "TestMain.h"
#include "app/InstanceLock.h"
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
    void leavesTheFirstAloneWhenItOnlyTries();
    void keepsOneThatComesBeforeItListensWaiting();
};

namespace {

// As a launcher does it.
bool mayGoOn(InstanceLock &lock)
{
    return lock.tryToTake() || SingleInstance(lock.dataFolder()).waitFor(lock);
}

} // namespace

void TestSingleInstance::bringsTheFirstForwardAndEndsTheSecond()
{
    const QTemporaryDir folder;
    int asked = 0;
    InstanceLock lock(folder.path());
    QVERIFY(mayGoOn(lock));
    SingleInstance first(folder.path());
    first.listen([&asked] { ++asked; });

    bool isSecondAllowed = true;
    std::jthread second([&] {
        InstanceLock another(folder.path());
        isSecondAllowed = mayGoOn(another);
    });
    QTRY_COMPARE(asked, 1);
    second.join();
    QVERIFY(!isSecondAllowed);
}

void TestSingleInstance::letsTheNextBeFirstWhenTheFirstHasGone()
{
    const QTemporaryDir folder;
    auto first = std::make_unique<InstanceLock>(folder.path());
    QVERIFY(mayGoOn(*first));
    std::atomic<bool> isNextThere = false;
    bool isNextAllowed = false;
    std::jthread second([&] {
        InstanceLock next(folder.path());
        isNextThere = !next.tryToTake();
        isNextAllowed = SingleInstance(folder.path()).waitFor(next);
    });
    QTRY_VERIFY(isNextThere);
    first.reset();
    second.join();
    QVERIFY(isNextAllowed);
}

void TestSingleInstance::keepsFoldersApart()
{
    const QTemporaryDir one;
    const QTemporaryDir other;
    InstanceLock first(one.path());
    InstanceLock second(other.path());
    QVERIFY(first.tryToTake() && second.tryToTake());
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
    QFile file(folder.filePath(QStringLiteral(".launcher.lock")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
    file.close();
    InstanceLock next(folder.path());
    QVERIFY(next.tryToTake());
}

void TestSingleInstance::leavesNothingBehind()
{
    const QTemporaryDir folder;
    {
        InstanceLock first(folder.path());
        QVERIFY(first.tryToTake());
        // One that was refused leaves the file to who holds it.
        QVERIFY(!InstanceLock(folder.path()).tryToTake());
        QVERIFY(!InstanceLock(folder.path()).tryToTake());
    }
    QCOMPARE(QDir(folder.path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
}

void TestSingleInstance::goesOnWithALogLineWhenTheFolderCannotBeLocked()
{
    const LogCapture log;
    InstanceLock lock(QStringLiteral("/proc/no-folder-can-be-made-here"));
    QVERIFY(lock.tryToTake());
    QVERIFY(log.lines().contains(
        QStringLiteral("+[ErrorHandler log:] [line 14]: Cannot lock the launcher data folder.")));
}

void TestSingleInstance::leavesTheFirstAloneWhenItOnlyTries()
{
    const QTemporaryDir folder;
    int asked = 0;
    InstanceLock lock(folder.path());
    QVERIFY(lock.tryToTake());
    SingleInstance first(folder.path());
    first.listen([&asked] { ++asked; });
    QVERIFY(!InstanceLock(folder.path()).tryToTake());
    QCoreApplication::processEvents();
    QCOMPARE(asked, 0);
}

void TestSingleInstance::keepsOneThatComesBeforeItListensWaiting()
{
    const QTemporaryDir folder;
    int asked = 0;
    InstanceLock lock(folder.path());
    QVERIFY(lock.tryToTake());
    std::atomic<bool> isSecondThere = false;
    bool isSecondAllowed = true;
    std::jthread second([&] {
        InstanceLock another(folder.path());
        isSecondThere = !another.tryToTake();
        isSecondAllowed = SingleInstance(folder.path()).waitFor(another);
    });
    QTRY_VERIFY(isSecondThere);
    SingleInstance first(folder.path());
    first.listen([&asked] { ++asked; });
    QTRY_COMPARE(asked, 1);
    second.join();
    QVERIFY(!isSecondAllowed);
}

QUELLMOOR_TEST(TestSingleInstance, "SingleInstance")
#include "tst_SingleInstance.moc"

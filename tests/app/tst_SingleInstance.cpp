#include "LogCapture.h"
#include "TestMain.h"
#include "app/SingleInstance.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <thread>

class TestSingleInstance : public QObject
{
    Q_OBJECT

private slots:
    void bringsTheFirstForwardAndEndsTheSecond();
    void letsTheNextBeFirstWhenTheFirstHasGone();
    void keepsFoldersApart();
    void takesOverTheLockOfAKilledLauncher();
    void goesOnWithALogLineWhenTheFolderCannotBeLocked();
    void claimsQuietlyOnlyWhenNobodyIsThere();
};

void TestSingleInstance::bringsTheFirstForwardAndEndsTheSecond()
{
    const QTemporaryDir folder;
    int asked = 0;
    SingleInstance first(folder.path());
    first.setComeForward([&asked] { ++asked; });
    QVERIFY(first.claim());

    bool isSecondAllowed = true;
    std::thread second([&] { isSecondAllowed = SingleInstance(folder.path()).claim(); });
    QTRY_COMPARE(asked, 1);
    second.join();
    QVERIFY(!isSecondAllowed);
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

void TestSingleInstance::takesOverTheLockOfAKilledLauncher()
{
    const QTemporaryDir folder;
    QFile lock(folder.filePath(QStringLiteral(".launcher.lock")));
    QVERIFY(lock.open(QIODevice::WriteOnly));
    // A process number beyond what the system gives.
    lock.write("99999999\nquellmoor-launcher\n" + QSysInfo::machineHostName().toUtf8() + "\n" +
               QSysInfo::machineUniqueId() + "\n" + QSysInfo::bootUniqueId() + "\n");
    lock.close();
    SingleInstance next(folder.path());
    QVERIFY(next.claim());
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
    first.setComeForward([&asked] { ++asked; });
    QVERIFY(first.claim());
    QVERIFY(!SingleInstance(folder.path()).claimQuietly());
    QCoreApplication::processEvents();
    QCOMPARE(asked, 0);
}

QUELLMOOR_TEST(TestSingleInstance, "SingleInstance")
#include "tst_SingleInstance.moc"

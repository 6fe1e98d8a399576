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

// A launcher that finds another one there and waits for it, on a thread of its own.
class LaterLauncher
{
public:
    explicit LaterLauncher(const QString &folder)
        : m_thread([this, folder] {
              InstanceLock lock(folder);
              m_waits = !lock.tryToTake();
              m_isAllowed = SingleInstance(folder).waitFor(lock);
          })
    {
    }
    [[nodiscard]] bool waits() const { return m_waits; }
    // Waits for its end.
    [[nodiscard]] bool mayGoOn()
    {
        m_thread.join();
        return m_isAllowed;
    }

private:
    std::atomic<bool> m_waits = false;
    bool m_isAllowed = false;
    std::jthread m_thread; // last, for it uses the others
};

} // namespace

void TestSingleInstance::bringsTheFirstForwardAndEndsTheSecond()
{
    const QTemporaryDir folder;
    int asked = 0;
    InstanceLock lock(folder.path());
    QVERIFY(mayGoOn(lock));
    SingleInstance first(folder.path());
    first.listen([&asked] { ++asked; });

    LaterLauncher second(folder.path());
    QTRY_COMPARE(asked, 1);
    QVERIFY(!second.mayGoOn());
}

void TestSingleInstance::letsTheNextBeFirstWhenTheFirstHasGone()
{
    const QTemporaryDir folder;
    auto first = std::make_unique<InstanceLock>(folder.path());
    QVERIFY(mayGoOn(*first));
    LaterLauncher next(folder.path());
    QTRY_VERIFY(next.waits());
    first.reset();
    QVERIFY(next.mayGoOn());
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
    LaterLauncher second(folder.path());
    QTRY_VERIFY(second.waits());
    SingleInstance first(folder.path());
    first.listen([&asked] { ++asked; });
    QTRY_COMPARE(asked, 1);
    QVERIFY(!second.mayGoOn());
}

QUELLMOOR_TEST(TestSingleInstance, "SingleInstance")
#include "tst_SingleInstance.moc"

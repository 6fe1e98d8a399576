#include "TestFolder.h"
#include "TestMain.h"
#include "platform/ShellTask.h"

#include <QFile>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <unistd.h>

namespace {

QString word(const std::optional<QByteArray> &text)
{
    return QString::fromLatin1(text.value_or("").trimmed());
}

} // namespace

class TestShellTask : public QObject
{
    Q_OBJECT

private slots:
    void runsInItsFolderAndIsWaitedFor();
    void tellsWhyItCannotStart();
    void waitsForNothingWhenNothingWasStarted();
    void hasASessionOfItsOwnAndNoSignalsBlocked();
    void leavesNoZombie();
    void outlivesWhoeverStartedIt_data();
    void outlivesWhoeverStartedIt();
};

void TestShellTask::runsInItsFolderAndIsWaitedFor()
{
    const TestFolder folder;
    ShellTask task(QStringLiteral("printf %s \"$PWD\" > where\n"), folder.path());
    QVERIFY(!task.launch());
    task.waitUntilExit();
    QCOMPARE(word(folder.read(QStringLiteral("where"))), folder.path());
}

void TestShellTask::tellsWhyItCannotStart()
{
    const TestFolder folder;
    ShellTask task(QStringLiteral("true"), folder.path(QStringLiteral("missing")));
    const auto error = task.launch();
    QVERIFY(error);
    QCOMPARE(error->code, ENOENT);
    task.waitUntilExit();
}

void TestShellTask::waitsForNothingWhenNothingWasStarted()
{
    ShellTask(QStringLiteral("sleep 1000"), QStringLiteral("/")).waitUntilExit();
}

void TestShellTask::hasASessionOfItsOwnAndNoSignalsBlocked()
{
    const TestFolder folder;
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGUSR1);
    pthread_sigmask(SIG_BLOCK, &blocked, nullptr);
    ShellTask task(QStringLiteral("cut -d' ' -f6 /proc/$$/stat > session; echo $$ > shell\n"
                                  "grep SigBlk /proc/$$/status | cut -f2 > blocked\n"),
                   folder.path());
    QVERIFY(!task.launch());
    task.waitUntilExit();
    pthread_sigmask(SIG_UNBLOCK, &blocked, nullptr);
    QCOMPARE(word(folder.read(QStringLiteral("session"))),
             word(folder.read(QStringLiteral("shell"))));
    QCOMPARE(word(folder.read(QStringLiteral("blocked"))), QStringLiteral("0000000000000000"));
}

void TestShellTask::leavesNoZombie()
{
    const TestFolder folder;
    ShellTask task(QStringLiteral("echo $$ > shell\n"), folder.path());
    QVERIFY(!task.launch());
    task.waitUntilExit();
    QVERIFY(!QFile::exists(QStringLiteral("/proc/") + word(folder.read(QStringLiteral("shell")))));
}

void TestShellTask::outlivesWhoeverStartedIt_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("killed") << SIGKILL;
    QTest::newRow("asked to end") << SIGTERM;
    QTest::newRow("interrupted from the terminal") << SIGINT;
}

// This program, started once more with a folder in its environment, starts a task there and waits.
void TestShellTask::outlivesWhoeverStartedIt()
{
    QFETCH(int, signal);
    const TestFolder folder;
    const QString output = folder.path(QStringLiteral("output"));
    QProcess starter;
    starter.setStandardOutputFile(output);
    starter.setStandardErrorFile(QProcess::nullDevice());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QUELLMOOR_START_A_TASK_IN"), folder.path());
    starter.setProcessEnvironment(environment);
    starter.start(QCoreApplication::applicationFilePath(), {QStringLiteral("ShellTask")});
    QTRY_VERIFY_WITH_TIMEOUT(folder.read(QStringLiteral("started")), 20000);

    ::kill(pid_t(starter.processId()), signal);
    QVERIFY(starter.waitForFinished());
    folder.write(QStringLiteral("go"), "");
    QTRY_VERIFY_WITH_TIMEOUT(folder.read(QStringLiteral("ended")), 20000);
    QVERIFY(folder.read(QStringLiteral("output"))->contains("still here"));
}

// Runs before the tests, in the program that is started once more.
static void startATaskWhenAsked()
{
    const QString folder = qEnvironmentVariable("QUELLMOOR_START_A_TASK_IN");
    if (folder.isEmpty())
        return;
    ShellTask task(QStringLiteral("touch started; while [ ! -e go ]; do sleep 0.02; done\n"
                                  "echo still here; touch ended\n"),
                   folder);
    if (!task.launch())
        task.waitUntilExit();
    _exit(0);
}

Q_COREAPP_STARTUP_FUNCTION(startATaskWhenAsked)

QUELLMOOR_TEST(TestShellTask, "ShellTask")
#include "tst_ShellTask.moc"

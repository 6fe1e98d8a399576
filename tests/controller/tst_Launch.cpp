// The game: started with what the login gave, waited for, and what the player sees meanwhile.
#include "ControllerWorld.h"
#include "TestMain.h"
#include "platform/DispatchQueue.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QJsonObject>
#include <QTest>

#include <csignal>
#include <unistd.h>

using std::chrono_literals::operator""ms;

class TestLaunch : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void handsTheGameWhatTheLoginGave();
    void startsTheFileNamedQuellmoorWhenNoneIsNamed();
    void makesGameAndFrameworkExecutable();
    void logsOnceWhenPermissionsCannotBeSet_data();
    void logsOnceWhenPermissionsCannotBeSet();
    void hidesAfterFiveSecondsAndReturnsWithTheGame();
    void staysWhenTheGameEndsSooner();
    void returnsWhateverBecomesOfTheGame_data();
    void returnsWhateverBecomesOfTheGame();
    void returnsWhenTheShellIsKilled_data();
    void returnsWhenTheShellIsKilled();
    void runsNothingForValuesThatAreMissing();
    void leavesNoZombie();
    void keepsNobodyWaitingWhoEndsTheProcess();
    void refusesAnExecutableOutsideTheGameFolder_data();
    void refusesAnExecutableOutsideTheGameFolder();
    void returnsWhenThereIsNoGameFolder();

private:
    // Logs in with those values; the manifest names the executable, or none.
    void launch(const QByteArray &game, const QString &exec = QStringLiteral("Quellmoor"),
                const QString &username = QStringLiteral("wren"));
    int returnCount() const
    {
        return int(m_world->activationPolicy.requests().count(QStringLiteral("activate")));
    }

    std::unique_ptr<ControllerWorld> m_world;
};

namespace {

const QByteArray WaitForGo = "#!/bin/sh\ntouch started\nwhile [ ! -e go ]; do sleep 0.02; done\n";
const auto Started = QStringLiteral("Quellmoor/Game/started");
const auto Go = QStringLiteral("Quellmoor/Game/go");

} // namespace

void TestLaunch::init()
{
    m_world = std::make_unique<ControllerWorld>();
    m_world->answerLogin(
        QJsonObject{{QStringLiteral("status"), 7},
                    {QStringLiteral("message"), QStringLiteral("Welcome")},
                    {QStringLiteral("token"), QStringLiteral("cookie-1")},
                    {QStringLiteral("gameserver"), QStringLiteral("game.example:7777")}});
}

void TestLaunch::cleanup()
{
    m_world->folder.write(Go, ""); // a game still waits for it when a test has failed
    m_world.reset();
}

void TestLaunch::launch(const QByteArray &game, const QString &exec, const QString &username)
{
    m_world->publish({},
                     exec.isEmpty() ? QJsonObject() : QJsonObject{{QStringLiteral("exec"), exec}});
    if (!game.isEmpty())
        m_world->folder.write(QStringLiteral("Quellmoor/Game/") +
                                  (exec.isEmpty() ? QStringLiteral("Quellmoor") : exec),
                              game);
    m_world->start();
    m_world->login(username, QStringLiteral("secret"));
}

void TestLaunch::handsTheGameWhatTheLoginGave()
{
    launch(
        "#!/bin/sh\nprintf '%s|' \"$VARNO_PLAYCOOKIE\" \"$VARNO_GAMESERVER\" "
        "\"$DYLD_FRAMEWORK_PATH\" \"$DYLD_LIBRARY_PATH\" \"${VARNO_DEV-unset}\" \"$PWD\" > seen\n",
        QStringLiteral("The Game (new)"));
    QTRY_COMPARE(returnCount(), 1);
    QCOMPARE(
        QString::fromUtf8(m_world->folder.read(QStringLiteral("Quellmoor/Game/seen")).value_or("")),
        QStringLiteral("cookie-1|game.example:7777|Frameworks/|libs/|unset|%1|")
            .arg(m_world->configuration.gameFolder()));
}

void TestLaunch::startsTheFileNamedQuellmoorWhenNoneIsNamed()
{
    launch("#!/bin/sh\nprintf %s \"$VARNO_DEV\" > seen\n", QString(), QStringLiteral("wren@qa"));
    QTRY_COMPARE(m_world->folder.read(QStringLiteral("Quellmoor/Game/seen")),
                 std::optional<QByteArray>("YES"));
}

void TestLaunch::makesGameAndFrameworkExecutable()
{
    const auto framework = QStringLiteral("Quellmoor/Game/Frameworks/Cg.framework/Cg");
    m_world->folder.write(framework, "x");
    launch("#!/bin/sh\n");
    QTRY_COMPARE(returnCount(), 1);
    constexpr auto mode = QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                          QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther | QFile::ExeOther |
                          QFile::ReadUser | QFile::WriteUser | QFile::ExeUser;
    for (const QString &file : {QStringLiteral("Quellmoor/Game/Quellmoor"), framework})
        QCOMPARE(QFileInfo(m_world->folder.path(file)).permissions() | QFile::WriteUser, mode);
    QCOMPARE(
        m_world->workspace.requests(),
        QStringList{QStringLiteral("icon %1/Quellmoor").arg(m_world->configuration.gameFolder())});
    QCOMPARE(m_world->log.lines().filter(QStringLiteral("Cannot make executable")), QStringList());
}

void TestLaunch::logsOnceWhenPermissionsCannotBeSet_data()
{
    QTest::addColumn<bool>("hasGame");
    QTest::addColumn<bool>("hasFramework");
    QTest::addColumn<QString>("named"); // the file of the one line
    const auto game = QStringLiteral("Quellmoor");
    const auto framework = QStringLiteral("Frameworks/Cg.framework/Cg");
    QTest::newRow("the game only") << false << true << game;
    QTest::newRow("the framework only") << true << false << framework;
    QTest::newRow("both") << false << false << framework; // the later takes the earlier's place
}

void TestLaunch::logsOnceWhenPermissionsCannotBeSet()
{
    QFETCH(bool, hasGame);
    QFETCH(bool, hasFramework);
    QFETCH(QString, named);
    m_world->folder.write(QStringLiteral("Quellmoor/Game/other"), "x");
    if (hasFramework)
        m_world->folder.write(QStringLiteral("Quellmoor/Game/Frameworks/Cg.framework/Cg"), "x");
    launch(hasGame ? QByteArray("#!/bin/sh\ntouch played\n") : QByteArray());
    QTRY_COMPARE(returnCount(), 1);
    QCOMPARE(m_world->logLines(),
             QStringList{QStringLiteral("+[ErrorHandler log:] [line 14]: Cannot make executable "
                                        "%1/%2: No such file or directory")
                             .arg(m_world->configuration.gameFolder(), named)});
    QCOMPARE(m_world->folder.read(QStringLiteral("Quellmoor/Game/played")).has_value(), hasGame);
}

void TestLaunch::hidesAfterFiveSecondsAndReturnsWithTheGame()
{
    launch(WaitForGo);
    QTRY_VERIFY(m_world->folder.read(Started));
    QTRY_VERIFY(m_world->timer.isWaiting());
    QTRY_COMPARE(m_world->status(), QStringLiteral("Launching the game..."));
    const QStringList before = m_world->activationPolicy.requests();
    m_world->timer.pass(4999ms);
    QCOMPARE(m_world->activationPolicy.requests(), before);
    m_world->timer.pass(1ms);
    QCOMPARE(m_world->activationPolicy.requests(),
             before + QStringList{QStringLiteral("accessory")});

    m_world->folder.write(Go, "");
    // Regular and in front, and once more regular from the start-up flow that follows.
    QTRY_COMPARE(m_world->activationPolicy.requests(),
                 before + QStringList({QStringLiteral("accessory"), QStringLiteral("regular"),
                                       QStringLiteral("activate"), QStringLiteral("regular")}));
    QTRY_COMPARE(m_world->status(), QStringLiteral("Login"));
    QTRY_VERIFY(m_world->isShown("accountIDField") && m_world->isShown("playButton"));
    QVERIFY(!m_world->isShown("swordsmenImage") && !m_world->isShown("patcherProgressBar") &&
            !m_world->isShown("progressFrameView"));
    QCOMPARE(m_world->view->accountIDField()->stringValue(), QStringLiteral("wren"));
    QVERIFY(m_world->controller->hasReturnedFromGame());
}

void TestLaunch::staysWhenTheGameEndsSooner()
{
    launch(WaitForGo);
    QTRY_VERIFY(m_world->timer.isWaiting());
    m_world->folder.write(Go, "");
    QTRY_COMPARE(returnCount(), 1);
    m_world->timer.pass(5000ms);
    QVERIFY(!m_world->activationPolicy.requests().contains(QStringLiteral("accessory")));
}

void TestLaunch::returnsWhateverBecomesOfTheGame_data()
{
    QTest::addColumn<QByteArray>("game");
    QTest::newRow("missing") << QByteArray();
    QTest::newRow("not a program") << QByteArray("\x7f\x45not a program\n");
    QTest::newRow("ends at once") << QByteArray("#!/bin/sh\n");
    QTest::newRow("fails") << QByteArray("#!/bin/sh\nexit 3\n");
    QTest::newRow("ends by a signal") << QByteArray("#!/bin/sh\nkill -SEGV $$\n");
}

void TestLaunch::returnsWhateverBecomesOfTheGame()
{
    QFETCH(QByteArray, game);
    launch(game);
    QTRY_COMPARE(returnCount(), 1);
    QTRY_COMPARE(m_world->status(), QStringLiteral("Login"));
    QTRY_VERIFY(m_world->isShown("accountIDField"));
    QVERIFY(m_world->view->isPlayButtonEnabled());
}

void TestLaunch::returnsWhenTheShellIsKilled_data()
{
    QTest::addColumn<int>("signal");
    QTest::newRow("killed") << SIGKILL;
    QTest::newRow("asked to end") << SIGTERM;
    QTest::newRow("interrupted") << SIGINT;
}

// The shell is what the launcher waits for; the game goes on without it.
void TestLaunch::returnsWhenTheShellIsKilled()
{
    QFETCH(int, signal);
    launch("#!/bin/sh\necho $PPID > shell.new; mv shell.new shell\n"
           "while [ ! -e go ]; do sleep 0.02; done\ntouch ended\n");
    const auto shell = QStringLiteral("Quellmoor/Game/shell");
    QTRY_VERIFY(m_world->folder.read(shell));
    QTRY_VERIFY(m_world->timer.isWaiting());
    const auto pid = pid_t(m_world->folder.read(shell)->trimmed().toInt());
    QVERIFY(pid > 1 && pid != getpid());
    QCOMPARE(::kill(pid, signal), 0);
    if (signal == SIGINT) // a shell heeds it when its child has ended
        m_world->folder.write(Go, "");
    QTRY_COMPARE(returnCount(), 1);
    QTRY_COMPARE(m_world->status(), QStringLiteral("Login"));
    QTRY_VERIFY(m_world->isShown("accountIDField"));
    QVERIFY(m_world->view->isPlayButtonEnabled());
    QVERIFY(!QFile::exists(QStringLiteral("/proc/%1").arg(pid)));
    m_world->timer.pass(5000ms);
    QVERIFY(!m_world->activationPolicy.requests().contains(QStringLiteral("accessory")));
    m_world->folder.write(Go, "");
    QTRY_VERIFY(m_world->folder.read(QStringLiteral("Quellmoor/Game/ended")));
}

// "(null)" is no word for a shell, which gives the script up there.
void TestLaunch::runsNothingForValuesThatAreMissing()
{
    m_world->answerLogin(QJsonObject{{QStringLiteral("status"), 7}});
    launch("#!/bin/sh\ntouch played\n");
    QTRY_COMPARE(returnCount(), 1);
    QTRY_COMPARE(m_world->status(), QStringLiteral("Login"));
    QVERIFY(m_world->statuses.contains(QStringLiteral("507: (null)")));
    QVERIFY(!m_world->folder.read(QStringLiteral("Quellmoor/Game/played")));
}

void TestLaunch::leavesNoZombie()
{
    launch("#!/bin/sh\necho $PPID > shell\n");
    QTRY_COMPARE(returnCount(), 1);
    const QByteArray shell =
        m_world->folder.read(QStringLiteral("Quellmoor/Game/shell")).value_or("").trimmed();
    QVERIFY(!shell.isEmpty());
    QVERIFY(!QFile::exists(QStringLiteral("/proc/") + QString::fromLatin1(shell)));
}

void TestLaunch::keepsNobodyWaitingWhoEndsTheProcess()
{
    launch(WaitForGo);
    QTRY_VERIFY(m_world->folder.read(Started));
    constexpr int limit = 20000;
    QElapsedTimer clock;
    clock.start();
    const bool isNothingLeft = DispatchQueue::drain(limit);
    const qint64 milliseconds = clock.elapsed();
    m_world->folder.write(Go, ""); // whatever comes of it, the game ends
    QVERIFY(!isNothingLeft);
    QVERIFY(milliseconds < limit / 2);
    QTRY_COMPARE(returnCount(), 1);
}

void TestLaunch::refusesAnExecutableOutsideTheGameFolder_data()
{
    QTest::addColumn<QByteArray>("exec");
    QTest::addColumn<QString>("reason");
    const auto noFile = QStringLiteral("it does not name a file in the game folder");
    QTest::newRow("above") << QByteArray("../canary") << noFile;
    QTest::newRow("absolute") << QByteArray("/bin/sh") << noFile;
    QTest::newRow("the folder") << QByteArray("./") << noFile;
    QTest::newRow("an empty text") << QByteArray() << noFile;
    QTest::newRow("a NUL") << QByteArray("Quellmoor\\u0000x")
                           << QStringLiteral("it holds a NUL character");
    QTest::newRow("a NUL at the end")
        << QByteArray("Quellmoor\\u0000") << QStringLiteral("it holds a NUL character");
}

void TestLaunch::refusesAnExecutableOutsideTheGameFolder()
{
    QFETCH(QByteArray, exec);
    QFETCH(QString, reason);
    const QStringList canaries{QStringLiteral("Quellmoor/canary"),
                               QStringLiteral("Quellmoor/Game/Quellmoor")};
    for (const QString &canary : canaries)
        m_world->folder.write(canary, "#!/bin/sh\ntouch \"$0.ran\"\n");
    m_world->publishManifest(R"({"files":{},"exec":")" + exec + "\"}");
    m_world->start();
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_COMPARE(returnCount(), 1);
    QTRY_COMPARE(m_world->status(), QStringLiteral("Login"));
    QTRY_VERIFY(m_world->isShown("accountIDField"));
    QVERIFY(m_world->view->isPlayButtonEnabled());
    QCOMPARE(m_world->logLines(),
             QStringList{QStringLiteral("+[ErrorHandler log:] [line 14]: The game's executable is "
                                        "refused: %1.")
                             .arg(reason)});
    for (const QString &canary : canaries) {
        QVERIFY(!m_world->folder.read(canary + QStringLiteral(".ran")));
        QVERIFY(!QFileInfo(m_world->folder.path(canary)).isExecutable());
    }
}

void TestLaunch::returnsWhenThereIsNoGameFolder()
{
    m_world->start();
    const auto queue = DispatchQueue::makeSerial(QStringLiteral("launch"));
    queue->async([controller = m_world->controller] { controller->launchGame(); });
    QTRY_COMPARE(returnCount(), 1);
    QCOMPARE(m_world->log.lines().filter(QStringLiteral("Cannot start a shell in ")).size(), 1);
    QVERIFY(!m_world->timer.isWaiting());
}

QUELLMOOR_TEST(TestLaunch, "Launch")
#include "tst_Launch.moc"

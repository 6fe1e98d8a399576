// What comes back from the account host, and what the player and the log are told of it.
#include "ControllerWorld.h"
#include "TestMain.h"

#include <QJsonObject>
#include <QTest>

using Value = std::optional<QString>;
Q_DECLARE_METATYPE(Value)
using Data = std::optional<QByteArray>;
Q_DECLARE_METATYPE(Data)
using MaybeError = std::optional<Error>;
Q_DECLARE_METATYPE(MaybeError)
Q_DECLARE_METATYPE(TestReply)

namespace {

const auto Contacting = QStringLiteral("Contacting account server...");
const auto NoConnection = QStringLiteral("900: Couldn't connect to the account server.");

// The one line that ErrorHandler writes for an error of that text.
QStringList logged(const QString &text)
{
    return {QStringLiteral("+[ErrorHandler log:] [line 14]: ") + text};
}

} // namespace

class TestLoginReplies : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_world.reset(); }

    void showsWhatTheServerAnswers_data();
    void showsWhatTheServerAnswers();
    void tellsWhenTheServerCannotBeReached();
    void refusesTheCertificateOfAnotherHost();
    void waitsForASlowServerAndAsksItOnce();
    void givesUpOnAReplyThatComesTooLate_data();
    void givesUpOnAReplyThatComesTooLate();
    void takesNoDataOrAnErrorForNoConnection_data();
    void takesNoDataOrAnErrorForNoConnection();
    void takesAVeryLongReplyForWhatItIs();
    void acceptsASuccessWithoutValues_data();
    void acceptsASuccessWithoutValues();
    void neverSendsThePasswordToAnotherOrigin_data();
    void neverSendsThePasswordToAnotherOrigin();

private:
    std::unique_ptr<ControllerWorld> m_world;
};

void TestLoginReplies::init()
{
    m_world = std::make_unique<ControllerWorld>();
    m_world->window.show();
    m_world->controller->viewDidLoad();
    QVERIFY(QTest::qWaitForWindowActive(&m_world->window));
    QTRY_COMPARE(m_world->requestCount("/mac/patcher.json"), 1);
    QTRY_COMPARE(m_world->status(), QStringLiteral("Login"));
    m_world->statuses.clear();
}

void TestLoginReplies::showsWhatTheServerAnswers_data()
{
    QTest::addColumn<TestReply>("answer");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("log"); // empty for nothing
    const auto lost = QStringLiteral("The network connection was lost.");
    const auto json = [](const QByteArray &text) { return TestReply::whole(text); };
    QTest::newRow("3") << json(R"({"status":3,"message":"Enter code"})")
                       << QStringLiteral("503: Enter code") << QString();
    QTest::newRow("12") << json(R"({"status":12,"message":"Banned"})")
                        << QStringLiteral("5012: Banned") << QString();
    QTest::newRow("a text") << json(R"({"status":"12","message":"Banned"})")
                            << QStringLiteral("5012: Banned") << QString();
    QTest::newRow("a text that begins with a number")
        << json(R"({"status":" 12x","message":"Banned"})") << QStringLiteral("5012: Banned")
        << QString();
    QTest::newRow("a text without a number") << json(R"({"status":"no","message":"Banned"})")
                                             << QStringLiteral("500: Banned") << QString();
    QTest::newRow("a fraction") << json(R"({"status":12.9,"message":"Banned"})")
                                << QStringLiteral("5012: Banned") << QString();
    QTest::newRow("negative") << json(R"({"status":-1,"message":"Odd"})")
                              << QStringLiteral("50-1: Odd") << QString();
    QTest::newRow("beyond 64 bits")
        << json(R"({"status":1e300,"message":"Odd"})") << QStringLiteral("500: Odd") << QString();
    QTest::newRow("a large whole number") << json(R"({"status":9007199254740993,"message":"Odd"})")
                                          << QStringLiteral("509007199254740993: Odd") << QString();
    QTest::newRow("true") << json(R"({"status":true,"message":"Odd"})")
                          << QStringLiteral("501: Odd") << QString();
    QTest::newRow("no message") << json(R"({"status":4})") << QStringLiteral("504: (null)")
                                << QString();
    QTest::newRow("a message with a format in it") << json(R"({"status":4,"message":"%1 %s %@"})")
                                                   << QStringLiteral("504: %1 %s %@") << QString();
    QTest::newRow("500 with JSON") << TestReply::whole(R"({"status":9,"message":"Down"})", 500)
                                   << QStringLiteral("509: Down") << QString();
    QTest::newRow("not JSON") << json("<html>") << Contacting << QString();
    QTest::newRow("empty") << json("") << Contacting << QString();
    QTest::newRow("an array") << json("[7]") << Contacting << QString();
    QTest::newRow("no status") << json(R"({"message":"Hello"})") << Contacting << QString();
    QTest::newRow("a null status") << json(R"({"status":null})") << Contacting << QString();
    QTest::newRow("a status of another type")
        << json(R"({"status":[7]})") << Contacting << QString();
    QTest::newRow("reset") << TestReply::reset("{}", 0) << NoConnection << lost;
    QTest::newRow("cut") << TestReply::cut(R"({"status":4,"message":"x"})", 5) << NoConnection
                         << lost;
}

void TestLoginReplies::showsWhatTheServerAnswers()
{
    QFETCH(TestReply, answer);
    QFETCH(QString, status);
    QFETCH(QString, log);
    m_world->answerLogin(answer);
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_VERIFY(m_world->view->isPlayButtonEnabled());
    QCoreApplication::processEvents();
    QVERIFY(m_world->isShown("accountIDField"));
    const QStringList statuses{Contacting, status};
    QCOMPARE(m_world->statuses, status == Contacting ? statuses.first(1) : statuses);
    QCOMPARE(m_world->logLines(), log.isEmpty() ? QStringList() : logged(log));
}

void TestLoginReplies::tellsWhenTheServerCannotBeReached()
{
    m_world->configuration.accountHost = QStringLiteral("account.localhost:1");
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_COMPARE(m_world->status(), NoConnection);
    QVERIFY(m_world->view->isPlayButtonEnabled());
    QCOMPARE(m_world->logLines(), logged(QStringLiteral("Connection refused")));
}

void TestLoginReplies::refusesTheCertificateOfAnotherHost()
{
    TestServer impostor(Certificates::shared().otherHost());
    m_world->configuration.accountHost =
        QStringLiteral("account.localhost:%1").arg(impostor.port());
    m_world->login(QStringLiteral("wren"), QStringLiteral("topsecret"));
    QTRY_COMPARE(m_world->status(), NoConnection);
    QVERIFY(m_world->view->isPlayButtonEnabled());
    QVERIFY(!impostor.receivedBytes().contains("topsecret"));
    QCOMPARE(m_world->logLines(),
             logged(QStringLiteral("SSL handshake failed: The host name did not match any of the "
                                   "valid hosts for this certificate")));
}

void TestLoginReplies::waitsForASlowServerAndAsksItOnce()
{
    m_world->answerLogin(TestReply({TestReply::Wait(), TestReply::Close()}));
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QVERIFY(m_world->server.waitForWaiting());
    QTRY_COMPARE(m_world->status(), Contacting);
    QVERIFY(!m_world->view->isPlayButtonEnabled());
    m_world->server.release();
    QTRY_COMPARE(m_world->status(), NoConnection);
    QVERIFY(m_world->view->isPlayButtonEnabled());
    QCOMPARE(m_world->requestCount("/login/"), 1); // a wrong password must not count twice
    QCOMPARE(m_world->logLines(), logged(QStringLiteral("The network connection was lost.")));
}

void TestLoginReplies::givesUpOnAReplyThatComesTooLate_data()
{
    QTest::addColumn<TestReply>("late");
    const QByteArray success = R"({"status":7,"message":"Welcome","token":"cookie"})";
    const TestReply soon = TestReply::whole(success);
    std::vector<TestReply::Step> steps{TestReply::Wait()};
    for (const TestReply::Step &step : soon.steps())
        steps.push_back(step);
    QTest::newRow("as a whole") << TestReply(steps);
    QTest::newRow("after its beginning") << TestReply::stalled(success, 10);
}

void TestLoginReplies::givesUpOnAReplyThatComesTooLate()
{
    QFETCH(TestReply, late);
    m_world->httpClient->setIdleTimeout(std::chrono::milliseconds(400));
    m_world->answerLogin(late);
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QVERIFY(m_world->server.waitForWaiting());
    QCOMPARE(m_world->httpClient->lastRequest().method, QByteArray("POST"));
    QCOMPARE(m_world->httpClient->lastRequest().idleTimeout, std::chrono::seconds(60));
    QTRY_VERIFY(m_world->view->isPlayButtonEnabled());
    QTRY_COMPARE(m_world->statuses, QStringList({Contacting, NoConnection}));
    QCOMPARE(m_world->logLines(), logged(QStringLiteral("The request timed out.")));

    m_world->server.release();
    m_world->httpClient->setIdleTimeout({});
    m_world->answerLogin(TestReply::whole(R"({"status":12,"message":"Banned"})"));
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_COMPARE(m_world->statuses.mid(2),
                 QStringList({Contacting, QStringLiteral("5012: Banned")}));
    QVERIFY(!m_world->controller->playCookie());
    QVERIFY(m_world->isShown("accountIDField"));
}

void TestLoginReplies::takesNoDataOrAnErrorForNoConnection_data()
{
    QTest::addColumn<Data>("data");
    QTest::addColumn<MaybeError>("error");
    QTest::addColumn<QString>("log");
    const Data success = R"({"status":7,"message":"Welcome"})";
    const MaybeError error = Error{QStringLiteral("Gone"), 1};
    QTest::newRow("no data") << Data() << MaybeError()
                             << QStringLiteral("The login brought no data.");
    QTest::newRow("an error") << Data() << error << QStringLiteral("Gone");
    QTest::newRow("data with an error") << success << error << QStringLiteral("Gone");
}

void TestLoginReplies::takesNoDataOrAnErrorForNoConnection()
{
    QFETCH(Data, data);
    QFETCH(MaybeError, error);
    QFETCH(QString, log);
    m_world->view->setPlayButtonEnabled(false);
    m_world->controller->parseLoginData(data, error);
    QTRY_COMPARE(m_world->statuses, QStringList{NoConnection});
    QVERIFY(m_world->view->isPlayButtonEnabled());
    QCOMPARE(m_world->logLines(), logged(log));
}

void TestLoginReplies::takesAVeryLongReplyForWhatItIs()
{
    m_world->answerLogin(TestReply::whole(QByteArray(64 * 1024 * 1024, 'x')));
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_VERIFY_WITH_TIMEOUT(m_world->view->isPlayButtonEnabled(), 30000);
    QCOMPARE(m_world->statuses, QStringList{Contacting});
    QCOMPARE(m_world->logLines(), QStringList());
}

void TestLoginReplies::acceptsASuccessWithoutValues_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<Value>("token");
    QTest::addColumn<Value>("gameserver");
    const auto add = [](const char *name, const QByteArray &members, const Value &token,
                        const Value &gameserver) {
        QTest::newRow(name) << R"({"status":7,"message":"Welcome")" + members + '}' << token
                            << gameserver;
    };
    const auto value = QStringLiteral("x");
    add("neither", {}, {}, {});
    add("no token", R"(,"gameserver":"x")", {}, value);
    add("no game server", R"(,"token":"x")", value, {});
    add("a null token", R"(,"token":null,"gameserver":"x")", {}, value);
    add("empty texts", R"(,"token":"","gameserver":"")", QString(), QString());
}

void TestLoginReplies::acceptsASuccessWithoutValues()
{
    QFETCH(QByteArray, answer);
    QFETCH(Value, token);
    QFETCH(Value, gameserver);
    m_world->server.route("/mac/patcher.json", TestReply::stalled("{}"));
    m_world->answerLogin(TestReply::whole(answer));
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_VERIFY(!m_world->isShown("accountIDField"));
    QCOMPARE(m_world->controller->playCookie(), token);
    QCOMPARE(m_world->controller->gameserver(), gameserver);
    QTRY_COMPARE(m_world->statuses, QStringList({Contacting, QStringLiteral("507: Welcome"),
                                                 QStringLiteral("Checking for updates...")}));
    QVERIFY(!m_world->view->isPlayButtonEnabled());
    QCOMPARE(m_world->logLines(), QStringList());
}

void TestLoginReplies::neverSendsThePasswordToAnotherOrigin_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("place"); // the ports are put in for the words
    for (const int status : {302, 307}) {
        QTest::addRow("%d to another host", status)
            << status << QStringLiteral("https://download.localhost:SAME/login/");
        QTest::addRow("%d to another port", status)
            << status << QStringLiteral("https://account.localhost:SAFE/login/");
        QTest::addRow("%d to another scheme", status)
            << status << QStringLiteral("http://account.localhost:OPEN/login/");
        QTest::addRow("%d to a host of a name that is no good", status)
            << status << QStringLiteral("https://account-.localhost:SAME/login/");
    }
}

void TestLoginReplies::neverSendsThePasswordToAnotherOrigin()
{
    QFETCH(int, status);
    QFETCH(QString, place);
    TestServer safe;
    TestServer open(TestServer::Scheme::Http);
    place.replace(QStringLiteral("SAME"), QString::number(m_world->server.port()))
        .replace(QStringLiteral("SAFE"), QString::number(safe.port()))
        .replace(QStringLiteral("OPEN"), QString::number(open.port()));
    m_world->answerLogin(TestReply::whole({}, status, {{"Location", place.toLatin1()}}));
    m_world->login(QStringLiteral("wren"), QStringLiteral("topsecret"));
    QTRY_COMPARE(m_world->status(), NoConnection);
    QVERIFY(m_world->view->isPlayButtonEnabled());
    QCOMPARE(m_world->logLines(), logged(QStringLiteral("The network connection was lost.")));
    QCOMPARE(m_world->requestCount("/login/"), 1);
    QCOMPARE(m_world->server.receivedBytes().count("topsecret"), 1);
    QCOMPARE(safe.receivedBytes() + open.receivedBytes(), QByteArray());
}

QUELLMOOR_TEST(TestLoginReplies, "LoginReplies")
#include "tst_LoginReplies.moc"

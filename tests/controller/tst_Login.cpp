// The login: validation, request, every kind of reply, the second step.
#include "ControllerWorld.h"
#include "TestMain.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

using Environment = std::optional<QString>;
Q_DECLARE_METATYPE(Environment)
Q_DECLARE_METATYPE(TestReply)

namespace {

const auto Contacting = QStringLiteral("Contacting account server...");
const auto NoConnection = QStringLiteral("900: Couldn't connect to the account server.");

QJsonObject reply(const QJsonValue &status, const QString &message = QStringLiteral("Hello"))
{
    return {{QStringLiteral("status"), status}, {QStringLiteral("message"), message}};
}

QByteArrayList sortedFields(const QByteArray &body)
{
    QByteArrayList fields = body.split('&');
    std::sort(fields.begin(), fields.end());
    return fields;
}

} // namespace

class TestLogin : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_world.reset(); }

    void asksForWhatIsMissing_data();
    void asksForWhatIsMissing();
    void sendsNothingWhileThePlayButtonIsDisabled();
    void findsTheEnvironmentInTheUsername_data();
    void findsTheEnvironmentInTheUsername();
    void setsTheEnvironmentBeforeTheReply();
    void postsTheThreeFieldsAsTyped();
    void showsWhatTheServerAnswers_data();
    void showsWhatTheServerAnswers();
    void tellsWhenTheServerCannotBeReached();
    void refusesTheCertificateOfAnotherHost();
    void waitsForASlowServerAndAsksItOnce();
    void takesAVeryLongReplyForWhatItIs();
    void startsTheUpdateAfterASuccess();
    void fetchesTheManifestOfTheEnvironment();
    void acceptsASuccessWithoutValues();
    void asksForTheTokenAndSendsItWithTheLogin();
    void forgetsTheLoginWhenTheTokenIsCancelled();
    void neverSendsThePasswordToAnotherOrigin_data();
    void neverSendsThePasswordToAnotherOrigin();
    void logsInWithTheStoredAccountAfterAFinger();
    void sendsAnEmptyLoginWhenTheFingerIsRefused();
    void offersToRememberTheAccountAfterASuccess();
    void keepsSecretsOutOfTheLog();

private:
    QByteArray lastLoginBody() const;

    std::unique_ptr<ControllerWorld> m_world;
};

void TestLogin::init()
{
    m_world = std::make_unique<ControllerWorld>();
    m_world->window.show();
    m_world->controller->viewDidLoad();
    QVERIFY(QTest::qWaitForWindowActive(&m_world->window));
    QTRY_COMPARE(m_world->requestCount("/mac/patcher.json"), 1);
}

QByteArray TestLogin::lastLoginBody() const
{
    QByteArray body;
    const auto requests = m_world->server.requests();
    for (const TestRequest &request : requests) {
        if (request.target == "/login/")
            body = request.body;
    }
    return body;
}

void TestLogin::asksForWhatIsMissing_data()
{
    QTest::addColumn<QString>("username");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("status");
    QTest::addColumn<QString>("focus");
    QTest::newRow("both") << QString() << QString()
                          << QStringLiteral("You must enter a Username and Password.") << QString();
    QTest::newRow("password") << QStringLiteral("x") << QString()
                              << QStringLiteral("You must enter a Password.")
                              << QStringLiteral("passwordField");
    QTest::newRow("username") << QString() << QStringLiteral("x")
                              << QStringLiteral("You must enter a Username.")
                              << QStringLiteral("accountIDField");
}

void TestLogin::asksForWhatIsMissing()
{
    QFETCH(QString, username);
    QFETCH(QString, password);
    QFETCH(QString, status);
    QFETCH(QString, focus);
    m_world->login(username, password);
    QTRY_COMPARE(m_world->status(), status);
    if (!focus.isEmpty()) {
        QVERIFY(QApplication::focusWidget());
        QCOMPARE(QApplication::focusWidget()->objectName(), focus);
    }
    QCOMPARE(m_world->requestCount("/login/"), 0);
    QVERIFY(m_world->view->isPlayButtonEnabled());
}

void TestLogin::sendsNothingWhileThePlayButtonIsDisabled()
{
    m_world->view->setPlayButtonEnabled(false);
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    m_world->login({}, {});
    QCoreApplication::processEvents();
    QCOMPARE(m_world->status(), QStringLiteral("Login"));
    QCOMPARE(m_world->requestCount("/login/"), 0);
}

void TestLogin::findsTheEnvironmentInTheUsername_data()
{
    QTest::addColumn<QString>("username");
    QTest::addColumn<Environment>("environment");
    QTest::newRow("none") << QStringLiteral("pat") << Environment();
    QTest::newRow("one") << QStringLiteral("pat@test") << Environment(QStringLiteral("test"));
    QTest::newRow("trimmed") << QStringLiteral("pat@ dev \n") << Environment(QStringLiteral("dev"));
    QTest::newRow("empty") << QStringLiteral("pat@") << Environment(QString());
    QTest::newRow("two") << QStringLiteral("a@b@c") << Environment();
    QTest::newRow("nothing before") << QStringLiteral("@qa") << Environment(QStringLiteral("qa"));
    QTest::newRow("no name") << QString() << Environment();
}

void TestLogin::findsTheEnvironmentInTheUsername()
{
    QFETCH(QString, username);
    QFETCH(Environment, environment);
    QCOMPARE(ViewController::environmentFromUsername(username), environment);
}

void TestLogin::setsTheEnvironmentBeforeTheReply()
{
    m_world->answerLogin(TestReply::stalled("{}"));
    m_world->login(QStringLiteral("pat@qa"), QStringLiteral("secret"));
    QCOMPARE(m_world->controller->currentEnvironment(), Environment(QStringLiteral("qa")));
    QVERIFY(!m_world->view->isPlayButtonEnabled());
    QTRY_COMPARE(m_world->status(), Contacting);
    QVERIFY(m_world->server.waitForWaiting());
    m_world->server.release();
    QTRY_VERIFY(m_world->view->isPlayButtonEnabled());
}

void TestLogin::postsTheThreeFieldsAsTyped()
{
    m_world->answerLogin(reply(12));
    m_world->login(QStringLiteral("pat@qa"), QStringLiteral("p w&=+é"));
    QTRY_COMPARE(m_world->requestCount("/login/"), 1);
    // The "&" and "=" of the password go out as they are and make a field of their own.
    QCOMPARE(sortedFields(lastLoginBody()),
             QByteArrayList({"=+%C3%A9", "gtoken=", "password=p%20w", "username=pat@qa"}));
}

void TestLogin::showsWhatTheServerAnswers_data()
{
    QTest::addColumn<TestReply>("answer");
    QTest::addColumn<QString>("status");
    const auto json = [](const QByteArray &text) { return TestReply::whole(text); };
    QTest::newRow("3") << json(R"({"status":3,"message":"Enter code"})")
                       << QStringLiteral("503: Enter code");
    QTest::newRow("12") << json(R"({"status":12,"message":"Banned"})")
                        << QStringLiteral("5012: Banned");
    QTest::newRow("a text") << json(R"({"status":"12","message":"Banned"})")
                            << QStringLiteral("5012: Banned");
    QTest::newRow("a text that begins with a number")
        << json(R"({"status":" 12x","message":"Banned"})") << QStringLiteral("5012: Banned");
    QTest::newRow("a text without a number")
        << json(R"({"status":"no","message":"Banned"})") << QStringLiteral("500: Banned");
    QTest::newRow("a fraction") << json(R"({"status":12.9,"message":"Banned"})")
                                << QStringLiteral("5012: Banned");
    QTest::newRow("negative") << json(R"({"status":-1,"message":"Odd"})")
                              << QStringLiteral("50-1: Odd");
    QTest::newRow("beyond 64 bits")
        << json(R"({"status":1e300,"message":"Odd"})") << QStringLiteral("500: Odd");
    QTest::newRow("a large whole number") << json(R"({"status":9007199254740993,"message":"Odd"})")
                                          << QStringLiteral("509007199254740993: Odd");
    QTest::newRow("true") << json(R"({"status":true,"message":"Odd"})")
                          << QStringLiteral("501: Odd");
    QTest::newRow("no message") << json(R"({"status":4})") << QStringLiteral("504: (null)");
    QTest::newRow("a message with a format in it")
        << json(R"({"status":4,"message":"%1 %s %@"})") << QStringLiteral("504: %1 %s %@");
    QTest::newRow("500 with JSON")
        << TestReply::whole(R"({"status":9,"message":"Down"})", 500) << QStringLiteral("509: Down");
    QTest::newRow("not JSON") << json("<html>") << Contacting;
    QTest::newRow("empty") << json("") << Contacting;
    QTest::newRow("an array") << json("[7]") << Contacting;
    QTest::newRow("no status") << json(R"({"message":"Hello"})") << Contacting;
    QTest::newRow("a null status") << json(R"({"status":null})") << Contacting;
    QTest::newRow("a status of another type") << json(R"({"status":[7]})") << Contacting;
    QTest::newRow("reset") << TestReply::reset("{}", 0) << NoConnection;
    QTest::newRow("cut") << TestReply::cut(R"({"status":4,"message":"x"})", 5) << NoConnection;
}

void TestLogin::showsWhatTheServerAnswers()
{
    QFETCH(TestReply, answer);
    QFETCH(QString, status);
    m_world->answerLogin(answer);
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_VERIFY(m_world->view->isPlayButtonEnabled());
    QCoreApplication::processEvents();
    QCOMPARE(m_world->status(), status);
    QVERIFY(m_world->isShown("accountIDField"));
    const bool isLogged = status == NoConnection;
    QStringList lines = m_world->log.lines();
    lines.removeIf(
        [](const QString &line) { return line.contains(QStringLiteral("Cannot list")); });
    QCOMPARE(!lines.isEmpty(), isLogged);
}

void TestLogin::tellsWhenTheServerCannotBeReached()
{
    m_world->configuration.accountHost = QStringLiteral("account.localhost:1");
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_COMPARE(m_world->status(), NoConnection);
    QVERIFY(m_world->view->isPlayButtonEnabled());
}

void TestLogin::refusesTheCertificateOfAnotherHost()
{
    TestServer impostor(Certificates::shared().otherHost());
    m_world->configuration.accountHost =
        QStringLiteral("account.localhost:%1").arg(impostor.port());
    m_world->login(QStringLiteral("wren"), QStringLiteral("topsecret"));
    QTRY_COMPARE(m_world->status(), NoConnection);
    QVERIFY(m_world->view->isPlayButtonEnabled());
    QVERIFY(!impostor.receivedBytes().contains("topsecret"));
}

void TestLogin::waitsForASlowServerAndAsksItOnce()
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
}

void TestLogin::takesAVeryLongReplyForWhatItIs()
{
    m_world->answerLogin(TestReply::whole(QByteArray(64 * 1024 * 1024, 'x')));
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_VERIFY_WITH_TIMEOUT(m_world->view->isPlayButtonEnabled(), 30000);
    QCOMPARE(m_world->status(), Contacting);
}

void TestLogin::startsTheUpdateAfterASuccess()
{
    m_world->answerLogin(QJsonObject{{QStringLiteral("status"), QStringLiteral("7")},
                                     {QStringLiteral("message"), QStringLiteral("Welcome")},
                                     {QStringLiteral("token"), QStringLiteral("cookie")},
                                     {QStringLiteral("gameserver"), QStringLiteral("g:1")}});
    m_world->server.route("/mac/patcher.json", TestReply::stalled("{}"));
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QVERIFY(m_world->server.waitForWaiting());
    QTRY_COMPARE(m_world->status(), QStringLiteral("Checking for updates..."));
    QTRY_VERIFY(!m_world->isShown("accountIDField"));
    QVERIFY(m_world->isShown("swordsmenImage") && m_world->isShown("patcherProgressBar"));
    QVERIFY(!m_world->view->isPlayButtonEnabled());
    QCOMPARE(m_world->userDefaults->string(QStringLiteral("prevUser")), QStringLiteral("wren"));
    QTRY_COMPARE(UserDefaults(m_world->folder.path(QStringLiteral("settings.sqlite")))
                     .string(QStringLiteral("prevUser")),
                 QStringLiteral("wren"));
    QCOMPARE(m_world->controller->playCookie(), QStringLiteral("cookie"));
    QCOMPARE(m_world->controller->gameserver(), QStringLiteral("g:1"));
}

void TestLogin::fetchesTheManifestOfTheEnvironment()
{
    m_world->answerLogin(reply(7));
    m_world->login(QStringLiteral("pat@qa"), QStringLiteral("secret"));
    QTRY_VERIFY(
        m_world->requests().contains(QStringLiteral("GET download-qa.localhost/mac/patcher.json")));
}

void TestLogin::acceptsASuccessWithoutValues()
{
    m_world->answerLogin(reply(7));
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_VERIFY(!m_world->isShown("accountIDField"));
    QVERIFY(!m_world->controller->playCookie() && !m_world->controller->gameserver());
}

void TestLogin::asksForTheTokenAndSendsItWithTheLogin()
{
    m_world->answerLogin(reply(3, QStringLiteral("Enter code")));
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_COMPARE(m_world->alerts.sheets.size(), 1);
    const auto sheet = m_world->alerts.sheets.constFirst();
    QCOMPARE(sheet.alert.messageText, QStringLiteral("Two-step Authentication"));
    QCOMPARE(sheet.alert.informativeText, QStringLiteral("503: Enter code"));
    QCOMPARE(sheet.alert.buttons,
             QStringList({QStringLiteral("Confirm"), QStringLiteral("Cancel")}));
    QVERIFY(sheet.field && sheet.field->width == 100 && sheet.field->height == 25);
    QVERIFY(m_world->view->isPlayButtonEnabled());

    m_world->answerLogin(reply(12));
    m_world->view->setPlayButtonEnabled(false); // does not keep the second step back
    sheet.completion(AlertPresenter::FirstButtonReturn, QStringLiteral("123456"));
    QTRY_COMPARE(m_world->requestCount("/login/"), 2);
    QCOMPARE(sortedFields(lastLoginBody()),
             QByteArrayList({"gtoken=123456", "password=secret", "username=wren"}));
}

void TestLogin::forgetsTheLoginWhenTheTokenIsCancelled()
{
    m_world->answerLogin(reply(3));
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_COMPARE(m_world->alerts.sheets.size(), 1);
    m_world->alerts.sheets.constFirst().completion(AlertPresenter::FirstButtonReturn + 1,
                                                   QStringLiteral("123456"));
    QCoreApplication::processEvents();
    QCOMPARE(m_world->requestCount("/login/"), 1);
    QVERIFY(m_world->view->isPlayButtonEnabled());
}

void TestLogin::neverSendsThePasswordToAnotherOrigin_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {301, 302, 303, 307, 308})
        QTest::addRow("%d", status) << status;
}

void TestLogin::neverSendsThePasswordToAnotherOrigin()
{
    QFETCH(int, status);
    TestServer other;
    m_world->answerLogin(TestReply::redirect(other.url("/login/"), status));
    m_world->login(QStringLiteral("wren"), QStringLiteral("topsecret"));
    QTRY_COMPARE(m_world->status(), NoConnection);
    QVERIFY(!other.receivedBytes().contains("topsecret"));
    QCOMPARE(other.requests().size(), 0);
}

void TestLogin::logsInWithTheStoredAccountAfterAFinger()
{
    m_world->biometrics.evaluability.isPossible = true;
    m_world->localAuthentication->saveUsername(QStringLiteral("wren"), QStringLiteral("secret"));
    m_world->answerLogin(reply(12));
    m_world->login({}, {});
    QCOMPARE(m_world->biometrics.reasons, QStringList{QStringLiteral("Login to Quellmoor")});
    QCOMPARE(m_world->requestCount("/login/"), 0);
    m_world->biometrics.replies.front()(true);
    QTRY_COMPARE(m_world->requestCount("/login/"), 1);
    QCOMPARE(m_world->view->accountIDField()->stringValue(), QStringLiteral("wren"));
    QVERIFY(lastLoginBody().contains("password=secret"));
}

void TestLogin::sendsAnEmptyLoginWhenTheFingerIsRefused()
{
    m_world->biometrics.evaluability.isPossible = true;
    m_world->localAuthentication->saveUsername(QStringLiteral("wren"), QStringLiteral("secret"));
    m_world->answerLogin(reply(5, QStringLiteral("Who are you?")));
    m_world->login({}, {});
    m_world->biometrics.replies.front()(false);
    QTRY_COMPARE(m_world->status(), QStringLiteral("505: Who are you?"));
    QCOMPARE(sortedFields(lastLoginBody()), QByteArrayList({"gtoken=", "password=", "username="}));
}

void TestLogin::offersToRememberTheAccountAfterASuccess()
{
    m_world->biometrics.evaluability.isPossible = true;
    m_world->answerLogin(reply(7));
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_COMPARE(m_world->alerts.modalAlerts.size(), 1);
    QTRY_VERIFY(m_world->localAuthentication->isTouchIDEnabled());
    QVERIFY(m_world->userDefaults->data(QStringLiteral("keychain-Item-Data-Key")));
}

void TestLogin::keepsSecretsOutOfTheLog()
{
    m_world->answerLogin(TestReply::cut(R"({"status":7,"token":"cookie-secret"})", 20));
    m_world->login(QStringLiteral("wren"), QStringLiteral("password-secret"));
    QTRY_COMPARE(m_world->status(), NoConnection);
    QCOMPARE(m_world->log.lines().filter(QStringLiteral("secret")), QStringList());
}

QUELLMOOR_TEST(TestLogin, "Login")
#include "tst_Login.moc"

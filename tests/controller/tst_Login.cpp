// The login: validation, request, success, the second step.
#include "ControllerWorld.h"
#include "TestMain.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTest>

using Environment = std::optional<QString>;
Q_DECLARE_METATYPE(Environment)

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
    void startsTheUpdateAfterASuccess();
    void fetchesTheManifestOfTheEnvironment();
    void asksForTheTokenAndSendsItWithTheLogin();
    void forgetsTheLoginWhenTheTokenIsCancelled();
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

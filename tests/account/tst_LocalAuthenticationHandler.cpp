#include "FakeAlertPresenter.h"
#include "FakeBiometricContext.h"
#include "FatalCheck.h"
#include "LogCapture.h"
#include "TestMain.h"
#include "account/KeychainItem.h"
#include "account/LocalAuthenticationHandler.h"

#include <QTemporaryDir>
#include <QTest>
#include <QTranslator>

#include <thread>

class TestLocalAuthenticationHandler : public QObject
{
    Q_OBJECT

private slots:
    void startsNeitherAskedNorEnabled();
    void offersInTheFixedWords();
    void passesEveryTextThroughTheLocalisation();
    void keepsTheAnswerToTheOffer_data();
    void keepsTheAnswerToTheOffer();
    void neverOffersTwice_data();
    void neverOffersTwice();
    void storesNothingBeforeTheOfferIsAnswered();
    void storesTheAccountWhereFingersCanBeRead();
    void onlyLogsWhereFingersCannotBeRead();
    void replacesTheStoredAccount();
    void answersWhetherFingersCanBeRead_data();
    void answersWhetherFingersCanBeRead();
    void givesTwoEmptyTextsAtOnceWhereFingersCannotBeRead();
    void givesEmptyTextsOnTheAnsweringThread_data();
    void givesEmptyTextsOnTheAnsweringThread();
    void givesTheStoredAccountOnTheMainThread();
    void asksForAFingerWithTheReason();
    void resetsToNeverAskedWithAnEmptyAccount();
    void keepsTheAccountInAResetWhereFingersCannotBeRead();
    void resetsAtTheNextTurnOfTheMainLoop();
    void offersAgainAfterAReset();
    void sharesTheInstalledHandler();
    void stopsWhenNoHandlerIsInstalled();
    void writesADebugTextAsItIs();
};

namespace {

const auto ItemDataKey = QStringLiteral("keychain-Item-Data-Key");
const auto EnabledKey = QStringLiteral("touchID-Enabled-Key");
const auto HasAskedKey = QStringLiteral("has-Asked-User-For-TouchID");
const auto Name = QStringLiteral("ann@qa");
const auto Password = QStringLiteral(u"hunter2 \u00e4");

// A handler with all that it needs. What is stored is always read from the disk again.
struct Fixture
{
    QTemporaryDir folder;
    QString path = folder.filePath(QStringLiteral("settings.sqlite"));
    UserDefaults userDefaults{path};
    FakeBiometricContext context;
    FakeAlertPresenter alerts;
    LocalAuthenticationHandler handler{context, userDefaults, alerts};

    [[nodiscard]] QString stored() const
    {
        const UserDefaults disk(path);
        const auto item = disk.data(ItemDataKey) ? KeychainItem::unarchive(*disk.data(ItemDataKey))
                                                 : std::nullopt;
        return item ? item->username() + QLatin1Char('/') + item->password() : QString();
    }

    // asked, enabled; "-" for a key that is not there.
    [[nodiscard]] QString flags() const
    {
        const UserDefaults disk(path);
        QStringList flags;
        for (const QString &key : {HasAskedKey, EnabledKey})
            flags += !disk.contains(key) ? QStringLiteral("-")
                     : disk.boolean(key) ? QStringLiteral("yes")
                                         : QStringLiteral("no");
        return flags.join(QLatin1Char(' '));
    }
};

// One answer of loadCredentials(), and where it came.
struct Answer
{
    int calls = 0;
    std::thread::id thread;
    QString text;

    LocalAuthenticationHandler::Completion completion()
    {
        return [this](const QString &username, const QString &password) {
            ++calls;
            thread = std::this_thread::get_id();
            text = username + QLatin1Char('/') + password;
        };
    }
};

std::thread::id replyOnWorker(const FakeBiometricContext &context, bool isOwner)
{
    std::thread worker([&context, isOwner] { context.replies.back()(isOwner); });
    const std::thread::id identifier = worker.get_id();
    worker.join();
    return identifier;
}

class Shouting final : public QTranslator
{
public:
    QString translate(const char *context, const char *source, const char *, int) const override
    {
        return qstrcmp(context, "Alerts") == 0
                   ? QLatin1Char('<') + QString::fromUtf8(source) + QLatin1Char('>')
                   : QString();
    }
    [[nodiscard]] bool isEmpty() const override { return false; }
};

QStringList textsOf(const Alert &alert)
{
    return QStringList{alert.messageText, alert.informativeText} + alert.buttons;
}

} // namespace

void TestLocalAuthenticationHandler::startsNeitherAskedNorEnabled()
{
    const Fixture fixture;
    QVERIFY(!fixture.handler.isTouchIDEnabled());
    QVERIFY(!fixture.handler.hasAskedUserForTouchID());
}

void TestLocalAuthenticationHandler::offersInTheFixedWords()
{
    Fixture fixture;
    fixture.handler.askUserToEnableTouchID();
    QCOMPARE(fixture.alerts.modalAlerts.size(), 1);
    QCOMPARE(textsOf(fixture.alerts.modalAlerts.first()),
             QStringList({QStringLiteral("Enable Touch ID"),
                          QStringLiteral("Use Touch ID to login to  Quellmoor."),
                          QStringLiteral("Enable"), QStringLiteral("Cancel")}));
}

void TestLocalAuthenticationHandler::passesEveryTextThroughTheLocalisation()
{
    Shouting translator;
    QVERIFY(QCoreApplication::installTranslator(&translator));
    Fixture fixture;
    fixture.handler.askUserToEnableTouchID();
    fixture.handler.resetTouchID();
    QTRY_COMPARE(fixture.alerts.modalAlerts.size(), 2);
    fixture.handler.loadCredentials({});
    QCoreApplication::removeTranslator(&translator);
    QCOMPARE(textsOf(fixture.alerts.modalAlerts.first()),
             QStringList({QStringLiteral("<Enable Touch ID>"),
                          QStringLiteral("<Use Touch ID to login to > Quellmoor."),
                          QStringLiteral("<Enable>"), QStringLiteral("<Cancel>")}));
    QCOMPARE(textsOf(fixture.alerts.modalAlerts.last()),
             QStringList({QStringLiteral("<Touch ID Has Been Reset>"),
                          QStringLiteral("<To setup Touch ID again login to your account with the "
                                         "correct username and password and select Enable.>"),
                          QStringLiteral("<Close>")}));
    QCOMPARE(fixture.context.reasons, QStringList{QStringLiteral("<Login to Quellmoor>")});
}

void TestLocalAuthenticationHandler::keepsTheAnswerToTheOffer_data()
{
    QTest::addColumn<int>("response");
    QTest::addColumn<bool>("isEnabled");
    QTest::newRow("enable") << 1000 << true;
    QTest::newRow("cancel") << 1001 << false;
    QTest::newRow("a stopped alert") << 0 << false;
    QTest::newRow("a code that is no button") << -1000 << false;
}

void TestLocalAuthenticationHandler::keepsTheAnswerToTheOffer()
{
    QFETCH(int, response);
    QFETCH(bool, isEnabled);
    Fixture fixture;
    fixture.alerts.response = response;
    QCOMPARE(fixture.handler.askUserToEnableTouchID(), isEnabled);
    QCOMPARE(fixture.flags(), isEnabled ? QStringLiteral("yes yes") : QStringLiteral("yes no"));
    QCOMPARE(fixture.handler.isTouchIDEnabled(), isEnabled);
    QVERIFY(fixture.handler.hasAskedUserForTouchID());
}

void TestLocalAuthenticationHandler::neverOffersTwice_data()
{
    QTest::addColumn<bool>("isEnabled");
    QTest::newRow("enabled") << true;
    QTest::newRow("declined") << false;
}

void TestLocalAuthenticationHandler::neverOffersTwice()
{
    QFETCH(bool, isEnabled);
    Fixture fixture;
    fixture.handler.setHasAskedUserForTouchID(true);
    fixture.handler.setTouchID(isEnabled);
    // The opposite of what is stored, in case it is asked for all the same.
    fixture.alerts.response = isEnabled ? 1001 : 1000;
    QCOMPARE(fixture.handler.askUserToEnableTouchID(), isEnabled);
    QCOMPARE(fixture.alerts.modalAlerts.size(), 0);
}

void TestLocalAuthenticationHandler::storesNothingBeforeTheOfferIsAnswered()
{
    Fixture fixture;
    QString flags;
    fixture.alerts.onModal = [&] { flags = fixture.flags(); };
    fixture.handler.askUserToEnableTouchID();
    QCOMPARE(flags, QStringLiteral("- -"));
}

void TestLocalAuthenticationHandler::storesTheAccountWhereFingersCanBeRead()
{
    Fixture fixture;
    fixture.handler.setupWithUsername(Name, Password);
    QCOMPARE(fixture.stored(), QString(Name + QLatin1Char('/') + Password));
    QCOMPARE(fixture.flags(), QStringLiteral("- yes"));
}

void TestLocalAuthenticationHandler::onlyLogsWhereFingersCannotBeRead()
{
    Fixture fixture;
    fixture.context.evaluability = {};
    const LogCapture log;
    fixture.handler.setupWithUsername(Name, Password);
    QCOMPARE(log.lines(), QStringList{QStringLiteral("TouchID is not available.")});
    QCOMPARE(fixture.stored(), QString());
    QCOMPARE(fixture.flags(), QStringLiteral("- -"));
}

void TestLocalAuthenticationHandler::replacesTheStoredAccount()
{
    Fixture fixture;
    fixture.handler.saveUsername(QStringLiteral("bob"), QStringLiteral("old"));
    fixture.handler.saveUsername(Name, Password);
    QCOMPARE(fixture.stored(), QString(Name + QLatin1Char('/') + Password));
}

void TestLocalAuthenticationHandler::answersWhetherFingersCanBeRead_data()
{
    QTest::addColumn<bool>("isPossible");
    QTest::addColumn<QString>("error");
    QTest::addColumn<QString>("exception");
    QTest::addColumn<bool>("answer");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("a finger is enrolled") << true << ""
                                          << "" << true << QStringList();
    QTest::newRow("no such thing on this system") << false << ""
                                                  << "" << false << QStringList();
    QTest::newRow("no finger is enrolled")
        << false << "No identities are enrolled."
        << "" << false
        << QStringList{QStringLiteral("+[ErrorHandler log:] [line 14]: No identities are "
                                      "enrolled.")};
    QTest::newRow("the system throws")
        << true << ""
        << "unrecognized selector" << false
        << QStringList{QStringLiteral("+[ErrorHandler handle:] [line 18]: unrecognized selector")};
}

void TestLocalAuthenticationHandler::answersWhetherFingersCanBeRead()
{
    QFETCH(bool, isPossible);
    QFETCH(QString, error);
    QFETCH(QString, exception);
    QFETCH(bool, answer);
    QFETCH(QStringList, lines);
    Fixture fixture;
    fixture.context.evaluability.isPossible = isPossible;
    if (!error.isEmpty())
        fixture.context.evaluability.error = Error{error, -7};
    if (!exception.isEmpty())
        fixture.context.evaluability.exception = Exception{QStringLiteral("Name"), exception};
    const LogCapture log;
    QCOMPARE(fixture.handler.canEvaluatePolicy(), answer);
    QCOMPARE(log.lines(), lines);
}

void TestLocalAuthenticationHandler::givesTwoEmptyTextsAtOnceWhereFingersCannotBeRead()
{
    Fixture fixture;
    fixture.handler.saveUsername(Name, Password);
    fixture.context.evaluability = {};
    Answer answer;
    fixture.handler.loadCredentials(answer.completion());
    QCOMPARE(answer.calls, 1);
    QCOMPARE(answer.text, QStringLiteral("/"));
    QVERIFY(answer.thread == std::this_thread::get_id());
    QCOMPARE(fixture.context.reasons, QStringList());
}

void TestLocalAuthenticationHandler::givesEmptyTextsOnTheAnsweringThread_data()
{
    QTest::addColumn<bool>("isOwner");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<qsizetype>("lines");
    QTest::newRow("a refused finger")
        << false << KeychainItem(Name, Password).archivedData() << qsizetype(0);
    QTest::newRow("nothing stored") << true << QByteArray() << qsizetype(0);
    QTest::newRow("damaged credentials")
        << true << KeychainItem(Name, Password).archivedData().chopped(3) << qsizetype(1);
}

void TestLocalAuthenticationHandler::givesEmptyTextsOnTheAnsweringThread()
{
    QFETCH(bool, isOwner);
    QFETCH(QByteArray, data);
    QFETCH(qsizetype, lines);
    Fixture fixture;
    if (!data.isEmpty())
        fixture.userDefaults.set(ItemDataKey, data);
    Answer answer;
    const LogCapture log;
    fixture.handler.loadCredentials(answer.completion());
    QCOMPARE(answer.calls, 0);
    const std::thread::id worker = replyOnWorker(fixture.context, isOwner);
    QCOMPARE(answer.calls, 1);
    QCOMPARE(answer.text, QStringLiteral("/"));
    QVERIFY(answer.thread == worker);
    QCOMPARE(log.lines().size(), lines);
    QVERIFY(log.lines().filter(QStringLiteral("hunter")).isEmpty());
}

void TestLocalAuthenticationHandler::givesTheStoredAccountOnTheMainThread()
{
    Fixture fixture;
    fixture.handler.saveUsername(Name, Password);
    Answer answer;
    fixture.handler.loadCredentials(answer.completion());
    replyOnWorker(fixture.context, true);
    QCOMPARE(answer.calls, 0);
    QTRY_COMPARE(answer.calls, 1);
    QCOMPARE(answer.text, QString(Name + QLatin1Char('/') + Password));
    QVERIFY(answer.thread == std::this_thread::get_id());
}

void TestLocalAuthenticationHandler::asksForAFingerWithTheReason()
{
    Fixture fixture;
    fixture.handler.loadCredentials({});
    QCOMPARE(fixture.context.reasons, QStringList{QStringLiteral("Login to Quellmoor")});
}

void TestLocalAuthenticationHandler::resetsToNeverAskedWithAnEmptyAccount()
{
    Fixture fixture;
    fixture.handler.askUserToEnableTouchID();
    fixture.handler.saveUsername(Name, Password);
    fixture.alerts.modalAlerts.clear();
    QStringList whileShown;
    fixture.alerts.onModal = [&] { whileShown = {fixture.flags(), fixture.stored()}; };
    fixture.handler.resetTouchID();
    QTRY_COMPARE(fixture.alerts.modalAlerts.size(), 1);
    QCOMPARE(whileShown, QStringList({QStringLiteral("no no"), QStringLiteral("/")}));
    QCOMPARE(textsOf(fixture.alerts.modalAlerts.first()),
             QStringList({QStringLiteral("Touch ID Has Been Reset"),
                          QStringLiteral("To setup Touch ID again login to your account with the "
                                         "correct username and password and select Enable."),
                          QStringLiteral("Close")}));
}

void TestLocalAuthenticationHandler::keepsTheAccountInAResetWhereFingersCannotBeRead()
{
    Fixture fixture;
    fixture.handler.saveUsername(Name, Password);
    fixture.context.evaluability = {};
    const LogCapture log;
    fixture.handler.resetTouchID();
    QTRY_COMPARE(fixture.alerts.modalAlerts.size(), 1);
    QCOMPARE(log.lines(), QStringList{QStringLiteral("TouchID is not available.")});
    QCOMPARE(fixture.stored(), QString(Name + QLatin1Char('/') + Password));
    QCOMPARE(fixture.flags(), QStringLiteral("no no"));
}

void TestLocalAuthenticationHandler::resetsAtTheNextTurnOfTheMainLoop()
{
    Fixture fixture;
    fixture.handler.setTouchID(true);
    fixture.handler.resetTouchID();
    QVERIFY(fixture.handler.isTouchIDEnabled());
    QCOMPARE(fixture.alerts.modalAlerts.size(), 0);
    QTRY_COMPARE(fixture.alerts.modalAlerts.size(), 1);
    QVERIFY(!fixture.handler.isTouchIDEnabled());
}

void TestLocalAuthenticationHandler::offersAgainAfterAReset()
{
    Fixture fixture;
    fixture.alerts.response = 1001;
    QVERIFY(!fixture.handler.askUserToEnableTouchID());
    fixture.handler.resetTouchID();
    QTRY_COMPARE(fixture.alerts.modalAlerts.size(), 2);
    fixture.alerts.response = 1000;
    QVERIFY(fixture.handler.askUserToEnableTouchID());
    QCOMPARE(fixture.alerts.modalAlerts.size(), 3);
}

void TestLocalAuthenticationHandler::sharesTheInstalledHandler()
{
    Fixture fixture;
    auto handler = std::make_unique<LocalAuthenticationHandler>(
        fixture.context, fixture.userDefaults, fixture.alerts);
    LocalAuthenticationHandler *const installed = handler.get();
    LocalAuthenticationHandler::install(std::move(handler));
    QCOMPARE(&LocalAuthenticationHandler::shared(), installed);
    LocalAuthenticationHandler::shared().setTouchID(true);
    QVERIFY(fixture.handler.isTouchIDEnabled());
    LocalAuthenticationHandler::install(nullptr);
}

void TestLocalAuthenticationHandler::stopsWhenNoHandlerIsInstalled()
{
    if (FatalCheck::isChild()) {
        LocalAuthenticationHandler::shared().setTouchID(true);
        return;
    }
    const auto outcome = FatalCheck::runChild("LocalAuthenticationHandler");
    QVERIFY(outcome.hasCrashed);
    QVERIFY(outcome.output.contains("No LocalAuthenticationHandler is installed."));
}

void TestLocalAuthenticationHandler::writesADebugTextAsItIs()
{
    const Fixture fixture;
    const LogCapture log;
    fixture.handler.debug(QStringLiteral("100% %@ %s"));
    QCOMPARE(log.lines(), QStringList{QStringLiteral("100% %@ %s")});
}

QUELLMOOR_TEST(TestLocalAuthenticationHandler, "LocalAuthenticationHandler")
#include "tst_LocalAuthenticationHandler.moc"

// Puts the launcher's window into each state that players meet and saves a picture of it:
//   gallery FOLDER [STATE...]
// The news come from the hosts that the program was built for. Run by scripts/gallery.
#include "FakeBiometricContext.h"
#include "RecordingWorkspace.h"
#include "account/LocalAuthenticationHandler.h"
#include "app/Configuration.h"
#include "platform/HttpClient.h"
#include "platform/UserDefaults.h"
#include "ui/AlertPanelPresenter.h"
#include "ui/CustomWindow.h"
#include "ui/FingerprintPrompt.h"
#include "ui/InterfaceLoader.h"
#include "ui/LauncherView.h"
#include "ui/NewsPage.h"
#include "ui/VARNOProgressView.h"

#include <QApplication>
#include <QDir>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>

#include <cstdio>
#include <map>

namespace {

constexpr int MillisecondsForThePage = 6000;
constexpr int QuietMilliseconds = 400;

// A window with all that it needs, none of which leaves the machine.
struct Scene
{
    explicit Scene(bool isOnline)
    {
        configuration = Configuration::compiledIn();
        if (!isOnline)
            configuration.accountHost = QStringLiteral("account.localhost:1");
        httpClient = makeHttpClient(configuration.extraCertificateFile);
        view = qobject_cast<LauncherView *>(InterfaceLoader().load(QStringLiteral("Launcher")));
        window.setContentView(view);
        alerts.setWindow(&window);
        view->setServices(
            {configuration, *httpClient, workspace, alerts, stored, [] {}, makeNewsPage});
        view->awakeFromNib();
        view->prepareForLogin();
        view->setServerVersion(QStringLiteral("7.3.0"));
        window.center();
        window.show();
    }

    void fill() const
    {
        view->accountIDField()->setStringValue(QStringLiteral("wren"));
        view->passwordField()->setStringValue(QStringLiteral("moorland-7"));
    }

    void show(double progress, const QString &status) const
    {
        view->hideLoginForm(true);
        view->patcherProgressBar()->setValue(progress);
        view->swordsmenImage()->setHidden(false);
        view->setStatus(status);
    }

    Configuration configuration;
    std::unique_ptr<HttpClient> httpClient;
    QTemporaryDir folder;
    UserDefaults userDefaults{folder.filePath(QStringLiteral("settings.sqlite"))};
    RecordingWorkspace workspace;
    AlertPanelPresenter alerts;
    FakeBiometricContext biometrics;
    LocalAuthenticationHandler stored{biometrics, userDefaults, alerts};
    FingerprintPrompt fingerprint;
    CustomWindow window{QRect(0, 0, 1, 1)};
    LauncherView *view = nullptr;
};

using Arrange = std::function<void(Scene &)>;

void openTwoStepSheet(Scene &scene)
{
    scene.fill();
    scene.view->setStatus(QStringLiteral("503: Enter your two-step token."));
    scene.alerts.beginSheet({QStringLiteral("Two-step Authentication"),
                             QStringLiteral("503: Enter your two-step token."),
                             {QStringLiteral("Confirm"), QStringLiteral("Cancel")}},
                            AlertTextField(), [](int, const QString &) {});
}

// What the launcher itself would show, once more for a look at it only.
void openOffer(Scene &scene)
{
    scene.show(0.0, QStringLiteral("Checking for updates..."));
    scene.alerts.beginSheet({QStringLiteral("Enable Touch ID"),
                             QStringLiteral("Use Touch ID to login to  Quellmoor."),
                             {QStringLiteral("Enable"), QStringLiteral("Cancel")}},
                            std::nullopt, [](int, const QString &) {});
}

void openReset(Scene &scene)
{
    scene.alerts.beginSheet(
        {QStringLiteral("Touch ID Has Been Reset"),
         QStringLiteral("To setup Touch ID again login to your account with the correct username "
                        "and password and select Enable."),
         {QStringLiteral("Close")}},
        std::nullopt, [](int, const QString &) {});
}

void askForFinger(Scene &scene)
{
    scene.fingerprint.setWindow(&scene.window);
    scene.fingerprint.show(QStringLiteral("Login to Quellmoor"), [] {});
}

const std::map<std::string, Arrange> &states()
{
    static const std::map<std::string, Arrange> all{
        {"01-empty-form", [](Scene &) {}},
        {"02-filled-form", [](Scene &scene) { scene.fill(); }},
        {"03-focus-by-keyboard",
         [](Scene &scene) {
             scene.fill();
             scene.view->passwordField()->becomeFirstResponder();
             QTest::keyClick(&scene.window, Qt::Key_Tab);
         }},
        {"04-contacting",
         [](Scene &scene) {
             scene.fill();
             scene.view->setPlayButtonEnabled(false);
             scene.view->setStatus(QStringLiteral("Contacting account server..."));
         }},
        {"05-wrong-password",
         [](Scene &scene) {
             scene.fill();
             scene.view->setStatus(QStringLiteral("504: The user name or the password is wrong."));
         }},
        {"06-two-step", openTwoStepSheet},
        {"07-checking",
         [](Scene &scene) { scene.show(0.0, QStringLiteral("Checking for updates...")); }},
        {"08-updating",
         [](Scene &scene) {
             scene.show(0.45, QStringLiteral("Updating file 3 of 12...\narchive_a.bin\n"
                                             "[4.2/18.0MB @ 1.5MB/s]"));
         }},
        {"09-writing",
         [](Scene &scene) {
             scene.show(0.0, QStringLiteral("Writing file 11 of 12\narchive_k.bin"));
         }},
        {"10-launching",
         [](Scene &scene) { scene.show(0.0, QStringLiteral("Launching the game(qa)...")); }},
        {"11-offline", [](Scene &) {}},
        {"12-long-message",
         [](Scene &scene) {
             scene.fill();
             scene.view->setStatus(
                 QStringLiteral("5013: The realm rests until Sunday 18:00 because the bridge over "
                                "the Quell is being rebuilt stone by stone; tickets, seasons and "
                                "everything you own stay as they are, and the ferry runs again "
                                "from Monday on. Thank you for your patience!"));
         }},
        {"13-right-to-left",
         [](Scene &scene) {
             scene.view->accountIDField()->setStringValue(QString::fromUtf8("שליו"));
             scene.view->setStatus(QString::fromUtf8("504: שם המשתמש או הסיסמה שגויים."));
         }},
        {"14-out-of-date",
         [](Scene &scene) {
             scene.show(0.0, QStringLiteral("Login"));
             scene.alerts.beginSheet(
                 {QStringLiteral("Launcher Update Required"),
                  QStringLiteral("There is a required update available for the launcher."),
                  {QStringLiteral("Update"), QStringLiteral("Exit Launcher")}},
                 std::nullopt, [](int, const QString &) {});
         }},
        {"15-fingerprint-offer", openOffer},
        {"16-fingerprint-question", askForFinger},
        {"17-fingerprint-retry",
         [](Scene &scene) {
             askForFinger(scene);
             scene.fingerprint.retry(
                 QStringLiteral("Put your finger on the middle of the reader."));
         }},
        {"18-fingerprint-reset", openReset},
    };
    return all;
}

// Nothing tells when the page, which other processes draw, is on the screen.
void letThePageCome(bool isFirst)
{
    QTest::qWait(isFirst ? MillisecondsForThePage : QuietMilliseconds * 5);
}

bool save(const std::string &name, const Arrange &arrange, const QDir &folder, bool isFirst)
{
    Scene scene(name != "11-offline");
    if (!QTest::qWaitForWindowActive(&scene.window))
        std::fputs("gallery: the window did not get the keyboard\n", stderr);
    letThePageCome(isFirst);
    arrange(scene);
    QTest::qWait(QuietMilliseconds);
    const QRect frame = scene.window.frameGeometry();
    const QPixmap picture =
        scene.window.screen()->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height());
    const QString path = folder.filePath(QString::fromStdString(name) + QStringLiteral(".png"));
    const bool isSaved = picture.save(path);
    std::printf("%s\n", qPrintable(path));
    return isSaved;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication application(argc, argv);
    QApplication::addLibraryPath(QStringLiteral(QUELLMOOR_PLUGIN_FOLDER));
    QApplication::setApplicationVersion(QStringLiteral("1.0.0"));
    QStringList wanted = QApplication::arguments().mid(1);
    if (wanted.isEmpty()) {
        std::fputs("usage: gallery FOLDER [STATE...]\n", stderr);
        return 64;
    }
    const QDir folder(wanted.takeFirst());
    folder.mkpath(QStringLiteral("."));
    bool isFirst = true;
    bool isWhole = true;
    for (const auto &[name, arrange] : states()) {
        if (!wanted.isEmpty() && !wanted.contains(QString::fromStdString(name)))
            continue;
        isWhole = save(name, arrange, folder, std::exchange(isFirst, false)) && isWhole;
    }
    return isWhole ? 0 : 1;
}

#include "app/WindowApplication.h"

#include "account/LocalAuthenticationHandler.h"
#include "app/Diagnostics.h"
#include "app/LauncherWindow.h"
#include "app/RecentLog.h"
#include "platform/ActivationPolicy.h"
#include "platform/Alerts.h"
#include "platform/BiometricContext.h"
#include "platform/DispatchQueue.h"
#include "platform/HttpClient.h"
#include "platform/ReachabilitySource.h"
#include "platform/Workspace.h"
#include "ui/LauncherMenu.h"
#include "ui/LauncherView.h"
#include "ui/NewsPage.h"
#include "ui/Typography.h"

#include <QApplication>
#include <QClipboard>
#include <QIcon>
#include <QToolTip>

namespace {

// The lowest part of the window is the shadow of its artwork.
constexpr int TouchBarGap = -14;

void terminate()
{
    DispatchQueue::main()->async([] { QCoreApplication::quit(); });
}

// From pictures of the sizes that desktops ask for.
QIcon windowIcon()
{
    QIcon icon;
    for (const int size : {16, 32, 48, 64, 128})
        icon.addFile(QStringLiteral(":/artwork/icons/quellmoor-%1.png").arg(size));
    return icon;
}

void dressToolTips()
{
    QPalette colors = QToolTip::palette();
    colors.setColor(QPalette::ToolTipBase, QColor::fromRgb(Palette::Peat));
    colors.setColor(QPalette::ToolTipText, QColor::fromRgb(Palette::Text));
    QToolTip::setPalette(colors);
    QToolTip::setFont(Typography::text(13));
}

} // namespace

WindowApplication::WindowApplication(const Configuration &configuration, const RecentLog &recentLog,
                                     std::unique_ptr<LauncherWindow> launcherWindow)
    : m_configuration(configuration),
      m_recentLog(recentLog),
      m_userDefaults(configuration.settingsFile()),
      m_httpClient(makeHttpClient(configuration.extraCertificateFile)),
      m_workspace(makeWorkspace()),
      m_activationPolicy(makeActivationPolicy()),
      m_reachability(makeReachabilityService()),
      m_biometrics(makeBiometricContext(&m_fingerprintPrompt)),
      m_launcherWindow(std::move(launcherWindow)),
      m_window(m_launcherWindow->window()),
      m_view(m_launcherWindow->view())
{
    LocalAuthenticationHandler::install(std::make_unique<LocalAuthenticationHandler>(
        *m_biometrics, m_userDefaults, m_alertPresenter));
    m_alertPresenter.setWindow(&m_window);
    m_fingerprintPrompt.setWindow(&m_window);
    m_view.setServices({m_configuration, *m_httpClient, *m_workspace, m_alertPresenter,
                        LocalAuthenticationHandler::shared(), terminate,
                        newsPages(*m_httpClient, m_configuration.extraCertificateFile)});
    m_controller = std::make_shared<ViewController>(
        m_view, ControllerServices{m_configuration, *m_httpClient, m_userDefaults, *m_workspace,
                                   *m_activationPolicy, m_alertPresenter,
                                   LocalAuthenticationHandler::shared(), m_timer, *m_reachability});
    dressToolTips();
    makeMenu();
    QApplication::setWindowIcon(windowIcon());
}

WindowApplication::~WindowApplication()
{
    m_controller.reset();
    LocalAuthenticationHandler::install(nullptr);
}

void WindowApplication::makeMenu()
{
    const auto *menu = new LauncherMenu(&m_window);
    QObject::connect(menu, &LauncherMenu::minimiseChosen, &m_view,
                     [this] { m_view.minimizePressed(nullptr); });
    QObject::connect(menu, &LauncherMenu::resetFingerprintLoginChosen, &m_view,
                     [this] { m_controller->enableTouchID(nullptr); });
    QObject::connect(menu, &LauncherMenu::copyDiagnosticsChosen, &m_view,
                     [this] { copyDiagnostics(); });
    QObject::connect(menu, &LauncherMenu::quitChosen, &m_view,
                     [this] { m_view.closePressed(nullptr); });
}

void WindowApplication::copyDiagnostics()
{
    QApplication::clipboard()->setText(Diagnostics::text(m_configuration, m_recentLog.lines()));
    Alert alert;
    alert.messageText = Alerts::tr("Diagnostics Copied");
    alert.informativeText = Alerts::tr("They are on the clipboard. Paste them into your message to "
                                       "support.");
    alert.buttons = {Alerts::tr("Close")};
    m_alertPresenter.runModal(alert);
}

void WindowApplication::start()
{
    m_controller->viewDidLoad();
    // After what the view has queued for itself, which takes the keyboard from the fields.
    DispatchQueue::main()->async([this, controller = m_controller] {
        controller->viewDidAppear();
        m_launcherWindow->letInputIn();
    });
}

void WindowApplication::showTouchBar()
{
    m_touchBarHost = makeTouchBarHost(m_window, TouchBarGap);
    m_touchBarHost->setTouchBar(m_controller->makeTouchBar());
}

void WindowApplication::comeForward()
{
    m_activationPolicy->setActivationPolicy(ActivationPolicy::Policy::Regular);
    m_activationPolicy->activateIgnoringOtherApps();
}

void WindowApplication::stop()
{
    m_touchBarHost.reset();
    m_controller->viewWillDisappear();
    m_window.hide();
    m_userDefaults.synchronize();
}

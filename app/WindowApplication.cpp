#include "app/WindowApplication.h"

#include "account/LocalAuthenticationHandler.h"
#include "platform/ActivationPolicy.h"
#include "platform/BiometricContext.h"
#include "platform/DispatchQueue.h"
#include "platform/HttpClient.h"
#include "platform/ReachabilitySource.h"
#include "platform/Workspace.h"
#include "ui/InterfaceLoader.h"
#include "ui/LauncherView.h"

#include <QApplication>

namespace {

// The content view gives the window its size.
constexpr QRect AnyFrame(0, 0, 1, 1);

void terminate()
{
    DispatchQueue::main()->async([] { QCoreApplication::quit(); });
}

} // namespace

WindowApplication::WindowApplication(const Configuration &configuration)
    : m_configuration(configuration),
      m_userDefaults(configuration.settingsFile()),
      m_httpClient(makeHttpClient(configuration.extraCertificateFile)),
      m_workspace(makeWorkspace()),
      m_activationPolicy(makeActivationPolicy()),
      m_reachability(makeReachabilityService()),
      m_biometrics(makeBiometricContext()),
      m_window(AnyFrame),
      m_view(loadView())
{
    LocalAuthenticationHandler::install(std::make_unique<LocalAuthenticationHandler>(
        *m_biometrics, m_userDefaults, m_alertPresenter));
    m_window.setContentView(&m_view);
    m_alertPresenter.setWindow(&m_window);
    m_view.setServices({m_configuration, *m_httpClient, *m_workspace, m_alertPresenter,
                        LocalAuthenticationHandler::shared(), terminate});
    m_view.awakeFromNib();
    m_controller = std::make_shared<ViewController>(
        m_view, ControllerServices{m_configuration, *m_httpClient, m_userDefaults, *m_workspace,
                                   *m_activationPolicy, m_alertPresenter,
                                   LocalAuthenticationHandler::shared(), m_timer, *m_reachability});
}

WindowApplication::~WindowApplication()
{
    m_controller.reset();
    LocalAuthenticationHandler::install(nullptr);
}

LauncherView &WindowApplication::loadView()
{
    auto view = ViewController::loadWithNibNamed(QStringLiteral("Launcher"),
                                                 LauncherView::staticMetaObject);
    if (!view)
        qFatal("the launcher's interface is not part of this program");
    return static_cast<LauncherView &>(*view.release()); // the window owns it from now on
}

void WindowApplication::start()
{
    m_controller->viewDidLoad();
    m_window.center();
    m_window.show();
    m_controller->viewDidAppear();
}

void WindowApplication::comeForward()
{
    m_activationPolicy->setActivationPolicy(ActivationPolicy::Policy::Regular);
    m_activationPolicy->activateIgnoringOtherApps();
}

void WindowApplication::stop()
{
    m_controller->viewWillDisappear();
    m_window.hide();
    m_userDefaults.synchronize();
}

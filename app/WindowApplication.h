#pragma once

#include "app/Configuration.h"
#include "controller/ViewController.h"
#include "platform/Timer.h"
#include "platform/UserDefaults.h"
#include "ui/AlertPanelPresenter.h"
#include "ui/CustomWindow.h"
#include "ui/FingerprintPrompt.h"

#include <memory>

class BiometricContext;
class LauncherWindow;
class RecentLog;
class TouchBarHost;

// The objects behind the launcher's window and who gets which of them, in the order of their lives:
// each may use those above it. Made after the application object, gone before it. Main thread only.
class WindowApplication
{
public:
    // Gives the window's view what it works with. The log must outlive it.
    WindowApplication(const Configuration &configuration, const RecentLog &recentLog,
                      std::unique_ptr<LauncherWindow> launcherWindow);
    ~WindowApplication();
    WindowApplication(const WindowApplication &) = delete;
    WindowApplication &operator=(const WindowApplication &) = delete;

    // Begins the controller's life.
    void start();
    // Shows the controller's Touch Bar, from then on until stop().
    void showTouchBar();
    // Brings the window to the front, as when a second launcher is started.
    void comeForward();
    // Ends the controller's life and saves the settings.
    void stop();

private:
    void makeMenu();
    void copyDiagnostics();

    const Configuration m_configuration;
    const RecentLog &m_recentLog;
    UserDefaults m_userDefaults;
    const std::unique_ptr<HttpClient> m_httpClient;
    const std::unique_ptr<Workspace> m_workspace;
    const std::unique_ptr<ActivationPolicy> m_activationPolicy;
    const std::unique_ptr<ReachabilityService> m_reachability;
    FingerprintPrompt m_fingerprintPrompt;
    const std::unique_ptr<BiometricContext> m_biometrics;
    AlertPanelPresenter m_alertPresenter;
    SystemTimer m_timer;
    const std::unique_ptr<LauncherWindow> m_launcherWindow;
    CustomWindow &m_window;
    LauncherView &m_view;
    std::shared_ptr<ViewController> m_controller;
    std::unique_ptr<TouchBarHost> m_touchBarHost; // none unless asked for
};

#pragma once

#include "app/Configuration.h"
#include "controller/ViewController.h"
#include "platform/Timer.h"
#include "platform/UserDefaults.h"
#include "ui/AlertPanelPresenter.h"
#include "ui/CustomWindow.h"

#include <memory>

class BiometricContext;
class SingleInstance;

// The objects behind the launcher's window and who gets which of them, in the order of their lives:
// each may use those above it. Made after the application object, gone before it. Main thread only.
class WindowApplication
{
public:
    explicit WindowApplication(const Configuration &configuration);
    ~WindowApplication();
    WindowApplication(const WindowApplication &) = delete;
    WindowApplication &operator=(const WindowApplication &) = delete;

    // Shows the window and begins the controller's life.
    void start();
    // Brings the window to the front, as when a second launcher is started.
    void comeForward();
    // Ends the controller's life and saves the settings.
    void stop();

private:
    [[nodiscard]] LauncherView &loadView();

    const Configuration m_configuration;
    UserDefaults m_userDefaults;
    const std::unique_ptr<HttpClient> m_httpClient;
    const std::unique_ptr<Workspace> m_workspace;
    const std::unique_ptr<ActivationPolicy> m_activationPolicy;
    const std::unique_ptr<ReachabilityService> m_reachability;
    const std::unique_ptr<BiometricContext> m_biometrics;
    AlertPanelPresenter m_alertPresenter;
    SystemTimer m_timer;
    CustomWindow m_window;
    LauncherView &m_view; // the window's
    std::shared_ptr<ViewController> m_controller;
};

#pragma once

#include <QString>
#include <QtPlugin>

#include <memory>

class InstanceLock;
class LauncherWindow;
class RecentLog;
struct Configuration;

// What works behind the launcher's window, from when it is made. Main thread only.
class Launcher
{
public:
    virtual ~Launcher() = default;
    // Ends the controller's life and saves the settings.
    virtual void stop() = 0;
};

// What the plugin "quellmoor-engine" has to offer. It is no part of the program, so that it and the
// libraries that it needs are loaded only once there is a window to look at. Main thread only.
class LauncherMaker
{
public:
    virtual ~LauncherMaker() = default;
    // For who did not get the lock, see SingleInstance::waitFor().
    [[nodiscard]] virtual bool waitFor(InstanceLock &lock) = 0;
    // The log must outlive the launcher. Whoever comes later brings it forward from then on.
    [[nodiscard]] virtual std::unique_ptr<Launcher> make(const Configuration &configuration,
                                                         const RecentLog &recentLog,
                                                         std::unique_ptr<LauncherWindow> window,
                                                         bool showsTouchBar) = 0;
};

// Both sides must be of one build: they know each other's classes.
#define LauncherMaker_iid "quellmoor.LauncherMaker/" QUELLMOOR_VERSION
Q_DECLARE_INTERFACE(LauncherMaker, LauncherMaker_iid)

#include "app/InstanceLock.h"
#include "app/Launcher.h"
#include "app/LauncherWindow.h"
#include "app/SingleInstance.h"
#include "app/WindowApplication.h"

namespace {

class WholeLauncher final : public Launcher
{
public:
    WholeLauncher(const Configuration &configuration, const RecentLog &recentLog,
                  std::unique_ptr<LauncherWindow> window, bool showsTouchBar)
        : m_application(configuration, recentLog, std::move(window)),
          m_instance(configuration.dataFolder)
    {
        m_instance.listen([this] { m_application.comeForward(); });
        m_application.start();
        if (showsTouchBar)
            m_application.showTouchBar();
    }

    void stop() override { m_application.stop(); }

private:
    WindowApplication m_application;
    SingleInstance m_instance;
};

class LauncherPlugin final : public QObject, public LauncherMaker
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID LauncherMaker_iid)
    Q_INTERFACES(LauncherMaker)

public:
    bool waitFor(InstanceLock &lock) override
    {
        return SingleInstance(lock.dataFolder()).waitFor(lock);
    }

    std::unique_ptr<Launcher> make(const Configuration &configuration, const RecentLog &recentLog,
                                   std::unique_ptr<LauncherWindow> window,
                                   bool showsTouchBar) override
    {
        return std::make_unique<WholeLauncher>(configuration, recentLog, std::move(window),
                                               showsTouchBar);
    }
};

} // namespace

#include "LauncherPlugin.moc"

#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/LauncherWindow.h"
#include "app/RecentLog.h"
#include "app/SingleInstance.h"
#include "app/Translations.h"
#include "app/WindowApplication.h"
#include "platform/Memory.h"
#include "platform/SharedApplication.h"
#include "platform/SystemLog.h"
#include "ui/NewsPage.h"
#include "ui/Typography.h"

#include <QApplication>
#include <cstdio>
#include <optional>

int main(int argc, char **argv)
{
    Memory::giveLargeBuffersBackAtOnce();
    Application::outliveLimitsOfSize();
    openWebPagesToScreenReaders();
    const RecentLog recentLog;
    const Configuration configuration = Configuration::compiledIn();
    SingleInstance instance(configuration.dataFolder);
    QApplication application(argc, argv); // takes its own words out of argv
    const CommandLine commandLine = Application::commandLineOf(argc, argv);
    if (!commandLine.text.isEmpty()) {
        std::fprintf(stderr, "%s\nTry --help.\n", qUtf8Printable(commandLine.text));
        return Application::UsageMistake;
    }
    Application::name();
    QApplication::setFont(Typography::text(15)); // the desktop's own is never seen
    QApplication::setApplicationDisplayName(QStringLiteral("Quellmoor"));
    const Translations translations(QLocale::system().uiLanguages());

    if (!instance.claim())
        return Application::end(0);
    SystemLog::setFile(Configuration::logFile());
    const auto sharedApplication = makeSharedApplication();
    AppDelegate appDelegate(*sharedApplication);
    auto window = std::make_unique<LauncherWindow>();
    std::optional<WindowApplication> launcher;
    QObject::connect(&window->window(), &CustomWindow::appeared, &application, [&] {
        launcher.emplace(configuration, recentLog, std::move(window));
        instance.listen([&launcher] { launcher->comeForward(); });
        launcher->start();
        if (commandLine.showsTouchBar)
            launcher->showTouchBar();
        appDelegate.applicationDidFinishLaunching();
    });
    const int exitCode = QApplication::exec();
    if (launcher)
        launcher->stop();
    return Application::end(exitCode);
}

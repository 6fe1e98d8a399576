#include "app/WindowProgram.h"

#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "app/InstanceLock.h"
#include "app/Launcher.h"
#include "app/LauncherWindow.h"
#include "app/RecentLog.h"
#include "app/Translations.h"
#include "platform/Memory.h"
#include "platform/SharedApplication.h"
#include "platform/SystemLog.h"
#include "ui/Accessibility.h"
#include "ui/Typography.h"

#include <QApplication>
#include <QPluginLoader>

#include <cstdio>
#include <cstdlib>

namespace {

// Null, with a line in the log, when the plugin is missing or of another version.
LauncherMaker *launcherMaker()
{
    QPluginLoader loader(QCoreApplication::applicationDirPath() +
                         QStringLiteral("/quellmoor-engine"));
    auto *maker = qobject_cast<LauncherMaker *>(loader.instance());
    if (!maker)
        ErrorHandler::log(
            QStringLiteral("The launcher is not whole: %1").arg(loader.errorString()));
    return maker;
}

} // namespace

int runWindowProgram(int argc, char **argv)
{
    Memory::giveLargeBuffersBackAtOnce();
    Application::outliveLimitsOfSize();
    Accessibility::openWebPages();
    const RecentLog recentLog;
    const Configuration configuration = Configuration::compiledIn();
    InstanceLock lock(configuration.dataFolder);
    const QApplication application(argc, argv); // takes its own words out of argv
    const CommandLine commandLine = Application::commandLineOf(argc, argv);
    if (!commandLine.text.isEmpty()) {
        std::fprintf(stderr, "%s\nTry --help.\n", qUtf8Printable(commandLine.text));
        return Application::UsageMistake;
    }
    Application::name();
    QApplication::setFont(Typography::text(15)); // the desktop's own is never seen
    QApplication::setApplicationDisplayName(QStringLiteral("Quellmoor"));
    const Translations translations(QLocale::system().uiLanguages());

    if (!lock.tryToTake()) {
        LauncherMaker *maker = launcherMaker();
        if (!maker)
            return Application::end(EXIT_FAILURE);
        if (!maker->waitFor(lock))
            return Application::end(0);
    }
    SystemLog::setFile(Configuration::logFile());
    const auto sharedApplication = makeSharedApplication();
    AppDelegate appDelegate(*sharedApplication);
    auto window = std::make_unique<LauncherWindow>();
    std::unique_ptr<Launcher> launcher;
    QObject::connect(&window->window(), &CustomWindow::appeared, &application, [&] {
        if (LauncherMaker *maker = launcherMaker()) {
            launcher =
                maker->make(configuration, recentLog, std::move(window), commandLine.showsTouchBar);
            appDelegate.applicationDidFinishLaunching();
        } else {
            QCoreApplication::exit(EXIT_FAILURE);
        }
    });
    const int exitCode = QApplication::exec();
    if (launcher)
        launcher->stop();
    return Application::end(exitCode);
}

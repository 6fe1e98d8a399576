#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/RecentLog.h"
#include "app/SingleInstance.h"
#include "app/Translations.h"
#include "app/WindowApplication.h"
#include "platform/Memory.h"
#include "platform/SharedApplication.h"
#include "platform/SystemLog.h"
#include "ui/NewsPage.h"

#include <QApplication>
#include <QIcon>

#include <cstdio>

namespace {

// From pictures of the sizes that desktops ask for: drawing them would hold up the window.
QIcon windowIcon()
{
    QIcon icon;
    for (const int size : {16, 32, 48, 64, 128})
        icon.addFile(QStringLiteral(":/artwork/icons/quellmoor-%1.png").arg(size));
    return icon;
}

} // namespace

int main(int argc, char **argv)
{
    Memory::giveLargeBuffersBackAtOnce();
    Application::outliveLimitsOfSize();
    openWebPagesToScreenReaders();
    QApplication application(argc, argv); // takes its own words out of argv
    const CommandLine commandLine = Application::commandLineOf(argc, argv);
    if (!commandLine.text.isEmpty()) {
        std::fprintf(stderr, "%s\nTry --help.\n", qUtf8Printable(commandLine.text));
        return Application::UsageMistake;
    }
    const RecentLog recentLog;
    Application::name();
    QApplication::setApplicationDisplayName(QStringLiteral("Quellmoor"));
    const Translations translations(QLocale::system().uiLanguages());
    QApplication::setWindowIcon(windowIcon());

    const Configuration configuration = Configuration::compiledIn();
    SingleInstance instance(configuration.dataFolder);
    if (!instance.claim())
        return 0;
    SystemLog::setFile(Configuration::logFile());
    const auto sharedApplication = makeSharedApplication();
    AppDelegate appDelegate(*sharedApplication);
    WindowApplication window(configuration, recentLog);
    instance.setComeForward([&window] { window.comeForward(); });
    window.start();
    if (commandLine.showsTouchBar)
        window.showTouchBar();
    appDelegate.applicationDidFinishLaunching();
    const int exitCode = QApplication::exec();
    window.stop();
    return Application::end(exitCode);
}

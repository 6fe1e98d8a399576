#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/RecentLog.h"
#include "app/SingleInstance.h"
#include "app/Translations.h"
#include "app/WindowApplication.h"
#include "platform/DispatchQueue.h"
#include "platform/HeadStart.h"
#include "platform/Memory.h"
#include "platform/SharedApplication.h"
#include "platform/SystemLog.h"
#include "ui/NewsPage.h"
#include "ui/Typography.h"

#include <QApplication>
#include <cstdio>
#include <thread>
#include <tuple>

int main(int argc, char **argv)
{
    Memory::giveLargeBuffersBackAtOnce();
    Application::outliveLimitsOfSize();
    openWebPagesToScreenReaders();
    const RecentLog recentLog;
    const Configuration configuration = Configuration::compiledIn();
    SingleInstance instance(configuration.dataFolder);
    std::jthread meanwhile([&instance] {
        HeadStart::readFonts();
        std::ignore = instance.claimQuietly(); // claim() below then finds it done
    });
    QApplication application(argc, argv); // takes its own words out of argv
    meanwhile.join();
    const CommandLine commandLine = Application::commandLineOf(argc, argv);
    if (!commandLine.text.isEmpty()) {
        std::fprintf(stderr, "%s\nTry --help.\n", qUtf8Printable(commandLine.text));
        return Application::UsageMistake;
    }
    DispatchQueue::global(DispatchQueue::QualityOfService::High)->async([] {
        const DispatchQueue::OutsideWait nothingIsLost; // a bus may hold it for ever
        HeadStart::meetDesktop();
    });
    Application::name();
    QApplication::setFont(Typography::text(15)); // the desktop's own is never seen
    QApplication::setApplicationDisplayName(QStringLiteral("Quellmoor"));
    const Translations translations(QLocale::system().uiLanguages());

    if (!instance.claim())
        return Application::end(0);
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

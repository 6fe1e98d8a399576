#include "app/AppDelegate.h"
#include "app/Application.h"
#include "app/RecentLog.h"
#include "app/SingleInstance.h"
#include "app/Translations.h"
#include "app/WindowApplication.h"
#include "platform/SharedApplication.h"
#include "platform/SystemLog.h"

#include <QApplication>
#include <QIcon>
#include <QOffscreenSurface>
#include <QOpenGLContext>

#include <unistd.h>

#include <cstdio>

namespace {

// Whether windows can have parts that are drawn through OpenGL. Remote and virtual displays often
// cannot.
bool hasGraphicsInterface()
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    return context.create() && context.makeCurrent(&surface);
}

// The web engine's sandbox does not work for root, and without it the engine ends the process.
bool isRootWithSandbox()
{
    return geteuid() == 0 && !qEnvironmentVariableIsSet("QTWEBENGINE_DISABLE_SANDBOX");
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts); // the web engine asks for it
    QApplication application(argc, argv);                       // takes its own words out of argv
    const CommandLine commandLine = Application::commandLineOf(argc, argv);
    if (!commandLine.text.isEmpty()) {
        std::fprintf(stderr, "%s\nTry --help.\n", qUtf8Printable(commandLine.text));
        return Application::UsageMistake;
    }
    const RecentLog recentLog;
    Application::name();
    QApplication::setApplicationDisplayName(QStringLiteral("Quellmoor"));
    const Translations translations(QLocale::system().uiLanguages());
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/artwork/icon.svg")));
    QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets,
                                   isRootWithSandbox() || !hasGraphicsInterface());

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

#include "app/Application.h"

#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "app/SingleInstance.h"
#include "app/UpdateCommand.h"
#include "app/WindowApplication.h"
#include "platform/DispatchQueue.h"
#include "platform/HttpClient.h"
#include "platform/SharedApplication.h"
#include "platform/UserDefaults.h"

#include <QApplication>
#include <QIcon>
#include <QOffscreenSurface>
#include <QOpenGLContext>

#include <cstdio>
#include <cstdlib>

namespace Application {

namespace {

constexpr int MillisecondsForUnfinishedWork = 2000;
constexpr int AnotherLauncher = 3;

void name()
{
    QCoreApplication::setApplicationName(QStringLiteral("quellmoor-launcher"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUELLMOOR_VERSION));
}

// Whether windows can have parts that are drawn through OpenGL. Remote and virtual displays often
// cannot.
bool hasGraphicsInterface()
{
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    return context.create() && context.makeCurrent(&surface);
}

// Threads that still wait, for a server or for the game, must not hold the process; they would find
// their world gone, so it ends without tearing it down.
int end(int exitCode)
{
    if (DispatchQueue::drain(MillisecondsForUnfinishedWork))
        return exitCode;
    std::fflush(nullptr);
    std::_Exit(exitCode);
}

} // namespace

int runWithoutWindow(const CommandLine &commandLine, int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    name();
    const Configuration configuration = Configuration::compiledIn();
    SingleInstance instance(configuration.dataFolder);
    const bool isWriter = commandLine.action == CommandLine::Action::Update;
    if (isWriter && !instance.claimQuietly()) {
        ErrorHandler::log(
            QStringLiteral("Another launcher is at work on %1.").arg(configuration.dataFolder));
        return AnotherLauncher;
    }
    UserDefaults userDefaults(configuration.settingsFile());
    const auto httpClient = makeHttpClient(configuration.extraCertificateFile);
    const auto command =
        std::make_shared<UpdateCommand>(commandLine, configuration, *httpClient, userDefaults);

    DispatchQueue::global(DispatchQueue::QualityOfService::High)->async([command] {
        const int exitCode = command->run();
        DispatchQueue::main()->async([exitCode] { QCoreApplication::exit(exitCode); });
    });
    return end(QCoreApplication::exec());
}

int runWithWindow(const CommandLine &, int argc, char **argv)
{
    QCoreApplication::setAttribute(Qt::AA_ShareOpenGLContexts); // the web engine asks for it
    QApplication application(argc, argv);
    name();
    QApplication::setApplicationDisplayName(QStringLiteral("Quellmoor"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/artwork/icon.svg")));
    QCoreApplication::setAttribute(Qt::AA_ForceRasterWidgets, !hasGraphicsInterface());

    const Configuration configuration = Configuration::compiledIn();
    SingleInstance instance(configuration.dataFolder);
    if (!instance.claim())
        return 0;
    const auto sharedApplication = makeSharedApplication();
    AppDelegate appDelegate(*sharedApplication);
    WindowApplication window(configuration);
    instance.setComeForward([&window] { window.comeForward(); });
    window.start();
    appDelegate.applicationDidFinishLaunching();
    const int exitCode = QApplication::exec();
    window.stop();
    return end(exitCode);
}

} // namespace Application

#include "app/Application.h"

#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "app/SingleInstance.h"
#include "app/UpdateCommand.h"
#include "platform/DispatchQueue.h"
#include "platform/FileSystem.h"
#include "platform/HttpClient.h"
#include "platform/Memory.h"
#include "platform/SystemLog.h"
#include "platform/UserDefaults.h"

#include <QCoreApplication>
#include <QFile>

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace Application {

namespace {

constexpr int MillisecondsForUnfinishedWork = 2000;
constexpr int AnotherLauncher = 3;

} // namespace

CommandLine commandLineOf(int argc, char **argv)
{
    QStringList words;
    for (int i = 0; i < argc; ++i)
        words += QString::fromLocal8Bit(argv[i]);
    return CommandLine::parse(words);
}

void outliveLimitsOfSize() { std::signal(SIGXFSZ, SIG_IGN); }

void name()
{
    QCoreApplication::setApplicationName(QStringLiteral("quellmoor-launcher"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUELLMOOR_VERSION));
}

int becomeWindow(char **argv)
{
    const QByteArray program =
        QFile::encodeName(FileSystem::executablePath() + QStringLiteral("-window"));
    execv(program.constData(), argv);
    ErrorHandler::log(QStringLiteral("Cannot start %1: %2")
                          .arg(QFile::decodeName(program), qt_error_string(errno)));
    return EXIT_FAILURE;
}

// A thread that still waits would find its world gone, so the process then ends without tearing it
// down.
int end(int exitCode)
{
    if (DispatchQueue::drain(MillisecondsForUnfinishedWork)) {
        // Qt would let the blocks that nobody runs any more go while it holds its list of events,
        // for ever if what they hold has an event to post.
        QCoreApplication::removePostedEvents(nullptr);
        return exitCode;
    }
    std::fflush(nullptr);
    std::_Exit(exitCode);
}

int runWithoutWindow(const CommandLine &commandLine, int argc, char **argv)
{
    Memory::giveLargeBuffersBackAtOnce();
    const QCoreApplication application(argc, argv);
    name();
    SystemLog::setFile(Configuration::logFile());
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

} // namespace Application

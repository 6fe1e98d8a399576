#include "app/Application.h"
#include "app/Configuration.h"
#include "app/ErrorHandler.h"
#include "app/InstanceLock.h"
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
#include <cstdlib>

namespace Application {

namespace {

constexpr int AnotherLauncher = 3;

} // namespace

int becomeWindow(char **argv)
{
    const QByteArray program =
        QFile::encodeName(FileSystem::executablePath() + QStringLiteral("-window"));
    execv(program.constData(), argv);
    ErrorHandler::log(QStringLiteral("Cannot start %1: %2")
                          .arg(QFile::decodeName(program), qt_error_string(errno)));
    return EXIT_FAILURE;
}

int runWithoutWindow(const CommandLine &commandLine, int argc, char **argv)
{
    Memory::giveLargeBuffersBackAtOnce();
    const QCoreApplication application(argc, argv);
    name();
    SystemLog::setFile(Configuration::logFile());
    const Configuration configuration = Configuration::compiledIn();
    InstanceLock lock(configuration.dataFolder);
    const bool isWriter = commandLine.action == CommandLine::Action::Update;
    if (isWriter && !lock.tryToTake()) {
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

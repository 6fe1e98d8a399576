#include "app/SingleInstance.h"

#include "app/ErrorHandler.h"
#include "platform/FileSystem.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QLocalSocket>
#include <QStandardPaths>
#include <QThread>

namespace {

constexpr int MillisecondsToComeUp = 5000;
constexpr int MillisecondsBetweenTries = 50;
constexpr int MillisecondsForAnAnswer = 1000;

// A short name for any folder: the path of a local socket has room for about 100 characters.
QString serverNameFor(const QString &dataFolder)
{
    const QByteArray digest =
        QCryptographicHash::hash(dataFolder.toUtf8(), QCryptographicHash::Sha256);
    return QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation) +
           QStringLiteral("/quellmoor-launcher-") + QString::fromLatin1(digest.toHex().left(16));
}

} // namespace

SingleInstance::SingleInstance(const QString &dataFolder)
    : m_serverName(serverNameFor(dataFolder)),
      m_lock(dataFolder + QStringLiteral("/.launcher.lock")),
      m_server(this)
{
    if (const auto error = FileSystem::createDirectory(dataFolder))
        ErrorHandler::log(*error);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server.nextPendingConnection()) {
            socket->deleteLater();
            if (m_comeForward)
                m_comeForward();
        }
    });
}

bool SingleInstance::claim()
{
    const QDeadlineTimer deadline(MillisecondsToComeUp);
    while (!claimQuietly()) {
        if (askOtherToComeForward())
            return false;
        if (deadline.hasExpired()) { // one without a window, which nobody can bring forward
            ErrorHandler::log(QStringLiteral("Another launcher is updating the game."));
            return false;
        }
        // A lock that is let go tells nobody, nor can one wait for it no longer than so long.
        QThread::msleep(MillisecondsBetweenTries);
    }
    return true;
}

bool SingleInstance::claimQuietly()
{
    const FileLock::Result result = m_lock.tryLock();
    if (result == FileLock::Result::Failed)
        ErrorHandler::log(QStringLiteral("Cannot lock the launcher data folder."));
    return result != FileLock::Result::Held;
}

bool SingleInstance::askOtherToComeForward() const
{
    QLocalSocket socket;
    socket.connectToServer(m_serverName);
    return socket.waitForConnected(MillisecondsForAnAnswer);
}

void SingleInstance::listen(std::function<void()> comeForward)
{
    m_comeForward = std::move(comeForward);
    QLocalServer::removeServer(m_serverName); // left by a launcher that was killed
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server.listen(m_serverName))
        ErrorHandler::log(m_server.errorString());
}

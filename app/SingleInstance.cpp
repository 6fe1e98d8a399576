#include "app/SingleInstance.h"

#include "app/ErrorHandler.h"
#include "app/InstanceLock.h"

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
    : m_serverName(serverNameFor(dataFolder)), m_server(this)
{
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket *socket = m_server.nextPendingConnection()) {
            socket->deleteLater();
            m_comeForward();
        }
    });
}

bool SingleInstance::waitFor(InstanceLock &lock) const
{
    const QDeadlineTimer deadline(MillisecondsToComeUp);
    while (!askOtherToComeForward()) {
        if (lock.tryToTake())
            return true;
        if (deadline.hasExpired()) { // one without a window, which nobody can bring forward
            ErrorHandler::log(QStringLiteral("Another launcher is updating the game."));
            return false;
        }
        // A lock that is let go tells nobody, nor can one wait for it no longer than so long.
        QThread::msleep(MillisecondsBetweenTries);
    }
    return false;
}

void SingleInstance::listen(std::function<void()> comeForward)
{
    m_comeForward = std::move(comeForward);
    QLocalServer::removeServer(m_serverName); // left by a launcher that was killed
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    if (!m_server.listen(m_serverName))
        ErrorHandler::log(m_server.errorString());
}

bool SingleInstance::askOtherToComeForward() const
{
    QLocalSocket socket;
    socket.connectToServer(m_serverName);
    return socket.waitForConnected(MillisecondsForAnAnswer);
}

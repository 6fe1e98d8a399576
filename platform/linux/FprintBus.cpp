#include "platform/linux/FprintBus.h"

#include "platform/DispatchQueue.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QHash>
#include <QPointer>
#include <QThread>

#include <utility>

const QString FprintBus::Service = QStringLiteral("net.reactivated.Fprint");

namespace {

const auto ManagerPath = QStringLiteral("/net/reactivated/Fprint/Manager");
const auto ManagerInterface = QStringLiteral("net.reactivated.Fprint.Manager");
const auto DeviceInterface = QStringLiteral("net.reactivated.Fprint.Device");
const auto ObjectsPath = QStringLiteral("/net/reactivated/Fprint");
const auto ObjectsInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const auto BusName = QStringLiteral("org.freedesktop.DBus");
const auto BusPath = QStringLiteral("/org/freedesktop/DBus");
const auto LocalPath = QStringLiteral("/org/freedesktop/DBus/Local");
const auto LocalInterface = QStringLiteral("org.freedesktop.DBus.Local");

std::shared_ptr<DispatchQueue> anyThread()
{
    return DispatchQueue::global(DispatchQueue::QualityOfService::High);
}

// Whoever disconnects waits for whoever connects at that time.
void closeConnection(const QString &connectionName)
{
    anyThread()->async([connectionName] { QDBusConnection::disconnectFromBus(connectionName); });
}

QString nextConnectionName()
{
    static int number = 0;
    return QStringLiteral("quellmoor-fingerprint-%1").arg(++number);
}

const QHash<QString, QString> &explanations()
{
    static const QHash<QString, QString> texts{
        {QStringLiteral("net.reactivated.Fprint.Error.NoSuchDevice"),
         QStringLiteral("there is no fingerprint reader")},
        {QStringLiteral("net.reactivated.Fprint.Error.NoEnrolledPrints"),
         QStringLiteral("no finger is enrolled")},
        {QStringLiteral("net.reactivated.Fprint.Error.AlreadyInUse"),
         QStringLiteral("the fingerprint reader is in use")},
        {QStringLiteral("net.reactivated.Fprint.Error.PermissionDenied"),
         QStringLiteral("this user may not use the fingerprint reader")},
        {QDBusError::errorString(QDBusError::ServiceUnknown),
         QStringLiteral("there is no fingerprint service")},
        {QDBusError::errorString(QDBusError::NoReply),
         QStringLiteral("the fingerprint service did not answer")},
    };
    return texts;
}

} // namespace

FprintBus::~FprintBus() { close(); }

void FprintBus::open()
{
    if (m_isOpening || isOpen())
        return;
    m_isOpening = true;
    // A bus that hangs holds whoever connects, and so does the first watcher.
    anyThread()->async([name = nextConnectionName(), self = QPointer(this)] {
        const auto connection = QDBusConnection::connectToBus(QDBusConnection::SystemBus, name);
        std::shared_ptr<QDBusServiceWatcher> watcher;
        if (connection.isConnected()) {
            watcher = std::make_shared<QDBusServiceWatcher>(Service, connection);
            watcher->moveToThread(QCoreApplication::instance()->thread());
        }
        DispatchQueue::main()->async([connection, watcher, self] {
            if (self)
                self->take(connection, watcher);
            else
                closeConnection(connection.name());
        });
    });
}

void FprintBus::take(const QDBusConnection &connection,
                     std::shared_ptr<QDBusServiceWatcher> watcher)
{
    m_isOpening = false;
    m_connection = connection;
    m_watcher = std::move(watcher);
    m_connection->connect(QString(), LocalPath, LocalInterface, QStringLiteral("Disconnected"),
                          this, SLOT(connectionLost()));
    // Asked only now, so that no end of the connection is missed.
    if (!m_watcher || !m_connection->isConnected()) {
        connectionLost();
        return;
    }
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &before, const QString &now) {
                emit daemonChanged(before, now);
            });
    emit opened();
}

void FprintBus::connectionLost()
{
    if (!isOpen())
        return;
    close();
    emit unreachable();
}

void FprintBus::close()
{
    m_watcher.reset();
    if (const auto connection = std::exchange(m_connection, std::nullopt))
        closeConnection(connection->name());
}

void FprintBus::call(const QDBusMessage &message, QObject *receiver, Answer answer)
{
    auto *watcher = new QDBusPendingCallWatcher(m_connection->asyncCall(message), receiver);
    connect(watcher, &QDBusPendingCallWatcher::finished, receiver,
            [watcher, answer = std::move(answer)] {
                watcher->deleteLater();
                answer(watcher->reply());
            });
}

void FprintBus::send(const QDBusMessage &message) { m_connection->send(message); }

void FprintBus::listen(const QString &daemon, const QString &device, QObject *receiver)
{
    m_connection->connect(daemon, device, DeviceInterface, QStringLiteral("VerifyStatus"), receiver,
                          SLOT(verifyStatus(QString, bool)));
    m_connection->connect(daemon, ObjectsPath, ObjectsInterface,
                          QStringLiteral("InterfacesRemoved"), receiver,
                          SLOT(interfacesRemoved(QDBusObjectPath)));
}

QDBusMessage FprintBus::busCall(const QString &method)
{
    return QDBusMessage::createMethodCall(BusName, BusPath, BusName, method);
}

QDBusMessage FprintBus::managerCall(const QString &method)
{
    return QDBusMessage::createMethodCall(Service, ManagerPath, ManagerInterface, method);
}

QDBusMessage FprintBus::deviceCall(const QString &daemon, const QString &device,
                                   const QString &method, const QVariantList &arguments)
{
    auto message = QDBusMessage::createMethodCall(daemon, device, DeviceInterface, method);
    message.setArguments(arguments);
    return message;
}

QString FprintBus::devicePath(const QDBusMessage &reply)
{
    if (reply.type() != QDBusMessage::ReplyMessage)
        return {};
    return reply.arguments().value(0).value<QDBusObjectPath>().path();
}

QString FprintBus::explain(const QDBusMessage &error)
{
    if (error.type() != QDBusMessage::ErrorMessage)
        return QStringLiteral("the fingerprint service answered something unknown");
    const QString known = explanations().value(error.errorName());
    if (!known.isEmpty())
        return known;
    return QStringLiteral("%1 (%2)").arg(error.errorMessage(), error.errorName());
}

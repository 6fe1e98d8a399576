#include "platform/linux/FprintBus.h"

#include "platform/linux/SystemBus.h"

#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QHash>

#include <atomic>
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

QString nextConnectionName()
{
    static std::atomic<int> number = 0;
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

bool FprintBus::open()
{
    if (m_connection)
        return true;
    if (!SystemBus::answers())
        return false;
    m_connection = QDBusConnection::connectToBus(QDBusConnection::SystemBus, nextConnectionName());
    m_connection->connect(QString(), LocalPath, LocalInterface, QStringLiteral("Disconnected"),
                          this, SLOT(connectionLost()));
    // Asked only now, so that no end of the connection is missed.
    if (!m_connection->isConnected()) {
        close();
        return false;
    }
    m_watcher = std::make_unique<QDBusServiceWatcher>(Service, *m_connection);
    connect(m_watcher.get(), &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &before, const QString &now) {
                emit daemonChanged(before, now);
            });
    return true;
}

void FprintBus::connectionLost()
{
    if (!m_connection)
        return;
    close();
    emit lost();
}

void FprintBus::close()
{
    m_watcher.reset();
    if (const auto connection = std::exchange(m_connection, std::nullopt))
        QDBusConnection::disconnectFromBus(connection->name());
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
    const auto known = explanations().constFind(error.errorName());
    if (known != explanations().constEnd())
        return *known;
    return QStringLiteral("%1 (%2)").arg(error.errorMessage(), error.errorName());
}

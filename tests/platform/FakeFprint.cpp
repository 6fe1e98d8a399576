#include "FakeFprint.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QEventLoop>
#include <QFile>
#include <QTest>

#include <csignal>

namespace {

const auto Service = QStringLiteral("net.reactivated.Fprint");
const auto ObjectsPath = QStringLiteral("/net/reactivated/Fprint");
const auto DevicePath = QStringLiteral("/net/reactivated/Fprint/Device/0");
const auto DeviceInterface = QStringLiteral("net.reactivated.Fprint.Device");
constexpr int RoundTrips = 5; // as many as any chain of calls that follows one event

void writeFile(const QString &path, const QString &text)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0)
        qFatal("cannot write %s", qPrintable(path));
}

QDBusConnection connectTo(const PrivateBus &bus)
{
    static int number = 0;
    auto connection =
        QDBusConnection::connectToBus(bus.address(), QStringLiteral("test-%1").arg(++number));
    if (!connection.isConnected())
        qFatal("cannot connect: %s", qPrintable(connection.lastError().message()));
    return connection;
}

} // namespace

PrivateBus &PrivateBus::shared()
{
    static PrivateBus bus;
    return bus;
}

PrivateBus::PrivateBus() { qputenv("DBUS_SYSTEM_BUS_ADDRESS", address().toLocal8Bit()); }

void PrivateBus::start(const QString &activated)
{
    const QString configuration = m_folder.filePath(QStringLiteral("bus.conf"));
    writeFile(configuration,
              QStringLiteral("<busconfig><type>session</type><listen>%1</listen>"
                             "<auth>EXTERNAL</auth><servicedir>%2</servicedir>"
                             "<policy context='default'>"
                             "<allow send_destination='*' eavesdrop='true'/>"
                             "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>")
                  .arg(address(), m_folder.path()));
    const QString service = m_folder.filePath(Service + QStringLiteral(".service"));
    QFile::remove(service);
    if (!activated.isEmpty())
        writeFile(service,
                  QStringLiteral("[D-BUS Service]\nName=%1\nExec=%2\n").arg(Service, activated));
    QFile::remove(socket());
    m_process.start(QStringLiteral("dbus-daemon"),
                    {QStringLiteral("--config-file=") + configuration, QStringLiteral("--nofork"),
                     QStringLiteral("--nopidfile"), QStringLiteral("--print-address")});
    if (!m_process.waitForReadyRead())
        qFatal("no bus: %s", m_process.readAllStandardError().constData());
}

void PrivateBus::stop()
{
    m_process.kill();
    m_process.waitForFinished();
}

void PrivateBus::suspend() { ::kill(pid_t(m_process.processId()), SIGSTOP); }

void PrivateBus::resume() { ::kill(pid_t(m_process.processId()), SIGCONT); }

FakeFprint::FakeFprint(const PrivateBus &bus, Kind kind) : m_connection(connectTo(bus))
{
    answer(QStringLiteral("GetDefaultDevice"), {QVariant::fromValue(QDBusObjectPath(DevicePath))});
    answer(QStringLiteral("ListEnrolledFingers"),
           {QStringList{QStringLiteral("right-index-finger")}});
    if (!m_connection.registerVirtualObject(ObjectsPath, this, QDBusConnection::SubPath) ||
        (kind == Kind::Daemon && !m_connection.registerService(Service)))
        qFatal("cannot serve: %s", qPrintable(m_connection.lastError().message()));
}

// A call that nobody has delivered yet is answered with an error when its event goes, for which it
// needs the connection: it goes while there is one, and no other comes after it.
FakeFprint::~FakeFprint()
{
    m_connection.unregisterObject(ObjectsPath, QDBusConnection::UnregisterTree);
    QCoreApplication::removePostedEvents(this);
    QDBusConnection::disconnectFromBus(m_connection.name());
}

void FakeFprint::refuse(const QString &method, const QString &errorName)
{
    m_errors[method] = errorName;
}

void FakeFprint::answer(const QString &method, const QVariantList &arguments)
{
    m_answers[method] = arguments;
}

void FakeFprint::hold(const QString &method) { m_heldMethods += method; }

void FakeFprint::answerHeld()
{
    m_heldMethods.clear();
    for (const QDBusMessage &message : std::exchange(m_held, {}))
        m_connection.send(answerTo(message));
}

void FakeFprint::tell(const QString &result, bool isDone)
{
    auto signal =
        QDBusMessage::createSignal(DevicePath, DeviceInterface, QStringLiteral("VerifyStatus"));
    signal.setArguments({result, isDone});
    m_connection.send(signal);
}

void FakeFprint::removeDevice()
{
    auto signal = QDBusMessage::createSignal(ObjectsPath,
                                             QStringLiteral("org.freedesktop.DBus.ObjectManager"),
                                             QStringLiteral("InterfacesRemoved"));
    signal.setArguments(
        {QVariant::fromValue(QDBusObjectPath(DevicePath)), QStringList{DeviceInterface}});
    m_connection.send(signal);
}

bool FakeFprint::hasCaller() const
{
    return m_connection.interface()->isServiceRegistered(m_caller);
}

bool FakeFprint::handleMessage(const QDBusMessage &message, const QDBusConnection &)
{
    const QString method = message.member();
    m_caller = message.service();
    if (method == QStringLiteral("ListEnrolledFingers"))
        ++m_askedForFingers;
    else if (message.interface() == DeviceInterface)
        m_calls += (method + QLatin1Char(' ') + message.arguments().value(0).toString()).trimmed();
    if (m_heldMethods.contains(method))
        m_held += message;
    else
        m_connection.send(answerTo(message));
    return true;
}

QDBusMessage FakeFprint::answerTo(const QDBusMessage &message) const
{
    const QString error = m_errors.value(message.member());
    if (!error.isEmpty())
        return message.createErrorReply(error, QStringLiteral("as the test says"));
    return message.createReply(m_answers.value(message.member()));
}

void settle(const PrivateBus &bus)
{
    const auto connection = connectTo(bus);
    for (int i = 0; i < RoundTrips; ++i) {
        QDBusPendingCallWatcher watcher(connection.interface()->asyncCall(QStringLiteral("GetId")));
        QEventLoop loop;
        QObject::connect(&watcher, &QDBusPendingCallWatcher::finished, &loop, &QEventLoop::quit);
        loop.exec();
    }
    QDBusConnection::disconnectFromBus(connection.name());
}

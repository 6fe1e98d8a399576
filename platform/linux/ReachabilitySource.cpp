#include "platform/ReachabilitySource.h"

#include "platform/DispatchQueue.h"
#include "platform/linux/RouteReachability.h"
#include "platform/linux/SystemBus.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QNetworkInformation>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <atomic>
#include <chrono>

using namespace std::chrono_literals;

namespace {

// For the bus and NetworkManager together.
constexpr auto Patience = 1s;

// Whether NetworkManager answers. Waits for it and for the bus.
bool doesNetworkManagerAnswer()
{
    if (!SystemBus::answers())
        return false;
    static std::atomic<int> number = 0;
    const auto name = QStringLiteral("quellmoor-network-%1").arg(++number);
    const auto manager = QStringLiteral("org.freedesktop.NetworkManager");
    auto question = QDBusMessage::createMethodCall(
        manager, QStringLiteral("/org/freedesktop/NetworkManager"),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question.setArguments({manager, QStringLiteral("State")});
    question.setAutoStartService(false);
    const auto reply =
        QDBusConnection::connectToBus(QDBusConnection::SystemBus, name)
            .call(question, QDBus::Block, std::chrono::milliseconds(Patience).count());
    QDBusConnection::disconnectFromBus(name);
    return reply.type() == QDBusMessage::ReplyMessage;
}

class QtReachabilitySource final : public ReachabilitySource
{
public:
    ~QtReachabilitySource() override { QObject::disconnect(m_connection); }

    std::optional<Flags> flags() const override
    {
        const auto *information = QNetworkInformation::instance();
        if (!information)
            return std::nullopt;
        switch (information->reachability()) {
        case QNetworkInformation::Reachability::Disconnected:
        case QNetworkInformation::Reachability::Local:
            return 0;
        case QNetworkInformation::Reachability::Site:
        case QNetworkInformation::Reachability::Online:
        case QNetworkInformation::Reachability::Unknown:
            return Reachable;
        }
        return std::nullopt;
    }

    bool setCallback(std::function<void()> callback) override
    {
        m_callback = std::move(callback);
        return QNetworkInformation::instance() != nullptr;
    }

    bool schedule() override
    {
        auto *information = QNetworkInformation::instance();
        if (!information)
            return false;
        m_connection = QObject::connect(information, &QNetworkInformation::reachabilityChanged,
                                        information, [this] {
                                            if (m_callback)
                                                m_callback();
                                        });
        return bool(m_connection);
    }

    void unschedule() override { QObject::disconnect(m_connection); }

private:
    std::function<void()> m_callback;
    QMetaObject::Connection m_connection;
};

class LinuxReachabilityService final : public QObject, public ReachabilityService
{
public:
    LinuxReachabilityService()
    {
        m_patience.setSingleShot(true);
        connect(&m_patience, &QTimer::timeout, this, [this] { conclude(false); });
    }

    void whenReady(std::function<void()> then) override
    {
        m_then = std::move(then);
        m_patience.start(Patience);
        DispatchQueue::global(DispatchQueue::QualityOfService::High)
            ->async([service = QPointer(this)] {
                const DispatchQueue::OutsideWait nothingIsLost;
                const bool isManagerThere = doesNetworkManagerAnswer();
                DispatchQueue::main()->async([service, isManagerThere] {
                    if (service)
                        service->conclude(isManagerThere);
                });
            });
    }

    std::unique_ptr<ReachabilitySource> sourceForName(const QString &) override { return source(); }
    std::unique_ptr<ReachabilitySource> sourceForAddress(const QString &) override
    {
        return source();
    }

private:
    // Only the back end that asks NetworkManager reports changes. The other one, which Qt would
    // load without it, waits for a signal that its library does not send. Both are loaded, with
    // much that they need, when Qt is asked for one.
    [[nodiscard]] std::unique_ptr<ReachabilitySource> source() const
    {
        if (m_isManagerThere && QNetworkInformation::loadBackendByName(u"networkmanager"))
            return std::make_unique<QtReachabilitySource>();
        return std::make_unique<RouteReachability>(makeRoutes());
    }

    // What comes after patience has ended changes nothing any more.
    void conclude(bool isManagerThere)
    {
        if (!m_then)
            return;
        m_patience.stop();
        m_isManagerThere = isManagerThere;
        std::exchange(m_then, nullptr)();
    }

    QTimer m_patience;
    std::function<void()> m_then;
    bool m_isManagerThere = false;
};

} // namespace

std::unique_ptr<ReachabilityService> makeReachabilityService()
{
    return std::make_unique<LinuxReachabilityService>();
}

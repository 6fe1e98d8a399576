#include "platform/ReachabilitySource.h"

#include "platform/linux/RouteReachability.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QNetworkInformation>
#include <QObject>

namespace {

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

class LinuxReachabilityService final : public ReachabilityService
{
public:
    std::unique_ptr<ReachabilitySource> sourceForName(const QString &) override { return source(); }
    std::unique_ptr<ReachabilitySource> sourceForAddress(const QString &) override
    {
        return source();
    }

private:
    // Only the back end that asks NetworkManager reports changes. The other one, which Qt would
    // load without it, waits for a signal that its library does not send. Both are loaded, with
    // much that they need, when Qt is asked for one.
    static std::unique_ptr<ReachabilitySource> source()
    {
        if (isNetworkManagerThere() && QNetworkInformation::loadBackendByName(u"networkmanager"))
            return std::make_unique<QtReachabilitySource>();
        return std::make_unique<RouteReachability>(makeRoutes());
    }

    static bool isNetworkManagerThere()
    {
        const auto *bus = QDBusConnection::systemBus().interface();
        return bus && bus->isServiceRegistered(QStringLiteral("org.freedesktop.NetworkManager"));
    }
};

} // namespace

std::unique_ptr<ReachabilityService> makeReachabilityService()
{
    return std::make_unique<LinuxReachabilityService>();
}

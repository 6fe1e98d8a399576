#include "platform/ReachabilitySource.h"

#include "platform/SystemLog.h"

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

class QtReachabilityService final : public ReachabilityService
{
public:
    QtReachabilityService()
    {
        // The default back end wants a NetworkManager; any that knows reachability will do.
        if (!QNetworkInformation::loadBackendByFeatures(QNetworkInformation::Feature::Reachability))
            SystemLog::write(QStringLiteral("The system does not tell about its network."));
    }

    std::unique_ptr<ReachabilitySource> sourceForName(const QString &) override { return source(); }
    std::unique_ptr<ReachabilitySource> sourceForAddress(const QString &) override
    {
        return source();
    }

private:
    static std::unique_ptr<ReachabilitySource> source()
    {
        return QNetworkInformation::instance() ? std::make_unique<QtReachabilitySource>() : nullptr;
    }
};

} // namespace

std::unique_ptr<ReachabilityService> makeReachabilityService()
{
    return std::make_unique<QtReachabilityService>();
}

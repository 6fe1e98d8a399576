#include "controller/Reachability.h"

#include "platform/NotificationCenter.h"

const QString Reachability::ChangedNotification =
    QStringLiteral("kNetworkReachabilityChangedNotification");

namespace {

std::unique_ptr<Reachability> watching(std::unique_ptr<ReachabilitySource> source)
{
    return source ? std::make_unique<Reachability>(std::move(source)) : nullptr;
}

} // namespace

std::unique_ptr<Reachability> Reachability::reachabilityWithHostName(ReachabilityService &service,
                                                                     const QString &hostName)
{
    return watching(service.sourceForName(hostName));
}

std::unique_ptr<Reachability> Reachability::reachabilityWithAddress(ReachabilityService &service,
                                                                    const QString &address)
{
    return watching(service.sourceForAddress(address));
}

std::unique_ptr<Reachability>
Reachability::reachabilityForInternetConnection(ReachabilityService &service)
{
    return reachabilityWithAddress(service, QStringLiteral("0.0.0.0"));
}

Reachability::Reachability(std::unique_ptr<ReachabilitySource> source) : m_source(std::move(source))
{
}

Reachability::~Reachability() { stopNotifier(); }

bool Reachability::startNotifier()
{
    const auto post = [this] {
        NotificationCenter::defaultCenter().post(ChangedNotification, this);
    };
    return m_source->setCallback(post) && m_source->schedule();
}

void Reachability::stopNotifier() { m_source->unschedule(); }

NetworkStatus Reachability::currentReachabilityStatus() const
{
    const auto flags = m_source->flags();
    return flags ? networkStatusForFlags(*flags) : NotReachable;
}

NetworkStatus Reachability::networkStatusForFlags(ReachabilitySource::Flags flags)
{
    using Source = ReachabilitySource;
    if (!(flags & Source::Reachable))
        return NotReachable;
    const bool connectsByItself =
        flags & (Source::ConnectionOnTraffic | Source::ConnectionOnDemand);
    if (connectsByItself && !(flags & Source::InterventionRequired))
        return ReachableByFirstLink;
    return flags & Source::ConnectionRequired ? NotReachable : ReachableByFirstLink;
}

bool Reachability::connectionRequired() const
{
    const auto flags = m_source->flags();
    return flags && (*flags & ReachabilitySource::ConnectionRequired);
}

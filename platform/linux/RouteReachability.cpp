#include "platform/linux/RouteReachability.h"

RouteReachability::RouteReachability(std::unique_ptr<Routes> routes) : m_routes(std::move(routes))
{
}

std::optional<ReachabilitySource::Flags> RouteReachability::flags() const
{
    const auto leadOut = m_routes->leadOut();
    if (!leadOut)
        return std::nullopt;
    return *leadOut ? Reachable : 0;
}

bool RouteReachability::setCallback(std::function<void()> callback)
{
    m_callback = std::move(callback);
    return m_routes->changes() >= 0;
}

bool RouteReachability::schedule()
{
    if (m_routes->changes() < 0)
        return false;
    m_lastFlags = flags();
    m_notifier = std::make_unique<QSocketNotifier>(m_routes->changes(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                     [this] { lookAgain(); });
    return true;
}

void RouteReachability::unschedule() { m_notifier.reset(); }

// Forgets before it looks: a change that comes in between is told of once more.
void RouteReachability::lookAgain()
{
    m_routes->forgetChanges();
    const auto now = flags();
    if (std::exchange(m_lastFlags, now) != now && m_callback)
        m_callback();
}

#pragma once

#include "platform/ReachabilitySource.h"
#include "platform/linux/Routes.h"

#include <QSocketNotifier>

// Takes a target for reachable while routes lead out of the machine. Main thread only; the calls
// end with the object.
class RouteReachability final : public ReachabilitySource
{
public:
    explicit RouteReachability(std::unique_ptr<Routes> routes);

    std::optional<Flags> flags() const override;
    bool setCallback(std::function<void()> callback) override;
    // Calls when the flags have become others, not at each change of a route.
    bool schedule() override;
    void unschedule() override;

private:
    void lookAgain();

    const std::unique_ptr<Routes> m_routes;
    std::function<void()> m_callback;
    std::optional<Flags> m_lastFlags;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

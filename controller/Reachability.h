#pragma once

#include "platform/ReachabilitySource.h"

#include <QString>

#include <memory>

// The second kind of link is never the flags' answer, but counts as reachable.
enum NetworkStatus { NotReachable = 0, ReachableByFirstLink = 1, ReachableBySecondLink = 2 };

// Watches whether one target can be reached and posts a notification after each change. Main thread
// only; stops watching when it is destroyed.
class Reachability
{
public:
    // Posted on the default notification centre with the Reachability as its object.
    static const QString ChangedNotification;

    // Null when the system has no source for the target.
    static std::unique_ptr<Reachability> reachabilityWithHostName(ReachabilityService &service,
                                                                  const QString &hostName);
    static std::unique_ptr<Reachability> reachabilityWithAddress(ReachabilityService &service,
                                                                 const QString &address);
    static std::unique_ptr<Reachability>
    reachabilityForInternetConnection(ReachabilityService &service);

    explicit Reachability(std::unique_ptr<ReachabilitySource> source);
    ~Reachability();
    Reachability(const Reachability &) = delete;
    Reachability &operator=(const Reachability &) = delete;

    // True when the notifications will come.
    bool startNotifier();
    void stopNotifier();

    [[nodiscard]] NetworkStatus currentReachabilityStatus() const;
    [[nodiscard]] static NetworkStatus networkStatusForFlags(ReachabilitySource::Flags flags);
    [[nodiscard]] bool connectionRequired() const;

private:
    const std::unique_ptr<ReachabilitySource> m_source;
};

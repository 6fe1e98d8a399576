#pragma once

#include <QString>

#include <functional>
#include <memory>
#include <optional>

// How the system says whether one target can be reached. Main thread only.
class ReachabilitySource
{
public:
    using Flags = unsigned;
    static constexpr Flags Reachable = 0x2;
    static constexpr Flags ConnectionRequired = 0x4;
    static constexpr Flags ConnectionOnTraffic = 0x8;
    static constexpr Flags InterventionRequired = 0x10;
    static constexpr Flags ConnectionOnDemand = 0x20;

    virtual ~ReachabilitySource() = default;

    // Nothing when the system does not say.
    [[nodiscard]] virtual std::optional<Flags> flags() const = 0;

    // What schedule() will call after each change. False when that cannot be had.
    virtual bool setCallback(std::function<void()> callback) = 0;
    // Starts the calls, on this thread's event loop. False when that cannot be had.
    virtual bool schedule() = 0;
    // Ends them.
    virtual void unschedule() = 0;
};

// Makes sources. Each answer is null when the system has none for that target. Main thread only.
class ReachabilityService
{
public:
    virtual ~ReachabilityService() = default;
    // Calls once, when it is known who tells of the network: at once or from the event loop, about
    // a second later at most; not at all when the service is gone by then. Sources are made from
    // then on. May be called once.
    virtual void whenReady(std::function<void()> then) = 0;
    virtual std::unique_ptr<ReachabilitySource> sourceForName(const QString &name) = 0;
    // A numeric address; "0.0.0.0" stands for the internet as a whole.
    virtual std::unique_ptr<ReachabilitySource> sourceForAddress(const QString &address) = 0;
};

// The service of this system. On Linux it follows the machine's connection as a whole: what it says
// is the same for every target.
std::unique_ptr<ReachabilityService> makeReachabilityService();

#pragma once

#include "platform/ReachabilitySource.h"

#include <optional>

// A network whose state and abilities the test sets, and the service that watches it.
class FakeReachability final : public ReachabilityService
{
public:
    std::optional<ReachabilitySource::Flags> flags = ReachabilitySource::Reachable;
    bool canMakeSource = true;
    bool canSetCallback = true;
    bool canSchedule = true;
    bool isScheduled = false;
    bool isReadyAtOnce = true;
    // What waits for the service when it is not.
    std::function<void()> ready;
    std::function<void()> callback;
    // What was asked for last: "name <name>" or "address <address>".
    QString asked;

    // The network changes: whoever watches it hears.
    void changeTo(ReachabilitySource::Flags newFlags)
    {
        flags = newFlags;
        if (isScheduled)
            callback();
    }

    void whenReady(std::function<void()> then) override
    {
        if (isReadyAtOnce)
            then();
        else
            ready = std::move(then);
    }
    std::unique_ptr<ReachabilitySource> sourceForName(const QString &name) override
    {
        return make(QStringLiteral("name ") + name);
    }
    std::unique_ptr<ReachabilitySource> sourceForAddress(const QString &address) override
    {
        return make(QStringLiteral("address ") + address);
    }

private:
    class Source final : public ReachabilitySource
    {
    public:
        explicit Source(FakeReachability &network) : m_network(network) {}

        std::optional<Flags> flags() const override { return m_network.flags; }
        bool setCallback(std::function<void()> newCallback) override
        {
            m_network.callback = std::move(newCallback);
            return m_network.canSetCallback;
        }
        bool schedule() override { return m_network.isScheduled = m_network.canSchedule; }
        void unschedule() override { m_network.isScheduled = false; }

    private:
        FakeReachability &m_network;
    };

    std::unique_ptr<ReachabilitySource> make(const QString &target)
    {
        asked = target;
        return canMakeSource ? std::make_unique<Source>(*this) : nullptr;
    }
};

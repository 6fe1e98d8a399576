#pragma once

#include <memory>
#include <optional>

// The kernel's routes as the reachability needs them. Main thread only; no call waits.
class Routes
{
public:
    virtual ~Routes() = default;

    // Whether a packet to the internet has a way out of this machine, by either version of the
    // protocol, over a link that is up. Nothing when the kernel does not say.
    [[nodiscard]] virtual std::optional<bool> leadOut() = 0;

    // A descriptor that becomes readable when routes, links or addresses change; -1 when that
    // cannot be had. It belongs to this object.
    [[nodiscard]] virtual int changes() const = 0;
    // Reads what has come: changes() is readable again after the next change only.
    virtual void forgetChanges() = 0;
};

// Those of this process's network, asked over rtnetlink.
std::unique_ptr<Routes> makeRoutes();

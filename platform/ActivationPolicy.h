#pragma once

#include <memory>

// Whether the launcher takes part in the desktop as an application with windows. Main thread only.
class ActivationPolicy
{
public:
    enum class Policy {
        Regular,   // an ordinary application
        Accessory, // still running, with its windows out of sight
    };

    virtual ~ActivationPolicy() = default;

    // Accessory hides every window that is shown, except a question that waits for its answer;
    // Regular shows those windows again. A policy that holds already changes nothing.
    virtual void setActivationPolicy(Policy policy) = 0;

    // Brings the launcher's windows to the front and gives them the keyboard, whatever application
    // is active.
    virtual void activateIgnoringOtherApps() = 0;
};

// The policy of the running desktop. From then on the application does not end with its last
// window. Needs the application object.
std::unique_ptr<ActivationPolicy> makeActivationPolicy();

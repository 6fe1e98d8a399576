#pragma once

#include <memory>

// What the system offers an application as a whole. Main thread only.
class SharedApplication
{
public:
    virtual ~SharedApplication() = default;

    // Whether the running system is macOS in that version or a later one; false on other systems.
    [[nodiscard]] virtual bool isSystemAtLeast(int major, int minor, int patch) const = 0;

    // Whether the application's menu offers to customise the Touch Bar.
    virtual void setAutomaticCustomizeTouchBarMenuItemEnabled(bool isEnabled) = 0;
};

std::unique_ptr<SharedApplication> makeSharedApplication();

#include "platform/SharedApplication.h"

namespace {

// No Touch Bar, and no menu for it.
class LinuxSharedApplication final : public SharedApplication
{
public:
    bool isSystemAtLeast(int, int, int) const override { return false; }
    void setAutomaticCustomizeTouchBarMenuItemEnabled(bool) override {}
};

} // namespace

std::unique_ptr<SharedApplication> makeSharedApplication()
{
    return std::make_unique<LinuxSharedApplication>();
}

#include "app/AppDelegate.h"

#include "platform/SharedApplication.h"

AppDelegate::AppDelegate(SharedApplication &application) : m_application(application) {}

void AppDelegate::applicationDidFinishLaunching()
{
    if (m_application.isSystemAtLeast(10, 12, 1))
        m_application.setAutomaticCustomizeTouchBarMenuItemEnabled(true);
}

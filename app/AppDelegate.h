#pragma once

class SharedApplication;

// Hears from the application's life. It makes nothing of the launcher: that comes with the window.
// Main thread only.
class AppDelegate
{
public:
    // `application` must outlive the delegate.
    explicit AppDelegate(SharedApplication &application);

    // On macOS 10.12.1 and later, offers in the menu to customise the Touch Bar.
    void applicationDidFinishLaunching();

private:
    SharedApplication &m_application;
};

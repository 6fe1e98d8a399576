#pragma once

#include "ui/CustomWindow.h"

class LauncherView;

// The window with its view, as it appears to the player: whole to look at, and with the keyboard in
// the first field. What it does comes from WindowApplication. Made after the application object.
// Main thread only.
class LauncherWindow
{
public:
    // Shows itself; it is painted when the event loop runs, and then `window().appeared()` comes.
    LauncherWindow();

    [[nodiscard]] CustomWindow &window() { return m_window; }
    [[nodiscard]] LauncherView &view() { return m_view; }

private:
    [[nodiscard]] LauncherView &showWindowAndLoadView();

    CustomWindow m_window;
    LauncherView &m_view; // the window's
};

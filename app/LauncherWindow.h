#pragma once

#include "ui/CustomWindow.h"
#include "ui/HeldInput.h"

#include <optional>

class LauncherView;

// The window with its view, as it appears to the player: whole to look at, and with the keyboard in
// the first field. What it does comes from WindowApplication. Made after the application object.
// Main thread only.
class LauncherWindow
{
public:
    // Shows itself; it is painted when the event loop runs, and then `window().appeared()` comes.
    LauncherWindow();

    // Hands on what the player has typed and clicked so far; before, it would reach nobody.
    void letInputIn() { m_input->letGo(); }

    [[nodiscard]] CustomWindow &window() { return m_window; }
    [[nodiscard]] LauncherView &view() { return m_view; }

private:
    [[nodiscard]] LauncherView &showWindowAndLoadView();

    CustomWindow m_window;
    std::optional<HeldInput> m_input; // once the window is there
    LauncherView &m_view;             // the window's
};

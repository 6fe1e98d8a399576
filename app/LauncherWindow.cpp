#include "app/LauncherWindow.h"

#include "platform/WindowShape.h"
#include "ui/InterfaceLoader.h"
#include "ui/LauncherView.h"

#include <QGuiApplication>

namespace {

// As large as its content, which comes while the desktop puts the window up.
constexpr QRect FirstFrame(0, 0, 1000, 640);

} // namespace

LauncherWindow::LauncherWindow() : m_window(FirstFrame), m_view(showWindowAndLoadView())
{
    m_window.setContentView(&m_view);
    m_view.awakeFromNib();
}

LauncherView &LauncherWindow::showWindowAndLoadView()
{
    // First, for the desktop has work of its own to do with a window. It is painted later.
    askDesktopAhead();
    m_window.setWindowTitle(QGuiApplication::applicationDisplayName());
    m_window.setFixedSize(m_window.size());
    m_window.show();
    askDesktopAhead();
    m_input.emplace(*m_window.windowHandle());
    auto *view = qobject_cast<LauncherView *>(InterfaceLoader().load(QStringLiteral("Launcher")));
    if (!view)
        qFatal("the launcher's interface is not part of this program");
    return *view;
}

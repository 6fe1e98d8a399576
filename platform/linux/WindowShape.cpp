#include "platform/WindowShape.h"

#include <QBitmap>
#include <QGuiApplication>
#include <QWidget>

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>

namespace {

// On X11 a program of its own puts the windows together, if there is one; it owns a certain
// selection. The number is the screen's, and there has been one screen for decades.
constexpr char CompositorSelection[] = "_NET_WM_CM_S0";

struct Free
{
    void operator()(void *reply) const { std::free(reply); }
};

xcb_window_t ownerOf(xcb_connection_t *connection, const char *selection)
{
    const std::unique_ptr<xcb_intern_atom_reply_t, Free> atom(xcb_intern_atom_reply(
        connection,
        xcb_intern_atom(connection, 0, uint16_t(std::char_traits<char>::length(selection)),
                        selection),
        nullptr));
    if (!atom)
        return XCB_NONE;
    const std::unique_ptr<xcb_get_selection_owner_reply_t, Free> owner(
        xcb_get_selection_owner_reply(connection, xcb_get_selection_owner(connection, atom->atom),
                                      nullptr));
    return owner ? owner->owner : xcb_window_t(XCB_NONE);
}

bool desktopBlendsWindows()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // The offscreen platform, too, claims to be on X11, but has no connection.
    xcb_connection_t *connection = x11 ? x11->connection() : nullptr;
    return !connection || ownerOf(connection, CompositorSelection) != XCB_NONE;
}

} // namespace

void cutToShape(QWidget &window, QWidget &artwork)
{
    if (desktopBlendsWindows()) {
        window.clearMask();
        return;
    }
    QImage look(artwork.size(), QImage::Format_ARGB32_Premultiplied);
    look.fill(Qt::transparent);
    artwork.render(&look, QPoint(), QRegion(), QWidget::DrawChildren);
    const QPoint place = artwork.mapTo(&window, QPoint(0, 0));
    const QImage opaque = look.createAlphaMask(Qt::AvoidDither | Qt::ThresholdDither);
    window.setMask(QRegion(QBitmap::fromImage(opaque)).translated(place));
}

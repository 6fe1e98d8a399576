#include "platform/WindowShape.h"

#include <QBitmap>
#include <QGuiApplication>
#include <QWidget>

#include <xcb/xcb.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <optional>
#include <utility>

namespace {

// On X11 a program of its own puts the windows together, if there is one; it owns a certain
// selection. The number is the screen's, and there has been one screen for decades.
constexpr char CompositorSelection[] = "_NET_WM_CM_S0";

struct Free
{
    void operator()(void *reply) const { std::free(reply); }
};

xcb_connection_t *connectionToX()
{
    const auto *x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    // The offscreen platform, too, claims to be on X11, but has no connection.
    return x11 ? x11->connection() : nullptr;
}

// Who owns the selection: two questions, of which the second needs the answer to the first.
class Question
{
public:
    explicit Question(xcb_connection_t *connection)
        : m_connection(connection),
          m_atom(xcb_intern_atom(connection, 0, uint16_t(std::strlen(CompositorSelection)),
                                 CompositorSelection))
    {
    }

    void askForOwner()
    {
        if (m_owner)
            return;
        const std::unique_ptr<xcb_intern_atom_reply_t, Free> atom(
            xcb_intern_atom_reply(m_connection, m_atom, nullptr));
        m_owner =
            xcb_get_selection_owner(m_connection, atom ? atom->atom : xcb_atom_t(XCB_ATOM_NONE));
    }

    [[nodiscard]] bool hasOwner()
    {
        askForOwner();
        const std::unique_ptr<xcb_get_selection_owner_reply_t, Free> reply(
            xcb_get_selection_owner_reply(m_connection, *m_owner, nullptr));
        return reply && reply->owner != XCB_NONE;
    }

    void send() const { xcb_flush(m_connection); }

private:
    xcb_connection_t *const m_connection;
    const xcb_intern_atom_cookie_t m_atom;
    std::optional<xcb_get_selection_owner_cookie_t> m_owner;
};

std::optional<Question> &askedAhead()
{
    static std::optional<Question> question;
    return question;
}

bool desktopBlendsWindows()
{
    xcb_connection_t *connection = connectionToX();
    if (!connection)
        return true;
    if (auto question = std::exchange(askedAhead(), std::nullopt))
        return question->hasOwner();
    return Question(connection).hasOwner();
}

} // namespace

void askDesktopAhead()
{
    xcb_connection_t *connection = connectionToX();
    if (!connection)
        return;
    if (auto &question = askedAhead())
        question->askForOwner();
    else
        question.emplace(connection);
    askedAhead()->send();
}

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

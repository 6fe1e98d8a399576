#include "ui/CustomWindow.h"

#include "ui/Accessibility.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QWindow>

#include <utility>

namespace {

QRect visibleFrameOf(const QScreen *screen)
{
    return screen ? screen->availableGeometry() : QRect(0, 0, 0, 0);
}

} // namespace

CustomWindow::CustomWindow(const QRect &contentRect, Qt::WindowFlags styleMask)
    : QWidget(nullptr, styleMask)
{
    Accessibility::install(); // before it is shown: what it is told then stays
    setGeometry(contentRect);
    setAttribute(Qt::WA_TranslucentBackground);
    setWindowOpacity(1.0);
    center();
}

void CustomWindow::setContentView(QWidget *contentView)
{
    contentView->setParent(this);
    contentView->move(0, 0);
    setFixedSize(contentView->size());
    contentView->show();
}

void CustomWindow::center()
{
    QRect frame = geometry();
    frame.moveCenter(visibleFrameOf(screen()).center());
    move(frame.topLeft());
}

QPoint CustomWindow::originForDrag(const QRect &frame, const QPointF &initialLocation,
                                   const QPointF &location, const QRect &visibleFrame)
{
    QPoint origin = frame.topLeft() + (location - initialLocation).toPoint();
    origin.setY(std::max(origin.y(), visibleFrame.top()));
    return origin;
}

QString CustomWindow::platformName() const { return QGuiApplication::platformName(); }

void CustomWindow::startSystemMove() { windowHandle()->startSystemMove(); }

void CustomWindow::paintEvent(QPaintEvent *)
{
    if (!std::exchange(m_hasAppeared, true))
        QMetaObject::invokeMethod(this, &CustomWindow::appeared, Qt::QueuedConnection);
}

void CustomWindow::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_initialLocation = event->position();
    m_isHeld = true;
}

void CustomWindow::mouseMoveEvent(QMouseEvent *event)
{
    // A button that was pressed and left behind hands its moves on, too.
    if (!m_isHeld)
        return;
    // There, windows neither know nor set their own place.
    if (platformName().startsWith(QStringLiteral("wayland"))) {
        m_isHeld = false; // the desktop keeps the release to itself
        startSystemMove();
        return;
    }
    // Events wait in a queue while the window moves: the place in the window is only right when it
    // is counted from where the window is now.
    const QPointF location = mapFromGlobal(event->globalPosition());
    move(originForDrag(geometry(), m_initialLocation, location, visibleFrameOf(screen())));
}

void CustomWindow::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_isHeld = false;
}

#include "ui/CustomWindow.h"

#include "ui/Accessibility.h"

#include <QCloseEvent>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QWindow>

#include <chrono>
#include <utility>

namespace {

using namespace std::chrono_literals;

constexpr auto Patience = 1s;

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
    m_patience.setSingleShot(true);
    connect(&m_patience, &QTimer::timeout, this, &CustomWindow::appeared);
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

// It stays until the program has ended in good order.
void CustomWindow::closeEvent(QCloseEvent *event)
{
    event->ignore();
    QCoreApplication::quit();
}

void CustomWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (!std::exchange(m_wasShown, true))
        m_patience.start(Patience);
}

void CustomWindow::paintEvent(QPaintEvent *)
{
    if (!isVisible() || std::exchange(m_isPainted, true))
        return;
    QMetaObject::invokeMethod(this, &CustomWindow::drawTexts, Qt::QueuedConnection);
}

bool CustomWindow::drawsTexts(QWidget &painted)
{
    auto *window = qobject_cast<CustomWindow *>(painted.window());
    if (!window || window->m_drawsTexts || !window->isVisible())
        return true;
    window->m_withoutTexts += &painted;
    return false;
}

void CustomWindow::drawTexts()
{
    m_drawsTexts = true;
    QRegion texts;
    for (const auto &widget : std::exchange(m_withoutTexts, {}))
        if (widget)
            texts += QRect(widget->mapTo(this, QPoint(0, 0)), widget->size());
    repaint(texts); // at once, before anything that waits for `appeared`
    appearSoon();
}

void CustomWindow::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange)
        appearSoon();
}

// Painting has to end and the frame to reach the screen first.
void CustomWindow::appearSoon()
{
    if (m_isPainted && m_patience.isActive() && isActiveWindow())
        m_patience.start(0);
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

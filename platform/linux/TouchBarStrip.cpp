#include "platform/linux/TouchBarStrip.h"

#include "platform/WindowShape.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int ShadowWidth = 8;
constexpr int RimWidth = 5;
constexpr double OuterRadius = 10;
constexpr double InnerRadius = 6;

QPainterPath rounded(const QRectF &rect, double radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

QRectF withinShadow(const QRectF &rect)
{
    return rect.adjusted(ShadowWidth, ShadowWidth, -ShadowWidth, -ShadowWidth);
}

// The frame around the views. It lies over them, so that their corners become round.
class Rim : public QWidget
{
public:
    explicit Rim(QWidget *parent) : QWidget(parent)
    {
        setAttribute(Qt::WA_TransparentForMouseEvents);
    }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        const QRectF frame = withinShadow(rect());
        const QRectF opening = frame.adjusted(RimWidth, RimWidth, -RimWidth, -RimWidth);
        QLinearGradient stone(frame.topLeft(), frame.bottomLeft());
        stone.setColorAt(0, QColor(0x34, 0x40, 0x3e));
        stone.setColorAt(0.12, QColor(0x1f, 0x2a, 0x29));
        stone.setColorAt(1, QColor(0x0c, 0x12, 0x14));
        painter.fillPath(rounded(frame, OuterRadius) - rounded(opening, InnerRadius), stone);

        painter.strokePath(rounded(frame.adjusted(0.5, 0.5, -0.5, -0.5), OuterRadius),
                           QPen(QColor(0x9f, 0xb4, 0xae, 70), 1));
        painter.strokePath(rounded(opening.adjusted(-0.5, -0.5, 0.5, 0.5), InnerRadius),
                           QPen(QColor(0x05, 0x09, 0x0a, 220), 1));
    }
};

} // namespace

TouchBarStrip::TouchBarStrip(QWidget &window, int gap)
    : QWidget(&window, Qt::Tool | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint |
                           Qt::WindowDoesNotAcceptFocus),
      m_window(window),
      m_gap(gap),
      m_row(new QHBoxLayout(this)),
      m_rim(new Rim(this))
{
    setAttribute(Qt::WA_TranslucentBackground);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(window.windowTitle());
    constexpr int margin = ShadowWidth + RimWidth;
    m_row->setContentsMargins(margin, margin, margin, margin);
    m_row->setSpacing(RimWidth);
    m_row->setSizeConstraint(QLayout::SetFixedSize);
    window.installEventFilter(this);
}

void TouchBarStrip::setViews(const QList<QWidget *> &views)
{
    while (const auto item = std::unique_ptr<QLayoutItem>(m_row->takeAt(0)))
        item->widget()->hide();
    for (QWidget *view : views) {
        view->setFixedSize(view->size());
        m_row->addWidget(view);
        view->show();
    }
    m_rim->raise();
    follow();
}

bool TouchBarStrip::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::Show:
    case QEvent::Hide:
    case QEvent::Move:
    case QEvent::Resize:
    case QEvent::WindowStateChange:
        follow();
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void TouchBarStrip::follow()
{
    const bool isSeen = m_row->count() > 0 && m_window.isVisible() && !m_window.isMinimized();
    if (isSeen) {
        place();
        cutToShape(*this, *this);
    }
    setVisible(isSeen);
}

void TouchBarStrip::place()
{
    adjustSize();
    const QRect frame = m_window.geometry();
    move(frame.x() + (frame.width() - width()) / 2, frame.bottom() + 1 + m_gap - ShadowWidth);
}

void TouchBarStrip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const QRectF frame = withinShadow(rect());
    for (int i = ShadowWidth; i > 0; --i) {
        painter.setBrush(QColor(2, 5, 6, 13));
        painter.drawRoundedRect(frame.adjusted(-i, -i, i, i), OuterRadius + i, OuterRadius + i);
    }
}

void TouchBarStrip::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_rim->setGeometry(rect());
}

#include "MoorWindow.h"

#include <QKeyEvent>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QRadialGradient>

#include <cmath>

namespace {

constexpr QColor Ink(0x0E, 0x15, 0x18);
constexpr QColor Peat(0x1B, 0x27, 0x24);
constexpr QColor Mist(0x9F, 0xB4, 0xAE);
constexpr QColor Spring(0x5B, 0xC8, 0xB5);
constexpr QColor Brass(0xE0, 0xB2, 0x5B);
constexpr QSize Size(560, 340);
constexpr int CookieCharacters = 8;

// A whole cookie on the screen would be a login for everyone who sees it.
QString shortened(const QString &cookie)
{
    return cookie.size() <= CookieCharacters ? cookie : cookie.left(CookieCharacters) + u'…';
}

QColor clear(QColor colour, int alpha)
{
    colour.setAlpha(alpha);
    return colour;
}

QColor between(const QColor &from, const QColor &to, double share)
{
    const auto mixed = [share](int a, int b) { return qRound(a + (b - a) * share); };
    return {mixed(from.red(), to.red()), mixed(from.green(), to.green()),
            mixed(from.blue(), to.blue())};
}

QPainterPath ridge(const QRectF &area, double height, double phase)
{
    QPainterPath path(area.bottomLeft());
    for (double x = 0; x <= area.width(); x += 4) {
        const double wave = std::sin(x / 71 + phase) + 0.45 * std::sin(x / 27 + 2 * phase);
        path.lineTo(area.left() + x, area.top() + area.height() * height - 11 * wave);
    }
    path.lineTo(area.bottomRight());
    path.closeSubpath();
    return path;
}

} // namespace

MoorWindow::MoorWindow(const QString &server, const QString &cookie, QWidget *parent)
    : QWidget(parent), m_server(server), m_cookie(shortened(cookie))
{
    setWindowTitle(QStringLiteral("Quellmoor"));
    setFixedSize(Size);
}

void MoorWindow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    paintMoor(painter);
    paintFrame(painter);
    paintWords(painter);
}

void MoorWindow::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        close();
    else
        QWidget::keyPressEvent(event);
}

void MoorWindow::paintMoor(QPainter &painter) const
{
    const QRectF area = rect();
    QLinearGradient sky(area.topLeft(), area.bottomLeft());
    sky.setColorAt(0, Ink);
    sky.setColorAt(0.55, between(Peat, Mist, 0.25));
    sky.setColorAt(0.72, between(Mist, Brass, 0.35));
    painter.fillRect(area, sky);
    painter.setPen(Qt::NoPen);
    for (int layer = 0; layer < 4; ++layer) {
        const double share = layer / 3.0;
        painter.setBrush(between(between(Peat, Mist, 0.4), Ink, 0.25 + 0.75 * share));
        painter.drawPath(ridge(area, 0.6 + 0.1 * layer, 1.3 * layer));
    }
    QRadialGradient glow(QPointF(0, 0), 95);
    glow.setColorAt(0, clear(Spring, 190));
    glow.setColorAt(1, clear(Spring, 0));
    painter.save();
    painter.translate(area.width() * 0.72, area.height() * 0.86);
    painter.scale(1, 0.28);
    painter.setBrush(glow);
    painter.drawEllipse(QPointF(0, 0), 95, 95);
    painter.restore();
}

void MoorWindow::paintFrame(QPainter &painter) const
{
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Ink, 10));
    painter.drawRect(rect());
    painter.setPen(QPen(clear(Brass, 190), 1.5));
    painter.drawRoundedRect(QRectF(rect()).adjusted(9, 9, -9, -9), 5, 5);
}

void MoorWindow::paintWords(QPainter &painter) const
{
    QFont large(QStringLiteral("serif"));
    large.setPixelSize(46);
    large.setLetterSpacing(QFont::AbsoluteSpacing, 3);
    painter.setFont(large);
    painter.setPen(Brass);
    painter.drawText(QRect(0, 40, width(), 64), Qt::AlignCenter, QStringLiteral("Quellmoor"));

    QFont small(QStringLiteral("sans-serif"));
    small.setPixelSize(14);
    painter.setFont(small);
    painter.setPen(between(Mist, Qt::white, 0.4));
    painter.drawText(QRect(24, 106, width() - 48, 22), Qt::AlignCenter,
                     tr("Server %1").arg(m_server));
    painter.drawText(QRect(24, 128, width() - 48, 22), Qt::AlignCenter,
                     tr("Cookie %1").arg(m_cookie));
    painter.setPen(Mist);
    painter.drawText(QRect(24, height() - 40, width() - 48, 22), Qt::AlignLeft | Qt::AlignVCenter,
                     tr("Press Escape to leave the moor"));
}

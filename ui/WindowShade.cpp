#include "ui/WindowShade.h"

#include <QPainter>

namespace {

constexpr QRgb Ink = 0xff0e1518;
constexpr int Depth = 128; // of 255

// Ink where the picture is more opaque than not, ever less of it along a soft edge.
void turnIntoInk(QImage &picture)
{
    for (int y = 0; y < picture.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(picture.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            const int inside = std::max(0, 2 * qAlpha(line[x]) - 255);
            line[x] = qPremultiply(qRgba(qRed(Ink), qGreen(Ink), qBlue(Ink), inside * Depth / 255));
        }
    }
}

} // namespace

WindowShade::WindowShade(QWidget &window) : PictureView(&window)
{
    const auto pictures = window.findChildren<PictureView *>();
    for (const PictureView *picture : pictures)
        if (picture->replacesBackground())
            setPictureName(picture->pictureName());
    setGeometry(window.rect());
    raise();
    show();
}

void WindowShade::paintEvent(QPaintEvent *)
{
    if (window()->findChild<WindowShade *>() != this)
        return;
    QPainter painter(this);
    if (pictureName().isEmpty()) {
        QColor ink = QColor::fromRgb(Ink);
        ink.setAlpha(Depth);
        painter.fillRect(rect(), ink);
        return;
    }
    const qreal scale = painter.device()->devicePixelRatio();
    if (m_ink.devicePixelRatio() != scale || m_ink.isNull())
        m_ink = inkFor(scale);
    painter.drawImage(QPoint(), m_ink);
}

QImage WindowShade::inkFor(qreal scale) const
{
    QImage ink((QSizeF(size()) * scale).toSize(), QImage::Format_ARGB32_Premultiplied);
    ink.setDevicePixelRatio(scale);
    ink.fill(Qt::transparent);
    QPainter painter(&ink);
    Picture::named(pictureName()).paint(painter, rect());
    painter.end();
    turnIntoInk(ink);
    return ink;
}

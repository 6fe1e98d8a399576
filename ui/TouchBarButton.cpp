#include "ui/TouchBarButton.h"

#include "ui/Typography.h"

#include <QPainter>

QFont TouchBarButton::captionFont() const
{
    if (captionStyle() != Plate)
        return Typography::text(13, QFont::Medium);
    QFont font = Typography::display(17, QFont::DemiBold);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 3);
    return font;
}

QColor TouchBarButton::captionColor() const
{
    if (captionStyle() == Plate)
        return QColor::fromRgb(Palette::Ink);
    const bool isHovered = !rolloverImage().isNull() && image() == rolloverImage();
    return QColor::fromRgb(isHovered ? Palette::Bright : Palette::Text);
}

double TouchBarButton::captionWidth() const
{
    if (captionStyle() == NoCaption)
        return 0;
    const QFont font = captionFont();
    // Letter spacing follows the last letter, too.
    return QFontMetricsF(font).horizontalAdvance(text()) - font.letterSpacing();
}

void TouchBarButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isDown())
        painter.setOpacity(0.85);
    image().paint(painter, rect());
    paintCaption(painter);
}

void TouchBarButton::paintCaption(QPainter &painter) const
{
    if (captionStyle() == NoCaption || text().isEmpty())
        return;
    const QFont font = captionFont();
    const QRectF area = rect();
    // The middle of the capitals is what the eye takes for the middle of the text.
    const QPointF start(area.center().x() - captionWidth() / 2,
                        area.center().y() + QFontMetricsF(font).capHeight() / 2 +
                            (isDown() ? 1 : 0));
    painter.setFont(font);
    if (captionStyle() == Plate) {
        painter.setPen(QColor(255, 240, 205, 120));
        painter.drawText(start + QPointF(0, 1), text());
    }
    painter.setPen(captionColor());
    painter.drawText(start, text());
}

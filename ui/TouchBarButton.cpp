#include "ui/TouchBarButton.h"

#include "ui/Typography.h"

#include <QPainter>

namespace {

// Room for the rivets of the plate and the round corners of the links.
constexpr int RoomAtTheSides = 12;
constexpr int SmallestSize = 9;

QFont fontOfSize(RolloverButton::CaptionStyle style, int pixelSize)
{
    if (style != RolloverButton::Plate)
        return Typography::text(pixelSize, QFont::Medium);
    QFont font = Typography::display(pixelSize, QFont::DemiBold);
    font.setLetterSpacing(QFont::AbsoluteSpacing, 3);
    return font;
}

// Letter spacing follows the last letter, too.
double widthOf(const QString &text, const QFont &font)
{
    return QFontMetricsF(font).horizontalAdvance(text) - font.letterSpacing();
}

} // namespace

// Smaller where the words of a language are long.
QFont TouchBarButton::captionFont() const
{
    int size = captionStyle() == Plate ? 17 : 13;
    while (size > SmallestSize &&
           widthOf(text(), fontOfSize(captionStyle(), size)) > width() - 2 * RoomAtTheSides)
        --size;
    return fontOfSize(captionStyle(), size);
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
    return captionStyle() == NoCaption ? 0 : widthOf(text(), captionFont());
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

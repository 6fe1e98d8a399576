#include "ui/RolloverButton.h"

#include "ui/CustomWindow.h"
#include "ui/Typography.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int CaptionHeight = 23;

// The picture of the same button held down, if there is one.
Picture pressedPicture(const Picture &shown)
{
    const QString name = shown.name();
    for (const auto suffix : {QLatin1String("_NORMAL"), QLatin1String("_ROLLOVER")})
        if (name.endsWith(suffix))
            return Picture::named(name.chopped(suffix.size()) + QLatin1String("_PRESSED"));
    return {};
}

QFont captionFont(RolloverButton::CaptionStyle style)
{
    if (style == RolloverButton::Plate) {
        QFont font = Typography::display(29, QFont::DemiBold);
        font.setLetterSpacing(QFont::AbsoluteSpacing, 5);
        return font;
    }
    if (style == RolloverButton::BelowPicture)
        return Typography::text(12);
    return Typography::text(15);
}

QPainterPath roundedOutline(const QRectF &bounds)
{
    constexpr double radius = 6;
    QPainterPath path;
    path.addRoundedRect(bounds, radius, radius);
    return path;
}

// A plate runs out to a point on either side.
QPainterPath plateOutline(const QRectF &bounds)
{
    const double point = bounds.height() / 2;
    QPainterPath path;
    path.addPolygon(QPolygonF{{bounds.left(), bounds.center().y()},
                              {bounds.left() + point, bounds.top()},
                              {bounds.right() - point, bounds.top()},
                              {bounds.right(), bounds.center().y()},
                              {bounds.right() - point, bounds.bottom()},
                              {bounds.left() + point, bounds.bottom()}});
    path.closeSubpath();
    return path;
}

} // namespace

RolloverButton::RolloverButton(QWidget *parent) : QPushButton(parent)
{
    setCursor(Qt::PointingHandCursor);
    setFocusPolicy(Qt::StrongFocus);
}

void RolloverButton::initWithRolloverImage(const Picture &image)
{
    m_rolloverImage = image;
    m_normalImage = m_image;
    m_isRolloverEnabled = true;
}

void RolloverButton::awakeFromNib()
{
    m_isRolloverEnabled = true;
    m_normalImage = m_image;
}

void RolloverButton::setupWithRolloverImageName(const QString &name)
{
    m_rolloverImage = Picture::named(name);
}

void RolloverButton::mouseEntered()
{
    if (m_isRolloverEnabled && !m_rolloverImage.isNull())
        setImage(m_rolloverImage);
}

void RolloverButton::mouseExited()
{
    if (m_isRolloverEnabled && !m_normalImage.isNull())
        setImage(m_normalImage);
}

void RolloverButton::setImage(const Picture &image)
{
    m_image = image;
    m_looksHovered = !image.isNull() && image == m_rolloverImage;
    m_looksSwitchedOff = image.name().endsWith(QLatin1String("_DISABLED"));
    setCursor(m_looksSwitchedOff ? Qt::ArrowCursor : Qt::PointingHandCursor);
    update();
}

void RolloverButton::setCaptionStyle(CaptionStyle style)
{
    m_captionStyle = style;
    update();
}

void RolloverButton::enterEvent(QEnterEvent *event)
{
    QPushButton::enterEvent(event);
    mouseEntered();
}

void RolloverButton::leaveEvent(QEvent *event)
{
    QPushButton::leaveEvent(event);
    mouseExited();
}

void RolloverButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    imageToPaint().paint(painter, rect());
    if (CustomWindow::drawsTexts(*this))
        paintCaption(painter);
    if (hasFocus())
        paintFocus(painter);
}

Picture RolloverButton::imageToPaint() const
{
    if (!looksPressed())
        return m_image;
    const Picture pressed = pressedPicture(m_image);
    return pressed.isNull() ? m_image : pressed;
}

QColor RolloverButton::captionColor() const
{
    if (m_captionStyle == Plate)
        return QColor::fromRgb(m_looksSwitchedOff ? Palette::Faded : Palette::Ink);
    if (m_looksHovered && !looksPressed())
        return QColor::fromRgb(Palette::Bright);
    return QColor::fromRgb(m_captionStyle == Link ? Palette::Brass : Palette::Text);
}

double RolloverButton::captionWidth() const
{
    if (m_captionStyle == NoCaption)
        return 0;
    const QFont font = captionFont(m_captionStyle);
    // Letter spacing follows the last letter, too.
    return QFontMetricsF(font).horizontalAdvance(text()) - font.letterSpacing();
}

void RolloverButton::paintCaption(QPainter &painter) const
{
    if (m_captionStyle == NoCaption || text().isEmpty())
        return;
    const QFont font = captionFont(m_captionStyle);
    const QFontMetricsF metrics(font);
    QRectF area = rect();
    if (m_captionStyle == BelowPicture)
        area.setTop(area.bottom() - CaptionHeight);
    // The middle of the capitals is what the eye takes for the middle of the text.
    const double width = captionWidth();
    const QPointF start(area.center().x() - width / 2,
                        area.center().y() + metrics.capHeight() / 2 + (looksPressed() ? 1 : 0));

    painter.setFont(font);
    if (m_captionStyle == Plate && !m_looksSwitchedOff) {
        painter.setPen(QColor(255, 240, 205, 120));
        painter.drawText(start + QPointF(0, 1), text());
    }
    painter.setPen(captionColor());
    painter.drawText(start, text());
}

void RolloverButton::paintFocus(QPainter &painter) const
{
    const QRectF bounds = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    const QPainterPath ring =
        m_captionStyle == Plate ? plateOutline(bounds) : roundedOutline(bounds);
    painter.setBrush(Qt::NoBrush);
    painter.strokePath(ring, QPen(QColor::fromRgb(Palette::Peat), 3));
    painter.strokePath(ring, QPen(QColor::fromRgb(Palette::Teal), 1.5));
}

#include "ui/VARNOProgressView.h"

#include "ui/BezierPathQuartzUtilities.h"

#include <QAccessible>
#include <QPainter>

namespace {

QColor colorOf(const ColorObject &object) { return object ? *object : QColor(Qt::transparent); }

bool isFraction(double number) { return number >= 0.0 && number <= 1.0; }

// What assistive technology can tell apart; finer steps would flood it.
int percentOf(double fraction) { return int(fraction * 100); }

QPainterPath roundedPath(const QRectF &rect, double radius)
{
    QPainterPath path;
    path.addRoundedRect(rect, radius, radius);
    return path;
}

} // namespace

ColorObject makeColor(const QColor &color) { return std::make_shared<const QColor>(color); }

VARNOProgressView::VARNOProgressView(QWidget *parent) : QWidget(parent) { setupDefaults(); }

VARNOProgressView::VARNOProgressView(const QRect &frame, QWidget *parent)
    : VARNOProgressView(parent)
{
    setGeometry(frame);
}

void VARNOProgressView::setupDefaults()
{
    if (!m_barLayer) {
        m_barLayer = std::make_shared<ShapeLayer>();
        m_layer.sublayers += m_barLayer;
    }
    m_value = 1.0;
    m_threshold = double(0.3F);
    m_borderWidth = 2.0;
    m_cornerRadius = 5;
    m_borderColor = makeColor(QColor::fromRgbF(0.5F, 0.5F, 0.5F));
    m_fillColor = makeColor(Qt::white);
    m_trackColor = makeColor(Qt::black);
}

void VARNOProgressView::layout() { updateLayerProperties(); }

void VARNOProgressView::layoutSubtreeIfNeeded() { updateLayerProperties(); }

void VARNOProgressView::layoutSublayersOfLayer(ViewLayer &) { updateLayerProperties(); }

void VARNOProgressView::updateLayerProperties()
{
    const QRectF bounds = rect();
    QPainterPath bar;
    bar.addRect(bounds.x(), bounds.y(), bounds.width() * m_value, bounds.height());
    if (m_barLayer) {
        m_barLayer->path = quartzPath(bar);
        m_barLayer->fillColor = colorOf(m_fillColor);
    }
    m_layer.backgroundColor = colorOf(m_trackColor);
    m_layer.borderWidth = m_borderWidth;
    m_layer.borderColor = colorOf(m_borderColor);
    m_layer.cornerRadius = double(m_cornerRadius);
    m_layer.masksToBounds = true;
    update();
}

void VARNOProgressView::setValue(double value)
{
    if (!isFraction(value))
        return;
    const int percent = percentOf(m_value);
    m_value = value;
    layout();
    if (percentOf(value) == percent)
        return;
    QAccessibleValueChangeEvent changed(this, value);
    QAccessible::updateAccessibility(&changed);
}

void VARNOProgressView::setThreshold(double threshold)
{
    if (!isFraction(threshold))
        return;
    m_threshold = threshold;
    updateLayerProperties();
}

void VARNOProgressView::setBorderWidth(double borderWidth)
{
    if (borderWidth == m_borderWidth)
        return;
    m_borderWidth = borderWidth;
    updateLayerProperties();
}

void VARNOProgressView::setCornerRadius(qint64 cornerRadius)
{
    if (cornerRadius == m_cornerRadius)
        return;
    m_cornerRadius = cornerRadius;
    updateLayerProperties();
}

// The three colours are not treated alike, and are meant not to be: border and track keep the
// given object and show at once, the fill is copied and waits for the next update.
void VARNOProgressView::setBorderColor(const ColorObject &borderColor)
{
    if (borderColor == m_borderColor)
        return;
    m_borderColor = borderColor;
    updateLayerProperties();
}

void VARNOProgressView::setTrackColor(const ColorObject &trackColor)
{
    if (trackColor == m_trackColor)
        return;
    m_trackColor = trackColor;
    updateLayerProperties();
}

void VARNOProgressView::setFillColor(const ColorObject &fillColor)
{
    m_fillColor = fillColor ? makeColor(*fillColor) : nullptr;
}

void VARNOProgressView::setBarLayer(std::shared_ptr<ShapeLayer> barLayer)
{
    m_barLayer = std::move(barLayer);
}

void VARNOProgressView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF bounds = rect();
    const QPainterPath shape = roundedPath(bounds, m_layer.cornerRadius);
    painter.fillPath(shape, m_layer.backgroundColor);

    // Intersected, not clipped: a painter's clip has jagged corners.
    for (const auto &sublayer : m_layer.sublayers)
        if (sublayer->path)
            painter.fillPath(m_layer.masksToBounds ? sublayer->path->intersected(shape)
                                                   : *sublayer->path,
                             sublayer->fillColor);

    if (m_layer.borderWidth <= 0)
        return;
    const double half = m_layer.borderWidth / 2;
    painter.strokePath(roundedPath(bounds.adjusted(half, half, -half, -half),
                                   std::max(0.0, m_layer.cornerRadius - half)),
                       QPen(m_layer.borderColor, m_layer.borderWidth));
}

void VARNOProgressView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layout();
}

QColor VARNOProgressView::storedBorderColor() const { return colorOf(m_borderColor); }

QColor VARNOProgressView::storedFillColor() const { return colorOf(m_fillColor); }

QColor VARNOProgressView::storedTrackColor() const { return colorOf(m_trackColor); }

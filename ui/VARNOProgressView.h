#pragma once

#include <QColor>
#include <QPainterPath>
#include <QWidget>

#include <memory>
#include <optional>

// A colour that is handed round as an object: two of them may look alike and still be two. Null
// paints nothing.
using ColorObject = std::shared_ptr<const QColor>;

[[nodiscard]] ColorObject makeColor(const QColor &color);

// A layer that fills one path with one colour, in the coordinates of the view's bounds.
struct ShapeLayer
{
    std::optional<QPainterPath> path;
    QColor fillColor = Qt::black;
};

// What the view's own layer draws: the track, a rounded border over everything, and the shape that
// clips the sublayers.
struct ViewLayer
{
    QColor backgroundColor = Qt::transparent;
    QColor borderColor = Qt::black;
    double borderWidth = 0;
    double cornerRadius = 0;
    bool masksToBounds = false;
    QList<std::shared_ptr<ShapeLayer>> sublayers;
};

// A horizontal bar that is filled from the left up to a fraction of its width. The properties
// reach the screen only by updateLayerProperties(), which copies them into the layers; painting
// looks at the layers alone. Which setter updates, which compares, and by what, differs from one to
// the next on purpose. Main thread only; sizes in points.
class VARNOProgressView : public QWidget
{
    Q_OBJECT
    Q_PROPERTY(double value READ value WRITE setValue)
    Q_PROPERTY(double threshold READ threshold WRITE setThreshold)
    Q_PROPERTY(double borderWidth READ borderWidth WRITE setBorderWidth)
    Q_PROPERTY(qint64 cornerRadius READ cornerRadius WRITE setCornerRadius)
    Q_PROPERTY(QColor borderColor READ storedBorderColor WRITE storeBorderColor)
    Q_PROPERTY(QColor fillColor READ storedFillColor WRITE storeFillColor)
    Q_PROPERTY(QColor trackColor READ storedTrackColor WRITE storeTrackColor)

public:
    explicit VARNOProgressView(QWidget *parent = nullptr);
    explicit VARNOProgressView(const QRect &frame, QWidget *parent = nullptr);

    // Makes the bar's layer unless there is one, and stores the defaults; updates nothing.
    void setupDefaults();

    // Each ends in updateLayerProperties().
    virtual void layout();
    virtual void layoutSubtreeIfNeeded();
    virtual void layoutSublayersOfLayer(ViewLayer &layer);

    // Copies the properties into the layers.
    virtual void updateLayerProperties();

    // From 0.0 to 1.0; anything else, not-a-number included, is ignored. Lays the view out.
    void setValue(double value);
    // As for the value, but updates the layers only. Nothing is drawn from it.
    void setThreshold(double threshold);
    // Update the layers when the number differs from the stored one.
    void setBorderWidth(double borderWidth);
    void setCornerRadius(qint64 cornerRadius);
    // Keep the object and update the layers, unless it is the very object that is stored.
    void setBorderColor(const ColorObject &borderColor);
    void setTrackColor(const ColorObject &trackColor);
    // Keeps a copy and does not update: the new fill shows at the next layout or update.
    void setFillColor(const ColorObject &fillColor);
    // Stores the layer; neither updates it nor draws it: the view's layer keeps its sublayers.
    void setBarLayer(std::shared_ptr<ShapeLayer> barLayer);

    [[nodiscard]] double value() const { return m_value; }
    [[nodiscard]] double threshold() const { return m_threshold; }
    [[nodiscard]] double borderWidth() const { return m_borderWidth; }
    [[nodiscard]] qint64 cornerRadius() const { return m_cornerRadius; }
    [[nodiscard]] const ColorObject &borderColor() const { return m_borderColor; }
    [[nodiscard]] const ColorObject &fillColor() const { return m_fillColor; }
    [[nodiscard]] const ColorObject &trackColor() const { return m_trackColor; }
    [[nodiscard]] const std::shared_ptr<ShapeLayer> &barLayer() const { return m_barLayer; }
    [[nodiscard]] const ViewLayer &layer() const { return m_layer; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // The colours as the interface file stores them.
    [[nodiscard]] QColor storedBorderColor() const;
    [[nodiscard]] QColor storedFillColor() const;
    [[nodiscard]] QColor storedTrackColor() const;
    void storeBorderColor(const QColor &color) { setBorderColor(makeColor(color)); }
    void storeFillColor(const QColor &color) { setFillColor(makeColor(color)); }
    void storeTrackColor(const QColor &color) { setTrackColor(makeColor(color)); }

    double m_value = 0;
    double m_threshold = 0;
    double m_borderWidth = 0;
    qint64 m_cornerRadius = 0;
    ColorObject m_borderColor;
    ColorObject m_fillColor;
    ColorObject m_trackColor;
    std::shared_ptr<ShapeLayer> m_barLayer;
    ViewLayer m_layer;
};

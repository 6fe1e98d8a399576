#pragma once

#include <QSize>
#include <QString>

#include <memory>

class QPainter;
class QRectF;

// One of the application's pictures, a vector drawing known by its name. A value: copies share the
// drawing and what was rendered of it, and two pictures are equal when they have the same name.
// Main thread only.
class Picture
{
public:
    // No picture: paints nothing.
    Picture() = default;

    // The picture of that name, or none when the application has no such picture.
    [[nodiscard]] static Picture named(const QString &name);

    // Fills the rectangle, sharp at whatever scale the painter's device has. What was rendered is
    // kept for the sizes in use.
    void paint(QPainter &painter, const QRectF &rect) const;

    [[nodiscard]] bool isNull() const { return !m_drawing; }
    [[nodiscard]] QString name() const;
    // In points; empty without a picture.
    [[nodiscard]] QSize size() const;

    [[nodiscard]] friend bool operator==(const Picture &a, const Picture &b)
    {
        return a.name() == b.name();
    }

private:
    struct Drawing;
    std::shared_ptr<Drawing> m_drawing;
};

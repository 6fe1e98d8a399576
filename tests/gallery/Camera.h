#pragma once

#include <QColor>
#include <QDir>
#include <QRect>
#include <QWidget>

// Behind all windows, the whole screen in one colour.
class Ground : public QWidget
{
public:
    Ground();

    void setColor(const QColor &color);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QColor m_color = Qt::black;
};

// Takes pictures of what is on the screen, without the ground behind it: what is not covered is
// transparent. Main thread only.
class Camera
{
public:
    explicit Camera(const QDir &folder);

    // Saves a picture of that part of the screen, in points, as soon as nothing moves in it any
    // more.
    void take(const QString &name, const QRect &part);
    // How many dots of that part are as light as letters.
    [[nodiscard]] int lightDots(const QRect &part) const;
    // False after a picture that could not be saved.
    [[nodiscard]] bool isWhole() const { return m_isWhole; }

private:
    [[nodiscard]] QImage seen(const QRect &part) const;
    [[nodiscard]] QImage still(const QRect &part) const;

    const QDir m_folder;
    Ground m_ground;
    bool m_isWhole = true;
};

#include "Camera.h"

#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTest>

#include <algorithm>
#include <cstdio>

namespace {

constexpr int Patience = 8000;
constexpr int StillMilliseconds = 120;
constexpr int LetterLightness = 180;

// What is seen of something through which more or less of the ground shines.
QImage withoutGround(const QImage &onBlack, const QImage &onWhite)
{
    QImage result(onBlack.size(), QImage::Format_ARGB32_Premultiplied);
    result.setDevicePixelRatio(onBlack.devicePixelRatio());
    for (int y = 0; y < result.height(); ++y)
        for (int x = 0; x < result.width(); ++x) {
            const QRgb black = onBlack.pixel(x, y);
            const QRgb white = onWhite.pixel(x, y);
            const int through = std::max({qRed(white) - qRed(black), qGreen(white) - qGreen(black),
                                          qBlue(white) - qBlue(black), 0});
            const int alpha = std::max({255 - through, qRed(black), qGreen(black), qBlue(black)});
            result.setPixel(x, y, qRgba(qRed(black), qGreen(black), qBlue(black), alpha));
        }
    return result;
}

} // namespace

Ground::Ground() : QWidget(nullptr, Qt::X11BypassWindowManagerHint | Qt::FramelessWindowHint)
{
    setAttribute(Qt::WA_ShowWithoutActivating);
    setGeometry(QGuiApplication::primaryScreen()->geometry());
    show();
    lower();
}

void Ground::setColor(const QColor &color)
{
    m_color = color;
    repaint();
}

void Ground::paintEvent(QPaintEvent *) { QPainter(this).fillRect(rect(), m_color); }

Camera::Camera(const QDir &folder) : m_folder(folder) {}

void Camera::take(const QString &name, const QRect &part)
{
    const QRect visible = part & QGuiApplication::primaryScreen()->geometry();
    m_ground.setColor(Qt::white);
    const QImage onWhite = still(visible);
    m_ground.setColor(Qt::black);
    const QImage onBlack = still(visible);
    const QString path = m_folder.filePath(name + QStringLiteral(".png"));
    m_isWhole = withoutGround(onBlack, onWhite).save(path) && m_isWhole;
    std::printf("%s\n", qPrintable(path));
}

int Camera::lightDots(const QRect &part) const
{
    const QImage image = seen(part);
    int dots = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QRgb dot = image.pixel(x, y);
            dots += std::min({qRed(dot), qGreen(dot), qBlue(dot)}) > LetterLightness ? 1 : 0;
        }
    return dots;
}

QImage Camera::seen(const QRect &part) const
{
    return QGuiApplication::primaryScreen()
        ->grabWindow(0, part.x(), part.y(), part.width(), part.height())
        .toImage();
}

QImage Camera::still(const QRect &part) const
{
    QImage last;
    const bool isStill = QTest::qWaitFor(
        [&] {
            QTest::qWait(StillMilliseconds);
            return std::exchange(last, seen(part)) == last;
        },
        Patience);
    if (!isStill)
        std::fputs("gallery: something goes on moving\n", stderr);
    return last;
}

// Renders icon.svg and icon_small.svg to the PNG sizes of the application icon, and to the set of
// ten that a macOS icon is made of.
//
//   g++ -std=c++20 -fPIC render_icons.cpp -o /tmp/render_icons $(pkg-config --cflags --libs Qt6Gui
//   Qt6Svg) /tmp/render_icons ..            (the directory that holds the SVG files)
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

namespace {

// Null when the drawing cannot be read. The simple drawing is for icons of few points.
QImage render(const QDir &artwork, int size, bool simple)
{
    QSvgRenderer picture{
        artwork.filePath(simple ? QStringLiteral("icon_small.svg") : QStringLiteral("icon.svg"))};
    if (!picture.isValid())
        return {};
    // Drawn four times too large and averaged, so that thin light survives at small sizes.
    const int large = simple ? size * 4 : size;
    QImage image(large, large, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    picture.render(&painter);
    painter.end();
    return large == size ? image
                         : image.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
}

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QDir artwork(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("."));
    constexpr int largestSimple = 32;

    artwork.mkpath(QStringLiteral("icons"));
    for (const int size : {16, 24, 32, 48, 64, 128, 256, 512})
        if (!render(artwork, size, size <= largestSimple)
                 .save(artwork.filePath(QStringLiteral("icons/quellmoor-%1.png").arg(size))))
            return 1;

    const QString set = QStringLiteral("icons/Quellmoor.iconset");
    artwork.mkpath(set);
    for (const int points : {16, 32, 128, 256, 512})
        for (const int scale : {1, 2}) {
            const QString name =
                QStringLiteral("icon_%1x%1%2.png")
                    .arg(QString::number(points), scale == 2 ? QStringLiteral("@2x") : QString());
            if (!render(artwork, points * scale, points <= largestSimple)
                     .save(artwork.filePath(set + QLatin1Char('/') + name)))
                return 1;
        }
    return 0;
}

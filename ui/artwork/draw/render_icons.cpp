// Renders icon.svg and icon_small.svg to the PNG sizes of the application icon.
//
//   g++ -std=c++20 -fPIC render_icons.cpp -o /tmp/render_icons $(pkg-config --cflags --libs Qt6Gui
//   Qt6Svg) /tmp/render_icons ..            (the directory that holds the SVG files)
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QDir artwork(argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("."));
    artwork.mkpath(QStringLiteral("icons"));
    for (const int size : {16, 24, 32, 48, 64, 128, 256, 512}) {
        const bool simple = size <= 32;
        QSvgRenderer picture{artwork.filePath(simple ? QStringLiteral("icon_small.svg")
                                                     : QStringLiteral("icon.svg"))};
        if (!picture.isValid())
            return 1;
        // Drawn four times too large and averaged, so that thin light survives at small sizes.
        const int large = simple ? size * 4 : size;
        QImage image(large, large, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        picture.render(&painter);
        painter.end();
        if (large != size)
            image = image.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        if (!image.save(artwork.filePath(QStringLiteral("icons/quellmoor-%1.png").arg(size))))
            return 1;
    }
    return 0;
}

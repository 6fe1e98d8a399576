// Renders the pictures while the program is built:
//   quellmoor-render-artwork FOLDER PERCENT SVG...
#include "ui/PictureFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>
#include <cstdlib>

namespace {

bool render(const QString &source, const QString &folder, int percent)
{
    QSvgRenderer renderer(source);
    const QSize points = renderer.defaultSize();
    QImage image(points * percent / 100, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    renderer.render(&painter, QRectF(image.rect()));
    painter.end();
    QFile file(folder + QLatin1Char('/') +
               PictureFile::name(QFileInfo(source).completeBaseName(), percent));
    const QByteArray bytes = PictureFile::encode(points, image);
    return renderer.isValid() && file.open(QIODevice::WriteOnly) &&
           file.write(bytes) == bytes.size();
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    for (const QString &source : words.mid(3))
        if (!render(source, words.at(1), words.at(2).toInt())) {
            std::fprintf(stderr, "cannot render %s\n", qUtf8Printable(source));
            return EXIT_FAILURE;
        }
    return EXIT_SUCCESS;
}

#pragma once

#include <QByteArray>
#include <QImage>

#include <cstring>

// A picture as it was rendered while the program was built: it is there at once, where drawing a
// vector picture of the size of the window takes longer than the rest of the program's start.
struct PictureFile
{
    // Of the file, before its pixels (Format_ARGB32_Premultiplied, without gaps).
    struct Header
    {
        // In points.
        qint32 width;
        qint32 height;
        qint32 pixelWidth;
        qint32 pixelHeight;
    };

    // What the file is called, without its folder, at the scale in percent.
    [[nodiscard]] static QString name(const QString &picture, int percent)
    {
        return QStringLiteral("%1@%2.pixels").arg(picture).arg(percent);
    }

    // The bytes of a file.
    [[nodiscard]] static QByteArray encode(QSize points, const QImage &image)
    {
        const Header header{points.width(), points.height(), image.width(), image.height()};
        QByteArray bytes(reinterpret_cast<const char *>(&header), sizeof header);
        for (int y = 0; y < image.height(); ++y)
            bytes.append(reinterpret_cast<const char *>(image.constScanLine(y)),
                         qsizetype(image.width()) * 4);
        return bytes;
    }

    // False when these are not the bytes of a file.
    [[nodiscard]] bool decode(const QByteArray &bytes)
    {
        Header header{};
        if (bytes.size() < qsizetype(sizeof header))
            return false;
        std::memcpy(&header, bytes.constData(), sizeof header);
        points = {header.width, header.height};
        const qsizetype stride = qsizetype(header.pixelWidth) * 4;
        if (header.pixelWidth <= 0 || header.pixelHeight <= 0 ||
            bytes.size() != qsizetype(sizeof header) + stride * header.pixelHeight)
            return false;
        const auto *pixels = reinterpret_cast<const uchar *>(bytes.constData()) + sizeof header;
        image = QImage(
            pixels, header.pixelWidth, header.pixelHeight, stride,
            QImage::Format_ARGB32_Premultiplied,
            [](void *held) { delete static_cast<QByteArray *>(held); }, new QByteArray(bytes));
        if (reinterpret_cast<quintptr>(pixels) % alignof(QRgb) != 0)
            image = image.copy();
        return true;
    }

    QSize points;
    QImage image;
};

#include "ui/Picture.h"

#include "platform/SystemLog.h"
#include "ui/PictureFile.h"

#include <QFile>
#include <QHash>
#include <QImageReader>
#include <QPainter>
#include <QPixmap>
#include <QResource>

#include <deque>
#include <optional>

namespace {

// A window shows each picture at one size, and at two while it moves between screens.
constexpr size_t KeptRenderings = 2;

QString pathOf(const QString &name) { return QStringLiteral(":/artwork/%1.svg").arg(name); }

// What was rendered for a screen of that scale while the program was built, if it was.
std::optional<PictureFile> rendered(const QString &name, int percent)
{
    const QResource resource(QStringLiteral(":/rendered/") + PictureFile::name(name, percent));
    PictureFile file;
    if (!resource.isValid() || !file.decode(resource.uncompressedData()))
        return std::nullopt;
    return file;
}

} // namespace

struct Picture::Drawing
{
    explicit Drawing(const QString &pictureName) : name(pictureName) {}

    const QPixmap &rendering(QSize pixels)
    {
        for (const QPixmap &pixmap : renderings)
            if (pixmap.size() == pixels)
                return pixmap;
        for (const int percent : {100, 150, 200}) {
            const auto file = rendered(name, percent);
            if (file && file->image.size() == pixels)
                return keep(QPixmap::fromImage(file->image));
        }
        QImageReader reader(pathOf(name));
        reader.setScaledSize(pixels);
        QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        if (!reader.read(&image))
            SystemLog::write(QStringLiteral("The picture %1 cannot be drawn: %2")
                                 .arg(name, reader.errorString()));
        return keep(QPixmap::fromImage(image));
    }

    const QPixmap &keep(const QPixmap &pixmap)
    {
        renderings.push_front(pixmap);
        if (renderings.size() > KeptRenderings)
            renderings.pop_back();
        return renderings.front();
    }

    const QString name;
    std::deque<QPixmap> renderings;
};

Picture Picture::named(const QString &name)
{
    static QHash<QString, std::weak_ptr<Drawing>> drawings;
    Picture picture;
    picture.m_drawing = drawings.value(name).lock();
    if (picture.m_drawing || !QFile::exists(pathOf(name)))
        return picture;
    picture.m_drawing = std::make_shared<Drawing>(name);
    drawings.insert(name, picture.m_drawing);
    return picture;
}

void Picture::paint(QPainter &painter, const QRectF &rect) const
{
    if (!m_drawing || rect.isEmpty())
        return;
    const QSizeF pixels = rect.size() * painter.device()->devicePixelRatio();
    const QPixmap &pixmap = m_drawing->rendering({qRound(pixels.width()), qRound(pixels.height())});
    painter.drawPixmap(rect, pixmap, pixmap.rect());
}

QString Picture::name() const { return m_drawing ? m_drawing->name : QString(); }

QSize Picture::size() const
{
    return m_drawing ? QImageReader(pathOf(m_drawing->name)).size() : QSize();
}

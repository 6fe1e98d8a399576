#include "ui/Picture.h"

#include <QFile>
#include <QHash>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>

#include <deque>

namespace {

// A window shows each picture at one size, and at two while it moves between screens.
constexpr size_t KeptRenderings = 2;

QString pathOf(const QString &name) { return QStringLiteral(":/artwork/%1.svg").arg(name); }

} // namespace

struct Picture::Drawing
{
    explicit Drawing(const QString &pictureName) : name(pictureName), renderer(pathOf(pictureName))
    {
    }

    const QPixmap &rendering(QSize pixels)
    {
        for (const QPixmap &pixmap : renderings)
            if (pixmap.size() == pixels)
                return pixmap;
        QPixmap pixmap(pixels);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        renderer.render(&painter, QRectF(QPointF(), pixels));
        painter.end();
        renderings.push_front(pixmap);
        if (renderings.size() > KeptRenderings)
            renderings.pop_back();
        return renderings.front();
    }

    const QString name;
    QSvgRenderer renderer;
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

QSize Picture::size() const { return m_drawing ? m_drawing->renderer.defaultSize() : QSize(); }

#include "Catalogue.h"

#include <QFile>
#include <QXmlStreamReader>

#include <algorithm>

namespace {

Catalogue::Message readMessage(QXmlStreamReader &xml, const QString &context)
{
    Catalogue::Message message;
    message.context = context;
    while (xml.readNextStartElement()) {
        if (xml.name() == QStringLiteral("source")) {
            message.source = xml.readElementText();
        } else if (xml.name() == QStringLiteral("translation")) {
            message.state = xml.attributes().value(QStringLiteral("type")).toString();
            message.translation = xml.readElementText();
        } else {
            xml.skipCurrentElement();
        }
    }
    return message;
}

void readContext(QXmlStreamReader &xml, Catalogue &catalogue)
{
    QString context;
    while (xml.readNextStartElement()) {
        if (xml.name() == QStringLiteral("name"))
            context = xml.readElementText();
        else if (xml.name() == QStringLiteral("message"))
            catalogue.messages += readMessage(xml, context);
        else
            xml.skipCurrentElement();
    }
}

} // namespace

Catalogue Catalogue::read(const QString &path)
{
    Catalogue catalogue;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return catalogue;
    QXmlStreamReader xml(&file);
    xml.readNextStartElement();
    catalogue.language = xml.attributes().value(QStringLiteral("language")).toString();
    while (xml.readNextStartElement())
        readContext(xml, catalogue);
    return xml.hasError() ? Catalogue() : catalogue;
}

Catalogue Catalogue::of(const QString &language) { return read(pathOf(language)); }

QString Catalogue::pathOf(const QString &language)
{
    return QStringLiteral(QUELLMOOR_SOURCE_FOLDER "/i18n/quellmoor_%1.ts").arg(language);
}

QStringList Catalogue::sortedKeys() const
{
    QStringList keys;
    for (const Message &message : messages)
        keys += message.key();
    std::sort(keys.begin(), keys.end());
    return keys;
}

#include "ui/InterfaceCompiler.h"

#include <QColor>
#include <QHash>
#include <QRect>
#include <QXmlStreamReader>

namespace {

// The numbers in the children of the current element, by their names.
QHash<QString, int> readNumbers(QXmlStreamReader &xml)
{
    QHash<QString, int> numbers;
    while (xml.readNextStartElement()) {
        const QString name = xml.name().toString();
        numbers.insert(name, xml.readElementText().toInt());
    }
    return numbers;
}

QRect readRect(QXmlStreamReader &xml)
{
    const auto numbers = readNumbers(xml);
    return {numbers.value(QStringLiteral("x")), numbers.value(QStringLiteral("y")),
            numbers.value(QStringLiteral("width")), numbers.value(QStringLiteral("height"))};
}

QColor readColor(QXmlStreamReader &xml)
{
    const int alpha = xml.attributes().hasAttribute(QStringLiteral("alpha"))
                          ? xml.attributes().value(QStringLiteral("alpha")).toInt()
                          : 255;
    const auto numbers = readNumbers(xml);
    return {numbers.value(QStringLiteral("red")), numbers.value(QStringLiteral("green")),
            numbers.value(QStringLiteral("blue")), alpha};
}

void readText(QXmlStreamReader &xml, InterfaceFile::Property &property)
{
    const bool isFixed = xml.attributes().value(QStringLiteral("notr")) == QLatin1String("true");
    property.comment = xml.attributes().value(QStringLiteral("comment")).toUtf8();
    const QString text = xml.readElementText();
    property.isTranslated = !isFixed && !text.isEmpty();
    property.value = text;
}

InterfaceFile::Property readProperty(QXmlStreamReader &xml)
{
    InterfaceFile::Property property;
    property.name = xml.attributes().value(QStringLiteral("name")).toUtf8();
    if (!xml.readNextStartElement())
        return property;
    if (xml.name() == QLatin1String("rect"))
        property.value = readRect(xml);
    else if (xml.name() == QLatin1String("color"))
        property.value = readColor(xml);
    else if (xml.name() == QLatin1String("string"))
        readText(xml, property);
    else if (xml.name() == QLatin1String("bool"))
        property.value = xml.readElementText() == QLatin1String("true");
    else
        property.value = xml.readElementText();
    xml.skipCurrentElement();
    return property;
}

InterfaceFile::Widget readWidget(QXmlStreamReader &xml)
{
    InterfaceFile::Widget widget;
    widget.className = xml.attributes().value(QStringLiteral("class")).toString();
    widget.name = xml.attributes().value(QStringLiteral("name")).toString();
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("property"))
            widget.properties += readProperty(xml);
        else if (xml.name() == QLatin1String("widget"))
            widget.children += readWidget(xml);
        else
            xml.skipCurrentElement();
    }
    return widget;
}

QList<QString> readTabStops(QXmlStreamReader &xml)
{
    QList<QString> names;
    while (xml.readNextStartElement())
        names += xml.readElementText();
    return names;
}

} // namespace

std::variant<InterfaceFile, QString> InterfaceCompiler::read(QIODevice &device)
{
    QXmlStreamReader xml(&device);
    InterfaceFile file;
    if (xml.readNextStartElement() && xml.name() != QLatin1String("ui"))
        xml.raiseError(QStringLiteral("This is no interface file."));
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("class"))
            file.context = xml.readElementText().toUtf8();
        else if (xml.name() == QLatin1String("widget") && file.root.className.isEmpty())
            file.root = readWidget(xml);
        else if (xml.name() == QLatin1String("tabstops"))
            file.tabStops = readTabStops(xml);
        else
            xml.skipCurrentElement();
    }
    if (!xml.hasError() && file.root.className.isEmpty())
        xml.raiseError(QStringLiteral("There is no widget."));
    if (xml.hasError())
        return QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(xml.errorString());
    return file;
}

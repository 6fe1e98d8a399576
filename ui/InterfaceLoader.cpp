#include "ui/InterfaceLoader.h"

#include "platform/SystemLog.h"
#include "ui/Accessibility.h"
#include "ui/CustomSecureTextFieldCell.h"
#include "ui/CustomTextFieldCell.h"
#include "ui/CustomTouchBarView.h"
#include "ui/LauncherView.h"
#include "ui/NewsView.h"
#include "ui/PictureView.h"
#include "ui/RolloverButton.h"
#include "ui/TextLabel.h"
#include "ui/TouchBarButton.h"
#include "ui/VARNOProgressView.h"

#include <QCoreApplication>
#include <QFile>
#include <QXmlStreamReader>

namespace {

template<typename Class>
QWidget *make(QWidget *parent)
{
    return new Class(parent);
}

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

QString readText(QXmlStreamReader &xml, const QByteArray &context)
{
    const bool isFixed = xml.attributes().value(QStringLiteral("notr")) == QLatin1String("true");
    const QByteArray comment = xml.attributes().value(QStringLiteral("comment")).toUtf8();
    const QString text = xml.readElementText();
    return isFixed || text.isEmpty()
               ? text
               : QCoreApplication::translate(context.constData(), text.toUtf8().constData(),
                                             comment.isEmpty() ? nullptr : comment.constData());
}

} // namespace

InterfaceLoader::InterfaceLoader()
    : m_makers{
          {QStringLiteral("CustomSecureTextFieldCell"), make<CustomSecureTextFieldCell>},
          {QStringLiteral("CustomTextFieldCell"), make<CustomTextFieldCell>},
          {QStringLiteral("CustomTouchBarView"), make<CustomTouchBarView>},
          {QStringLiteral("LauncherView"), make<LauncherView>},
          {QStringLiteral("NewsView"), make<NewsView>},
          {QStringLiteral("PictureView"), make<PictureView>},
          {QStringLiteral("QWidget"), make<QWidget>},
          {QStringLiteral("RolloverButton"), make<RolloverButton>},
          {QStringLiteral("TextLabel"), make<TextLabel>},
          {QStringLiteral("TouchBarButton"), make<TouchBarButton>},
          {QStringLiteral("VARNOProgressView"), make<VARNOProgressView>},
      }
{
    Accessibility::install();
}

QWidget *InterfaceLoader::load(const QString &name)
{
    QFile file(QStringLiteral(":/interfaces/%1.ui").arg(name));
    return file.open(QIODevice::ReadOnly) ? load(file) : nullptr;
}

QWidget *InterfaceLoader::load(QIODevice &file)
{
    QXmlStreamReader xml(&file);
    std::unique_ptr<QWidget> root;
    if (!xml.readNextStartElement() || xml.name() != QLatin1String("ui"))
        return nullptr;
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("class"))
            m_context = xml.readElementText().toUtf8();
        else if (xml.name() == QLatin1String("widget") && !root)
            root.reset(readWidget(xml, nullptr));
        else if (xml.name() == QLatin1String("tabstops") && root)
            readTabStops(xml, *root);
        else
            xml.skipCurrentElement();
    }
    if (xml.hasError())
        return nullptr;
    return root.release();
}

QWidget *InterfaceLoader::readWidget(QXmlStreamReader &xml, QWidget *parent)
{
    const QString className = xml.attributes().value(QStringLiteral("class")).toString();
    const auto maker = m_makers.constFind(className);
    if (maker == m_makers.constEnd()) {
        SystemLog::write(QStringLiteral("No class %1 for the interface file.").arg(className));
        xml.skipCurrentElement();
        return nullptr;
    }
    QWidget *widget = (*maker)(parent);
    widget->setObjectName(xml.attributes().value(QStringLiteral("name")));
    while (xml.readNextStartElement()) {
        if (xml.name() == QLatin1String("property"))
            readProperty(xml, *widget);
        else if (xml.name() == QLatin1String("widget"))
            readWidget(xml, widget);
        else
            xml.skipCurrentElement();
    }
    return widget;
}

void InterfaceLoader::readProperty(QXmlStreamReader &xml, QWidget &widget) const
{
    const QByteArray name = xml.attributes().value(QStringLiteral("name")).toUtf8();
    if (!xml.readNextStartElement())
        return;
    QVariant value;
    if (xml.name() == QLatin1String("rect"))
        value = readRect(xml);
    else if (xml.name() == QLatin1String("color"))
        value = readColor(xml);
    else if (xml.name() == QLatin1String("string"))
        value = readText(xml, m_context);
    else if (xml.name() == QLatin1String("bool"))
        value = xml.readElementText() == QLatin1String("true");
    else // numbers and the names of enumerators, which the property makes its own type
        value = xml.readElementText();
    if (!widget.setProperty(name.constData(), value))
        SystemLog::write(QStringLiteral("%1 in the interface file has no property %2.")
                             .arg(widget.objectName(), QString::fromUtf8(name)));
    xml.skipCurrentElement();
}

void InterfaceLoader::readTabStops(QXmlStreamReader &xml, QWidget &root)
{
    QWidget *previous = nullptr;
    while (xml.readNextStartElement()) {
        auto *widget = root.findChild<QWidget *>(xml.readElementText());
        if (previous && widget)
            QWidget::setTabOrder(previous, widget);
        previous = widget;
    }
}

QList<QWidget *> InterfaceLoader::topLevelObjects(QWidget *root)
{
    if (!root)
        return {};
    return QList<QWidget *>{root} +
           root->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
}

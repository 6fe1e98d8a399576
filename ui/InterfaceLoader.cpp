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
#include <QResource>

namespace {

template<typename Class>
QWidget *makeOne(QWidget *parent)
{
    return new Class(parent);
}

QString textOf(const InterfaceFile::Property &property, const QByteArray &context)
{
    const QString text = property.value.toString();
    return QCoreApplication::translate(context.constData(), text.toUtf8().constData(),
                                       property.comment.isEmpty() ? nullptr
                                                                  : property.comment.constData());
}

void setTabOrder(const QList<QString> &names, QWidget &root)
{
    QWidget *previous = nullptr;
    for (const QString &name : names) {
        auto *widget = root.findChild<QWidget *>(name);
        if (previous && widget)
            QWidget::setTabOrder(previous, widget);
        previous = widget;
    }
}

} // namespace

InterfaceLoader::InterfaceLoader()
    : m_makers{
          {QStringLiteral("CustomSecureTextFieldCell"), makeOne<CustomSecureTextFieldCell>},
          {QStringLiteral("CustomTextFieldCell"), makeOne<CustomTextFieldCell>},
          {QStringLiteral("CustomTouchBarView"), makeOne<CustomTouchBarView>},
          {QStringLiteral("LauncherView"), makeOne<LauncherView>},
          {QStringLiteral("NewsView"), makeOne<NewsView>},
          {QStringLiteral("PictureView"), makeOne<PictureView>},
          {QStringLiteral("QWidget"), makeOne<QWidget>},
          {QStringLiteral("RolloverButton"), makeOne<RolloverButton>},
          {QStringLiteral("TextLabel"), makeOne<TextLabel>},
          {QStringLiteral("TouchBarButton"), makeOne<TouchBarButton>},
          {QStringLiteral("VARNOProgressView"), makeOne<VARNOProgressView>},
      }
{
    Accessibility::install();
}

QWidget *InterfaceLoader::load(const QString &name)
{
    const QResource resource(QStringLiteral(":/interfaces/") + InterfaceFile::name(name));
    return resource.isValid() ? load(resource.uncompressedData()) : nullptr;
}

QWidget *InterfaceLoader::load(const QByteArray &bytes)
{
    QDataStream stream(bytes);
    InterfaceFile file;
    stream >> file;
    return stream.status() == QDataStream::Ok ? load(file) : nullptr;
}

QWidget *InterfaceLoader::load(const InterfaceFile &file)
{
    m_context = file.context;
    QWidget *root = make(file.root, nullptr);
    if (root)
        setTabOrder(file.tabStops, *root);
    return root;
}

QWidget *InterfaceLoader::make(const InterfaceFile::Widget &described, QWidget *parent) const
{
    const auto maker = m_makers.constFind(described.className);
    if (maker == m_makers.constEnd()) {
        SystemLog::write(
            QStringLiteral("No class %1 for the interface file.").arg(described.className));
        return nullptr;
    }
    QWidget *widget = (*maker)(parent);
    widget->setObjectName(described.name);
    for (const auto &property : described.properties)
        set(property, *widget);
    for (const auto &child : described.children)
        make(child, widget);
    return widget;
}

void InterfaceLoader::set(const InterfaceFile::Property &property, QWidget &widget) const
{
    const QVariant value = property.isTranslated ? textOf(property, m_context) : property.value;
    if (!widget.setProperty(property.name.constData(), value))
        SystemLog::write(QStringLiteral("%1 in the interface file has no property %2.")
                             .arg(widget.objectName(), QString::fromUtf8(property.name)));
}

QList<QWidget *> InterfaceLoader::topLevelObjects(QWidget *root)
{
    if (!root)
        return {};
    return QList<QWidget *>{root} +
           root->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
}

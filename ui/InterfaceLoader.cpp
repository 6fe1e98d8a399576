#include "ui/InterfaceLoader.h"

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

#include <QFile>

namespace {

template<typename Class>
QWidget *make(QWidget *parent)
{
    return new Class(parent);
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
          {QStringLiteral("RolloverButton"), make<RolloverButton>},
          {QStringLiteral("TextLabel"), make<TextLabel>},
          {QStringLiteral("TouchBarButton"), make<TouchBarButton>},
          {QStringLiteral("VARNOProgressView"), make<VARNOProgressView>},
      }
{
    Accessibility::install();
}

void InterfaceLoader::addClass(const QString &className, const Maker &maker)
{
    m_makers.insert(className, maker);
}

QWidget *InterfaceLoader::load(const QString &name)
{
    QFile file(QStringLiteral(":/interfaces/%1.ui").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        return nullptr;
    return QUiLoader::load(&file);
}

QList<QWidget *> InterfaceLoader::topLevelObjects(QWidget *root)
{
    if (!root)
        return {};
    return QList<QWidget *>{root} +
           root->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
}

QWidget *InterfaceLoader::createWidget(const QString &className, QWidget *parent,
                                       const QString &name)
{
    const auto maker = m_makers.constFind(className);
    if (maker == m_makers.constEnd())
        return QUiLoader::createWidget(className, parent, name);
    QWidget *widget = (*maker)(parent);
    widget->setObjectName(name);
    return widget;
}

#pragma once

#include <QHash>
#include <QString>
#include <QUiLoader>

#include <functional>

// Makes widgets from the interface files in the application's resources, with the user interface's
// own classes, and has them described to assistive technology. Main thread only.
class InterfaceLoader : public QUiLoader
{
    Q_OBJECT

public:
    using Maker = std::function<QWidget *(QWidget *parent)>;

    InterfaceLoader();

    // Makes objects of that class, too, when a file names it.
    void addClass(const QString &className, const Maker &maker);

    // The root object of the file ":/interfaces/NAME.ui", which the caller owns; null when there is
    // no such file or it cannot be read.
    [[nodiscard]] QWidget *load(const QString &name);

    // The root and then its direct children, as the file lists them. Empty for null.
    [[nodiscard]] static QList<QWidget *> topLevelObjects(QWidget *root);

    QWidget *createWidget(const QString &className, QWidget *parent, const QString &name) override;

private:
    QHash<QString, Maker> m_makers;
};

#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>

class QIODevice;
class QWidget;
class QXmlStreamReader;

// Makes widgets from interface files (*.ui, as Qt Designer writes them), with the user interface's
// own classes, and has them described to assistive technology. It understands what such a file says
// about widgets inside widgets, their properties and their tab order; there are no layouts and no
// connections. Qt's own reader would load every plugin of Qt Designer that the system has before it
// reads a line. Main thread only.
class InterfaceLoader
{
public:
    using Maker = std::function<QWidget *(QWidget *parent)>;

    InterfaceLoader();

    // The root object of the file ":/interfaces/NAME.ui", which the caller owns; null when there is
    // no such file or it cannot be read. Texts come in the player's language.
    [[nodiscard]] QWidget *load(const QString &name);
    // From a file that is open.
    [[nodiscard]] QWidget *load(QIODevice &file);

    // The root and then its direct children, as the file lists them. Empty for null.
    [[nodiscard]] static QList<QWidget *> topLevelObjects(QWidget *root);

private:
    QWidget *readWidget(QXmlStreamReader &xml, QWidget *parent);
    void readProperty(QXmlStreamReader &xml, QWidget &widget) const;
    static void readTabStops(QXmlStreamReader &xml, QWidget &root);

    const QHash<QString, Maker> m_makers;
    QByteArray m_context; // of the texts, for the translator
};

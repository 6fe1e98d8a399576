#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QList>
#include <QString>
#include <QVariant>

// An interface file (*.ui) as it was read while the program was built: reading the XML itself would
// take a tenth of the time to the first frame.
struct InterfaceFile
{
    struct Property
    {
        QByteArray name;
        // A rectangle, a colour, a truth value or a text. Numbers and the names of enumerators are
        // texts, which the widget's property makes its own type.
        QVariant value;
        bool isTranslated = false;
        QByteArray comment; // for the translator
    };

    struct Widget
    {
        QString className;
        QString name;
        QList<Property> properties;
        QList<Widget> children;
    };

    // What the file is called, without its folder.
    [[nodiscard]] static QString name(const QString &interface)
    {
        return interface + QStringLiteral(".interface");
    }

    QByteArray context; // of the texts, for the translator
    Widget root;
    QList<QString> tabStops; // names of widgets

    friend QDataStream &operator<<(QDataStream &stream, const Property &property)
    {
        return stream << property.name << property.value << property.isTranslated
                      << property.comment;
    }
    friend QDataStream &operator>>(QDataStream &stream, Property &property)
    {
        return stream >> property.name >> property.value >> property.isTranslated >>
               property.comment;
    }
    friend QDataStream &operator<<(QDataStream &stream, const Widget &widget)
    {
        return stream << widget.className << widget.name << widget.properties << widget.children;
    }
    friend QDataStream &operator>>(QDataStream &stream, Widget &widget)
    {
        return stream >> widget.className >> widget.name >> widget.properties >> widget.children;
    }
    friend QDataStream &operator<<(QDataStream &stream, const InterfaceFile &file)
    {
        return stream << file.context << file.root << file.tabStops;
    }
    friend QDataStream &operator>>(QDataStream &stream, InterfaceFile &file)
    {
        return stream >> file.context >> file.root >> file.tabStops;
    }
};

#pragma once

#include "ui/InterfaceFile.h"

#include <QHash>

#include <functional>

class QWidget;

// Makes widgets from interface files, with the user interface's own classes, and has them described
// to assistive technology. The files were read by InterfaceCompiler while the program was built.
// Main thread only.
class InterfaceLoader
{
public:
    using Maker = std::function<QWidget *(QWidget *parent)>;

    InterfaceLoader();

    // The root object of "NAME.ui", which the caller owns; null when the program has no such file
    // or it is damaged. Texts come in the player's language.
    [[nodiscard]] QWidget *load(const QString &name);
    // From the bytes of a file, or from what they tell.
    [[nodiscard]] QWidget *load(const QByteArray &bytes);
    [[nodiscard]] QWidget *load(const InterfaceFile &file);

    // The root and then its direct children, as the file lists them. Empty for null.
    [[nodiscard]] static QList<QWidget *> topLevelObjects(QWidget *root);

private:
    QWidget *make(const InterfaceFile::Widget &described, QWidget *parent) const;
    void set(const InterfaceFile::Property &property, QWidget &widget) const;

    const QHash<QString, Maker> m_makers;
    QByteArray m_context; // of the texts, for the translator
};

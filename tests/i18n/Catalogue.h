#pragma once

#include <QList>
#include <QString>

// A catalogue of translations as it lies in the sources.
struct Catalogue
{
    struct Message
    {
        QString context;
        QString source;
        QString translation;
        QString state; // "unfinished", "vanished", "obsolete"; empty when all is well

        // What the program looks the message up by.
        [[nodiscard]] QString key() const { return context + QLatin1Char('|') + source; }
    };

    // One that cannot be read has no messages.
    [[nodiscard]] static Catalogue read(const QString &path);
    // The one of a language, from the source tree.
    [[nodiscard]] static Catalogue of(const QString &language);
    [[nodiscard]] static QString pathOf(const QString &language);

    [[nodiscard]] QStringList sortedKeys() const;

    QString language;
    QList<Message> messages;
};

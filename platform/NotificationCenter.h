#pragma once

#include <QHash>
#include <QString>

#include <functional>

// Tells whoever asked for it that something of a name has happened. Main thread only.
class NotificationCenter
{
public:
    // `object` is whoever posted; compare it, do not own it.
    using Observer = std::function<void(const void *object)>;
    using Token = int;

    static NotificationCenter &defaultCenter();

    // Hears every notification of that name, from any object, until removed.
    [[nodiscard]] Token addObserver(const QString &name, Observer observer);
    // Nothing happens for a token that is not in use.
    void removeObserver(Token token);

    // Calls the observers in the order in which they were added, before it returns. Observers may
    // add and remove observers.
    void post(const QString &name, const void *object);

private:
    struct Entry
    {
        Token token;
        QString name;
        Observer observer;
    };

    QList<Entry> m_entries;
    Token m_lastToken = 0;
};

#include "platform/NotificationCenter.h"

#include <algorithm>

NotificationCenter &NotificationCenter::defaultCenter()
{
    static NotificationCenter center;
    return center;
}

NotificationCenter::Token NotificationCenter::addObserver(const QString &name, Observer observer)
{
    m_entries.append({++m_lastToken, name, std::move(observer)});
    return m_lastToken;
}

void NotificationCenter::removeObserver(Token token)
{
    m_entries.removeIf([token](const Entry &entry) { return entry.token == token; });
}

void NotificationCenter::post(const QString &name, const void *object)
{
    const QList<Entry> entries = m_entries;
    for (const Entry &entry : entries) {
        const bool isStillThere =
            std::any_of(m_entries.cbegin(), m_entries.cend(),
                        [&entry](const Entry &other) { return other.token == entry.token; });
        if (isStillThere && entry.name == name)
            entry.observer(object);
    }
}

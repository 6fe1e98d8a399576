#include "platform/UserDefaults.h"

#include "app/ErrorHandler.h"
#include "platform/linux/SettingsDatabase.h"

UserDefaults::UserDefaults(QString path)
    : m_path(std::move(path)), m_values(SettingsDatabase::load(m_path))
{
}

UserDefaults::~UserDefaults() { synchronize(); }

template<typename Type>
std::optional<Type> UserDefaults::value(const QString &key) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_values.constFind(key);
    if (found == m_values.cend() || !std::holds_alternative<Type>(*found))
        return std::nullopt;
    return std::get<Type>(*found);
}

std::optional<QString> UserDefaults::string(const QString &key) const
{
    return value<QString>(key);
}

std::optional<Date> UserDefaults::date(const QString &key) const { return value<Date>(key); }

std::optional<QByteArray> UserDefaults::data(const QString &key) const
{
    return value<QByteArray>(key);
}

bool UserDefaults::boolean(const QString &key) const { return value<bool>(key).value_or(false); }

bool UserDefaults::contains(const QString &key) const
{
    const std::lock_guard lock(m_mutex);
    return m_values.contains(key);
}

void UserDefaults::set(const QString &key, const Value &value)
{
    const std::lock_guard lock(m_mutex);
    const auto found = m_values.find(key);
    if (found != m_values.end() && *found == value)
        return;
    m_values.insert(key, value);
    m_changes.insert(key, value);
}

void UserDefaults::remove(const QString &key)
{
    const std::lock_guard lock(m_mutex);
    if (m_values.remove(key))
        m_changes.insert(key, std::nullopt);
}

std::optional<Error> UserDefaults::synchronize()
{
    const std::lock_guard saving(m_saveMutex);
    QHash<QString, std::optional<Value>> changes;
    QHash<QString, Value> values;
    {
        const std::lock_guard lock(m_mutex);
        changes = std::exchange(m_changes, {});
        values = m_values;
    }
    if (changes.isEmpty())
        return std::nullopt;
    std::optional<Error> error = SettingsDatabase::save(m_path, changes, values);
    if (!error)
        return std::nullopt;
    ErrorHandler::log(error->localizedDescription);
    const std::lock_guard lock(m_mutex);
    for (auto change = changes.cbegin(); change != changes.cend(); ++change) {
        if (!m_changes.contains(change.key()))
            m_changes.insert(change.key(), change.value());
    }
    return error;
}

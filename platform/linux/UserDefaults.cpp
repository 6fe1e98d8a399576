#include "platform/UserDefaults.h"

#include "app/ErrorHandler.h"
#include "platform/linux/SettingsDatabase.h"

#include <cerrno>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr auto ShortPatience = 300ms;
// Reads are many, and each try opens the file.
constexpr auto TimeBetweenTries = 200ms;

} // namespace

UserDefaults::UserDefaults(QString path) : m_path(std::move(path))
{
    if (const auto loaded = SettingsDatabase::load(m_path, ShortPatience))
        takeLoaded(*loaded);
    else
        ErrorHandler::log(
            QStringLiteral("Cannot read the settings in %1 yet: another program has locked them")
                .arg(m_path));
}

UserDefaults::~UserDefaults() { synchronize(); }

// Changes are newer than what is on the disk.
void UserDefaults::takeLoaded(const QHash<QString, Value> &loaded) const
{
    if (std::exchange(m_isLoaded, true))
        return;
    m_values = loaded;
    for (auto change = m_changes.cbegin(); change != m_changes.cend(); ++change) {
        if (change.value())
            m_values.insert(change.key(), *change.value());
        else
            m_values.remove(change.key());
    }
}

// Without waiting for the lock. The mutex is held.
void UserDefaults::loadIfLate() const
{
    if (m_isLoaded)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (now < m_nextTry)
        return;
    if (const auto loaded = SettingsDatabase::load(m_path, 0ms))
        takeLoaded(*loaded);
    m_nextTry = now + TimeBetweenTries;
}

// Waits for the lock without the mutex. Nobody saves meanwhile, so what is loaded stays true.
std::optional<Error> UserDefaults::loadBeforeSaving()
{
    {
        const std::lock_guard lock(m_mutex);
        if (m_isLoaded || m_changes.isEmpty())
            return std::nullopt;
    }
    const auto loaded = SettingsDatabase::load(m_path, SettingsDatabase::LongPatience);
    if (!loaded)
        return Error{
            QStringLiteral("Cannot save the settings in %1: another program has locked them")
                .arg(m_path),
            EBUSY};
    const std::lock_guard lock(m_mutex);
    takeLoaded(*loaded);
    return std::nullopt;
}

template<typename Type>
std::optional<Type> UserDefaults::value(const QString &key) const
{
    const std::lock_guard lock(m_mutex);
    loadIfLate();
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
    loadIfLate();
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
    if (m_values.remove(key) || !m_isLoaded)
        m_changes.insert(key, std::nullopt);
}

std::optional<Error> UserDefaults::synchronize()
{
    const std::lock_guard saving(m_saveMutex);
    if (auto error = loadBeforeSaving()) {
        ErrorHandler::log(error->localizedDescription);
        return error;
    }
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

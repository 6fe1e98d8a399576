#pragma once

#include "platform/Error.h"
#include "platform/FileSystem.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <chrono>
#include <mutex>
#include <optional>
#include <variant>

// The launcher's settings: typed values by key, loaded into memory once when the object is made
// and kept in one small database that only its owner can read. Changes are in memory at once and
// reach the disk together at synchronize(); what is on the disk is always a whole earlier or later
// state. Any thread may call.
class UserDefaults
{
public:
    using Value = std::variant<QString, Date, bool, QByteArray>;

    // A database that is damaged, or is not one of settings, is set aside under its name plus
    // ".bad" and logged; the settings then start empty. Earlier ones set aside stay: the new one
    // gets a number behind its name, up to ".bad.9". The file and its folder are made by the first
    // save. One that another process holds locked is waited for a moment and then logged; the
    // settings begin empty and come back with a later read or save, once the lock is gone. Nothing
    // is saved before.
    explicit UserDefaults(QString path);
    // Saves what is unsaved.
    ~UserDefaults();
    UserDefaults(const UserDefaults &) = delete;
    UserDefaults &operator=(const UserDefaults &) = delete;

    // Nothing when the key is absent or holds a value of another type.
    [[nodiscard]] std::optional<QString> string(const QString &key) const;
    [[nodiscard]] std::optional<Date> date(const QString &key) const;
    [[nodiscard]] std::optional<QByteArray> data(const QString &key) const;
    // False when absent.
    [[nodiscard]] bool boolean(const QString &key) const;
    [[nodiscard]] bool contains(const QString &key) const;

    void set(const QString &key, const Value &value);
    void remove(const QString &key);

    // Saves all changes since the last save in one transaction. After a failure they stay unsaved
    // and go along with the next save; the failure is also logged. A database that turns out to be
    // damaged is set aside, and a new one gets everything that is in memory.
    std::optional<Error> synchronize();

private:
    template<typename Type>
    [[nodiscard]] std::optional<Type> value(const QString &key) const;

    void takeLoaded(const QHash<QString, Value> &loaded) const;
    void loadIfLate() const;
    [[nodiscard]] std::optional<Error> loadBeforeSaving();

    const QString m_path;
    std::mutex m_saveMutex; // one save at a time; taken before m_mutex
    mutable std::mutex m_mutex;
    mutable QHash<QString, Value> m_values;
    QHash<QString, std::optional<Value>> m_changes; // nothing: to be removed
    // False while m_values knows the changes only.
    mutable bool m_isLoaded = false;
    mutable std::chrono::steady_clock::time_point m_nextTry;
};

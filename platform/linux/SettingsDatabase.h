#pragma once

#include "platform/UserDefaults.h"

#include <chrono>

// The settings' file: an SQLite database with one table of keys and typed values, opened for each
// load and save and closed again, on any thread.
namespace SettingsDatabase {

using Values = QHash<QString, UserDefaults::Value>;
using Changes = QHash<QString, std::optional<UserDefaults::Value>>;

constexpr std::chrono::milliseconds LongPatience{5000};

// Nothing while another process holds the file locked, which is waited for at most that long and
// not logged. A missing file is an empty one. A damaged one is set aside, logged, and counts as
// empty: it is renamed to `path` plus ".bad", or ".bad.2" and so on while those are there. After
// ".bad.9" the last one is replaced, so that the first, which may hold the most, stays.
[[nodiscard]] std::optional<Values> load(const QString &path, std::chrono::milliseconds patience);

// Applies all changes or none. When only now the file shows that it is damaged, it is set aside and
// a new one is made with `all`, the settings as they are after the changes. Waits for a lock at
// most LongPatience.
std::optional<Error> save(const QString &path, const Changes &changes, const Values &all);

} // namespace SettingsDatabase

#pragma once

#include "platform/UserDefaults.h"

// The settings' file: an SQLite database with one table of keys and typed values, opened for each
// load and save and closed again, on any thread.
namespace SettingsDatabase {

using Values = QHash<QString, UserDefaults::Value>;
using Changes = QHash<QString, std::optional<UserDefaults::Value>>;

// A missing file is an empty one. A damaged one is renamed to `path` plus ".bad", logged, and
// counts as empty.
[[nodiscard]] Values load(const QString &path);

// Applies all changes or none.
std::optional<Error> save(const QString &path, const Changes &changes);

} // namespace SettingsDatabase

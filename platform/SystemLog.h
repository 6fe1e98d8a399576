#pragma once

#include <QString>

#include <functional>

// The one place where log lines leave the process: each goes to the system log, to standard error
// and, once it has one, to a file of its own. Any thread may write; lines never mix.
namespace SystemLog {

// Writes `text` as one line. Line breaks and other control characters are written as escapes, so
// that a text from outside cannot forge a line; what looks like a secret is taken out, and of a
// long text the first 4,000 characters are written.
void write(const QString &text);

// From now on each line also goes to this file, which never grows beyond 1 MB: it is then set aside
// as "path.1" and so on, five files at most, readable by their owner only. Its folders are made. An
// empty path ends it.
void setFile(const QString &path);

// The text without line breaks and other control characters, which become escapes.
[[nodiscard]] QString onOneLine(const QString &text);

// The line with passwords, tokens, play cookies and the accounts in URLs made unreadable.
[[nodiscard]] QString withoutSecrets(const QString &line);

// Receives each line as it is written, on the writing thread. Returns the observer that was there
// before; an empty function means none. For tests and for the list of recent lines.
using Observer = std::function<void(const QString &line)>;
Observer setObserver(Observer observer);

} // namespace SystemLog

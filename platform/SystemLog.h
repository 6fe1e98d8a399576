#pragma once

#include <QString>

#include <functional>

// The one place where log lines leave the process: each goes to the system log and to standard
// error. Any thread may write; lines never mix.
namespace SystemLog {

// Writes `text` as one line. Line breaks and other control characters are written as escapes, so
// that a text from outside cannot forge a line.
void write(const QString &text);

// The text without line breaks and other control characters, which become escapes.
[[nodiscard]] QString onOneLine(const QString &text);

// Receives each line as it is written, on the writing thread. Returns the observer that was there
// before; an empty function means none. For tests and for the list of recent lines.
using Observer = std::function<void(const QString &line)>;
Observer setObserver(Observer observer);

} // namespace SystemLog

#pragma once

#include <QByteArray>
#include <QtGlobal>

// For what must stop the process. The test function runs twice: first as usual, where it starts
// this binary again for that one function and row; then in that child, where it does the deed.
namespace FatalCheck {

struct Outcome
{
    bool hasCrashed = false;
    QByteArray output;
};

[[nodiscard]] bool isChild();
// Runs the test function that runs now, of the class of that name, as a child and waits for its
// end.
[[nodiscard]] Outcome runChild(const char *className);

// For the child: it gets no more than so much memory beyond what it has, or at least (under a
// sanitizer) no piece of more than MostAtOnce.
void limitMemory(qint64 bytes);
constexpr qint64 MostAtOnce = 200 * 1024 * 1024;

} // namespace FatalCheck

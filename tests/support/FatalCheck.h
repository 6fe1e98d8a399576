#pragma once

#include <QByteArray>

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

} // namespace FatalCheck

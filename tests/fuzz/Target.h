#pragma once

#include <QByteArray>

#include <cstdio>
#include <cstdlib>

// One fuzz target a file: it hands the bytes to code that reads what comes from outside, and ends
// the process when a promise of that code does not hold. The same function runs under libFuzzer
// (scripts/fuzz) and in the replay of seeds and their mutations that CTest knows as fuzz.<target>.
// Anything the bytes can lead to is fine, as long as it returns.
void fuzzTarget(const QByteArray &bytes);

// Called once before the first bytes, behind the application object and with a home of its own.
void prepareFuzzTarget();

// A promise to the reader of the code under test.
inline void promise(bool holds, const char *what)
{
    if (holds)
        return;
    std::fprintf(stderr, "broken promise: %s\n", what);
    std::abort();
}

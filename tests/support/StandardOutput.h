#pragma once

#include <QByteArray>

// Takes what the process writes to standard output until text() or the end.
class StandardOutput
{
public:
    StandardOutput();
    ~StandardOutput();
    StandardOutput(const StandardOutput &) = delete;
    StandardOutput &operator=(const StandardOutput &) = delete;

    // Ends it and returns everything written meanwhile.
    [[nodiscard]] QByteArray text();

private:
    void restore();

    int m_before = -1; // none when restored
    int m_file = -1;
};

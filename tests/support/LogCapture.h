#pragma once

#include <QStringList>

#include <mutex>

// Collects the log's lines while it lives.
class LogCapture
{
public:
    LogCapture();
    ~LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    [[nodiscard]] QStringList lines() const;

private:
    mutable std::mutex m_mutex;
    QStringList m_lines;
};

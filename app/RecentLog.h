#pragma once

#include "platform/SystemLog.h"

#include <QStringList>

#include <mutex>

// Keeps the latest lines of the log while it lives, for the player to hand on. Made early and once;
// whoever watched the log before goes on watching. Any thread.
class RecentLog
{
public:
    static constexpr qsizetype LineLimit = 100;

    RecentLog();
    ~RecentLog();
    RecentLog(const RecentLog &) = delete;
    RecentLog &operator=(const RecentLog &) = delete;

    // The oldest first, each with the time at which it was written.
    [[nodiscard]] QStringList lines() const;

private:
    void keep(const QString &line);

    mutable std::mutex m_mutex;
    QStringList m_lines;
    SystemLog::Observer m_previous;
};

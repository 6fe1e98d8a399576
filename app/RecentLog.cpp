#include "app/RecentLog.h"

#include <QDateTime>

RecentLog::RecentLog()
{
    // Nobody writes between the two: the log is watched from the very start of the program.
    m_previous = SystemLog::setObserver({});
    SystemLog::setObserver([this](const QString &line) {
        if (m_previous)
            m_previous(line);
        keep(line);
    });
}

RecentLog::~RecentLog() { SystemLog::setObserver(std::move(m_previous)); }

QStringList RecentLog::lines() const
{
    const std::lock_guard lock(m_mutex);
    return m_lines;
}

void RecentLog::keep(const QString &line)
{
    const QString time =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz "));
    const std::lock_guard lock(m_mutex);
    if (m_lines.size() == LineLimit)
        m_lines.removeFirst();
    m_lines += time + line;
}

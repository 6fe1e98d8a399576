#include "LogCapture.h"

#include "platform/SystemLog.h"

LogCapture::LogCapture()
{
    SystemLog::setObserver([this](const QString &line) {
        const std::lock_guard lock(m_mutex);
        m_lines += line;
    });
}

LogCapture::~LogCapture() { SystemLog::setObserver({}); }

QStringList LogCapture::lines() const
{
    const std::lock_guard lock(m_mutex);
    return m_lines;
}

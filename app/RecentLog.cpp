#include "app/RecentLog.h"

#include <QDateTime>
#include <QRegularExpression>

namespace {

const auto Removed = QStringLiteral("(removed)");

// name=value, name: "value", "name":"value" and the like.
const QRegularExpression &namedSecret()
{
    static const QRegularExpression pattern(
        QStringLiteral(
            R"(((?:password|token|cookie)["']?\s*[=:]\s*)("[^"]*"?|'[^']*'?|[^\s&;,]+))"),
        QRegularExpression::CaseInsensitiveOption);
    return pattern;
}

const QRegularExpression &accountInUrl()
{
    static const QRegularExpression pattern(QStringLiteral(R"((\b[a-z][a-z0-9+.-]*://)[^\s/@]+@)"),
                                            QRegularExpression::CaseInsensitiveOption);
    return pattern;
}

} // namespace

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

QString RecentLog::withoutSecrets(const QString &line)
{
    QString result = line;
    result.replace(namedSecret(), QStringLiteral("\\1") + Removed);
    result.replace(accountInUrl(), QStringLiteral("\\1") + Removed + QLatin1Char('@'));
    return result;
}

void RecentLog::keep(const QString &line)
{
    const QString time =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz "));
    const std::lock_guard lock(m_mutex);
    if (m_lines.size() == LineLimit)
        m_lines.removeFirst();
    m_lines += time + withoutSecrets(line);
}

#pragma once

#include "patcher/Downloadable.h"

#include <QStringList>

// What writes told their completion, a line a call: the name, whether there was an error, and the
// log text in quotes.
class WriteReport
{
public:
    [[nodiscard]] Downloadable::WriteCompletion completion()
    {
        return [this](const QString &name, const std::optional<Error> &error,
                      const std::optional<QString> &logText) {
            m_calls += QStringLiteral("%1, %2, %3")
                           .arg(name, error ? QStringLiteral("error") : QStringLiteral("no error"),
                                logText ? QLatin1Char('"') + *logText + QLatin1Char('"')
                                        : QStringLiteral("none"));
        };
    }
    [[nodiscard]] const QStringList &calls() const { return m_calls; }

private:
    QStringList m_calls;
};

#include "platform/SystemLog.h"

#include <QDateTime>

#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <mutex>

namespace SystemLog {

namespace {

std::mutex logMutex;

Observer &observer()
{
    static Observer instance;
    return instance;
}

bool endsLinesOrControls(QChar c)
{
    return c.category() == QChar::Other_Control || c.category() == QChar::Separator_Line ||
           c.category() == QChar::Separator_Paragraph;
}

} // namespace

QString onOneLine(const QString &text)
{
    QString line;
    line.reserve(text.size());
    for (const QChar c : text) {
        if (c == u'\n')
            line += QStringLiteral("\\n");
        else if (c == u'\r')
            line += QStringLiteral("\\r");
        else if (endsLinesOrControls(c) && c != u'\t')
            line += QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0'));
        else
            line += c;
    }
    return line;
}

void write(const QString &text)
{
    const QString line = onOneLine(text);
    const QByteArray bytes = line.toUtf8();
    const QByteArray time =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")).toLatin1();

    const std::lock_guard lock(logMutex);
    syslog(LOG_USER | LOG_NOTICE, "%s", bytes.constData());
    std::fprintf(stderr, "%s quellmoor-launcher[%d] %s\n", time.constData(), int(getpid()),
                 bytes.constData());
    if (observer())
        observer()(line);
}

Observer setObserver(Observer next)
{
    const std::lock_guard lock(logMutex);
    return std::exchange(observer(), std::move(next));
}

} // namespace SystemLog

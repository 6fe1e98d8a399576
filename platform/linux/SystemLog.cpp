#include "platform/SystemLog.h"

#include "platform/linux/RotatingFile.h"

#include <QDateTime>
#include <QRegularExpression>

#include <syslog.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <mutex>

namespace SystemLog {

namespace {

// What is looked at of a text, and what is written of a line, in characters. Texts may come from
// outside, with names of megabytes.
constexpr qsizetype LongestText = 65'536;
constexpr qsizetype LongestLine = 4'000;

std::mutex logMutex;

Observer &observer()
{
    static Observer instance;
    return instance;
}

std::unique_ptr<RotatingFile> &file()
{
    static std::unique_ptr<RotatingFile> instance;
    return instance;
}

QRegularExpression ignoringCase(const QString &pattern)
{
    return QRegularExpression(pattern, QRegularExpression::CaseInsensitiveOption);
}

// A header that is nothing but a secret: all that follows it.
const QRegularExpression &secretHeader()
{
    static const QRegularExpression pattern =
        ignoringCase(QStringLiteral(R"((\b(?:cookie|authorization):\s*)[^\s"'\\].*)"));
    return pattern;
}

// name=value, name: "value", "name":"value", the same inside of a string, and the like. What is
// sent as a form keeps its commas and semicolons.
const QRegularExpression &namedSecret()
{
    static const QRegularExpression pattern = ignoringCase(
        QStringLiteral(R"(((?:password|passwd|token|cookie|authorization)["'\\]*\s*[=:]\s*))"
                       R"((\\".*?(?:\\"|$)|"(?:[^"\\]++|\\.)*+"?|'[^']*+'?|[^\s&]+))"));
    return pattern;
}

const QRegularExpression &accountInUrl()
{
    static const QRegularExpression pattern =
        ignoringCase(QStringLiteral(R"((\b[a-z][a-z0-9+.-]*://)[^\s/]+@)"));
    return pattern;
}

QString shortened(const QString &line)
{
    return line.size() <= LongestLine ? line : line.first(LongestLine) + QStringLiteral("...");
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

QString withoutSecrets(const QString &line)
{
    QString result = line;
    result.replace(secretHeader(), QStringLiteral("\\1(removed)"));
    result.replace(namedSecret(), QStringLiteral("\\1(removed)"));
    result.replace(accountInUrl(), QStringLiteral("\\1(removed)@"));
    return result;
}

void setFile(const QString &path)
{
    const std::lock_guard lock(logMutex);
    file() = path.isEmpty() ? nullptr : std::make_unique<RotatingFile>(path);
}

void write(const QString &text)
{
    const QString line = shortened(withoutSecrets(onOneLine(text.left(LongestText))));
    const QByteArray bytes = line.toUtf8();
    const QByteArray time =
        QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")).toLatin1();

    const std::lock_guard lock(logMutex);
    syslog(LOG_USER | LOG_NOTICE, "%s", bytes.constData());
    const QByteArray stamped =
        time + " quellmoor-launcher[" + QByteArray::number(getpid()) + "] " + bytes;
    std::fprintf(stderr, "%s\n", stamped.constData());
    if (file())
        file()->write(stamped);
    if (observer())
        observer()(line);
}

Observer setObserver(Observer next)
{
    const std::lock_guard lock(logMutex);
    return std::exchange(observer(), std::move(next));
}

} // namespace SystemLog

#include "platform/HttpUrl.h"

#include <QRegularExpression>

namespace {

// Never the end of a true name. Each label is put between two letters, which makes any a good one.
constexpr QLatin1String End(".invalid");
constexpr QChar Guard(u'h');

QString standInFor(const QString &host)
{
    const QString between = QString(Guard) + QLatin1Char('.') + Guard;
    return Guard + QString(host).replace(QLatin1Char('.'), between) + Guard + End;
}

} // namespace

QUrl HttpUrl::fromText(const QString &text, QUrl::ParsingMode mode)
{
    static const QRegularExpression authority(
        QStringLiteral("\\A(?:https?:)?//([A-Za-z0-9._-]+)(?=[:/?#]|\\z)"));
    QUrl url(text, mode);
    if (url.isValid())
        return url;
    const QRegularExpressionMatch match = authority.match(text);
    if (!match.hasMatch())
        return url;
    const QString host = match.captured(1);
    return QUrl(QString(text).replace(match.capturedStart(1), host.size(), standInFor(host)), mode);
}

std::optional<QString> HttpUrl::refusedHost(const QUrl &url)
{
    static const QRegularExpression standIn(
        QStringLiteral("\\Ah[a-z0-9_-]*h(?:\\.h[a-z0-9_-]*h)*(?=\\.invalid\\z)"));
    const QRegularExpressionMatch match = standIn.match(url.host());
    if (!match.hasMatch())
        return std::nullopt;
    QStringList labels = match.captured().split(QLatin1Char('.'));
    for (QString &label : labels)
        label = label.mid(1, label.size() - 2);
    return labels.join(QLatin1Char('.'));
}

#include "controller/Manifest.h"

#include "platform/HttpClient.h"
#include "platform/HttpUrl.h"
#include "platform/Limits.h"

#include <QJsonDocument>

namespace Manifest {

namespace {

constexpr int FirstFailureStatus = 400;

} // namespace

Fetched parse(const QByteArray &bytes, const QString &url)
{
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &parseError);
    if (parseError.error != QJsonParseError::NoError)
        return {Fetched::Outcome::Unparsable,
                {},
                Error{QStringLiteral("The manifest at %1 is not valid JSON: %2 at byte %3.")
                          .arg(url, parseError.errorString())
                          .arg(parseError.offset),
                      parseError.error}};
    return {Fetched::Outcome::Parsed, document.object(), {}};
}

Fetched fetch(HttpClient &httpClient, const QString &url)
{
    const HttpClient::Contents contents =
        httpClient.dataWithContentsOfURL(HttpUrl::fromText(url), Limits::Manifest);
    if (!contents.data)
        return {Fetched::Outcome::NoData, {}, contents.error};
    if (contents.status >= FirstFailureStatus)
        return {
            Fetched::Outcome::NoData,
            {},
            Error{QStringLiteral("The server answered %1.").arg(contents.status), contents.status}};
    return parse(*contents.data, url);
}

} // namespace Manifest

#pragma once

#include "platform/Error.h"

#include <QJsonObject>
#include <QString>

#include <optional>

class HttpClient;

// The published description of what the installed game must look like.
namespace Manifest {

struct Fetched
{
    enum class Outcome { NoData, Unparsable, Parsed };

    Outcome outcome = Outcome::NoData;
    // Empty unless parsed. A JSON array counts as an empty object.
    QJsonObject json;
    // Why it could not be fetched or parsed.
    std::optional<Error> error;
};

// What the bytes of the manifest at that URL say; never NoData. Any thread.
[[nodiscard]] Fetched parse(const QByteArray &bytes, const QString &url);

// Reads the manifest and waits for it; never on the main thread. A status of 400 or more counts as
// no data.
[[nodiscard]] Fetched fetch(HttpClient &httpClient, const QString &url);

} // namespace Manifest

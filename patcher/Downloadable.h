#pragma once

#include "platform/Error.h"

#include <QByteArray>
#include <QString>
#include <QUrl>

#include <functional>
#include <optional>

// Anything the engine fetches: it names an object compressed with bzip2 and puts the decompressed
// bytes in their place. For the engine two of them are the same when their URLs are equal.
class Downloadable
{
public:
    // The file's name (never null), what went wrong if something did, and a text for the engine's
    // log (nothing counts as an empty text).
    using WriteCompletion = std::function<void(const QString &fileName, std::optional<Error> error,
                                               std::optional<QString> logText)>;

    virtual ~Downloadable() = default;

    [[nodiscard]] virtual QUrl downloadURL() const = 0;

    // Writes the bytes, which are already decompressed, and calls the completion exactly once, on
    // the calling thread, before it returns. No data (the download was not what it should be)
    // writes nothing, keeps the file that is there and is not an error. Called on a write queue.
    virtual void writeToDisk(const std::optional<QByteArray> &data,
                             const WriteCompletion &completion) = 0;
};

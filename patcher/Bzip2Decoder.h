#pragma once

#include <QByteArray>

#include <functional>
#include <optional>

// libbz2 over whole buffers. Contents of more than `largestContents` bytes are a failure. Both hand
// on std::bad_alloc when the contents do not fit in memory.
namespace Bzip2Decoder {

// Told a size in bytes before the contents take so much; may wait.
using BeforeGrowth = std::function<void(qint64)>;

// What follows the stream's end is ignored; a missing end is a failure.
[[nodiscard]] std::optional<QByteArray> decode(const QByteArray &stream, qsizetype largestContents,
                                               const BeforeGrowth &beforeGrowth);

// The stream must also end with the bytes given. `sizeHint` of the contents, in bytes.
[[nodiscard]] std::optional<QByteArray> decodeExactly(const QByteArray &stream, qsizetype sizeHint,
                                                      qsizetype largestContents);

} // namespace Bzip2Decoder

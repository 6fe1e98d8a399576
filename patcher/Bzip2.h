#pragma once

#include <QByteArray>

#include <optional>

// Decompresses one bzip2 stream; what follows its end is ignored. Nothing when the bytes are not a
// whole, undamaged stream, or when its contents do not fit in memory. Any thread.
[[nodiscard]] std::optional<QByteArray> decompressBzip2(const QByteArray &compressed);

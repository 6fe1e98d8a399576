#pragma once

#include "patcher/LargeContentsTurn.h"
#include "platform/Limits.h"

#include <QByteArray>

#include <optional>

// Decompresses one bzip2 stream; what follows its end is ignored. Nothing when the bytes are not a
// whole, undamaged stream, or when its contents are larger than a game file may be, or than the
// memory. Takes the bytes and lets them go as soon as they are decoded. Any thread, which waits for
// its turn before it holds large contents. While other cores are idle they help with a large
// stream, and the result is the same.
[[nodiscard]] std::optional<QByteArray> decompressBzip2(QByteArray compressed,
                                                        LargeContentsTurn &turn);

// The same with at most that many threads and without turns, whatever else is going on; one means
// libbz2 alone.
// Contents of `largestContents` bytes are still taken.
[[nodiscard]] std::optional<QByteArray>
decompressBzip2(const QByteArray &compressed, int threads,
                qint64 largestContents = Limits::gameFileContents());

#pragma once

#include <QByteArray>

#include <cstdint>
#include <optional>
#include <vector>

// One block of a bzip2 stream, as a range of the stream's bits.
struct Bzip2Block
{
    qint64 firstBit = 0;
    qint64 endBit = 0;
    uint32_t crc = 0;
};

// Finds the blocks of a stream without decoding it. Nothing for whatever is unusual: no stream,
// fewer than two blocks, a second stream or other bytes behind the end, or block checksums that do
// not make up the stream's, as when the pattern that begins a block stands by chance inside one.
// Reads about as fast as memory.
[[nodiscard]] std::optional<std::vector<Bzip2Block>> findBzip2Blocks(const QByteArray &stream);

// The block as a stream of its own.
[[nodiscard]] QByteArray bzip2StreamOfBlock(const QByteArray &stream, const Bzip2Block &block);

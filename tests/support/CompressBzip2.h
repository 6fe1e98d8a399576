#pragma once

#include <QByteArrayList>

#include <bzlib.h>

#include <optional>

// The bytes as one bzip2 stream with blocks of that many 100,000 bytes.
inline QByteArray compressBzip2(QByteArray contents, int blockSize = 9)
{
    QByteArray result(contents.size() + contents.size() / 50 + 700, Qt::Uninitialized);
    auto size = unsigned(result.size());
    const int status = BZ2_bzBuffToBuffCompress(result.data(), &size, contents.data(),
                                                unsigned(contents.size()), blockSize, 0, 0);
    if (status != BZ_OK)
        qFatal("bzip2 cannot compress: %d", status);
    result.truncate(qsizetype(size));
    return result;
}

// A stream with at least one block for each piece, however small; an empty piece makes none.
inline QByteArray compressBzip2Blocks(const QByteArrayList &pieces, int blockSize = 1)
{
    QByteArray result;
    bz_stream stream{};
    const auto run = [&stream, &result](int action) {
        int status = BZ_OK;
        do {
            char bytes[1024];
            stream.next_out = bytes;
            stream.avail_out = sizeof bytes;
            status = BZ2_bzCompress(&stream, action);
            result.append(bytes, qsizetype(sizeof bytes - stream.avail_out));
        } while (status == BZ_FLUSH_OK || status == BZ_FINISH_OK);
    };
    if (BZ2_bzCompressInit(&stream, blockSize, 0, 0) != BZ_OK)
        qFatal("bzip2 cannot compress");
    for (QByteArray piece : pieces) {
        stream.next_in = piece.data();
        stream.avail_in = unsigned(piece.size());
        run(BZ_FLUSH);
    }
    run(BZ_FINISH);
    BZ2_bzCompressEnd(&stream);
    return result;
}

// Many NULs as one stream, made in little memory.
inline QByteArray compressedNuls(qint64 count)
{
    QByteArray nuls(1'000'000, '\0');
    QByteArray result(100'000, Qt::Uninitialized);
    bz_stream stream{};
    BZ2_bzCompressInit(&stream, 9, 0, 0);
    stream.next_out = result.data();
    stream.avail_out = unsigned(result.size());
    for (qint64 left = count; left > 0; left -= nuls.size()) {
        stream.next_in = nuls.data();
        stream.avail_in = unsigned(std::min<qint64>(left, nuls.size()));
        while (stream.avail_in > 0)
            BZ2_bzCompress(&stream, BZ_RUN);
    }
    if (BZ2_bzCompress(&stream, BZ_FINISH) != BZ_STREAM_END)
        qFatal("bzip2 cannot compress");
    result.truncate(stream.next_out - result.data());
    BZ2_bzCompressEnd(&stream);
    return result;
}

// What libbz2's own call for whole buffers makes of the bytes, in a room of so many.
struct Bzip2Reference
{
    std::optional<QByteArray> contents;
    bool isTooLarge = false; // for the room; then nothing is known
};

inline Bzip2Reference bzip2Reference(const QByteArray &compressed, qsizetype room = 4'000'000)
{
    QByteArray contents(room, Qt::Uninitialized);
    QByteArray input(compressed.constData(), compressed.size());
    auto size = unsigned(room);
    const int status = BZ2_bzBuffToBuffDecompress(contents.data(), &size, input.data(),
                                                  unsigned(input.size()), 0, 0);
    if (status != BZ_OK)
        return {std::nullopt, status == BZ_OUTBUFF_FULL};
    contents.truncate(qsizetype(size));
    return {contents, false};
}

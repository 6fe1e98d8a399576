#include "patcher/Bzip2.h"

#include <bzlib.h>

#include <algorithm>
#include <limits>
#include <new>

namespace {

// The output grows as it comes: a few hundred bytes can stand for a gigabyte.
constexpr qsizetype SmallestOutput = 64 * 1024;
constexpr qsizetype UsualRatio = 3;
// libbz2 counts what it is given and gives in 32 bits.
constexpr qsizetype LargestStep = 1 << 30;

class Decoder
{
public:
    Decoder() { m_isReady = BZ2_bzDecompressInit(&m_stream, 0, 0) == BZ_OK; }
    Decoder(const Decoder &) = delete;
    Decoder &operator=(const Decoder &) = delete;
    ~Decoder()
    {
        if (m_isReady)
            BZ2_bzDecompressEnd(&m_stream);
    }

    std::optional<QByteArray> decode(const QByteArray &compressed)
    {
        if (!m_isReady)
            return std::nullopt;
        QByteArray output;
        qsizetype read = 0;
        qsizetype written = 0;
        for (;;) {
            if (written == output.size())
                output.resize(nextSize(output.size(), compressed.size()));
            const qsizetype given = std::min(compressed.size() - read, LargestStep);
            const qsizetype room = std::min(output.size() - written, LargestStep);
            // libbz2 only reads its input, although its interface does not say so.
            m_stream.next_in = const_cast<char *>(compressed.constData()) + read; // NOLINT
            m_stream.avail_in = unsigned(given);
            m_stream.next_out = output.data() + written;
            m_stream.avail_out = unsigned(room);
            const int result = BZ2_bzDecompress(&m_stream);
            const qsizetype consumed = given - qsizetype(m_stream.avail_in);
            const qsizetype produced = room - qsizetype(m_stream.avail_out);
            read += consumed;
            written += produced;
            if (result == BZ_STREAM_END) {
                output.truncate(written);
                return output;
            }
            if (result != BZ_OK || (consumed == 0 && produced == 0))
                return std::nullopt;
        }
    }

private:
    static qsizetype nextSize(qsizetype size, qsizetype compressedSize)
    {
        if (size > std::numeric_limits<qsizetype>::max() / 4)
            throw std::bad_alloc();
        return size == 0 ? std::max(SmallestOutput, compressedSize * UsualRatio) : size * 2;
    }

    bz_stream m_stream{};
    bool m_isReady = false;
};

} // namespace

std::optional<QByteArray> decompressBzip2(const QByteArray &compressed)
{
    try {
        return Decoder().decode(compressed);
    } catch (const std::bad_alloc &) {
        return std::nullopt;
    }
}

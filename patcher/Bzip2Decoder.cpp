#include "patcher/Bzip2Decoder.h"

#include <bzlib.h>

#include <algorithm>
#include <cstdlib>

namespace Bzip2Decoder {

namespace {

// The output grows as it comes: a few hundred bytes can stand for a gigabyte.
constexpr qsizetype SmallestOutput = 64LL * 1024;
constexpr qsizetype UsualRatio = 3;
// libbz2 counts what it is given and gives in 32 bits.
constexpr qsizetype LargestStep = 1 << 30;

// What libbz2 needs for the blocks of a stream, 3.6 MB as a rule, is kept for the thread's next
// one: a stream is often a single block, and new memory costs a twentieth of its decoding.
class Workspace
{
public:
    Workspace() = default;
    Workspace(const Workspace &) = delete;
    Workspace &operator=(const Workspace &) = delete;
    ~Workspace() { std::free(m_memory); }

    static Workspace &ofThisThread()
    {
        static thread_local Workspace workspace;
        return workspace;
    }

    void *lend(size_t size)
    {
        if (size < SmallestKept || m_isLent)
            return std::malloc(size);
        if (size != m_size) {
            std::free(m_memory);
            m_memory = std::malloc(size);
            m_size = m_memory ? size : 0;
        }
        m_isLent = m_memory != nullptr;
        return m_memory;
    }

    void takeBack(void *memory)
    {
        if (m_isLent && memory == m_memory)
            m_isLent = false;
        else
            std::free(memory);
    }

private:
    static constexpr size_t SmallestKept = size_t(256) * 1024;

    void *m_memory = nullptr;
    size_t m_size = 0;
    bool m_isLent = false;
};

// To be used on one thread.
class Stream
{
public:
    explicit Stream(qsizetype largestContents) : m_largestContents(largestContents)
    {
        m_stream.bzalloc = [](void *, int count, int size) {
            return Workspace::ofThisThread().lend(size_t(count) * size_t(size));
        };
        m_stream.bzfree = [](void *, void *memory) { Workspace::ofThisThread().takeBack(memory); };
        m_isReady = BZ2_bzDecompressInit(&m_stream, 0, 0) == BZ_OK;
    }
    Stream(const Stream &) = delete;
    Stream &operator=(const Stream &) = delete;
    ~Stream()
    {
        if (m_isReady)
            BZ2_bzDecompressEnd(&m_stream);
    }

    std::optional<QByteArray> decode(const QByteArray &compressed, qsizetype sizeHint,
                                     const BeforeGrowth &beforeGrowth)
    {
        if (!m_isReady)
            return std::nullopt;
        // One byte of room more shows that there is more.
        const qsizetype most = m_largestContents + 1;
        beforeGrowth(std::min(sizeHint, most));
        QByteArray output(std::min(sizeHint, most), Qt::Uninitialized);
        qsizetype written = 0;
        while (written <= m_largestContents) {
            if (written == output.size())
                grow(output, most, beforeGrowth);
            const qsizetype given = std::min(compressed.size() - m_read, LargestStep);
            const qsizetype room = std::min(output.size() - written, LargestStep);
            // libbz2 only reads its input, although its interface does not say so.
            m_stream.next_in = const_cast<char *>(compressed.constData()) + m_read; // NOLINT
            m_stream.avail_in = unsigned(given);
            m_stream.next_out = output.data() + written;
            m_stream.avail_out = unsigned(room);
            const int result = BZ2_bzDecompress(&m_stream);
            const qsizetype consumed = given - qsizetype(m_stream.avail_in);
            const qsizetype produced = room - qsizetype(m_stream.avail_out);
            m_read += consumed;
            written += produced;
            if (result == BZ_STREAM_END && written <= m_largestContents) {
                output.truncate(written);
                return output;
            }
            if (result != BZ_OK || (consumed == 0 && produced == 0))
                return std::nullopt;
        }
        return std::nullopt;
    }

    [[nodiscard]] qsizetype bytesRead() const { return m_read; }

private:
    static void grow(QByteArray &output, qsizetype most, const BeforeGrowth &beforeGrowth)
    {
        const qsizetype size = std::min(output.size() * 2, most);
        beforeGrowth(size);
        output.resize(size);
    }

    const qsizetype m_largestContents;
    bz_stream m_stream{};
    bool m_isReady = false;
    qsizetype m_read = 0;
};

} // namespace

std::optional<QByteArray> decode(const QByteArray &stream, qsizetype largestContents,
                                 const BeforeGrowth &beforeGrowth)
{
    return Stream(largestContents)
        .decode(stream, std::max(SmallestOutput, stream.size() * UsualRatio), beforeGrowth);
}

std::optional<QByteArray> decodeExactly(const QByteArray &stream, qsizetype sizeHint,
                                        qsizetype largestContents)
{
    Stream decoder(largestContents);
    auto contents = decoder.decode(stream, std::max(SmallestOutput, sizeHint), [](qint64) {});
    if (decoder.bytesRead() != stream.size())
        return std::nullopt;
    return contents;
}

} // namespace Bzip2Decoder

#include "patcher/Bzip2Blocks.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {

constexpr uint64_t BlockMagic = 0x314159265359;
constexpr uint64_t EndMagic = 0x177245385090;
constexpr int MagicBits = 48;
constexpr int CrcBits = 32;
constexpr int HeaderBytes = 4; // "BZh" and the block size
constexpr int BitsPerByte = 8;
constexpr qint64 HeaderBits = 32;

// A pattern of 48 bits, wherever it begins, covers a whole word of 16 bits that begins at a
// multiple of 32 bits; that word begins this many bits into the pattern at most.
constexpr int ProbeBits = 16;
constexpr qint64 ProbeStepBytes = 4;
constexpr int LastProbeShift = MagicBits - ProbeBits;

// Bits are counted from the first byte's highest on. Bytes behind the end read as zero.
uint64_t bitsAt(const QByteArray &data, qint64 bit, int count)
{
    const qint64 byte = bit / BitsPerByte;
    const int shift = int(bit % BitsPerByte);
    std::array<unsigned char, 8> bytes{};
    const qint64 available = std::clamp<qint64>(data.size() - byte, 0, qint64(bytes.size()));
    std::memcpy(bytes.data(), data.constData() + byte, size_t(available));
    uint64_t word = 0;
    for (const unsigned char value : bytes)
        word = word << BitsPerByte | value;
    return word << shift >> (64 - count);
}

// Tells whether a word of 16 bits stands anywhere in the pattern that begins a block. For each of
// its two bytes there is a set of the places at which it would fit, a bit each; the tables stay in
// the fastest cache.
class ProbeTable
{
public:
    ProbeTable()
    {
        for (int shift = 0; shift <= LastProbeShift; ++shift) {
            const auto word = uint16_t(BlockMagic >> (LastProbeShift - shift));
            m_first[word >> BitsPerByte] |= uint64_t(1) << shift;
            m_second[word & 0xff] |= uint64_t(1) << shift;
        }
    }

    // The places where both bytes fit; none as a rule.
    [[nodiscard]] uint64_t probe(const unsigned char *bytes) const
    {
        return m_first[bytes[0]] & m_second[bytes[1]];
    }

    // The same for four words a step apart.
    [[nodiscard]] uint64_t probeFour(const unsigned char *bytes) const
    {
        return probe(bytes) | probe(bytes + ProbeStepBytes) | probe(bytes + 2 * ProbeStepBytes) |
               probe(bytes + 3 * ProbeStepBytes);
    }

private:
    std::array<uint64_t, 1 << BitsPerByte> m_first{};
    std::array<uint64_t, 1 << BitsPerByte> m_second{};
};

void addBlocksAround(const QByteArray &stream, qint64 probeBit, std::vector<qint64> &starts)
{
    for (int shift = LastProbeShift; shift >= 0; --shift) {
        const qint64 start = probeBit - shift;
        if (start >= HeaderBits && bitsAt(stream, start, MagicBits) == BlockMagic &&
            (starts.empty() || starts.back() < start))
            starts.push_back(start);
    }
}

std::vector<qint64> findBlockStarts(const QByteArray &stream)
{
    constexpr qint64 groupBytes = 8 * ProbeStepBytes; // one branch for eight probes
    static const ProbeTable table;
    const auto *bytes = reinterpret_cast<const unsigned char *>(stream.constData());
    std::vector<qint64> starts;
    for (qint64 group = 0; group + 1 < stream.size(); group += groupBytes) {
        const qint64 end = std::min<qint64>(group + groupBytes, stream.size() - 1);
        const bool isWhole = end == group + groupBytes;
        if (isWhole &&
            (table.probeFour(bytes + group) | table.probeFour(bytes + group + groupBytes / 2)) == 0)
            continue;
        for (qint64 at = group; at < end; at += ProbeStepBytes) {
            if (table.probe(bytes + at))
                addBlocksAround(stream, at * BitsPerByte, starts);
        }
    }
    return starts;
}

// Where the pattern that ends the stream begins, if the stream ends with the data.
std::optional<qint64> findEnd(const QByteArray &stream)
{
    const qint64 allBits = stream.size() * BitsPerByte;
    for (int padding = 0; padding < BitsPerByte; ++padding) {
        const qint64 end = allBits - padding - CrcBits - MagicBits;
        if (end >= HeaderBits && bitsAt(stream, end, MagicBits) == EndMagic)
            return end;
    }
    return std::nullopt;
}

bool hasHeader(const QByteArray &stream)
{
    return stream.size() > HeaderBytes && stream.startsWith("BZh") && stream[3] >= '1' &&
           stream[3] <= '9';
}

class BitWriter
{
public:
    explicit BitWriter(QByteArray &bytes) : m_bytes(bytes) {}

    void write(uint64_t bits, int count)
    {
        for (int left = count; left > 0;) {
            const int taken = std::min(left, BitsPerByte - m_used);
            const auto piece = (bits >> (left - taken)) & ((1U << taken) - 1);
            if (m_used == 0)
                m_bytes.append('\0');
            m_bytes.back() =
                char(uint8_t(m_bytes.back()) | piece << (BitsPerByte - m_used - taken));
            m_used = (m_used + taken) % BitsPerByte;
            left -= taken;
        }
    }

private:
    QByteArray &m_bytes;
    int m_used = 0; // bits of the last byte; 0 when it is full
};

} // namespace

std::optional<std::vector<Bzip2Block>> findBzip2Blocks(const QByteArray &stream)
{
    if (!hasHeader(stream))
        return std::nullopt;
    const std::optional<qint64> end = findEnd(stream);
    const std::vector<qint64> starts = end ? findBlockStarts(stream) : std::vector<qint64>();
    if (starts.size() < 2 || starts.front() != HeaderBits)
        return std::nullopt;

    std::vector<Bzip2Block> blocks;
    blocks.reserve(starts.size());
    uint32_t checksum = 0;
    for (size_t i = 0; i < starts.size(); ++i) {
        const qint64 endBit = i + 1 < starts.size() ? starts[i + 1] : *end;
        const auto crc = uint32_t(bitsAt(stream, starts[i] + MagicBits, CrcBits));
        checksum = (checksum << 1 | checksum >> 31) ^ crc;
        blocks.push_back({starts[i], endBit, crc});
    }
    const bool isWhole =
        starts.back() < *end && checksum == uint32_t(bitsAt(stream, *end + MagicBits, CrcBits));
    if (!isWhole)
        return std::nullopt;
    return blocks;
}

QByteArray bzip2StreamOfBlock(const QByteArray &stream, const Bzip2Block &block)
{
    const qint64 bits = block.endBit - block.firstBit;
    const qint64 wholeBytes = bits / BitsPerByte;
    const int lastBits = int(bits % BitsPerByte);
    const qint64 firstByte = block.firstBit / BitsPerByte;
    const int shift = int(block.firstBit % BitsPerByte);

    QByteArray result;
    result.reserve(HeaderBytes + wholeBytes + (MagicBits + CrcBits) / BitsPerByte + 2);
    result.append(stream.constData(), HeaderBytes);
    result.resize(HeaderBytes + wholeBytes);
    const auto *from = reinterpret_cast<const unsigned char *>(stream.constData()) + firstByte;
    auto *to = reinterpret_cast<unsigned char *>(result.data()) + HeaderBytes;
    if (shift == 0) {
        std::memcpy(to, from, size_t(wholeBytes));
    } else {
        for (qint64 i = 0; i < wholeBytes; ++i)
            to[i] = uint8_t(from[i] << shift | from[i + 1] >> (BitsPerByte - shift));
    }

    BitWriter writer(result);
    if (lastBits > 0)
        writer.write(bitsAt(stream, block.endBit - lastBits, lastBits), lastBits);
    writer.write(EndMagic, MagicBits);
    writer.write(block.crc, CrcBits); // of a stream with one block this is the block's
    return result;
}

// A compressed game file. Odd inputs are decompressed as they are; even ones describe a stream of
// small blocks, which is then damaged, since noise alone never gets past a block's checksum.
#include "patcher/Bzip2.h"
#include "CompressBzip2.h"
#include "Target.h"

namespace {

constexpr qsizetype DamageBytes = 4;
constexpr int TwoThreads = 2;
constexpr qsizetype RoomForContents = 100'000; // a block of the sanitizer's quick kind

// The first byte: the kind and the blocks' size. Four bytes: where to flip a bit (nowhere beyond
// the end) and where to cut (likewise). The rest: the contents.
QByteArray streamFrom(const QByteArray &bytes)
{
    if (bytes.size() <= DamageBytes || bytes[0] & 1)
        return bytes.mid(1);
    const auto number = [&bytes](qsizetype at) {
        return qsizetype(uint8_t(bytes[at])) << 8 | uint8_t(bytes[at + 1]);
    };
    const int kind = uint8_t(bytes[0]) >> 1;
    QByteArray stream =
        compressBzip2Blocks(bytes.mid(1 + DamageBytes).split('\n'), kind % 9 == 8 ? 9 : 1);
    if (const qsizetype bit = number(1); bit < stream.size() * 8)
        stream[bit / 8] = char(stream[bit / 8] ^ 0x80 >> bit % 8);
    if (kind / 9 % 3 == 1)
        stream += stream;
    if (kind / 9 % 3 == 2)
        stream += bytes;
    return stream.left(number(3));
}

} // namespace

void prepareFuzzTarget() {}

void fuzzTarget(const QByteArray &bytes)
{
    const QByteArray stream = streamFrom(bytes);
    const auto plain = decompressBzip2(stream, 1);
    promise(decompressBzip2(stream, TwoThreads) == plain, "threads make no difference");
    const Bzip2Reference reference = bzip2Reference(stream, RoomForContents);
    promise(reference.isTooLarge || plain == reference.contents, "the result is the library's");
}

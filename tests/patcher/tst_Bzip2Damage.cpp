// Whatever happens to a compressed file on its way: the same as plain libbz2 makes of it, on one
// thread and on several, and never contents that nobody compressed.
#include "CompressBzip2.h"
#include "TestMain.h"
#include "UnpackBzip2.h"
#include "patcher/Bzip2Blocks.h"

#include <QFile>
#include <QTest>

#include <algorithm>

namespace {

using Contents = std::optional<QByteArray>;

constexpr int TwoThreads = 2;

// A block begins with a list of the bytes that occur in it: 16 bits for each upper half. Contents
// of exactly these bytes write the pattern that begins a block, 31 41 59 26 53 59, into that list.
QByteArray contentsWithMagicInside()
{
    constexpr int words[] = {0x3141, 0x5926, 0x5359};
    QByteArray contents;
    for (int upper = 0; upper < 3; ++upper) {
        for (int lower = 0; lower < 16; ++lower) {
            if (words[upper] & 0x8000 >> lower)
                contents += char(upper << 4 | lower);
        }
    }
    return contents;
}

qsizetype magicCount(const QByteArray &stream)
{
    quint64 window = 0;
    qsizetype count = 0;
    for (qsizetype bit = 0; bit < stream.size() * 8; ++bit) {
        window = (window << 1 | (uint8_t(stream[bit / 8]) >> (7 - bit % 8) & 1)) & 0xffffffffffff;
        count += window == 0x314159265359;
    }
    return count;
}

// Reports the places where a changed stream gives something else than libbz2 or, instead of
// nothing, something else than was compressed.
class Comparison
{
public:
    explicit Comparison(Contents original) : m_original(std::move(original)) {}

    void check(const QByteArray &stream, qsizetype place)
    {
        const Contents plain = decompressBzip2(stream, 1);
        if (plain != decompressBzip2(stream, TwoThreads) || plain != unpackBzip2(stream) ||
            plain != bzip2Reference(stream, 100'000).contents || (plain && plain != m_original))
            m_wrong += place;
        ++m_count;
    }

    [[nodiscard]] const QList<qsizetype> &wrong() const { return m_wrong; }
    [[nodiscard]] qsizetype count() const { return m_count; }

private:
    const Contents m_original;
    QList<qsizetype> m_wrong;
    qsizetype m_count = 0;
};

void addStreams()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<QByteArray>("contents");
    const QByteArray text("the quick brown fox");
    const QByteArray magic = contentsWithMagicInside();
    QTest::newRow("one block") << compressBzip2(text, 9) << text;
    QTest::newRow("no contents") << compressBzip2(QByteArray()) << QByteArray("");
    QTest::newRow("three blocks") << compressBzip2Blocks({"one", "two", "three"})
                                  << QByteArray("onetwothree");
    QTest::newRow("two streams") << compressBzip2Blocks({"one", "two"}) + compressBzip2(text, 1)
                                 << QByteArray("onetwo");
    QTest::newRow("magic bytes inside") << compressBzip2Blocks({magic, magic}) << magic + magic;
}

// A long run: a few bytes for 45 MB a block of the largest size.
QByteArray bomb(int blocks)
{
    return compressBzip2Blocks(QByteArrayList(blocks, QByteArray(10'000'000, '\0')), 9);
}

} // namespace

class TestBzip2Damage : public QObject
{
    Q_OBJECT

private slots:
    void hasTheMagicInsideABlock();
    void agreesForEveryFlippedBit_data() { addStreams(); }
    void agreesForEveryFlippedBit();
    void agreesForEveryTruncation_data() { addStreams(); }
    void agreesForEveryTruncation();
    void agreesForEveryTailOfNoise_data() { addStreams(); }
    void agreesForEveryTailOfNoise();
    void unpacksBombsToWhatTheyAre_data();
    void unpacksBombsToWhatTheyAre();
    void refusesContentsBeyondTheLimit_data();
    void refusesContentsBeyondTheLimit();
    void limitsContentsByTheMemory();
};

void TestBzip2Damage::hasTheMagicInsideABlock()
{
    const QByteArray magic = contentsWithMagicInside();
    QCOMPARE(magicCount(compressBzip2Blocks({"one", "two"})), 2);
    const QByteArray stream = compressBzip2Blocks({magic, magic});
    QCOMPARE(magicCount(stream), 4);
    QVERIFY(!findBzip2Blocks(stream));
    QCOMPARE(decompressBzip2(stream, TwoThreads), magic + magic);
}

void TestBzip2Damage::agreesForEveryFlippedBit()
{
    QFETCH(QByteArray, stream);
    QFETCH(QByteArray, contents);
    QCOMPARE(decompressBzip2(stream, TwoThreads), contents);
    Comparison comparison(contents);
    for (qsizetype bit = 0; bit < stream.size() * 8; ++bit) {
        QByteArray damaged = stream;
        damaged[bit / 8] = char(damaged[bit / 8] ^ 0x80 >> bit % 8);
        comparison.check(damaged, bit);
    }
    QCOMPARE(comparison.wrong(), QList<qsizetype>());
    QCOMPARE(comparison.count(), stream.size() * 8);
}

void TestBzip2Damage::agreesForEveryTruncation()
{
    QFETCH(QByteArray, stream);
    QFETCH(QByteArray, contents);
    Comparison comparison(contents);
    for (qsizetype length = 0; length < stream.size(); ++length)
        comparison.check(stream.left(length), length);
    QCOMPARE(comparison.wrong(), QList<qsizetype>());
    QCOMPARE(comparison.count(), stream.size());
}

void TestBzip2Damage::agreesForEveryTailOfNoise()
{
    QFETCH(QByteArray, stream);
    QFETCH(QByteArray, contents);
    Comparison comparison(contents);
    for (int value = 0; value < 256; ++value)
        comparison.check(stream + QByteArray(1 + value % 7, char(value)), value);
    comparison.check(stream + stream, 256);
    comparison.check(stream + stream.left(10), 257);
    QCOMPARE(comparison.wrong(), QList<qsizetype>());
    QCOMPARE(decompressBzip2(stream + stream, TwoThreads), contents);
}

void TestBzip2Damage::unpacksBombsToWhatTheyAre_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<qsizetype>("size");
    QTest::newRow("one block") << bomb(1) << qsizetype(10'000'000);
    QTest::newRow("four blocks") << bomb(4) << qsizetype(40'000'000);
    // Only the first stream counts, so that the number of them costs nothing.
    QTest::newRow("a thousand streams") << bomb(1).repeated(1000) << qsizetype(10'000'000);
}

void TestBzip2Damage::unpacksBombsToWhatTheyAre()
{
    QFETCH(QByteArray, stream);
    QFETCH(qsizetype, size);
    QVERIFY(stream.size() < 100'000);
    const QByteArray expected(size, '\0');
    QVERIFY(bzip2Reference(stream, 50'000'000).contents == expected);
    QVERIFY(decompressBzip2(stream, 1) == expected);
    QVERIFY(decompressBzip2(stream, TwoThreads) == expected);
    QVERIFY(!decompressBzip2(stream.left(bomb(1).size() - 1), TwoThreads));
}

void TestBzip2Damage::refusesContentsBeyondTheLimit_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<qsizetype>("size");
    QTest::newRow("no contents") << compressBzip2(QByteArray()) << qsizetype(0);
    QTest::newRow("one block") << compressBzip2("the quick brown fox") << qsizetype(19);
    QTest::newRow("a bomb of one block") << bomb(1) << qsizetype(10'000'000);
    QTest::newRow("a bomb of four blocks") << bomb(4) << qsizetype(40'000'000);
    // As large packed as unpacked, so that the first guess at its size is too large.
    const QByteArray noise = compressBzip2(bomb(4));
    QTest::newRow("hardly packed") << compressBzip2(noise) << noise.size();
}

void TestBzip2Damage::refusesContentsBeyondTheLimit()
{
    QFETCH(QByteArray, stream);
    QFETCH(qsizetype, size);
    for (const int threads : {1, TwoThreads}) {
        const Contents taken = decompressBzip2(stream, threads, size);
        QVERIFY(taken);
        QCOMPARE(taken->size(), size);
        QCOMPARE(decompressBzip2(stream, threads, size + 1), taken);
        QVERIFY(!decompressBzip2(stream, threads, size - 1));
        QVERIFY(!decompressBzip2(stream, threads, size / 3 - 1));
    }
}

void TestBzip2Damage::limitsContentsByTheMemory()
{
    QFile file(QStringLiteral("/proc/meminfo"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> words = file.readLine().simplified().split(' ');
    QCOMPARE(words.value(0), "MemTotal:");
    const qint64 half = words.value(1).toLongLong() * 1024 / 2;
    constexpr qint64 Least = 1024LL * 1024 * 1024;
    QVERIFY(half > 0);
    QVERIFY(Limits::gameFileContents() >= Least);
    // The kernel's own part is counted by some and not by others.
    QVERIFY(Limits::gameFileContents() <= std::max(half + half / 10, Least));
}

QUELLMOOR_TEST(TestBzip2Damage, "Bzip2Damage")
#include "tst_Bzip2Damage.moc"

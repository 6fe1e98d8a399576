#include "CompressBzip2.h"
#include "TestMain.h"
#include "UnpackBzip2.h"
#include "patcher/Bzip2Blocks.h"

#include <QRandomGenerator>
#include <QTest>

namespace {

constexpr int TwoThreads = 2;
constexpr int SmallestBlocks = 1; // of 100,000 bytes

QByteArray compress(const QByteArray &contents) { return compressBzip2(contents, SmallestBlocks); }

// Compresses to about half, like a game's files.
QByteArray sampleContents(qsizetype size, quint32 seed = 1)
{
    QRandomGenerator random(seed);
    QByteArray contents(size, '\0');
    for (char &byte : contents)
        byte = char('a' + random.bounded(16));
    return contents;
}

std::optional<QByteArray> plainly(const QByteArray &stream) { return decompressBzip2(stream, 1); }

// A stream of three small blocks.
const QByteArray &threeBlocks()
{
    static const QByteArray stream = compress(sampleContents(250'000));
    return stream;
}

qsizetype blockCount(const QByteArray &stream)
{
    const auto blocks = findBzip2Blocks(stream);
    return blocks ? qsizetype(blocks->size()) : 0;
}

} // namespace

class TestBzip2Blocks : public QObject
{
    Q_OBJECT

private slots:
    void findsEveryBlock_data();
    void findsEveryBlock();
    void leavesWhatIsUnusualToTheLibrary_data();
    void leavesWhatIsUnusualToTheLibrary();
    void makesAStreamOfEachBlock();
    void decodesInOrderOnSeveralThreads_data();
    void decodesInOrderOnSeveralThreads();
    void agreesWithTheLibraryForEveryFlippedBit();
    void agreesWithTheLibraryForEveryTruncation();
    void decodesALargeExpansionInParallel();
};

void TestBzip2Blocks::findsEveryBlock_data()
{
    QTest::addColumn<qsizetype>("size");
    QTest::addColumn<qsizetype>("count");
    QTest::newRow("two") << qsizetype(150'000) << qsizetype(2);
    QTest::newRow("three") << qsizetype(250'000) << qsizetype(3);
    QTest::newRow("twenty-one") << qsizetype(2'050'000) << qsizetype(21);
}

void TestBzip2Blocks::findsEveryBlock()
{
    QFETCH(qsizetype, size);
    QFETCH(qsizetype, count);
    QCOMPARE(blockCount(compress(sampleContents(size))), count);
}

void TestBzip2Blocks::leavesWhatIsUnusualToTheLibrary_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::newRow("no bytes") << QByteArray();
    QTest::newRow("a web page") << QByteArray("<html>not found</html>");
    QTest::newRow("empty contents") << compress(QByteArray());
    QTest::newRow("one block") << compress(sampleContents(50'000));
    QTest::newRow("a second stream") << threeBlocks() + threeBlocks();
    QTest::newRow("trailing bytes") << threeBlocks() + QByteArray("more");
    QTest::newRow("no end") << threeBlocks().chopped(12);
    QTest::newRow("only a header") << QByteArray("BZh9");
    // The first block's magic once more in front of it: one block too many for the checksum.
    QTest::newRow("a false magic")
        << threeBlocks().left(4) + threeBlocks().mid(4, 6) + threeBlocks().mid(4);
}

void TestBzip2Blocks::leavesWhatIsUnusualToTheLibrary()
{
    QFETCH(QByteArray, stream);
    QVERIFY(!findBzip2Blocks(stream));
    QCOMPARE(decompressBzip2(stream, TwoThreads), plainly(stream));
    QCOMPARE(unpackBzip2(stream), plainly(stream));
}

void TestBzip2Blocks::makesAStreamOfEachBlock()
{
    const auto blocks = findBzip2Blocks(threeBlocks());
    QVERIFY(blocks);
    QByteArray contents;
    for (const Bzip2Block &block : *blocks)
        contents += plainly(bzip2StreamOfBlock(threeBlocks(), block)).value_or("a broken block");
    QCOMPARE(contents, sampleContents(250'000));
}

void TestBzip2Blocks::decodesInOrderOnSeveralThreads_data()
{
    QTest::addColumn<int>("threads");
    for (const int threads : {1, 2, 3, 8, 64})
        QTest::addRow("%d", threads) << threads;
}

void TestBzip2Blocks::decodesInOrderOnSeveralThreads()
{
    QFETCH(int, threads);
    const QByteArray contents = sampleContents(3'000'000);
    QCOMPARE(decompressBzip2(compress(contents), threads), contents);
}

void TestBzip2Blocks::agreesWithTheLibraryForEveryFlippedBit()
{
    // Every bit of the edges, where the structure is, and every 97th between.
    const qint64 bits = threeBlocks().size() * 8;
    for (qint64 bit = 0; bit < bits; bit += bit < 400 || bit > bits - 400 ? 1 : 97 * 31) {
        QByteArray stream = threeBlocks();
        stream[bit / 8] = char(stream[bit / 8] ^ 0x80 >> (bit % 8));
        QVERIFY2(decompressBzip2(stream, TwoThreads) == plainly(stream),
                 qPrintable(QString::number(bit)));
    }
}

void TestBzip2Blocks::agreesWithTheLibraryForEveryTruncation()
{
    const qsizetype size = threeBlocks().size();
    for (qsizetype left = 0; left < size; left += left < 60 || left > size - 60 ? 1 : 3989) {
        const QByteArray stream = threeBlocks().left(left);
        QVERIFY2(decompressBzip2(stream, TwoThreads) == plainly(stream),
                 qPrintable(QString::number(left)));
    }
}

void TestBzip2Blocks::decodesALargeExpansionInParallel()
{
    const QByteArray contents(40'000'000, 'x');
    const QByteArray stream = compress(contents);
    QVERIFY(stream.size() < 1000);
    QCOMPARE(decompressBzip2(stream, TwoThreads), contents);
}

QUELLMOOR_TEST(TestBzip2Blocks, "Bzip2Blocks")
#include "tst_Bzip2Blocks.moc"

#include "CompressBzip2.h"
#include "FatalCheck.h"
#include "Restrictions.h"
#include "TestMain.h"
#include "UnpackBzip2.h"

#include <QTest>

#include <random>

using namespace Qt::StringLiterals;
using Contents = std::optional<QByteArray>;
Q_DECLARE_METATYPE(Contents)

namespace {

const QByteArray &smallStream()
{
    static const QByteArray stream = compressBzip2("the quick brown fox");
    return stream;
}

QByteArray noise(qsizetype size, unsigned seed)
{
    std::mt19937 random(seed);
    QByteArray bytes(size, '\0');
    for (char &byte : bytes)
        byte = char(random());
    return bytes;
}

// Compresses to about half.
QByteArray text(qsizetype size, unsigned seed)
{
    QByteArray bytes = noise(size, seed);
    for (char &byte : bytes)
        byte = char('a' + (byte & 0xf));
    return bytes;
}

} // namespace

class TestBzip2 : public QObject
{
    Q_OBJECT

private slots:
    void takesExactlyOneWholeStream_data();
    void takesExactlyOneWholeStream();
    void restoresContentsOfEverySize_data();
    void restoresContentsOfEverySize();
    void refusesAStreamCutAnywhere();
    void agreesWithTheLibraryForEveryFlippedBit();
    void agreesWithTheLibraryForEveryChangedByte();
    void agreesWithTheLibraryForNoise_data();
    void agreesWithTheLibraryForNoise();
    void decodesWithoutHelpersWhenThereAreNoThreads();
    void restoresAnExpansionOfAMillionfold();
    void refusesWhatDoesNotFitInMemory();
};

void TestBzip2::takesExactlyOneWholeStream_data()
{
    QTest::addColumn<QByteArray>("compressed");
    QTest::addColumn<Contents>("contents");
    const QByteArray stream = smallStream();
    const Contents whole("the quick brown fox"_ba);
    QTest::newRow("a stream") << stream << whole;
    QTest::newRow("empty contents") << compressBzip2(QByteArray()) << Contents(""_ba);
    QTest::newRow("no bytes") << QByteArray() << Contents();
    QTest::newRow("a NUL") << QByteArray(1, '\0') << Contents();
    QTest::newRow("only the header") << "BZh9"_ba << Contents();
    QTest::newRow("an error page") << "<html>not found</html>"_ba << Contents();
    QTest::newRow("another format") << QByteArray::fromHex("1f8b0800000000000003") << Contents();
    QTest::newRow("the first version's header")
        << QByteArray(stream).replace(0, 3, "BZ0") << Contents();
    QTest::newRow("no block size") << QByteArray(stream).replace(3, 1, "0") << Contents();
    QTest::newRow("bytes in front") << ' ' + stream << Contents();
    QTest::newRow("a line end behind") << stream + '\n' << whole;
    QTest::newRow("noise behind") << stream + noise(1000, 1) << whole;
    QTest::newRow("twice the same stream") << stream + stream << whole;
    QTest::newRow("another stream behind") << stream + compressBzip2("other") << whole;
    QTest::newRow("an empty stream in front")
        << compressBzip2(QByteArray()) + stream << Contents(""_ba);
    QTest::newRow("half a stream behind") << stream + stream.left(20) << whole;
    QTest::newRow("a large stream and more")
        << compressBzip2(text(250'000, 1), 1) + stream << Contents(text(250'000, 1));
}

void TestBzip2::takesExactlyOneWholeStream()
{
    QFETCH(QByteArray, compressed);
    QFETCH(Contents, contents);
    QCOMPARE(unpackBzip2(compressed), contents);
}

void TestBzip2::restoresContentsOfEverySize_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("blockSize");
    for (const int blockSize : {1, 9}) {
        // Around the sizes at which a block is full and at which the output first has to grow.
        for (const int size : {1, 2, 255, 65535, 65536, 65537, 99'980, 99'981, 100'000, 131'072,
                               200'000, 899'981, 900'000, 2'000'000})
            QTest::addRow("%d bytes in blocks of %d00k", size, blockSize) << size << blockSize;
    }
}

void TestBzip2::restoresContentsOfEverySize()
{
    QFETCH(int, size);
    QFETCH(int, blockSize);
    const QList<QByteArray> kinds{text(size, 1), noise(size, 2), QByteArray(size, 'x')};
    QList<Contents> expected;
    QList<Contents> restored;
    for (const QByteArray &contents : kinds) {
        expected += Contents(contents);
        restored += unpackBzip2(compressBzip2(contents, blockSize));
    }
    QVERIFY(restored == expected);
}

void TestBzip2::refusesAStreamCutAnywhere()
{
    QList<qsizetype> accepted;
    for (const QByteArray &stream : {smallStream(), compressBzip2(QByteArray())}) {
        for (qsizetype length = 0; length < stream.size(); ++length) {
            if (unpackBzip2(stream.left(length)))
                accepted += length;
        }
    }
    QCOMPARE(accepted, QList<qsizetype>());
}

void TestBzip2::agreesWithTheLibraryForEveryFlippedBit()
{
    QList<qsizetype> different;
    for (qsizetype bit = 0; bit < smallStream().size() * 8; ++bit) {
        QByteArray stream = smallStream();
        stream[bit / 8] = char(stream[bit / 8] ^ 1 << bit % 8);
        if (unpackBzip2(stream) != bzip2Reference(stream).contents)
            different += bit;
    }
    QCOMPARE(different, QList<qsizetype>());
}

void TestBzip2::agreesWithTheLibraryForEveryChangedByte()
{
    QList<qsizetype> different;
    for (qsizetype at = 0; at < smallStream().size(); ++at) {
        for (int value = 0; value < 256; value += 5) {
            QByteArray stream = smallStream();
            stream[at] = char(value);
            if (unpackBzip2(stream) != bzip2Reference(stream).contents)
                different += at;
        }
    }
    QCOMPARE(different, QList<qsizetype>());
}

void TestBzip2::agreesWithTheLibraryForNoise_data()
{
    QTest::addColumn<QByteArray>("start");
    QTest::newRow("from the first byte") << QByteArray();
    QTest::newRow("behind the header") << "BZh1"_ba;
    QTest::newRow("behind the first block's begin") << smallStream().left(14);
    QTest::newRow("behind half a stream") << smallStream().left(smallStream().size() / 2);
}

void TestBzip2::agreesWithTheLibraryForNoise()
{
    QFETCH(QByteArray, start);
    QList<unsigned> different;
    for (unsigned seed = 0; seed < 500; ++seed) {
        const QByteArray stream = start + noise(seed % 100, seed);
        if (unpackBzip2(stream) != bzip2Reference(stream).contents)
            different += seed;
    }
    QCOMPARE(different, QList<unsigned>());
}

void TestBzip2::decodesWithoutHelpersWhenThereAreNoThreads()
{
    constexpr int FourThreads = 4;
    const QByteArray contents = text(1'000'000, 1);
    const QByteArray stream = compressBzip2(contents, 1);
    const WithoutNewThreads restriction;
    QVERIFY(decompressBzip2(stream, FourThreads) == contents);
    QVERIFY(unpackBzip2(stream) == contents);
}

void TestBzip2::restoresAnExpansionOfAMillionfold()
{
    const QByteArray stream = compressedNuls(150'000'000);
    const Contents contents = unpackBzip2(stream);
    QVERIFY(stream.size() < 1000);
    QVERIFY(contents == QByteArray(150'000'000, '\0'));
}

// In a child, whose memory is short from then on: the system's limit is for ordinary builds, the
// options are what the sanitizers' own allocators heed.
void TestBzip2::refusesWhatDoesNotFitInMemory()
{
    if (FatalCheck::isChild()) {
        const QByteArray stream = compressedNuls(FatalCheck::MostAtOnce * 3 / 2);
        FatalCheck::limitMemory(FatalCheck::MostAtOnce);
        const bool isRefused = !unpackBzip2(stream) && !decompressBzip2(stream, 1);
        const bool isUsable = unpackBzip2(smallStream()) == "the quick brown fox"_ba;
        qFatal("%s", isRefused && isUsable ? "refused as too large" : "taken");
    }
    const auto outcome = FatalCheck::runChild("Bzip2");
    QVERIFY2(outcome.output.contains("refused as too large"), outcome.output.constData());
}

QUELLMOOR_TEST(TestBzip2, "Bzip2")
#include "tst_Bzip2.moc"

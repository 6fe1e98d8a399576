#include "CompressBzip2.h"
#include "FatalCheck.h"
#include "TestEngine.h"
#include "TestMain.h"

#include <QTest>

#include <new>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MegaByte = 1024 * 1024;
constexpr qsizetype PieceSize = 10 * MegaByte;
// Below what is reserved for a promised length.
constexpr qsizetype BodySize = 60 * MegaByte;

// An archive of a few bytes with much behind its end, which nobody heeds.
QByteArray longBody()
{
    QByteArray body = compressBzip2("contents");
    body.resize(BodySize, 'x');
    return body;
}

// An engine in a process whose memory is short, with the second of two downloads under way. The
// threads that write are there.
struct ShortOfMemory
{
    ShortOfMemory()
    {
        engine.patcher->start();
        engine.deliver(compressBzip2("a"));
    }

    const TestEngine engine;
    const TestEngine::Files files = engine.enqueue({u"a"_s, u"b"_s});
};

} // namespace

// What the bodies of downloads cost. Each test runs in a child.
class TestBodyMemory : public QObject
{
    Q_OBJECT

private slots:
    void handsABodyOverWithoutACopy();
    void letsABodyGoBeforeItsContentsAreWritten();
    void reservesLittleOfWhatIsPromised();
};

void TestBodyMemory::handsABodyOverWithoutACopy()
{
    if (FatalCheck::isChild()) {
        const ShortOfMemory process;
        const auto connection = process.engine.client.last();
        connection->respond(BodySize);
        connection->receive(longBody());
        FatalCheck::limitMemory(BodySize / 2);
        connection->finish();
        TestEngine::waitForWrites();
        qFatal("written %d times", process.files[1]->writeCount());
    }
    const auto outcome = FatalCheck::runChild("BodyMemory");
    QVERIFY2(outcome.output.contains("written 1 times"), outcome.output.constData());
}

void TestBodyMemory::letsABodyGoBeforeItsContentsAreWritten()
{
    if (FatalCheck::isChild()) {
        const ShortOfMemory process;
        bool isFree = false;
        process.files[1]->onWrite = [&isFree] {
            try {
                QList<QByteArray> pieces;
                while (pieces.size() * PieceSize < BodySize * 2)
                    pieces += QByteArray(PieceSize, 'x');
                isFree = true;
            } catch (const std::bad_alloc &) {
                isFree = false;
            }
        };
        const QByteArray body = longBody();
        // Enough for the body and for contents of three times its size, which libbz2 begins with.
        FatalCheck::limitMemory(BodySize * 9 / 2);
        process.engine.deliver(body);
        qFatal("%s: %s", process.files[1]->data().constData(), isFree ? "free" : "kept");
    }
    const auto outcome = FatalCheck::runChild("BodyMemory");
    QVERIFY2(outcome.output.contains("contents: free"), outcome.output.constData());
}

void TestBodyMemory::reservesLittleOfWhatIsPromised()
{
    if (FatalCheck::isChild()) {
        const ShortOfMemory process;
        constexpr qint64 teraByte = 1'000'000'000'000;
        FatalCheck::limitMemory(FatalCheck::MostAtOnce);
        process.engine.client.last()->respond(teraByte);
        process.engine.client.last()->receive(compressBzip2("contents"));
        process.engine.client.last()->finish();
        TestEngine::waitForWrites();
        qFatal("%s", process.files[1]->data().constData());
    }
    const auto outcome = FatalCheck::runChild("BodyMemory");
    QVERIFY2(outcome.output.contains("contents"), outcome.output.constData());
}

QUELLMOOR_TEST(TestBodyMemory, "BodyMemory")
#include "tst_BodyMemory.moc"

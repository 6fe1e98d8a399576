#include "CompressBzip2.h"
#include "Signal.h"
#include "TestEngine.h"
#include "TestMain.h"
#include "patcher/LargeContentsTurn.h"

#include <QTest>

#include <thread>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

// Holds contents of that size on a thread of its own as soon as it may.
class Holder
{
public:
    explicit Holder(qint64 size)
        : m_thread([this, size] {
              LargeContentsTurn turn;
              turn.waitToHold(size);
              m_mayHold.raise();
          })
    {
    }
    Holder(const Holder &) = delete;
    Holder &operator=(const Holder &) = delete;
    ~Holder() { m_thread.join(); }

    [[nodiscard]] bool mayHold(std::chrono::milliseconds within = 60s)
    {
        return m_mayHold.wait(within);
    }

private:
    Signal m_mayHold;
    std::thread m_thread;
};

// Long enough for a thread that waits for nothing.
constexpr auto AWhile = 300ms;

} // namespace

class TestLargeContentsTurn : public QObject
{
    Q_OBJECT

private slots:
    void lastsFromTheFirstLargeSizeToItsEnd();
    void isTakenForLargeContentsUntilTheyAreWritten_data();
    void isTakenForLargeContentsUntilTheyAreWritten();
};

void TestLargeContentsTurn::lastsFromTheFirstLargeSizeToItsEnd()
{
    std::optional<LargeContentsTurn> turn(std::in_place);
    turn->waitToHold(LargeContentsTurn::large());
    QVERIFY(Holder(LargeContentsTurn::large() + 1).mayHold());
    turn->waitToHold(LargeContentsTurn::large() + 1);
    turn->waitToHold(LargeContentsTurn::large() + 2);
    QVERIFY(Holder(LargeContentsTurn::large()).mayHold());
    Holder other(LargeContentsTurn::large() + 1);
    const bool isSharing = other.mayHold(AWhile);
    QList<bool> answers;
    std::thread([&answers] {
        LargeContentsTurn third;
        answers = {third.tryToHold(LargeContentsTurn::large()),
                   third.tryToHold(LargeContentsTurn::large() + 1)};
    }).join();
    turn.reset();
    QCOMPARE(answers, QList<bool>({true, false}));
    QVERIFY(!isSharing);
    QVERIFY(other.mayHold());
}

void TestLargeContentsTurn::isTakenForLargeContentsUntilTheyAreWritten_data()
{
    constexpr qint64 SomeLarge = 300'000'000;
    constexpr qint64 SomeLess = 20'000'000;
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("isTaken");
    QTest::newRow("large, decoded block by block") << compressedNuls(SomeLarge) << true;
    QTest::newRow("large, decoded as one piece") << compressedNuls(SomeLarge) + '\n' << true;
    QTest::newRow("less, decoded block by block") << compressedNuls(SomeLess) << false;
    QTest::newRow("less, decoded as one piece") << compressedNuls(SomeLess) + '\n' << false;
}

void TestLargeContentsTurn::isTakenForLargeContentsUntilTheyAreWritten()
{
    QFETCH(QByteArray, body);
    QFETCH(bool, isTaken);
    std::optional<Holder> other;
    bool isSharing = false;
    const TestEngine engine;
    const auto files = engine.enqueue({u"a"_s});
    files[0]->onWrite = [&other, &isSharing, isTaken] {
        other.emplace(LargeContentsTurn::large() + 1);
        isSharing = other->mayHold(isTaken ? AWhile : 60s);
    };
    engine.patcher->start();
    engine.deliver(body);
    QCOMPARE(isSharing, !isTaken);
    QVERIFY(isSharing || other->mayHold());
}

QUELLMOOR_TEST(TestLargeContentsTurn, "LargeContentsTurn")
#include "tst_LargeContentsTurn.moc"

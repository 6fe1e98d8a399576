#include "Signal.h"
#include "TestMain.h"
#include "platform/DispatchQueue.h"

#include <QElapsedTimer>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

using QualityOfService = DispatchQueue::QualityOfService;

class TestDispatchQueue : public QObject
{
    Q_OBJECT

private slots:
    void runsEachKindAwayFromTheCaller_data();
    void runsEachKindAwayFromTheCaller();
    void runsASerialQueueInOrder();
    void neverRunsTwoBlocksOfASerialQueueAtOnce();
    void takesBlocksFromWithinABlock();
    void outlivesItsLastReferenceInsideItsOwnBlock();
    void runsWhatWaitsWhenTheLastReferenceGoes();
    void runsBlocksOfAConcurrentQueueAtOnce_data();
    void runsBlocksOfAConcurrentQueueAtOnce();
    void keepsOneLevelFromHoldingAnother();
    void startsBackgroundBlocksOneByOneInOrder();
    void runsTheMainQueueInOrderOnTheMainThreadLater();
    void knowsLabelAndKind();
    void drainsOnlyWhenNothingRunsOrWaits();
    void drainsWithoutWhoOnlyWaitsOutside();
};

namespace {

constexpr int Limit = 20000;

void raise(Signal &signal, int times)
{
    for (int i = 0; i < times; ++i)
        signal.raise();
}

bool waitFor(Signal &signal, int times)
{
    int raised = 0;
    while (raised < times && signal.wait())
        ++raised;
    return raised == times;
}

// Blocks that wait for one another: passes once so many are inside.
class Meeting
{
public:
    explicit Meeting(int size) : m_size(size) {}

    bool attend()
    {
        if (++m_present == m_size)
            raise(m_open, m_size);
        return m_open.wait();
    }

private:
    const int m_size;
    std::atomic<int> m_present = 0;
    Signal m_open;
};

void runAndWait(DispatchQueue &queue)
{
    Signal done;
    queue.async([&done] { done.raise(); });
    if (!done.wait())
        qFatal("a block never ran");
}

} // namespace

void TestDispatchQueue::runsEachKindAwayFromTheCaller_data()
{
    QTest::addColumn<std::shared_ptr<DispatchQueue>>("queue");
    QTest::newRow("serial") << DispatchQueue::makeSerial(QStringLiteral("s"));
    QTest::newRow("concurrent") << DispatchQueue::makeConcurrent(QStringLiteral("c"),
                                                                 QualityOfService::Utility);
    QTest::newRow("global high") << DispatchQueue::global(QualityOfService::High);
    QTest::newRow("global utility") << DispatchQueue::global(QualityOfService::Utility);
    QTest::newRow("global background") << DispatchQueue::global(QualityOfService::Background);
}

void TestDispatchQueue::runsEachKindAwayFromTheCaller()
{
    QFETCH(std::shared_ptr<DispatchQueue>, queue);
    Signal done;
    std::thread::id thread;
    queue->async([&] {
        thread = std::this_thread::get_id();
        done.raise();
    });
    QVERIFY(done.wait());
    QVERIFY(thread != std::this_thread::get_id());
}

void TestDispatchQueue::runsASerialQueueInOrder()
{
    const auto queue = DispatchQueue::makeSerial(QStringLiteral("order"));
    std::vector<int> order;
    std::vector<int> expected;
    for (int i = 0; i < 2000; ++i) {
        expected.push_back(i);
        queue->async([&order, i] { order.push_back(i); });
    }
    runAndWait(*queue);
    QCOMPARE(order, expected);
}

void TestDispatchQueue::neverRunsTwoBlocksOfASerialQueueAtOnce()
{
    const auto queue = DispatchQueue::makeSerial(QStringLiteral("alone"));
    std::atomic<int> inside = 0;
    std::atomic<int> overlaps = 0;
    std::vector<std::vector<int>> seen(4);
    std::vector<std::thread> submitters;
    for (size_t submitter = 0; submitter < seen.size(); ++submitter) {
        submitters.emplace_back([&, submitter] {
            for (int i = 0; i < 500; ++i) {
                queue->async([&, submitter, i] {
                    overlaps += inside++ != 0;
                    seen[submitter].push_back(i);
                    std::this_thread::yield();
                    --inside;
                });
            }
        });
    }
    for (std::thread &submitter : submitters)
        submitter.join();
    runAndWait(*queue);
    QCOMPARE(overlaps.load(), 0);
    for (const auto &order : seen) {
        QCOMPARE(order.size(), size_t(500));
        QVERIFY(std::is_sorted(order.begin(), order.end()));
    }
}

void TestDispatchQueue::takesBlocksFromWithinABlock()
{
    const auto queue = DispatchQueue::makeSerial(QStringLiteral("nested"));
    Signal done;
    QStringList order;
    queue->async([&] {
        queue->async([&] {
            order += QStringLiteral("inner");
            done.raise();
        });
        order += QStringLiteral("outer");
    });
    QVERIFY(done.wait());
    QCOMPARE(order, QStringList({QStringLiteral("outer"), QStringLiteral("inner")}));
}

void TestDispatchQueue::outlivesItsLastReferenceInsideItsOwnBlock()
{
    auto queue = DispatchQueue::makeSerial(QStringLiteral("dropped inside"));
    const std::weak_ptr<DispatchQueue> watched = queue;
    Signal start;
    Signal done;
    queue->async([&] {
        waitFor(start, 1);
        queue.reset();
        done.raise();
    });
    queue->async([&] { done.raise(); });
    start.raise();
    QVERIFY(waitFor(done, 2));
    QTRY_VERIFY_WITH_TIMEOUT(watched.expired(), Limit);
}

void TestDispatchQueue::runsWhatWaitsWhenTheLastReferenceGoes()
{
    Signal start;
    Signal done;
    {
        const auto queue = DispatchQueue::makeSerial(QStringLiteral("dropped"));
        queue->async([&] { waitFor(start, 1); });
        for (int i = 0; i < 100; ++i)
            queue->async([&] { done.raise(); });
    }
    start.raise();
    QVERIFY(waitFor(done, 100));
}

void TestDispatchQueue::runsBlocksOfAConcurrentQueueAtOnce_data()
{
    QTest::addColumn<std::shared_ptr<DispatchQueue>>("queue");
    QTest::addColumn<int>("atOnce");
    QTest::newRow("high") << DispatchQueue::global(QualityOfService::High) << 8;
    QTest::newRow("a queue of its own")
        << DispatchQueue::makeConcurrent(QStringLiteral("c"), QualityOfService::High) << 8;
    QTest::newRow("utility") << DispatchQueue::global(QualityOfService::Utility)
                             << QThread::idealThreadCount();
}

void TestDispatchQueue::runsBlocksOfAConcurrentQueueAtOnce()
{
    QFETCH(std::shared_ptr<DispatchQueue>, queue);
    QFETCH(int, atOnce);
    Meeting meeting(atOnce);
    std::atomic<int> met = 0;
    Signal done;
    for (int i = 0; i < atOnce; ++i) {
        queue->async([&] {
            met += meeting.attend();
            done.raise();
        });
    }
    QVERIFY(waitFor(done, atOnce));
    QCOMPARE(met.load(), atOnce);
}

void TestDispatchQueue::keepsOneLevelFromHoldingAnother()
{
    Signal hold;
    Signal done;
    std::atomic<int> ended = 0;
    const int held = 2 * QThread::idealThreadCount();
    for (int i = 0; i < held; ++i) {
        DispatchQueue::global(QualityOfService::Utility)->async([&] {
            waitFor(hold, 1);
            ++ended;
            done.raise();
        });
    }
    runAndWait(*DispatchQueue::global(QualityOfService::High));
    runAndWait(*DispatchQueue::global(QualityOfService::Background));
    QCOMPARE(ended.load(), 0);
    raise(hold, held);
    QVERIFY(waitFor(done, held));
}

void TestDispatchQueue::startsBackgroundBlocksOneByOneInOrder()
{
    const auto queue = DispatchQueue::global(QualityOfService::Background);
    std::vector<int> order;
    for (int i = 0; i < 200; ++i)
        queue->async([&order, i] { order.push_back(i); });
    runAndWait(*queue);
    QCOMPARE(order.size(), size_t(200));
    QVERIFY(std::is_sorted(order.begin(), order.end()));
}

void TestDispatchQueue::runsTheMainQueueInOrderOnTheMainThreadLater()
{
    std::vector<int> order;
    int elsewhere = 0;
    const auto main = std::this_thread::get_id();
    const auto submit = [&](int number) {
        DispatchQueue::main()->async([&order, &elsewhere, main, number] {
            order.push_back(number);
            elsewhere += std::this_thread::get_id() != main;
        });
    };
    submit(1);
    std::thread([&] {
        submit(2);
        submit(3);
    }).join();
    submit(4);
    QVERIFY(order.empty());
    QTRY_COMPARE(order.size(), size_t(4));
    QCOMPARE(order, std::vector<int>({1, 2, 3, 4}));
    QCOMPARE(elsewhere, 0);
}

void TestDispatchQueue::knowsLabelAndKind()
{
    const auto serial = DispatchQueue::makeSerial(QStringLiteral("net.quellmoor.write"));
    QCOMPARE(serial->label(), QStringLiteral("net.quellmoor.write"));
    QVERIFY(serial->isSerial());
    const auto concurrent =
        DispatchQueue::makeConcurrent(QStringLiteral("many"), QualityOfService::Utility);
    QCOMPARE(concurrent->label(), QStringLiteral("many"));
    QVERIFY(!concurrent->isSerial());
    QVERIFY(DispatchQueue::main()->isSerial());
    QVERIFY(!DispatchQueue::global(QualityOfService::High)->isSerial());
}

void TestDispatchQueue::drainsOnlyWhenNothingRunsOrWaits()
{
    Signal hold;
    std::atomic<int> ended = 0;
    const auto queue = DispatchQueue::makeSerial(QStringLiteral("drained"));
    for (int i = 0; i < 3; ++i) {
        queue->async([&] {
            waitFor(hold, 1);
            ++ended;
        });
    }
    QVERIFY(!DispatchQueue::drain(50));
    raise(hold, 3);
    QVERIFY(DispatchQueue::drain(Limit));
    QCOMPARE(ended.load(), 3);
}

void TestDispatchQueue::drainsWithoutWhoOnlyWaitsOutside()
{
    Signal isOutside;
    Signal endOutside;
    DispatchQueue::global(QualityOfService::High)->async([&] {
        const DispatchQueue::OutsideWait wait;
        isOutside.raise();
        waitFor(endOutside, 1);
    });
    QVERIFY(isOutside.wait());
    Signal endWork;
    std::atomic<bool> isWorkDone = false;
    DispatchQueue::global(QualityOfService::High)->async([&] {
        waitFor(endWork, 1);
        isWorkDone = true;
    });
    QVERIFY(!DispatchQueue::drain(50));
    QElapsedTimer clock;
    clock.start();
    endWork.raise();
    QVERIFY(!DispatchQueue::drain(Limit));
    QVERIFY(isWorkDone);
    QVERIFY(clock.elapsed() < Limit / 2);
    endOutside.raise();
    QTRY_VERIFY(DispatchQueue::drain(Limit));
}

QUELLMOOR_TEST(TestDispatchQueue, "DispatchQueue")
#include "tst_DispatchQueue.moc"

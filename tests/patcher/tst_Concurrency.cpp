#include "CompressBzip2.h"
#include "SelfServingHttpClient.h"
#include "Signal.h"
#include "TestEngine.h"
#include "TestMain.h"

#include <QTest>

#include <barrier>
#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr int Runs = 2000;

QString nameOf(int number) { return u"file%1"_s.arg(number); }

std::optional<QByteArray> compressedPath(const QUrl &url)
{
    return compressBzip2(url.path().toUtf8(), 1);
}

// Work on a thread of its own that the calling thread waits for. False when it takes too long.
bool doElsewhere(const std::function<void()> &work)
{
    auto done = std::make_shared<Signal>();
    std::thread([work, done] {
        work();
        done->raise();
    }).detach();
    return done->wait();
}

// All completions, each thread every fourth one, all threads at once.
void completeOnFourThreads(const TestEngine::Files &files)
{
    constexpr int Threads = 4;
    std::barrier begin(Threads);
    std::vector<std::thread> threads;
    for (int thread = 0; thread < Threads; ++thread) {
        threads.emplace_back([&files, &begin, thread] {
            begin.arrive_and_wait();
            for (qsizetype i = thread; i < files.size(); i += Threads)
                files[i]->complete();
        });
    }
    for (auto &thread : threads)
        thread.join();
}

// An engine over connections that answer by themselves.
struct SelfServingEngine
{
    explicit SelfServingEngine(SelfServingHttpClient &client)
        : patcher(std::make_shared<VARNOPatcher>(client))
    {
        patcher->setDelegate(delegate);
    }

    TestEngine::Files enqueue(int first, int count) const
    {
        TestEngine::Files files;
        for (int i = first; i < first + count; ++i) {
            files += FakeDownloadable::named(nameOf(i));
            patcher->enqueueWithFile(files.last());
        }
        return files;
    }

    const std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    const std::shared_ptr<VARNOPatcher> patcher;
};

} // namespace

class TestConcurrency : public QObject
{
    Q_OBJECT

private slots:
    void endsEachOfManyTinyRunsInTheSameWay();
    void runsAgainFromWithinTheFinish();
    void answersItsDelegateWithinEveryMessage_data();
    void answersItsDelegateWithinEveryMessage();
    void keepsTheStepsOfCompletionsApart();
    void holdsBackOtherCompletionsDuringAMessage();
    void answersOtherThreadsDuringARun();
    void endsAfterItsLastWorkWhenNobodyHoldsIt();
};

void TestConcurrency::endsEachOfManyTinyRunsInTheSameWay()
{
    SelfServingHttpClient client(compressedPath);
    QStringList faults;
    for (int run = 0; run < Runs; ++run) {
        const SelfServingEngine engine(client);
        const int count = 1 + run % 3;
        Signal lastReport;
        engine.delegate->onMessage = [&](const QString &line) {
            if (line.startsWith(u"written %1/%1 "_s.arg(count)))
                lastReport.raise();
        };
        engine.enqueue(0, count);
        engine.patcher->start();
        if (!lastReport.wait() || !client.waitUntilSilent())
            faults += u"run %1 does not end"_s.arg(run);
        TestEngine::waitForWrites();
        const QStringList lines = engine.delegate->linesOfWriting();
        if (engine.delegate->finishCount() != 1 ||
            !lines.value(lines.size() - 2).startsWith(u"finished") ||
            !lines.constLast().startsWith(u"written %1/%1 "_s.arg(count)))
            faults += lines;
    }
    QCOMPARE(faults, QStringList());
}

void TestConcurrency::runsAgainFromWithinTheFinish()
{
    SelfServingHttpClient client(compressedPath);
    const SelfServingEngine engine(client);
    Signal lastRun;
    TestEngine::Files files = engine.enqueue(0, 2);
    std::atomic<int> run = 0;
    engine.delegate->onMessage = [&](const QString &line) {
        if (line != u"finished"_s)
            return;
        if (++run == Runs) {
            lastRun.raise();
            return;
        }
        files += engine.enqueue(2 * run, 2);
        engine.patcher->start();
    };
    engine.patcher->start();
    QVERIFY(lastRun.wait() && client.waitUntilSilent());
    TestEngine::waitForWrites();
    QStringList wrong;
    for (int i = 0; i < files.size(); ++i) {
        if (files[i]->data() != u"/mac/%1.bz2"_s.arg(nameOf(i)).toUtf8())
            wrong += nameOf(i) + u": "_s + QString::fromUtf8(files[i]->data());
    }
    QCOMPARE(std::tuple(wrong, client.mostAtOnce(), engine.delegate->finishCount()),
             std::tuple(QStringList(), 1, qsizetype(Runs)));
}

void TestConcurrency::answersItsDelegateWithinEveryMessage_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("isElsewhere");
    for (const auto *message :
         {"received 1/1 a", "written 0/1 a", "finished", "written 1/1 disk a"}) {
        QTest::addRow("%s, same thread", message) << QString::fromLatin1(message) << false;
        QTest::addRow("%s, another thread", message) << QString::fromLatin1(message) << true;
    }
}

void TestConcurrency::answersItsDelegateWithinEveryMessage()
{
    QFETCH(QString, message);
    QFETCH(bool, isElsewhere);
    const TestEngine engine;
    QStringList answers;
    TestEngine::Files extra;
    const auto askAndStart = [&engine, &answers, &extra] {
        answers += engine.patcher->logs();
        engine.patcher->setLogs(u"kept"_s);
        engine.patcher->setDelegate(engine.patcher->delegate());
        extra = engine.enqueueHolding({u"extra"_s});
        engine.patcher->start();
    };
    QList<bool> isAnswered;
    engine.delegate->onMessage = [&](const QString &line) {
        if (line == message && isElsewhere)
            isAnswered += doElsewhere(askAndStart);
        else if (line == message)
            askAndStart();
    };
    const auto files = engine.enqueueHolding({u"a"_s});
    engine.patcher->start();
    const auto first = engine.client.last();
    first->deliver(compressBzip2("x"));
    TestEngine::waitForWrites();
    if (files[0]->writeCount() > 0)
        files[0]->complete();
    extra[0]->dropCompletion(); // the engine holds the file that would hold the engine
    QCOMPARE(std::tuple(answers, isAnswered, engine.client.connectionCount(),
                        engine.client.last()->request().url.fileName()),
             std::tuple(QStringList(QString()), QList<bool>(isElsewhere ? 1 : 0, true),
                        qsizetype(2), u"extra.bz2"_s));
}

void TestConcurrency::keepsTheStepsOfCompletionsApart()
{
    constexpr int Count = 400;
    const TestEngine engine;
    QStringList names;
    for (int i = 0; i < Count; ++i)
        names += nameOf(i);
    const auto files = engine.enqueueHolding(names);
    engine.patcher->start();
    for (const auto &file : files) {
        file->logText = u"disk "_s + file->downloadURL().fileName().chopped(4);
        engine.client.last()->deliver(compressBzip2("x"));
    }
    TestEngine::waitForWrites();
    engine.delegate->onMessage = [](const QString &) { std::this_thread::yield(); };
    completeOnFourThreads(files);

    QStringList counts{u"written 0/%1"_s.arg(Count)};
    for (int i = 1; i <= Count; ++i)
        counts += u"written %1/%2"_s.arg(i).arg(Count);
    counts.insert(counts.size() - 1, u"finished"_s);
    QStringList reported;
    QStringList reportedNames;
    for (const QString &line : engine.delegate->linesOfWriting()) {
        reported += line.section(u' ', 0, 1);
        if (line.contains(u"disk"_s))
            reportedNames += line.section(u' ', 2);
    }
    QCOMPARE(reported, counts);
    QCOMPARE(engine.patcher->logs().split(u'\n', Qt::SkipEmptyParts), reportedNames);
}

void TestConcurrency::holdsBackOtherCompletionsDuringAMessage()
{
    const TestEngine engine;
    const auto files = engine.enqueueHolding({u"a"_s, u"b"_s});
    engine.patcher->start();
    engine.client.last()->deliver(compressBzip2("x"));
    engine.client.last()->deliver(compressBzip2("x"));
    TestEngine::waitForWrites();
    Signal secondReport;
    bool hasComeBetween = false;
    std::thread second;
    engine.delegate->onMessage = [&](const QString &line) {
        if (line == u"written 1/2 disk a"_s) {
            second = std::thread([&files] { files[1]->complete(); });
            hasComeBetween = secondReport.wait(std::chrono::milliseconds(100));
        } else {
            secondReport.raise();
        }
    };
    files[0]->complete();
    second.join();
    QCOMPARE(std::pair(hasComeBetween, engine.delegate->linesOfWriting()),
             std::pair(false, QStringList({u"written 0/2 b"_s, u"written 1/2 disk a"_s,
                                           u"finished"_s, u"written 2/2 disk b"_s})));
}

void TestConcurrency::answersOtherThreadsDuringARun()
{
    constexpr int Count = 300;
    SelfServingHttpClient client(compressedPath);
    const SelfServingEngine engine(client);
    Signal end;
    engine.delegate->onMessage = [&end](const QString &line) {
        if (line == u"finished"_s)
            end.raise();
    };
    engine.enqueue(0, Count);
    std::atomic<bool> isOver = false;
    qint64 mostWritten = 0;
    std::thread reader([&] {
        while (!isOver) {
            const VARNOPatcher &patcher = *engine.patcher;
            const bool isSane = patcher.logs().size() <= Count && patcher.currentFile() >= 0 &&
                                patcher.expectedDataSize() >= 0 && patcher.delegate() &&
                                patcher.queuedFileCount() <= Count && !patcher.isPatching() &&
                                patcher.failedCount() == 0 && patcher.totalFiles() == Count &&
                                patcher.currentFilename().size() < 10;
            mostWritten = isSane ? std::max(mostWritten, patcher.writeCount()) : Count + 1;
        }
    });
    engine.patcher->start();
    const bool hasEnded = end.wait() && client.waitUntilSilent();
    TestEngine::waitForWrites();
    isOver = true;
    reader.join();
    QVERIFY(hasEnded);
    QVERIFY2(mostWritten <= Count, "an answer that cannot be");
    QCOMPARE(engine.patcher->logs(), u"\n"_s.repeated(Count));
}

void TestConcurrency::endsAfterItsLastWorkWhenNobodyHoldsIt()
{
    SelfServingHttpClient client(compressedPath);
    QStringList faults;
    for (int run = 0; run < 300; ++run) {
        auto engine = std::make_unique<SelfServingEngine>(client);
        Signal lastReport;
        engine->delegate->onMessage = [&lastReport](const QString &line) {
            if (line.startsWith(u"written 3/3"_s))
                lastReport.raise();
        };
        const std::weak_ptr<VARNOPatcher> observed = engine->patcher;
        engine->enqueue(0, 3);
        engine->patcher->start();
        engine.reset();
        if (!lastReport.wait() || !client.waitUntilSilent())
            faults += u"run %1 does not end"_s.arg(run);
        TestEngine::waitForWrites();
        if (!QTest::qWaitFor([&observed] { return observed.expired(); }, TestEngine::Limit))
            faults += u"the engine of run %1 stays"_s.arg(run);
    }
    QCOMPARE(faults, QStringList());
}

QUELLMOOR_TEST(TestConcurrency, "Concurrency")
#include "tst_Concurrency.moc"

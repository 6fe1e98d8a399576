#include "CompressBzip2.h"
#include "StandardOutput.h"
#include "TestEngine.h"
#include "TestMain.h"
#include "TestServer.h"

#include <QTest>
#include <QThread>

#include <limits>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;
using Progress = RecordingDelegate::Progress;

namespace {

constexpr qsizetype MegaByte = 1024 * 1024;
constexpr double UnknownSize = -9.5367431640625e-07;

// An engine whose clock the test moves.
struct TimedEngine
{
    TimedEngine()
    {
        patcher->setDelegate(delegate);
        for (const auto *name : {"a", "b"})
            patcher->enqueueWithFile(FakeDownloadable::named(QLatin1String(name)));
        patcher->start();
    }

    void receive(qsizetype size, std::chrono::nanoseconds after)
    {
        now += after;
        client.last()->receive(QByteArray(size, 'x'));
    }

    std::chrono::steady_clock::time_point now{1000h};
    FakeHttpClient client;
    const std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
    const std::shared_ptr<VARNOPatcher> patcher = std::make_shared<VARNOPatcher>(
        client, VARNOPatcher::WaitingBytesLimit, [this] { return now; });
};

const auto ErrorLine = "VARNOPatcher connection(_:didFailWithError:) 174: "_ba;

} // namespace

class TestTransfer : public QObject
{
    Q_OBJECT

private slots:
    void reportsSizeAndAverageSpeedForEachPiece();
    void reportsTheExpectedSizeAsItIs_data();
    void reportsTheExpectedSizeAsItIs();
    void reportsAnInfiniteSpeedWhenNoTimeHasPassed();
    void beginsAgainWithEachResponse();
    void measuresEachDownloadByItself();
    void reportsNothingForAnEmptyBody();
    void reportsOnTheThreadOfTheConnection();
    void takesAnErrorPageAsTheFilesData();
    void skipsAFileThatFails();
    void dropsWhatArrivedBeforeAFailure();
    void endsWithAWriteReportWhenTheLastDownloadFails();
    void neverFinishesAfterAFailure();
    void doesNotReserveWhatAServerOnlyPromises();
    void fetchesFilesFromARealServer();
    void goesOnAfterEveryFaultOfARealServer_data();
    void goesOnAfterEveryFaultOfARealServer();
};

void TestTransfer::reportsSizeAndAverageSpeedForEachPiece()
{
    TimedEngine engine;
    engine.client.last()->respond(4 * MegaByte);
    engine.receive(MegaByte, 500ms);
    engine.receive(MegaByte / 2, 250ms);
    engine.receive(1, 0ns);
    engine.receive(2 * MegaByte + MegaByte / 2 - 1, 3250ms);
    const double odd = 1.5 + 1.0 / MegaByte;
    QCOMPARE(engine.delegate->progress(),
             QList<Progress>({{1, 4, 2}, {1.5, 4, 2}, {odd, 4, odd / 0.75}, {4, 4, 1}}));
    QCOMPARE(engine.delegate->lines(), QStringList(4, u"received 1/2 a"_s));
}

void TestTransfer::reportsTheExpectedSizeAsItIs_data()
{
    QTest::addColumn<qint64>("length");
    QTest::addColumn<double>("expectedSize");
    QTest::newRow("unknown") << qint64(-1) << UnknownSize;
    QTest::newRow("empty") << qint64(0) << 0.0;
    QTest::newRow("a byte") << qint64(1) << -UnknownSize;
    QTest::newRow("one and a half megabytes") << qint64(3 * MegaByte / 2) << 1.5;
    QTest::newRow("a lie") << std::numeric_limits<qint64>::max() << 8796093022208.0;
}

void TestTransfer::reportsTheExpectedSizeAsItIs()
{
    QFETCH(qint64, length);
    QFETCH(double, expectedSize);
    TimedEngine engine;
    engine.client.last()->respond(length);
    engine.receive(MegaByte, 1s);
    QCOMPARE(engine.delegate->progress(), QList<Progress>({{1, expectedSize, 1}}));
    QCOMPARE(engine.patcher->expectedDataSize(), length);
}

void TestTransfer::reportsAnInfiniteSpeedWhenNoTimeHasPassed()
{
    TimedEngine engine;
    engine.client.last()->respond(-1);
    engine.receive(MegaByte, 0ns);
    QCOMPARE(engine.delegate->progress(),
             QList<Progress>({{1, UnknownSize, std::numeric_limits<double>::infinity()}}));
}

void TestTransfer::beginsAgainWithEachResponse()
{
    TimedEngine engine;
    engine.client.last()->respond(8 * MegaByte);
    engine.receive(MegaByte, 1s);
    engine.now += 1s;
    engine.client.last()->respond(2 * MegaByte, 206);
    engine.receive(MegaByte, 2s);
    engine.receive(MegaByte, 2s);
    QCOMPARE(engine.delegate->progress(), QList<Progress>({{1, 8, 1}, {1, 2, 0.5}, {2, 2, 0.5}}));
}

void TestTransfer::measuresEachDownloadByItself()
{
    TimedEngine engine;
    engine.client.last()->respond(MegaByte);
    engine.receive(MegaByte, 1s);
    engine.client.last()->finish();
    engine.now += 1h;
    engine.client.last()->respond(2 * MegaByte);
    engine.receive(2 * MegaByte, 1s);
    TestEngine::waitForWrites();
    QCOMPARE(engine.delegate->progress(), QList<Progress>({{1, 1, 1}, {2, 2, 2}}));
}

void TestTransfer::reportsNothingForAnEmptyBody()
{
    const TestEngine engine;
    const auto files = engine.enqueueHolding({u"a"_s});
    engine.patcher->start();
    engine.deliver(QByteArray());
    const QStringList lines = engine.delegate->lines();
    files[0]->complete();
    QCOMPARE(std::pair(lines, files[0]->data()),
             std::pair(QStringList(u"written 0/1 a"_s), "nothing"_ba));
}

void TestTransfer::reportsOnTheThreadOfTheConnection()
{
    const TestEngine engine;
    engine.enqueue({u"a"_s});
    engine.patcher->start();
    engine.client.last()->respond();
    QThread *reporter = nullptr;
    engine.delegate->onMessage = [&reporter](const QString &) {
        reporter = QThread::currentThread();
    };
    const std::unique_ptr<QThread> thread(
        QThread::create([&engine] { engine.client.last()->receive("x"); }));
    thread->start();
    QVERIFY(thread->wait(TestEngine::Limit));
    QCOMPARE(reporter, thread.get());
}

void TestTransfer::takesAnErrorPageAsTheFilesData()
{
    const TestEngine engine;
    const auto files = engine.enqueueHolding({u"a"_s});
    engine.patcher->start();
    const auto connection = engine.client.last();
    connection->respond(20, 404);
    connection->receive("<html>not ");
    connection->receive("found</h>");
    connection->finish();
    TestEngine::waitForWrites();
    files[0]->complete();
    QCOMPARE(engine.delegate->lines(),
             QStringList({u"received 1/1 a"_s, u"received 1/1 a"_s, u"written 0/1 a"_s,
                          u"finished"_s, u"written 1/1 disk a"_s}));
    QCOMPARE(files[0]->data(), "nothing"_ba);
}

void TestTransfer::skipsAFileThatFails()
{
    const TestEngine engine;
    engine.enqueue({u"a"_s, u"b"_s, u"c"_s});
    StandardOutput output;
    engine.patcher->start();
    engine.client.last()->fail(u"The request timed out."_s);
    engine.client.last()->fail(u"100% \u00e4"_s);
    QCOMPARE(output.text(), ErrorLine + "The request timed out.\n" + ErrorLine + "100% \xc3\xa4\n");
    QCOMPARE(std::tuple(engine.client.last()->request().url.fileName(), engine.delegate->lines(),
                        engine.patcher->currentFile(), engine.patcher->failedCount()),
             std::tuple(u"c.bz2"_s, QStringList(), qint64(3), qint64(2)));
}

void TestTransfer::dropsWhatArrivedBeforeAFailure()
{
    const TestEngine engine;
    const auto files = engine.enqueue({u"a"_s, u"b"_s});
    const QByteArray body = compressBzip2("contents of b");
    engine.patcher->start();
    engine.client.last()->respond(100);
    engine.client.last()->receive(body);
    engine.client.last()->fail(u"gone"_s);
    engine.deliver(body);
    QCOMPARE(QList<QByteArray>({files[0]->data(), files[1]->data()}),
             QList<QByteArray>({QByteArray(), "contents of b"_ba}));
    QCOMPARE(engine.delegate->progress().last().megaByteCount, double(body.size()) / MegaByte);
}

void TestTransfer::endsWithAWriteReportWhenTheLastDownloadFails()
{
    const TestEngine engine;
    engine.enqueue({u"a"_s, u"b.bin"_s});
    engine.patcher->start();
    engine.deliver(compressBzip2("x"));
    engine.client.last()->fail(u"gone"_s);
    QCOMPARE(engine.delegate->lines(),
             QStringList({u"received 1/2 a"_s, u"written 1/2 disk a"_s, u"written 1/2 b.bin"_s}));
    QVERIFY(engine.patcher->isRunOver());
}

void TestTransfer::neverFinishesAfterAFailure()
{
    const TestEngine engine;
    const auto files = engine.enqueueHolding({u"a"_s, u"b"_s, u"c"_s});
    engine.patcher->start();
    engine.deliver(compressBzip2("x"));
    engine.client.last()->fail(u"gone"_s);
    engine.deliver(compressBzip2("x"));
    files[2]->complete();
    const bool isOverEarly = engine.patcher->isRunOver();
    files[0]->complete();
    QCOMPARE(
        std::tuple(engine.delegate->linesOfWriting(), isOverEarly, engine.patcher->isRunOver()),
        std::tuple(
            QStringList({u"written 0/3 c"_s, u"written 1/3 disk c"_s, u"written 2/3 disk a"_s}),
            false, true));
}

void TestTransfer::doesNotReserveWhatAServerOnlyPromises()
{
    const TestEngine engine;
    const auto files = engine.enqueue({u"a"_s});
    engine.patcher->start();
    engine.client.last()->respond(std::numeric_limits<qint64>::max());
    engine.client.last()->receive(compressBzip2("contents"));
    engine.client.last()->finish();
    TestEngine::waitForWrites();
    QCOMPARE(files[0]->data(), "contents"_ba);
}

void TestTransfer::fetchesFilesFromARealServer()
{
    TestServer server;
    const auto client = makeHttpClient(Certificates::shared().authorityFile());
    const auto patcher = std::make_shared<VARNOPatcher>(*client);
    const auto delegate = std::make_shared<RecordingDelegate>();
    patcher->setDelegate(delegate);
    QByteArray large;
    for (unsigned i = 0; i < 3 * MegaByte; ++i)
        large += char(i * i >> 7);
    const QList<QByteArray> contents{"small", large, QByteArray(), "last"};
    TestEngine::Files files;
    for (int i = 0; i < contents.size(); ++i) {
        const QByteArray path = "/mac/file" + QByteArray::number(i) + ".bz2";
        server.route(path, TestReply::whole(compressBzip2(contents[i])));
        files += std::make_shared<FakeDownloadable>(server.url(path));
        patcher->enqueueWithFile(files.last());
    }
    patcher->start();
    QTRY_COMPARE_WITH_TIMEOUT(delegate->finishCount(), qsizetype(1), TestEngine::Limit);
    TestEngine::waitForWrites();
    QList<QByteArray> written;
    for (const auto &file : files)
        written += file->data();
    QVERIFY(written == contents);
    QVERIFY(delegate->lines().last().startsWith(u"written 4/4 "_s));
}

void TestTransfer::goesOnAfterEveryFaultOfARealServer_data()
{
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<bool>("isWritten");
    QTest::addColumn<QByteArray>("data");
    const QByteArray body = compressBzip2(QByteArray(20000, 'x'));
    QTest::newRow("whole") << TestReply::whole(body) << true << QByteArray(20000, 'x');
    QTest::newRow("chunked") << TestReply::chunked(body) << true << QByteArray(20000, 'x');
    QTest::newRow("404") << TestReply::whole("<html>", 404) << true << "nothing"_ba;
    QTest::newRow("500 with the file")
        << TestReply::whole(body, 500) << true << QByteArray(20000, 'x');
    QTest::newRow("cut") << TestReply::cut(body, 10) << false << QByteArray();
    QTest::newRow("reset") << TestReply::reset(body, 10) << false << QByteArray();
    QTest::newRow("more announced")
        << TestReply::announcing(body.size() + 1, body) << false << QByteArray();
}

void TestTransfer::goesOnAfterEveryFaultOfARealServer()
{
    QFETCH(TestReply, reply);
    QFETCH(bool, isWritten);
    QFETCH(QByteArray, data);
    TestServer server;
    server.route("/first.bz2", reply);
    server.route("/second.bz2", TestReply::whole(compressBzip2("second")));
    const auto client = makeHttpClient(Certificates::shared().authorityFile());
    const auto patcher = std::make_shared<VARNOPatcher>(*client);
    const auto first = std::make_shared<FakeDownloadable>(server.url("/first.bz2"));
    const auto second = std::make_shared<FakeDownloadable>(server.url("/second.bz2"));
    patcher->enqueueWithFile(first);
    patcher->enqueueWithFile(second);
    StandardOutput output;
    patcher->start();
    const bool isOver =
        QTest::qWaitFor([&patcher] { return patcher->isRunOver(); }, TestEngine::Limit);
    TestEngine::waitForWrites();
    const bool isLogged = output.text().startsWith(ErrorLine);
    QVERIFY(isOver);
    QCOMPARE(std::tuple(first->writeCount(), first->data(), second->data(), isLogged),
             std::tuple(int(isWritten), data, "second"_ba, !isWritten));
}

QUELLMOOR_TEST(TestTransfer, "Transfer")
#include "tst_Transfer.moc"

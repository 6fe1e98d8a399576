#include "CompressBzip2.h"
#include "SelfServingHttpClient.h"
#include "Signal.h"
#include "TestEngine.h"
#include "TestMain.h"
#include "TestServer.h"

#include <QTest>

using namespace Qt::StringLiterals;

namespace {

const QByteArray &someBody()
{
    static const QByteArray body = compressBzip2("contents");
    return body;
}

// A file whose write waits for the test.
struct HeldWrite
{
    explicit HeldWrite(FakeDownloadable &file)
    {
        file.onWrite = [this] { static_cast<void>(mayEnd.wait()); };
    }
    ~HeldWrite() { end(); }
    HeldWrite(const HeldWrite &) = delete;
    HeldWrite &operator=(const HeldWrite &) = delete;
    void end()
    {
        mayEnd.raise();
        TestEngine::waitForWrites();
    }

    Signal mayEnd;
};

} // namespace

class TestFlowControl : public QObject
{
    Q_OBJECT

private slots:
    void pausesTheDownloadWhileMoreThanTheLimitWaits_data();
    void pausesTheDownloadWhileMoreThanTheLimitWaits();
    void countsWhatHasNoFileOrIsNoArchive();
    void goesOnWhenTheWriteEndsJustBeforeThePause();
    void neverPausesBelowTheUsualLimit();
    void completesARunThatIsPausedAgainAndAgain();
    void completesARunWithARealServer();
};

void TestFlowControl::pausesTheDownloadWhileMoreThanTheLimitWaits_data()
{
    QTest::addColumn<qint64>("limit");
    QTest::addColumn<bool>("isPaused");
    const qint64 size = someBody().size();
    QTest::newRow("a byte less") << size - 1 << true;
    QTest::newRow("as much") << size << false;
    QTest::newRow("nothing may wait") << qint64(0) << true;
}

void TestFlowControl::pausesTheDownloadWhileMoreThanTheLimitWaits()
{
    QFETCH(qint64, limit);
    QFETCH(bool, isPaused);
    const TestEngine engine(limit);
    const auto files = engine.enqueue({u"a"_s, u"b"_s});
    HeldWrite write(*files[0]);
    engine.patcher->start();
    const auto first = engine.client.last();
    first->deliver(someBody());
    const auto second = engine.client.last();
    QList<bool> states{first->isPaused(), second->isStarted(), second->isPaused()};
    write.end();
    states += second->isPaused();
    second->deliver(someBody());
    TestEngine::waitForWrites();
    QCOMPARE(std::pair(states, engine.delegate->finishCount()),
             std::pair(QList<bool>({false, true, isPaused, false}), qsizetype(1)));
}

void TestFlowControl::countsWhatHasNoFileOrIsNoArchive()
{
    const TestEngine engine(0);
    engine.enqueue({u"a"_s, u"b"_s, u"c"_s});
    engine.patcher->start();
    engine.deliver("<html>");
    engine.patcher->connectionDidFinishLoading(); // of nobody knows what
    TestEngine::waitForWrites();
    QCOMPARE(
        std::pair(engine.client.last()->request().url.fileName(), engine.client.last()->isPaused()),
        std::pair(u"c.bz2"_s, false));
}

void TestFlowControl::goesOnWhenTheWriteEndsJustBeforeThePause()
{
    TestEngine engine(0);
    const auto files = engine.enqueue({u"a"_s, u"b"_s});
    HeldWrite write(*files[0]);
    bool hasEnded = false;
    engine.client.onConnection = [&](const std::shared_ptr<FakeConnection> &connection) {
        connection->onPause = [&](bool isPaused) {
            if (isPaused && !std::exchange(hasEnded, true))
                write.end();
        };
    };
    engine.patcher->start();
    engine.client.last()->deliver(someBody());
    TestEngine::waitForWrites();
    QCOMPARE(std::pair(hasEnded, engine.client.last()->isPaused()), std::pair(true, false));
}

void TestFlowControl::neverPausesBelowTheUsualLimit()
{
    SelfServingHttpClient client([](const QUrl &) { return someBody(); });
    const auto patcher = std::make_shared<VARNOPatcher>(client);
    for (int i = 0; i < 200; ++i)
        patcher->enqueueWithFile(FakeDownloadable::named(QString::number(i)));
    patcher->start();
    QTRY_VERIFY_WITH_TIMEOUT(patcher->isRunOver(), TestEngine::Limit);
    TestEngine::waitForWrites();
    QCOMPARE(client.pauseCount(), 0);
}

void TestFlowControl::completesARunThatIsPausedAgainAndAgain()
{
    constexpr int Count = 500;
    SelfServingHttpClient client([](const QUrl &) { return someBody(); });
    const auto patcher = std::make_shared<VARNOPatcher>(client, 0);
    const auto delegate = std::make_shared<RecordingDelegate>();
    patcher->setDelegate(delegate);
    for (int i = 0; i < Count; ++i)
        patcher->enqueueWithFile(FakeDownloadable::named(QString::number(i)));
    patcher->start();
    QTRY_COMPARE_WITH_TIMEOUT(delegate->finishCount(), qsizetype(1), TestEngine::Limit);
    TestEngine::waitForWrites();
    QCOMPARE(patcher->writeCount(), qint64(Count));
    QVERIFY(client.pauseCount() > 0);
}

void TestFlowControl::completesARunWithARealServer()
{
    TestServer server;
    const auto client = makeHttpClient(Certificates::shared().authorityFile());
    const auto patcher = std::make_shared<VARNOPatcher>(*client, 1000);
    const auto delegate = std::make_shared<RecordingDelegate>();
    patcher->setDelegate(delegate);
    QByteArray contents;
    for (unsigned i = 0; i < 300'000; ++i)
        contents += char(i * i >> 5);
    server.setHandler(
        [body = compressBzip2(contents)](const TestRequest &) { return TestReply::whole(body); });
    TestEngine::Files files;
    for (int i = 0; i < 40; ++i) {
        files += std::make_shared<FakeDownloadable>(server.url("/file" + QByteArray::number(i)));
        patcher->enqueueWithFile(files.last());
    }
    patcher->start();
    QTRY_COMPARE_WITH_TIMEOUT(delegate->finishCount(), qsizetype(1), TestEngine::Limit);
    TestEngine::waitForWrites();
    const auto isRight = [&contents](const auto &file) { return file->data() == contents; };
    QCOMPARE(std::count_if(files.cbegin(), files.cend(), isRight), files.size());
}

QUELLMOOR_TEST(TestFlowControl, "FlowControl")
#include "tst_FlowControl.moc"

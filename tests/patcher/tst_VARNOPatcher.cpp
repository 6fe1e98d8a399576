#include "CompressBzip2.h"
#include "FatalCheck.h"
#include "PrivateMember.h"
#include "StandardOutput.h"
#include "TestEngine.h"
#include "TestMain.h"

#include <QTest>
#include <QThread>

#include <limits>

using namespace Qt::StringLiterals;

QUELLMOOR_PRIVATE_MEMBER(totalFilesOf, VARNOPatcher, qint64, m_totalFiles)
QUELLMOOR_PRIVATE_MEMBER(currentFileOf, VARNOPatcher, qint64, m_currentFile)
QUELLMOOR_PRIVATE_MEMBER(writeCountOf, VARNOPatcher, qint64, m_writeCount)

namespace {

// All that can be asked of an engine, on one line.
QString describe(const VARNOPatcher &patcher)
{
    return u"total %1, current %2, written %3, queued %4, failed %5, patching %6, over %7, file "
           "\"%8\", logs \"%9\""_s.arg(patcher.totalFiles())
               .arg(patcher.currentFile())
               .arg(patcher.writeCount())
               .arg(patcher.queuedFileCount())
               .arg(patcher.failedCount())
               .arg(patcher.isPatching())
               .arg(patcher.isRunOver())
               .arg(patcher.currentFilename(), patcher.logs());
}

QStringList requestedPaths(const FakeHttpClient &client)
{
    QStringList paths;
    for (qsizetype i = 0; i < client.connectionCount(); ++i)
        paths += client.connection(i)->request().url.path();
    return paths;
}

// URLs that are all different and of which none can be fetched.
std::shared_ptr<FakeDownloadable> unreachableFile(int number)
{
    return std::make_shared<FakeDownloadable>(QUrl(u"ftp://h/file%1.bz2"_s.arg(number)));
}

// Counts how often somebody asks for its URL.
class CountingFile final : public FakeDownloadable
{
public:
    CountingFile(int number, std::atomic<int> &looks)
        : FakeDownloadable(QUrl(u"https://h/file%1.bz2"_s.arg(number))), m_looks(looks)
    {
    }

    [[nodiscard]] QUrl downloadURL() const override
    {
        ++m_looks;
        return FakeDownloadable::downloadURL();
    }

private:
    std::atomic<int> &m_looks;
};

} // namespace

class TestVARNOPatcher : public QObject
{
    Q_OBJECT

private slots:
    void startsEmpty();
    void hasASerialQueueThatNothingUses();
    void holdsItsDelegateUntilItIsReplaced();
    void dropsAFileWhoseUrlIsAlreadyWaiting();
    void acceptsTheFileThatIsBeingDownloadedOnceMore();
    void acceptsAFileThatIsAlreadyWrittenOnceMore();
    void finishesAtOnceWithoutFiles();
    void downloadsOneFileAtATimeInTheirOrder();
    void asksForAFreshCopyAndWaitsAMinute();
    void emptiesTheLogAtTheStart();
    void namesTheCurrentFileWithoutBz2_data();
    void namesTheCurrentFileWithoutBz2();
    void namesNothingBeforeTheFirstDownload();
    void keepsCountingInASecondRun();
    void downloadsTwoFilesAtOnceWhenStartedTwice();
    void worksWithoutADelegate();
    void skipsAFileThatNoConnectionIsMadeFor();
    void skipsTenThousandFilesOnASmallStack();
    void looksAtEachWaitingFileOnlyOnce();
    void stopsTheProcessWhenACounterOverflows_data();
    void stopsTheProcessWhenACounterOverflows();
};

void TestVARNOPatcher::startsEmpty()
{
    FakeHttpClient client;
    const auto patcher = std::make_shared<VARNOPatcher>(client);
    QCOMPARE(describe(*patcher) +
                 u", expected %1, megabyte %2, delegate %3"_s.arg(patcher->expectedDataSize())
                     .arg(patcher->bytesPerMegaByte(), 0, 'f', 1)
                     .arg(patcher->delegate() != nullptr),
             u"total 0, current 0, written 0, queued 0, failed 0, patching 0, over 1, file \"\", "
             "logs \"\", expected 0, megabyte 1048576.0, delegate 0"_s);
}

void TestVARNOPatcher::hasASerialQueueThatNothingUses()
{
    const TestEngine engine;
    const DispatchQueue &queue = engine.patcher->serialPatchQueue();
    QCOMPARE(std::pair(queue.label(), queue.isSerial()), std::pair(u"varno.patch.queue"_s, true));
}

void TestVARNOPatcher::holdsItsDelegateUntilItIsReplaced()
{
    FakeHttpClient client;
    const auto patcher = std::make_shared<VARNOPatcher>(client);
    auto delegate = std::make_shared<RecordingDelegate>();
    const std::weak_ptr<RecordingDelegate> observed = delegate;
    patcher->setDelegate(std::move(delegate));
    QList<bool> lives{!observed.expired()};
    lives += patcher->delegate() == observed.lock();
    patcher->setDelegate(nullptr);
    lives += !observed.expired();
    QCOMPARE(lives, QList<bool>({true, true, false}));
}

void TestVARNOPatcher::dropsAFileWhoseUrlIsAlreadyWaiting()
{
    const TestEngine engine;
    const auto files = engine.enqueue({u"a"_s, u"b"_s, u"a"_s, u"b"_s, u"c"_s, u"A"_s});
    QCOMPARE(std::pair(engine.patcher->totalFiles(), engine.patcher->queuedFileCount()),
             std::pair(qint64(4), qsizetype(4)));
    engine.patcher->start();
    engine.deliver(compressBzip2("x"));
    QCOMPARE(std::pair(files[0]->writeCount(), files[2]->writeCount()), std::pair(1, 0));
}

void TestVARNOPatcher::acceptsTheFileThatIsBeingDownloadedOnceMore()
{
    const TestEngine engine;
    const auto first = engine.enqueue({u"a"_s, u"b"_s});
    engine.patcher->start();
    const auto second = engine.enqueue({u"a"_s, u"b"_s});
    for (int i = 0; i < 3; ++i)
        engine.deliver(compressBzip2("x"));
    QCOMPARE(requestedPaths(engine.client),
             QStringList({u"/mac/a.bz2"_s, u"/mac/b.bz2"_s, u"/mac/a.bz2"_s}));
    QCOMPARE(std::pair(engine.patcher->totalFiles(), second[0]->writeCount()),
             std::pair(qint64(3), 1));
}

void TestVARNOPatcher::acceptsAFileThatIsAlreadyWrittenOnceMore()
{
    const TestEngine engine;
    const auto files = engine.enqueue({u"a"_s});
    engine.patcher->start();
    engine.deliver(compressBzip2("x"));
    engine.patcher->enqueueWithFile(files[0]);
    engine.patcher->start();
    engine.deliver(compressBzip2("x"));
    QCOMPARE(std::tuple(engine.patcher->totalFiles(), files[0]->writeCount(),
                        engine.delegate->finishCount()),
             std::tuple(qint64(2), 2, qsizetype(2)));
}

void TestVARNOPatcher::finishesAtOnceWithoutFiles()
{
    const TestEngine engine;
    engine.patcher->start();
    QCOMPARE(engine.delegate->lines() + QStringList(describe(*engine.patcher)),
             QStringList({u"finished"_s, u"total 0, current 1, written 0, queued 0, failed 0, "
                                         "patching 0, over 1, file \"\", logs \"\""_s}));
}

void TestVARNOPatcher::downloadsOneFileAtATimeInTheirOrder()
{
    const TestEngine engine;
    engine.enqueue({u"c"_s, u"a"_s, u"b"_s});
    QStringList states{describe(*engine.patcher)};
    engine.patcher->start();
    states += describe(*engine.patcher);
    engine.deliver(compressBzip2("x"));
    states += describe(*engine.patcher);
    engine.client.last()->fail(u"gone"_s);
    engine.deliver(compressBzip2("x"));
    states += describe(*engine.patcher);
    QCOMPARE(states,
             QStringList({u"total 3, current 0, written 0, queued 3, failed 0, patching 0, over 0, "
                          "file \"\", logs \"\""_s,
                          u"total 3, current 1, written 0, queued 2, failed 0, patching 0, over 0, "
                          "file \"c\", logs \"\""_s,
                          u"total 3, current 2, written 1, queued 1, failed 0, patching 0, over 0, "
                          "file \"a\", logs \"\n\""_s,
                          u"total 3, current 4, written 2, queued 0, failed 1, patching 0, over 1, "
                          "file \"b\", logs \"\n\n\""_s}));
    QCOMPARE(requestedPaths(engine.client),
             QStringList({u"/mac/c.bz2"_s, u"/mac/a.bz2"_s, u"/mac/b.bz2"_s}));
}

// That nothing comes from a cache is the client's promise for every request.
void TestVARNOPatcher::asksForAFreshCopyAndWaitsAMinute()
{
    const TestEngine engine;
    engine.enqueue({u"a b%231"_s});
    engine.patcher->start();
    const auto connection = engine.client.last();
    const HttpRequest &request = connection->request();
    QCOMPARE(std::tuple(request.url.toString(QUrl::FullyEncoded), request.method,
                        request.headers.size(), request.body, request.idleTimeout.count(),
                        connection->isStarted(), connection->isPaused()),
             std::tuple(u"https://h/mac/a%20b%231.bz2"_s, "GET"_ba, qsizetype(0), QByteArray(),
                        std::chrono::milliseconds(60000).count(), true, false));
}

void TestVARNOPatcher::emptiesTheLogAtTheStart()
{
    const TestEngine engine;
    engine.patcher->setLogs(u"before"_s);
    QStringList logs{engine.patcher->logs()};
    engine.patcher->start();
    logs += engine.patcher->logs();
    QCOMPARE(logs, QStringList({u"before"_s, QString()}));
}

void TestVARNOPatcher::namesTheCurrentFileWithoutBz2_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *url, const char *name) {
        QTest::newRow(url) << QString::fromLatin1(url) << QString::fromUtf8(name);
    };
    row("https://h/mac/x.pyd.bz2", "x.pyd");
    row("https://h/mac/a.bz2b.bz2", "ab");
    row("https://h/mac/data.bz2/a.bin.bz2", "a.bin");
    row("https://h/mac/a.BZ2", "a.BZ2");
    row("https://h/mac/.bz2", "");
    row("https://h/mac/.bz.bz22.bz2", ".bz2");
    row("https://h/mac/a%20b%C3%A4.bz2", "a b\u00e4");
    row("https://h/mac/a.bz2?x=/y.bz2", "a");
    row("https://h/a", "a");
}

void TestVARNOPatcher::namesTheCurrentFileWithoutBz2()
{
    QFETCH(QString, url);
    QFETCH(QString, name);
    const TestEngine engine;
    engine.patcher->enqueueWithFile(std::make_shared<FakeDownloadable>(QUrl(url)));
    engine.patcher->start();
    engine.client.last()->respond();
    engine.client.last()->receive("x");
    QCOMPARE(QStringList(engine.patcher->currentFilename()) + engine.delegate->lines(),
             QStringList({name, u"received 1/1 "_s + name}));
}

void TestVARNOPatcher::namesNothingBeforeTheFirstDownload()
{
    const TestEngine engine;
    engine.enqueue({u"a"_s});
    QCOMPARE(engine.patcher->currentFilename(), QString());
}

void TestVARNOPatcher::keepsCountingInASecondRun()
{
    const TestEngine engine;
    const auto first = engine.enqueueHolding({u"a"_s});
    engine.patcher->start();
    engine.deliver(compressBzip2("x"));
    first[0]->complete();
    const auto second = engine.enqueueHolding({u"b"_s});
    engine.patcher->start();
    engine.deliver(compressBzip2("x"));
    second[0]->complete();
    // Each look into the empty queue counts, too: after the last download and after the last write.
    QCOMPARE(engine.delegate->lines(),
             QStringList({u"received 1/1 a"_s, u"written 0/1 a"_s, u"finished"_s,
                          u"written 1/1 disk a"_s, u"received 4/2 b"_s, u"written 1/2 b"_s,
                          u"finished"_s, u"written 2/2 disk b"_s}));
}

void TestVARNOPatcher::downloadsTwoFilesAtOnceWhenStartedTwice()
{
    const TestEngine engine;
    engine.enqueue({u"a"_s, u"b"_s, u"c"_s});
    engine.patcher->start();
    engine.patcher->setLogs(u"x"_s);
    engine.patcher->start();
    QCOMPARE(std::tuple(requestedPaths(engine.client), engine.patcher->logs(),
                        engine.patcher->currentFile()),
             std::tuple(QStringList({u"/mac/a.bz2"_s, u"/mac/b.bz2"_s}), QString(), qint64(2)));
}

void TestVARNOPatcher::worksWithoutADelegate()
{
    const TestEngine engine;
    engine.patcher->setDelegate(nullptr);
    const auto files = engine.enqueue({u"a"_s, u"b"_s, u"c"_s});
    engine.patcher->start();
    engine.deliver(compressBzip2("one"));
    engine.client.last()->fail(u"gone"_s);
    engine.deliver(compressBzip2("three"));
    QCOMPARE(QList<QByteArray>({files[0]->data(), files[1]->data(), files[2]->data()}),
             QList<QByteArray>({"one", "", "three"}));
    QCOMPARE(describe(*engine.patcher),
             u"total 3, current 4, written 2, queued 0, failed 1, patching 0, over 1, file \"c\", "
             "logs \"\n\n\""_s);
}

void TestVARNOPatcher::skipsAFileThatNoConnectionIsMadeFor()
{
    const TestEngine engine;
    StandardOutput output;
    engine.patcher->enqueueWithFile(unreachableFile(1));
    engine.enqueueHolding({u"a"_s});
    engine.patcher->enqueueWithFile(std::make_shared<FakeDownloadable>(QUrl()));
    engine.patcher->start();
    engine.deliver(compressBzip2("x"));
    QCOMPARE(std::pair(output.text(), engine.delegate->lines()),
             std::pair("Connection failed.\nConnection failed.\n"_ba,
                       QStringList({u"received 2/3 a"_s, u"written 0/3 "_s})));
    QCOMPARE(describe(*engine.patcher),
             u"total 3, current 4, written 0, queued 0, failed 2, patching 0, over 0, file \"\", "
             "logs \"\""_s);
}

void TestVARNOPatcher::skipsTenThousandFilesOnASmallStack()
{
    const TestEngine engine;
    for (int i = 0; i < 10000; ++i)
        engine.patcher->enqueueWithFile(unreachableFile(i));
    StandardOutput output;
    const std::unique_ptr<QThread> thread(QThread::create([&engine] { engine.patcher->start(); }));
    thread->setStackSize(256 * 1024);
    thread->start();
    const bool isOver = thread->wait(TestEngine::Limit);
    const QByteArray printed = output.text();
    QVERIFY(isOver);
    QCOMPARE(std::pair(printed, engine.delegate->lines()),
             std::pair("Connection failed.\n"_ba.repeated(10000),
                       QStringList(u"written 0/10000 file9999"_s)));
}

void TestVARNOPatcher::looksAtEachWaitingFileOnlyOnce()
{
    constexpr int Count = 1000;
    const TestEngine engine;
    std::atomic<int> looks = 0;
    for (int i = 0; i < Count; ++i)
        engine.patcher->enqueueWithFile(std::make_shared<CountingFile>(i, looks));
    for (int i = 0; i < Count; ++i)
        engine.patcher->enqueueWithFile(std::make_shared<CountingFile>(i, looks));
    QCOMPARE(std::pair(engine.patcher->queuedFileCount(), looks.load()),
             std::pair(qsizetype(Count), 2 * Count));
}

void TestVARNOPatcher::stopsTheProcessWhenACounterOverflows_data()
{
    QTest::addColumn<int>("counter");
    QTest::newRow("totalFiles") << 0;
    QTest::newRow("currentFile") << 1;
    QTest::newRow("writeCount") << 2;
}

void TestVARNOPatcher::stopsTheProcessWhenACounterOverflows()
{
    QFETCH(int, counter);
    if (FatalCheck::isChild()) {
        const TestEngine engine;
        const std::array counters{totalFilesOf, currentFileOf, writeCountOf};
        counters[size_t(counter)](*engine.patcher) = std::numeric_limits<qint64>::max();
        const auto files = engine.enqueueHolding({u"a"_s});
        engine.patcher->start();
        engine.deliver(compressBzip2("x"));
        files[0]->complete();
    }
    const auto outcome = FatalCheck::runChild("VARNOPatcher");
    QVERIFY2(outcome.hasCrashed && outcome.output.contains("a counter overflowed"),
             outcome.output.constData());
}

QUELLMOOR_TEST(TestVARNOPatcher, "VARNOPatcher")
#include "tst_VARNOPatcher.moc"

#include "CompressBzip2.h"
#include "FatalCheck.h"
#include "Signal.h"
#include "StandardOutput.h"
#include "TestEngine.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "model/VARNOPatchFile.h"
#include "model/VARNOResourceFile.h"

#include <QDir>
#include <QJsonObject>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

namespace {

const auto PatchesUrl = u"https://h/mac/patches/"_s;

std::shared_ptr<VARNOPatchFile> patchNamed(const QString &name, const QString &localPath,
                                           const QString &patchesUrl = PatchesUrl)
{
    return std::make_shared<VARNOPatchFile>(name, localPath, u"1"_s, u"2"_s, patchesUrl);
}

QString describe(const DispatchQueue &queue)
{
    return queue.label() + (queue.isSerial() ? u", serial"_s : u", concurrent"_s);
}

const QByteArray &someBody()
{
    static const QByteArray body = compressBzip2("x");
    return body;
}

} // namespace

class TestWriting : public QObject
{
    Q_OBJECT

private slots:
    void writesEveryThirdFileOnTheGlobalQueue();
    void makesANewQueueForEachOtherFile();
    void writesPatchesOfOneFileOnOneSerialQueue();
    void namesAPatchQueueAfterItsFirstUrl_data();
    void namesAPatchQueueAfterItsFirstUrl();
    void writesPatchesOfOneFileInTheirOrder();
    void stopsTheProcessForAPatchWithoutALocalPath();
    void decompressesWhatItHandsOver_data();
    void decompressesWhatItHandsOver();
    void writesAwayFromTheConnectionsThread();
    void finishesBeforeItReportsAndLogsTheLastWrite();
    void reportsWritesOnlyWhileNothingIsQueued();
    void logsATextALineInTheOrderOfCompletion();
    void countsAWriteThatFails();
    void finishesWhenTheLastWriteFails();
    void writesNothingWithoutACurrentFile();
    void downloadsTheNextFileWhileOneIsWritten();
    void livesUntilItsWritesHaveEnded();
    void livesUntilItsCompletionsAreGone();
    void putsAGameFileInPlace();
};

void TestWriting::writesEveryThirdFileOnTheGlobalQueue()
{
    const TestEngine engine;
    const auto files = engine.enqueue({u"1"_s, u"2"_s, u"3"_s, u"4"_s, u"5"_s, u"6"_s, u"7"_s});
    engine.patcher->start();
    QStringList queues;
    for (const auto &file : files) {
        queues += describe(*engine.patcher->writeQueueForFile(file));
        engine.deliver(someBody());
    }
    const auto global = DispatchQueue::global(DispatchQueue::QualityOfService::Utility);
    const QString own = u"VARNO.write.file.queue.%1, concurrent"_s;
    QCOMPARE(queues, QStringList({own.arg(1), own.arg(2), describe(*global), own.arg(4), own.arg(5),
                                  describe(*global), own.arg(7)}));
}

void TestWriting::makesANewQueueForEachOtherFile()
{
    const TestEngine engine;
    const auto files = engine.enqueue({u"1"_s, u"2"_s, u"3"_s});
    const auto isAlwaysTheSame = [&engine](const std::shared_ptr<Downloadable> &file) {
        return engine.patcher->writeQueueForFile(file) == engine.patcher->writeQueueForFile(file);
    };
    engine.patcher->start();
    QList<bool> answers;
    for (const auto &file : files) {
        answers += isAlwaysTheSame(file);
        answers += isAlwaysTheSame(nullptr);
        engine.deliver(someBody());
    }
    QCOMPARE(answers, QList<bool>({false, false, false, false, true, true}));
}

void TestWriting::writesPatchesOfOneFileOnOneSerialQueue()
{
    const TestEngine engine;
    const auto first = patchNamed(u"a_1_2.patch"_s, u"/game/a"_s);
    const auto second = patchNamed(u"a_2_3.patch"_s, u"/game/a"_s);
    const auto other = patchNamed(u"b_1_2.patch"_s, u"/game/b"_s);
    const std::weak_ptr<DispatchQueue> queue = engine.patcher->writeQueueForFile(first);
    QVERIFY2(!queue.expired(), "the engine keeps its patch queues");
    QCOMPARE(QList<bool>({engine.patcher->writeQueueForFile(second) == queue.lock(),
                          engine.patcher->writeQueueForFile(other) == queue.lock()}),
             QList<bool>({true, false}));
    QCOMPARE(QStringList({describe(*engine.patcher->writeQueueForFile(second)),
                          describe(*engine.patcher->writeQueueForFile(other))}),
             QStringList(
                 {u"varno.patch.queue.Optional(https://h/mac/patches/a_1_2.patch.bz2), serial"_s,
                  u"varno.patch.queue.Optional(https://h/mac/patches/b_1_2.patch.bz2), serial"_s}));
}

void TestWriting::namesAPatchQueueAfterItsFirstUrl_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("label");
    const auto row = [](const char *name, const char *label) {
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(label);
    };
    row("a_1_2.patch", "varno.patch.queue.Optional(https://h/mac/patches/a_1_2.patch.bz2)");
    row("a%20b_1_2", "varno.patch.queue.Optional(https://h/mac/patches/a%20b_1_2.bz2)");
    row("%1_1_2", "varno.patch.queue.nil");
    row("a b_1_2", "varno.patch.queue.nil");
}

void TestWriting::namesAPatchQueueAfterItsFirstUrl()
{
    QFETCH(QString, name);
    QFETCH(QString, label);
    const TestEngine engine;
    QCOMPARE(engine.patcher->writeQueueForFile(patchNamed(name, u"/game/a"_s))->label(), label);
}

void TestWriting::writesPatchesOfOneFileInTheirOrder()
{
    const TestEngine engine;
    // The first takes longer than the others, and none begins before all have arrived.
    const QList<qsizetype> sizes{20'000'000, 1'000'000, 10, 0, 1000};
    QStringList names;
    for (int i = 0; i < sizes.size(); ++i) {
        names += u"order_%1_%2.patch"_s.arg(i).arg(i + 1);
        engine.patcher->enqueueWithFile(patchNamed(names.last(), u"/game/a"_s));
    }
    Signal haveArrived;
    engine.patcher->writeQueueForFile(patchNamed(names[0], u"/game/a"_s))->async([&haveArrived] {
        static_cast<void>(haveArrived.wait());
    });
    engine.patcher->start();
    for (const qsizetype size : sizes)
        engine.client.last()->deliver(compressBzip2(QByteArray(size, '\0'), 1));
    haveArrived.raise();
    TestEngine::waitForWrites();
    QStringList lines{u"written 0/5 order_4_5.patch"_s};
    for (int i = 0; i < names.size(); ++i)
        lines += u"written %1/5 %2"_s.arg(i + 1).arg(names[i]);
    lines.insert(lines.size() - 1, u"finished"_s);
    QCOMPARE(engine.delegate->linesOfWriting(), lines);
}

void TestWriting::stopsTheProcessForAPatchWithoutALocalPath()
{
    if (FatalCheck::isChild()) {
        const TestEngine engine;
        engine.patcher->enqueueWithFile(patchNamed(u"a_1_2.patch"_s, QString()));
        engine.patcher->start();
        engine.deliver(someBody());
    }
    const auto outcome = FatalCheck::runChild("Writing");
    QVERIFY2(outcome.hasCrashed && outcome.output.contains("a patch without a local path"),
             outcome.output.constData());
}

void TestWriting::decompressesWhatItHandsOver_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("data");
    const QByteArray body = compressBzip2("contents");
    QTest::newRow("a file") << body << "contents"_ba;
    QTest::newRow("an empty file") << compressBzip2(QByteArray()) << ""_ba;
    QTest::newRow("an error page") << "<html>not found</html>"_ba
                                   << "nothing"_ba;
    QTest::newRow("no bytes") << QByteArray() << "nothing"_ba;
    QTest::newRow("no end") << body.chopped(1) << "nothing"_ba;
    QTest::newRow("a wrong byte") << QByteArray(body).replace(20, 1, "?") << "nothing"_ba;
    QTest::newRow("more behind the end") << body + "more"
                                         << "contents"_ba;
}

void TestWriting::decompressesWhatItHandsOver()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, data);
    const TestEngine engine;
    const auto files = engine.enqueueHolding({u"a"_s});
    StandardOutput output;
    engine.patcher->start();
    engine.deliver(body);
    files[0]->complete();
    QCOMPARE(std::tuple(files[0]->data(), files[0]->writeCount(), output.text(),
                        engine.delegate->linesOfWriting()),
             std::tuple(data, 1, QByteArray(),
                        QStringList({u"written 0/1 a"_s, u"finished"_s, u"written 1/1 disk a"_s})));
}

void TestWriting::writesAwayFromTheConnectionsThread()
{
    const TestEngine engine;
    const auto files = engine.enqueue({u"a"_s, u"b"_s, u"c"_s});
    std::atomic<int> elsewhere = 0;
    for (const auto &file : files)
        file->onWrite = [&elsewhere, here = QThread::currentThread()] {
            elsewhere += QThread::currentThread() != here;
        };
    engine.patcher->start();
    for (int i = 0; i < files.size(); ++i)
        engine.deliver(someBody());
    QCOMPARE(elsewhere.load(), 3);
}

void TestWriting::finishesBeforeItReportsAndLogsTheLastWrite()
{
    const TestEngine engine;
    const auto files = engine.enqueueHolding({u"a"_s, u"b"_s});
    files[0]->logText = u"first"_s;
    files[1]->logText = u"second"_s;
    files[1]->error = Error{u"No space left"_s, 28};
    StandardOutput output;
    QStringList events;
    engine.delegate->onMessage = [&](const QString &line) {
        events += u"%1; logs \"%2\""_s.arg(line, engine.patcher->logs());
    };
    engine.patcher->start();
    engine.deliver(someBody());
    engine.deliver(someBody());
    files[0]->complete();
    files[1]->complete();
    events += u"at last logs \"%1\""_s.arg(engine.patcher->logs());
    const QByteArray printed = output.text();
    QCOMPARE(events, QStringList({u"received 1/2 a; logs \"\""_s, u"received 2/2 b; logs \"\""_s,
                                  u"written 0/2 b; logs \"\""_s, u"written 1/2 disk a; logs \"\""_s,
                                  u"finished; logs \"first\n\""_s,
                                  u"written 2/2 disk b; logs \"first\n\""_s,
                                  u"at last logs \"first\nsecond\n\""_s}));
    QCOMPARE(printed, "VARNOPatcher connectionDidFinishLoading(_:) 165: No space left\n"_ba);
}

void TestWriting::reportsWritesOnlyWhileNothingIsQueued()
{
    const TestEngine engine;
    const auto files = engine.enqueueHolding({u"a"_s, u"b"_s, u"c"_s});
    engine.patcher->start();
    engine.deliver(someBody());
    files[0]->complete(); // c is still queued
    QStringList lines{engine.delegate->linesOfWriting().join(u'|')};
    engine.deliver(someBody());
    files[1]->complete(); // c is being downloaded
    lines += engine.delegate->linesOfWriting();
    QCOMPARE(std::pair(lines, engine.patcher->logs()),
             std::pair(QStringList({QString(), u"written 2/3 disk b"_s}), u"\n\n"_s));
}

void TestWriting::logsATextALineInTheOrderOfCompletion()
{
    const TestEngine engine;
    const auto files = engine.enqueueHolding({u"a"_s, u"b"_s, u"c"_s});
    files[2]->logText = QString();
    files[0]->logText = std::nullopt;
    files[1]->logText = u"x"_s;
    engine.patcher->start();
    for (int i = 0; i < files.size(); ++i)
        engine.deliver(someBody());
    QStringList logs;
    for (const int next : {2, 0, 1}) {
        files[next]->complete();
        logs += engine.patcher->logs();
    }
    QCOMPARE(logs, QStringList({u"\n"_s, u"\n\n"_s, u"\n\nx\n"_s}));
}

void TestWriting::countsAWriteThatFails()
{
    const TestEngine engine;
    const auto files = engine.enqueueHolding({u"a"_s, u"b"_s});
    files[0]->error = Error{u"one\ntwo %s \u00e4"_s, 28};
    engine.patcher->start();
    engine.deliver(someBody());
    StandardOutput output;
    files[0]->complete();
    QCOMPARE(
        std::tuple(output.text(), engine.patcher->writeCount(), engine.patcher->failedCount(),
                   engine.patcher->logs()),
        std::tuple("VARNOPatcher connectionDidFinishLoading(_:) 165: one\ntwo %s \xc3\xa4\n"_ba,
                   qint64(1), qint64(0), u"\n"_s));
}

void TestWriting::finishesWhenTheLastWriteFails()
{
    const TestEngine engine;
    const auto files = engine.enqueueHolding({u"a"_s});
    files[0]->error = Error{u"No space left"_s, 28};
    engine.patcher->start();
    engine.deliver(someBody());
    files[0]->complete();
    QCOMPARE(engine.delegate->linesOfWriting(),
             QStringList({u"written 0/1 a"_s, u"finished"_s, u"written 1/1 disk a"_s}));
}

void TestWriting::writesNothingWithoutACurrentFile()
{
    const TestEngine engine;
    engine.patcher->connectionDidReceiveResponse({200, -1});
    engine.patcher->connectionDidReceiveData(someBody());
    engine.patcher->connectionDidFinishLoading();
    TestEngine::waitForWrites();
    QCOMPARE(
        std::tuple(engine.delegate->lines(), engine.patcher->writeCount(), engine.patcher->logs()),
        std::tuple(QStringList({u"received 0/0 "_s, u"finished"_s}), qint64(0), QString()));
}

void TestWriting::downloadsTheNextFileWhileOneIsWritten()
{
    const TestEngine engine;
    const auto files = engine.enqueue({u"a"_s, u"b"_s});
    Signal isWriting;
    Signal mayEnd;
    files[0]->onWrite = [&isWriting, &mayEnd] {
        isWriting.raise();
        static_cast<void>(mayEnd.wait());
    };
    engine.patcher->start();
    engine.client.last()->deliver(someBody());
    const bool hasBegun = isWriting.wait();
    engine.client.last()->respond();
    engine.client.last()->receive("part of b");
    const auto state = std::tuple(engine.client.last()->request().url.fileName(),
                                  engine.patcher->writeCount(), engine.delegate->lines());
    mayEnd.raise();
    TestEngine::waitForWrites();
    QVERIFY(hasBegun);
    QCOMPARE(state, std::tuple(u"b.bz2"_s, qint64(0),
                               QStringList({u"received 1/2 a"_s, u"received 2/2 b"_s})));
}

void TestWriting::livesUntilItsWritesHaveEnded()
{
    TestEngine engine;
    const std::weak_ptr<VARNOPatcher> observed = engine.patcher;
    const auto files = engine.enqueue({u"a"_s});
    Signal isWriting;
    Signal mayEnd;
    files[0]->onWrite = [&isWriting, &mayEnd] {
        isWriting.raise();
        static_cast<void>(mayEnd.wait());
    };
    engine.patcher->start();
    engine.patcher.reset();
    QList<bool> lives{!observed.expired()}; // held by the connection
    engine.client.last()->deliver(someBody());
    const bool hasBegun = isWriting.wait();
    lives += !observed.expired(); // held by the write
    mayEnd.raise();
    TestEngine::waitForWrites();
    lives += !observed.expired();
    QVERIFY(hasBegun);
    QCOMPARE(std::pair(lives, engine.delegate->linesOfWriting()),
             std::pair(QList<bool>({true, true, false}),
                       QStringList({u"written 0/1 a"_s, u"finished"_s, u"written 1/1 disk a"_s})));
}

void TestWriting::livesUntilItsCompletionsAreGone()
{
    TestEngine engine;
    const std::weak_ptr<VARNOPatcher> observed = engine.patcher;
    const auto files = engine.enqueueHolding({u"a"_s});
    engine.patcher->start();
    engine.deliver(someBody());
    engine.patcher.reset();
    QList<bool> lives{!observed.expired()};
    files[0]->dropCompletion();
    lives += !observed.expired();
    QCOMPARE(lives, QList<bool>({true, false}));
}

void TestWriting::putsAGameFileInPlace()
{
    const TestFolder folder;
    folder.write(u"game/old"_s, "before");
    const TestEngine engine;
    for (const auto *name : {"new/deep", "old", "broken"})
        engine.patcher->enqueueWithFile(std::make_shared<VARNOResourceFile>(
            QUrl(u"https://h/mac/%1.bz2"_s.arg(QLatin1String(name))),
            folder.path(u"game/"_s + QLatin1String(name)), QJsonObject(), nullptr, PatchesUrl));
    engine.patcher->start();
    engine.deliver(compressBzip2("one"));
    engine.deliver(compressBzip2("two"));
    engine.deliver("<html>");
    QCOMPARE(std::tuple(folder.tree(), engine.delegate->finishCount(), engine.patcher->logs()),
             std::tuple(QStringList({u"game/"_s, u"game/new/"_s, u"game/new/deep=one"_s,
                                     u"game/old=two"_s}),
                        qsizetype(1), u"\n\n\n"_s));
}

QUELLMOOR_TEST(TestWriting, "Writing")
#include "tst_Writing.moc"

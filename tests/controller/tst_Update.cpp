// From the login to the whole game folder: progress, rounds, the end of a run.
#include "ControllerWorld.h"
#include "Heartbeat.h"
#include "Sanitized.h"
#include "TestMain.h"
#include "patcher/VARNOPatcher.h"
#include "platform/DispatchQueue.h"
#include "ui/TextLabel.h"
#include "ui/VARNOProgressView.h"

#include <QFile>
#include <QJsonObject>
#include <QTest>

#include <atomic>
#include <chrono>
#include <thread>

class TestUpdate : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { m_world.reset(); }

    void tellsTheTransferInThreeLines_data();
    void tellsTheTransferInThreeLines();
    void ignoresAnUnknownSizeForTheBar();
    void tellsTheWritingAndEmptiesTheBar();
    void tellsBothFromAnyThread();
    void staysResponsiveUnderThousandsOfReports();
    void startsTheCurrentEngine();
    void checksAgainAfterARunAndThenLaunches();
    void replacesTheEngineAtEachCheck();
    void bringsTheGameFolderUpToDateAndLaunches();
    void launchesAtOnceWhenEverythingIsValid();
    void runsAgainWhileAFileStaysWrong();
    void stopsWhenADownloadFails();
    void bringsTheGameOfTheEnvironment_data();
    void bringsTheGameOfTheEnvironment();

private:
    std::unique_ptr<ControllerWorld> m_world;
};

void TestUpdate::init()
{
    m_world = std::make_unique<ControllerWorld>();
    m_world->window.show();
    m_world->answerLogin(QJsonObject{{QStringLiteral("status"), 7},
                                     {QStringLiteral("message"), QStringLiteral("Welcome")},
                                     {QStringLiteral("token"), QStringLiteral("cookie")},
                                     {QStringLiteral("gameserver"), QStringLiteral("g:1")}});
}

void TestUpdate::tellsTheTransferInThreeLines_data()
{
    QTest::addColumn<double>("done");
    QTest::addColumn<double>("expected");
    QTest::addColumn<double>("speed");
    QTest::addColumn<QString>("lastLine");
    QTest::newRow("usual") << 4.2 << 18.0 << 1.5 << QStringLiteral("[4.2/18.0MB @ 1.5MB/s]");
    QTest::newRow("rounded") << 0.06 << 0.04 << 0.96 << QStringLiteral("[0.1/0.0MB @ 1.0MB/s]");
    QTest::newRow("unknown size") << 1.0 << -9.5367431640625e-07 << 2.0
                                  << QStringLiteral("[1.0/-0.0MB @ 2.0MB/s]");
    QTest::newRow("no time passed") << 1.0 << 2.0 << std::numeric_limits<double>::infinity()
                                    << QStringLiteral("[1.0/2.0MB @ infMB/s]");
}

void TestUpdate::tellsTheTransferInThreeLines()
{
    QFETCH(double, done);
    QFETCH(double, expected);
    QFETCH(double, speed);
    QFETCH(QString, lastLine);
    m_world->controller->patcherUpdateWithMegaByteCount(done, expected, speed, 3,
                                                        QStringLiteral("archive_%1.bin"), 12);
    QTRY_COMPARE(m_world->status(),
                 QStringLiteral("Updating file 3 of 12...\narchive_%1.bin\n") + lastLine);
}

void TestUpdate::ignoresAnUnknownSizeForTheBar()
{
    m_world->controller->patcherUpdateWithMegaByteCount(1, 4, 1, 1, QStringLiteral("a"), 1);
    QTRY_COMPARE(m_world->view->patcherProgressBar()->value(), 0.25);
    m_world->controller->patcherUpdateWithMegaByteCount(1, -9.5e-07, 1, 2, QStringLiteral("b"), 2);
    QTRY_VERIFY(m_world->status().contains(QStringLiteral("\nb\n")));
    QCoreApplication::processEvents();
    QCOMPARE(m_world->view->patcherProgressBar()->value(), 0.25);
}

void TestUpdate::tellsTheWritingAndEmptiesTheBar()
{
    m_world->view->swordsmenImage()->setHidden(true);
    m_world->controller->patcherWriteUpdateWithCurrentFile(2, 5, QStringLiteral("b.bin"));
    QTRY_COMPARE(m_world->status(), QStringLiteral("Writing file 2 of 5\nb.bin"));
    QTRY_COMPARE(m_world->view->patcherProgressBar()->value(), 0.0);
    QVERIFY(!m_world->view->swordsmenImage()->isHidden());
}

void TestUpdate::tellsBothFromAnyThread()
{
    const auto queue = DispatchQueue::makeSerial(QStringLiteral("elsewhere"));
    queue->async([controller = m_world->controller] {
        controller->patcherUpdateWithMegaByteCount(1, 2, 1, 1, QStringLiteral("a"), 1);
        controller->patcherWriteUpdateWithCurrentFile(1, 1, QStringLiteral("a"));
    });
    QTRY_COMPARE(m_world->status(), QStringLiteral("Writing file 1 of 1\na"));
    QTRY_COMPARE(m_world->view->patcherProgressBar()->value(), 0.0);
}

// 5,000 reports a second for three seconds, as a fast network sends them, to a window that shows.
void TestUpdate::staysResponsiveUnderThousandsOfReports()
{
    constexpr int reports = 15000;
    constexpr std::chrono::microseconds pause(200);
    constexpr int slowdown = IsSanitized ? 8 : 2;
    constexpr int longestFrame = IsSanitized ? 500 : 50;
    m_world->view->hideLoginForm(true);
    QVERIFY(QTest::qWaitForWindowExposed(&m_world->window));
    std::chrono::steady_clock::duration taken{};
    std::thread engine([&, controller = m_world->controller] {
        const auto start = std::chrono::steady_clock::now();
        for (int i = 1; i <= reports; ++i) {
            std::this_thread::sleep_until(start + i * pause);
            controller->patcherUpdateWithMegaByteCount(i / 10.0, reports / 10.0, 12.5, 3,
                                                       QStringLiteral("archive.bin"), 12);
        }
        taken = std::chrono::steady_clock::now() - start;
    });
    Heartbeat heart;
    QTRY_COMPARE_WITH_TIMEOUT(
        m_world->status(),
        QStringLiteral("Updating file 3 of 12...\narchive.bin\n[1500.0/1500.0MB @ 12.5MB/s]"),
        60000);
    engine.join();
    // As many a second as meant, but for what a busy machine costs.
    QVERIFY2(taken < reports * pause * slowdown,
             qPrintable(
                 QString::number(double(reports) / std::chrono::duration<double>(taken).count())));
    QTRY_COMPARE(m_world->view->patcherProgressBar()->value(), 1.0);
    const qint64 longest = heart.longestTurn();
    QVERIFY2(longest <= longestFrame, qPrintable(QString::number(longest)));
}

void TestUpdate::startsTheCurrentEngine()
{
    m_world->server.route("/mac/a.bz2", TestReply::stalled("one"));
    QVERIFY(m_world->controller->checkFiles({{QStringLiteral("a"), QJsonObject()}}, true));
    m_world->view->patcherProgressBar()->setValue(0.5);
    m_world->controller->startThePatcher();
    QTRY_COMPARE(m_world->requestCount("/mac/a.bz2"), 1);
    QVERIFY(!m_world->view->swordsmenImage()->isHidden());
    QCOMPARE(m_world->view->patcherProgressBar()->value(), 0.0);
}

void TestUpdate::checksAgainAfterARunAndThenLaunches()
{
    m_world->publish({}, {{QStringLiteral("exec"), QStringLiteral("nowhere")}});
    m_world->start();
    QTRY_VERIFY(!m_world->controller->needDownloadPatcher());
    QVERIFY(DispatchQueue::drain(20000));
    m_world->view->swordsmenImage()->setHidden(true);
    m_world->view->patcherProgressBar()->setValue(0.5);
    m_world->statuses.clear();
    bool showsAnEmptyBar = false;
    const QObject untilTheEnd;
    QObject::connect(m_world->view->findChild<TextLabel *>(QStringLiteral("statusLabel")),
                     &TextLabel::stringValueChanged, &untilTheEnd, [&](const QString &text) {
                         if (text == QStringLiteral("Checking for updates..."))
                             showsAnEmptyBar = !m_world->view->swordsmenImage()->isHidden() &&
                                               m_world->view->patcherProgressBar()->value() == 0.0;
                     });
    m_world->controller->patcherDidFinish();
    QTRY_COMPARE(m_world->statuses,
                 QStringList({QStringLiteral("Checking for updates..."),
                              QStringLiteral("Launching the game..."), QStringLiteral("Login")}));
    QVERIFY(showsAnEmptyBar);
}

void TestUpdate::replacesTheEngineAtEachCheck()
{
    QVERIFY(!m_world->controller->checkFiles({}, true));
    const auto first = m_world->controller->patcher();
    QVERIFY(!m_world->controller->checkFiles({}, true));
    QVERIFY(first && m_world->controller->patcher() != first);
    QCOMPARE(m_world->controller->patcher()->delegate().get(), m_world->controller.get());
    first->setDelegate(nullptr);
}

void TestUpdate::bringsTheGameFolderUpToDateAndLaunches()
{
    const QByteArray game = "#!/bin/sh\necho played > played\n";
    m_world->publish({{QStringLiteral("Quellmoor"), game},
                      {QStringLiteral("data/Ünï (1).bin"), QByteArray(300'000, 'x')},
                      {QStringLiteral("empty"), ""}});
    m_world->start();
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_COMPARE_WITH_TIMEOUT(m_world->folder.read(QStringLiteral("Quellmoor/Game/played")),
                              std::optional<QByteArray>("played\n"), 20000);
    QCOMPARE(m_world->folder.read(QStringLiteral("Quellmoor/Game/Quellmoor")), game);
    QCOMPARE(m_world->folder.read(QStringLiteral("Quellmoor/Game/data/Ünï (1).bin"))->size(),
             300'000);
    QCOMPARE(m_world->folder.read(QStringLiteral("Quellmoor/Game/empty")), QByteArray());
    QTRY_COMPARE(m_world->status(), QStringLiteral("Login"));
}

void TestUpdate::launchesAtOnceWhenEverythingIsValid()
{
    m_world->publish({}, {{QStringLiteral("exec"), QStringLiteral("nowhere")}});
    m_world->start();
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_COMPARE(
        m_world->statuses,
        QStringList({QStringLiteral("Login"), QStringLiteral("Contacting account server..."),
                     QStringLiteral("507: Welcome"), QStringLiteral("Checking for updates..."),
                     QStringLiteral("Launching the game..."), QStringLiteral("Login")}));
    QCOMPARE(m_world->log.lines().filter(QStringLiteral("Patcher failed")), QStringList());
}

void TestUpdate::runsAgainWhileAFileStaysWrong()
{
    m_world->publish({{QStringLiteral("a"), "right"}});
    m_world->server.route("/mac/a.bz2", TestReply::whole(compressBzip2("wrong")));
    m_world->start();
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_VERIFY(m_world->requestCount("/mac/a.bz2") >= 3);
    QTRY_VERIFY(m_world->log.lines().contains(QStringLiteral(
        "+[ErrorHandler handle:] [line 18]: Patcher failed to match the patcher.json hashes. Will "
        "retry patching without apply_patch. ")));
    m_world->server.route("/mac/a.bz2", TestReply::whole(compressBzip2("right")));
    QTRY_COMPARE(m_world->activationPolicy.requests().count(QStringLiteral("activate")), 1);
    QCOMPARE(m_world->log.lines().filter(QStringLiteral("Patcher failed")).size(),
             m_world->requestCount("/mac/a.bz2") - 1);
}

void TestUpdate::stopsWhenADownloadFails()
{
    m_world->publish({{QStringLiteral("a"), "one"}, {QStringLiteral("b"), "two"}});
    m_world->server.route("/mac/b.bz2", TestReply::reset("x", 0));
    m_world->start();
    m_world->login(QStringLiteral("wren"), QStringLiteral("secret"));
    QTRY_VERIFY(m_world->folder.read(QStringLiteral("Quellmoor/Game/a")));
    QTRY_VERIFY(m_world->controller->patcher()->isRunOver());
    QVERIFY(DispatchQueue::drain(20000));
    QTRY_VERIFY(m_world->status().startsWith(QStringLiteral("Writing file 1 of 2\n")));
    QCOMPARE(m_world->requestCount("/mac/b.bz2"), 1);
}

void TestUpdate::bringsTheGameOfTheEnvironment_data()
{
    QTest::addColumn<QString>("environment");
    for (const auto *environment : {"qa", "", "-x", "x-", "a_b"})
        QTest::addRow("\"%s\"", environment) << QString::fromLatin1(environment);
}

void TestUpdate::bringsTheGameOfTheEnvironment()
{
    QFETCH(QString, environment);
    m_world->publish({{QStringLiteral("Quellmoor"), "#!/bin/sh\nprintf %s \"$VARNO_DEV\" > seen\n"
                                                    "while [ ! -e go ]; do sleep 0.05; done\n"}});
    m_world->start();
    QTRY_COMPARE(m_world->requestCount("/mac/patcher.json"), 1);
    m_world->login(QStringLiteral("wren@") + environment, QStringLiteral("secret"));
    QTRY_COMPARE(m_world->folder.read(QStringLiteral("Quellmoor/Game/seen")),
                 std::optional<QByteArray>("YES"));
    QTRY_COMPARE(m_world->status(), QStringLiteral("Launching the game(%1)...").arg(environment));
    const QString host = QStringLiteral("GET download-%1.localhost").arg(environment);
    QCOMPARE(m_world->requests().mid(1),
             QStringList({QStringLiteral("POST account.localhost/login/"),
                          host + QStringLiteral("/mac/patcher.json"),
                          host + QStringLiteral("/mac/Quellmoor.bz2")}));
    QCOMPARE(m_world->logLines().filter(QStringLiteral("invalid")), QStringList());
    const qsizetype before = m_world->requests().size();
    m_world->folder.write(QStringLiteral("Quellmoor/Game/go"), "");
    QTRY_COMPARE(m_world->status(), QStringLiteral("Login"));
    QVERIFY(!m_world->controller->currentEnvironment());
    QTRY_COMPARE(m_world->requests().mid(before),
                 QStringList{QStringLiteral("GET download.localhost/mac/patcher.json")});
}

QUELLMOOR_TEST(TestUpdate, "Update")
#include "tst_Update.moc"

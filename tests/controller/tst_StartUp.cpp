// From the start to the filled engine: folders, manifest, versions, network.
#include "ControllerWorld.h"
#include "TestMain.h"
#include "patcher/VARNOPatcher.h"
#include "platform/DispatchQueue.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonObject>
#include <QScreen>
#include <QTest>

class TestStartUp : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { QCoreApplication::setApplicationVersion(QStringLiteral("1.4")); }
    void init() { m_world = std::make_unique<ControllerWorld>(); }
    void cleanup() { m_world.reset(); }

    void makesTheDataFolderAndFindsEveryFileMissing();
    void needsAManifestUntilOneHasCome();
    void logsWhenTheDataFolderCannotBeMade();
    void putsTheWindowInTheMiddle();
    void removesOnlyOldInstallers();
    void removesInstallersOnlyAtTheStart();
    void logsWhenTheDataFolderCannotBeListed();
    void neverStartsTheEngineBeforeALogin();
    void fillsInThePreviousUserAndGivesItTheKeyboard();
    void leavesAFileInThePlaceOfTheDataFolderAlone();
    void hearsNothingOfTheNetworkOnceItsWindowHasGone();
    void showsTheServersVersion();
    void asksForAnUpdateOfTheLauncherOnlyWhenTheVersionDiffers_data();
    void asksForAnUpdateOfTheLauncherOnlyWhenTheVersionDiffers();
    void fetchesAManifestThatIsNotJsonAgainAndAgain();
    void saysNothingWhenNoManifestComes_data();
    void saysNothingWhenNoManifestComes();
    void takesAManifestOfWrongTypesForAnEmptyOne_data();
    void takesAManifestOfWrongTypesForAnEmptyOne();
    void runsTheCompletionAfterTheCheckOnTheMainThread();
    void asksAgainEachTimeTheNetworkReturnsWhenItWasAwayAtTheStart();
    void neverAsksAgainWhenTheNetworkWasThereAtTheStart();
    void goesByTheNetworkAsItIsWhenTheSystemCanTell();
    void watchesNothingWhenTheSystemCanTellAfterItsEnd();
    void hearsNothingOfTheNetworkAfterItsEnd();
    void watchesTheLoginUrl();
    void goesOnWithoutASourceForTheNetwork();
    void logsAnInterfaceFileThatIsNotThere();
    void givesTheFirstObjectOfAClassInTheFilesOrder();

private:
    // Until the check that follows a fetch of the manifest has ended.
    bool waitForCheck();

    std::unique_ptr<ControllerWorld> m_world;
};

bool TestStartUp::waitForCheck()
{
    return QTest::qWaitFor(
        [this] {
            return !m_world->controller->needDownloadPatcher() && m_world->controller->patcher();
        },
        20000);
}

void TestStartUp::makesTheDataFolderAndFindsEveryFileMissing()
{
    m_world->publish({{QStringLiteral("a"), "one"}, {QStringLiteral("b/c"), "two"}});
    QVERIFY(!QFile::exists(m_world->configuration.dataFolder));
    m_world->start();
    QVERIFY(waitForCheck());
    QTRY_COMPARE(m_world->controller->patcher()->totalFiles(), 2);
    QTRY_VERIFY(QFile::exists(m_world->configuration.dataFolder));
    QCOMPARE(m_world->activationPolicy.requests(), QStringList{QStringLiteral("regular")});
}

void TestStartUp::needsAManifestUntilOneHasCome()
{
    m_world->server.route("/mac/patcher.json", TestReply::stalled("{}"));
    m_world->start();
    QVERIFY(m_world->server.waitForWaiting());
    QVERIFY(m_world->controller->needDownloadPatcher());
    m_world->server.release();
    QTRY_VERIFY(!m_world->controller->needDownloadPatcher());
}

void TestStartUp::logsWhenTheDataFolderCannotBeMade()
{
    m_world->folder.write(QStringLiteral("file"), "x");
    m_world->configuration.dataFolder = m_world->folder.path(QStringLiteral("file/Quellmoor"));
    m_world->controller->createApplicationSupportDir();
    QCOMPARE(m_world->log.lines().size(), 1);
    QVERIFY(m_world->log.lines().constFirst().startsWith(
        QStringLiteral("+[ErrorHandler log:] [line 14]: Cannot create the folder ")));
}

void TestStartUp::putsTheWindowInTheMiddle()
{
    m_world->window.move(0, 0);
    m_world->start();
    QTRY_COMPARE(m_world->window.geometry().center(),
                 m_world->window.screen()->availableGeometry().center());
}

void TestStartUp::removesOnlyOldInstallers()
{
    for (const auto *name : {"a.dmg", "b.DMG", "c.dmg.part", ".d.dmg", "folder.dmg/inside"})
        m_world->folder.write(QStringLiteral("Quellmoor/") + QLatin1String(name), "x");
    m_world->folder.write(QStringLiteral("elsewhere/kept"), "x");
    m_world->folder.link(m_world->folder.path(QStringLiteral("elsewhere")),
                         QStringLiteral("Quellmoor/link.dmg"));
    m_world->start();
    QTRY_COMPARE(m_world->folder.tree().filter(QStringLiteral("Quellmoor/")),
                 QStringList({QStringLiteral("Quellmoor/"), QStringLiteral("Quellmoor/b.DMG=x"),
                              QStringLiteral("Quellmoor/c.dmg.part=x")}));
    QVERIFY(m_world->folder.read(QStringLiteral("elsewhere/kept")));
}

void TestStartUp::removesInstallersOnlyAtTheStart()
{
    m_world->start();
    QTRY_VERIFY(QFile::exists(m_world->configuration.dataFolder));
    QVERIFY(DispatchQueue::drain(20000));
    m_world->folder.write(QStringLiteral("Quellmoor/new.dmg"), "x");
    m_world->controller->setup();
    QVERIFY(DispatchQueue::drain(20000));
    QVERIFY(m_world->folder.read(QStringLiteral("Quellmoor/new.dmg")));
}

void TestStartUp::logsWhenTheDataFolderCannotBeListed()
{
    m_world->controller->cleanUpOldDMGFiles();
    QCOMPARE(m_world->log.lines(),
             QStringList{QStringLiteral("+[ErrorHandler log:] [line 14]: Cannot list %1: No such "
                                        "file or directory")
                             .arg(m_world->configuration.dataFolder)});
}

void TestStartUp::neverStartsTheEngineBeforeALogin()
{
    m_world->publish({{QStringLiteral("a"), "one"}});
    m_world->start();
    QVERIFY(waitForCheck());
    QVERIFY(DispatchQueue::drain(20000));
    QCoreApplication::processEvents();
    QCOMPARE(m_world->requests(),
             QStringList{QStringLiteral("GET download.localhost/mac/patcher.json")});
    QCOMPARE(m_world->status(), QStringLiteral("Login"));
}

void TestStartUp::fillsInThePreviousUserAndGivesItTheKeyboard()
{
    m_world->userDefaults->set(QStringLiteral("prevUser"), QStringLiteral("wren@qa"));
    m_world->start();
    QVERIFY(QTest::qWaitForWindowActive(&m_world->window));
    QCOMPARE(m_world->view->accountIDField()->stringValue(), QStringLiteral("wren@qa"));
    QVERIFY(m_world->view->isPlayButtonEnabled());
    m_world->view->passwordField()->setFocus();
    m_world->controller->viewDidAppear();
    QVERIFY(m_world->view->accountIDField()->hasFocus());
}

void TestStartUp::leavesAFileInThePlaceOfTheDataFolderAlone()
{
    m_world->folder.write(QStringLiteral("Quellmoor"), "mine");
    m_world->controller->createApplicationSupportDir();
    QCOMPARE(m_world->log.lines(), QStringList());
    QCOMPARE(m_world->folder.read(QStringLiteral("Quellmoor")), QByteArray("mine"));
}

void TestStartUp::hearsNothingOfTheNetworkOnceItsWindowHasGone()
{
    m_world->network.flags = 0;
    m_world->publish({});
    m_world->start();
    QTRY_COMPARE(m_world->newsLoads.size(), 1);
    QTRY_COMPARE(m_world->requestCount("/mac/patcher.json"), 1);
    m_world->controller->viewWillDisappear();
    m_world->network.changeTo(ReachabilitySource::Reachable);
    QCoreApplication::processEvents();
    QVERIFY(DispatchQueue::drain(20000));
    QCOMPARE(m_world->requestCount("/mac/patcher.json"), 1);
    QCOMPARE(m_world->newsLoads.size(), 1);
}

void TestStartUp::showsTheServersVersion()
{
    m_world->publish({}, {{QStringLiteral("server-version"), QStringLiteral("7.3.0")}});
    m_world->start();
    QTRY_COMPARE(m_world->label("serverVersionLabel"), QStringLiteral("Server v7.3.0"));
}

void TestStartUp::asksForAnUpdateOfTheLauncherOnlyWhenTheVersionDiffers_data()
{
    QTest::addColumn<QJsonObject>("manifest");
    QTest::addColumn<QString>("username");
    QTest::addColumn<int>("alerts");
    const auto key = QStringLiteral("mac-launcher-version");
    QTest::newRow("equal") << QJsonObject{{key, QStringLiteral("1.4")}} << QString() << 0;
    QTest::newRow("newer") << QJsonObject{{key, QStringLiteral("1.5")}} << QString() << 1;
    QTest::newRow("older") << QJsonObject{{key, QStringLiteral("1.3")}} << QString() << 1;
    QTest::newRow("equal as a number, not as a text")
        << QJsonObject{{key, QStringLiteral("1.40")}} << QString() << 1;
    QTest::newRow("absent") << QJsonObject() << QString() << 0;
    QTest::newRow("of another type") << QJsonObject{{key, 1.5}} << QString() << 0;
    QTest::newRow("newer, in an environment")
        << QJsonObject{{key, QStringLiteral("1.5")}} << QStringLiteral("x@qa") << 0;
    QTest::newRow("newer, in the empty environment")
        << QJsonObject{{key, QStringLiteral("1.5")}} << QStringLiteral("x@") << 0;
}

void TestStartUp::asksForAnUpdateOfTheLauncherOnlyWhenTheVersionDiffers()
{
    QFETCH(QJsonObject, manifest);
    QFETCH(QString, username);
    QFETCH(int, alerts);
    m_world->alerts.response = AlertPresenter::FirstButtonReturn + 1;
    if (!username.isEmpty())
        m_world->controller->postLoginWithUsername(username, QStringLiteral("p"), QString());
    manifest[QStringLiteral("server-version")] = QStringLiteral("seen");
    m_world->controller->didFinishDownloadingPatcherJSON(manifest, QString(), {}, {});
    QTRY_COMPARE(m_world->label("serverVersionLabel"), QStringLiteral("Server vseen"));
    QCOMPARE(int(m_world->alerts.modalAlerts.size()), alerts);
}

void TestStartUp::fetchesAManifestThatIsNotJsonAgainAndAgain()
{
    m_world->publishManifest("<html>busy</html>");
    m_world->start();
    QTRY_VERIFY(m_world->requestCount("/mac/patcher.json") >= 5);
    m_world->publish({{QStringLiteral("a"), "one"}});
    QVERIFY(waitForCheck());
    const QStringList complaints = m_world->log.lines().filter(QStringLiteral("is not valid JSON"));
    QCOMPARE(complaints.size(), m_world->requestCount("/mac/patcher.json") - 1);
    QCOMPARE(m_world->status(), QStringLiteral("Login"));
}

void TestStartUp::saysNothingWhenNoManifestComes_data()
{
    QTest::addColumn<int>("status");
    QTest::newRow("not found") << 404;
    QTest::newRow("server error") << 503;
}

void TestStartUp::saysNothingWhenNoManifestComes()
{
    QFETCH(int, status);
    m_world->server.route("/mac/patcher.json", TestReply::whole("{}", status));
    m_world->start();
    QVERIFY(m_world->server.waitForRequests(1));
    QVERIFY(DispatchQueue::drain(20000));
    QCoreApplication::processEvents();
    QCOMPARE(m_world->requestCount("/mac/patcher.json"), 1);
    QVERIFY(m_world->controller->needDownloadPatcher());
    QCOMPARE(m_world->status(), QStringLiteral("Login"));
}

void TestStartUp::takesAManifestOfWrongTypesForAnEmptyOne_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("array") << QByteArray("[1, 2]");
    QTest::newRow("files a list") << QByteArray(R"({"files": ["a"]})");
    QTest::newRow("files a text") << QByteArray(R"({"files": "a"})");
    QTest::newRow("no files") << QByteArray(R"({"server-version": 7})");
    QTest::newRow("null") << QByteArray(R"({"files": null, "exec": null})");
}

void TestStartUp::takesAManifestOfWrongTypesForAnEmptyOne()
{
    QFETCH(QByteArray, text);
    m_world->publishManifest(text);
    m_world->start();
    QVERIFY(waitForCheck());
    QVERIFY(DispatchQueue::drain(20000));
    QCOMPARE(m_world->controller->patcher()->totalFiles(), 0);
}

void TestStartUp::runsTheCompletionAfterTheCheckOnTheMainThread()
{
    m_world->publish({{QStringLiteral("a"), "one"}});
    QThread *thread = nullptr;
    qint64 found = 0;
    m_world->controller->downloadPatcherJSON(m_world->configuration.manifestUrl({}), [&] {
        thread = QThread::currentThread();
        found = m_world->controller->patcher()->totalFiles();
    });
    QTRY_COMPARE(thread, QCoreApplication::instance()->thread());
    QCOMPARE(found, 1);
}

void TestStartUp::asksAgainEachTimeTheNetworkReturnsWhenItWasAwayAtTheStart()
{
    m_world->network.flags = 0;
    m_world->publish({});
    m_world->start();
    QTRY_COMPARE(m_world->requestCount("/mac/patcher.json"), 1);
    QTRY_COMPARE(m_world->newsLoads.size(), 1);
    for (const int expected : {2, 3}) {
        m_world->network.changeTo(ReachabilitySource::Reachable);
        QTRY_COMPARE(m_world->requestCount("/mac/patcher.json"), expected);
        QCOMPARE(m_world->newsLoads.size(), expected);
        m_world->network.changeTo(0);
    }
    QVERIFY(DispatchQueue::drain(20000));
    QCOMPARE(m_world->requestCount("/mac/patcher.json"), 3);
}

void TestStartUp::neverAsksAgainWhenTheNetworkWasThereAtTheStart()
{
    m_world->publish({});
    m_world->start();
    QTRY_COMPARE(m_world->requestCount("/mac/patcher.json"), 1);
    m_world->network.changeTo(0);
    m_world->network.changeTo(ReachabilitySource::Reachable);
    QVERIFY(DispatchQueue::drain(20000));
    QCOMPARE(m_world->requestCount("/mac/patcher.json"), 1);
}

void TestStartUp::goesByTheNetworkAsItIsWhenTheSystemCanTell()
{
    m_world->network.isReadyAtOnce = false;
    m_world->network.flags = 0;
    m_world->publish({});
    m_world->start();
    QTRY_COMPARE(m_world->requestCount("/mac/patcher.json"), 1);
    QCOMPARE(m_world->network.asked, QString());

    m_world->network.flags = ReachabilitySource::Reachable;
    m_world->network.ready();
    QVERIFY(m_world->network.isScheduled);
    m_world->network.changeTo(0);
    m_world->network.changeTo(ReachabilitySource::Reachable);
    QVERIFY(DispatchQueue::drain(20000));
    QCOMPARE(m_world->requestCount("/mac/patcher.json"), 1);
}

void TestStartUp::watchesNothingWhenTheSystemCanTellAfterItsEnd()
{
    m_world->network.isReadyAtOnce = false;
    m_world->start();
    m_world->controller->viewWillDisappear();
    m_world->network.ready();
    QCOMPARE(m_world->network.asked, QString());
}

void TestStartUp::hearsNothingOfTheNetworkAfterItsEnd()
{
    m_world->network.flags = 0;
    m_world->start();
    QTRY_COMPARE(m_world->newsLoads.size(), 1);
    m_world->controller->viewWillDisappear();
    m_world->network.changeTo(ReachabilitySource::Reachable);
    QVERIFY(DispatchQueue::drain(20000));
    QCOMPARE(m_world->newsLoads.size(), 1);
}

void TestStartUp::watchesTheLoginUrl()
{
    m_world->start();
    QCOMPARE(m_world->network.asked, QStringLiteral("name ") + m_world->configuration.loginUrl());
    QVERIFY(m_world->network.isScheduled);
}

void TestStartUp::goesOnWithoutASourceForTheNetwork()
{
    m_world->network.canMakeSource = false;
    m_world->publish({});
    m_world->start();
    m_world->controller->checkNetworkStatus();
    QVERIFY(waitForCheck());
    QVERIFY(DispatchQueue::drain(20000));
    QCOMPARE(m_world->requestCount("/mac/patcher.json"), 1);
}

void TestStartUp::logsAnInterfaceFileThatIsNotThere()
{
    QVERIFY(
        !ViewController::loadWithNibNamed(QStringLiteral("Nowhere"), QWidget::staticMetaObject));
    QCOMPARE(m_world->log.lines(), QStringList{QStringLiteral("Couldn't load nib named Nowhere")});
}

void TestStartUp::givesTheFirstObjectOfAClassInTheFilesOrder()
{
    const auto first =
        ViewController::loadWithNibNamed(QStringLiteral("Launcher"), TextField::staticMetaObject);
    QVERIFY(first);
    QCOMPARE(first->objectName(), QStringLiteral("accountIDField"));
    QVERIFY(!ViewController::loadWithNibNamed(QStringLiteral("Launcher"),
                                              CustomWindow::staticMetaObject));
    QCOMPARE(m_world->log.lines(), QStringList());
}

QUELLMOOR_TEST(TestStartUp, "StartUp")
#include "tst_StartUp.moc"

#include "LogCapture.h"
#include "TestMain.h"
#include "ViewWorld.h"
#include "platform/DispatchQueue.h"
#include "ui/TextLabel.h"

#include <QTest>

namespace {

constexpr int MillisecondsToEnd = 20000;
constexpr auto FallbackPage = "url https://www.test/play/?update=1";

} // namespace

class TestLauncherUpdate : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_world = std::make_unique<ViewWorld>(); }
    void cleanup() { m_world.reset(); }

    void asksInItsWords();
    void hidesTheLoginFormBeforeItIsAnswered();
    void endsWithoutADownloadOnTheSecondButton();
    void fetchesWritesAndOpensTheInstaller();
    void overwritesAnEarlierInstaller();
    void takesAnyBodyForAnInstaller();
    void goesToThePageWhenTheHostIsUnreachable();
    void opensWhatLiesThereWhenNothingCame();
    void goesToThePageAndLogsWhenTheFileCannotBeWritten();
    void usesVersionsAsTheyAre_data();
    void usesVersionsAsTheyAre();
    void asksForNoUrlForVersionsThatAreNone_data();
    void asksForNoUrlForVersionsThatAreNone();
    void opensNoFileForVersionsThatNameNone_data();
    void opensNoFileForVersionsThatNameNone();
    void showsTheDownloadLinkAndEnds();

private:
    // Answers "Update" and waits for the background job's end.
    void update(const QString &version = QStringLiteral("2.1.0")) const;
    [[nodiscard]] QString installer(const QString &version = QStringLiteral("2.1.0")) const
    {
        return m_world->folder.path() + QStringLiteral("/VARNO_darwin_setup_%1.dmg").arg(version);
    }
    [[nodiscard]] QString openingOf(const QString &path) const
    {
        return QStringLiteral("file %1 with DiskImageMounter").arg(path);
    }

    std::unique_ptr<ViewWorld> m_world;
};

void TestLauncherUpdate::update(const QString &version) const
{
    m_world->view->showLauncherOutOfDate(version);
    QVERIFY(DispatchQueue::drain(MillisecondsToEnd));
    ViewWorld::runMainQueue();
}

void TestLauncherUpdate::asksInItsWords()
{
    m_world->alertPresenter.response = AlertPresenter::FirstButtonReturn + 1;
    m_world->view->showLauncherOutOfDate(QStringLiteral("2.1.0"));
    QCOMPARE(m_world->alertPresenter.modalAlerts.size(), 1);
    const Alert &alert = m_world->alertPresenter.modalAlerts.first();
    QCOMPARE(alert.messageText, QStringLiteral("Launcher Update Required"));
    QCOMPARE(alert.informativeText,
             QStringLiteral("There is a required update available for the launcher."));
    QCOMPARE(alert.buttons,
             (QStringList{QStringLiteral("Update"), QStringLiteral("Exit Launcher")}));
}

void TestLauncherUpdate::hidesTheLoginFormBeforeItIsAnswered()
{
    bool isFormVisible = true;
    m_world->alertPresenter.onModal = [&] {
        ViewWorld::runMainQueue();
        isFormVisible = m_world->view->accountIDField()->isVisibleTo(m_world->view);
    };
    update();
    QVERIFY(!isFormVisible);
}

void TestLauncherUpdate::endsWithoutADownloadOnTheSecondButton()
{
    m_world->alertPresenter.response = AlertPresenter::FirstButtonReturn + 1;
    update();
    QCOMPARE(m_world->terminations, 1);
    QCOMPARE(m_world->httpClient.urls(), QStringList());
    QCOMPARE(m_world->workspace.requests(), QStringList());
}

void TestLauncherUpdate::fetchesWritesAndOpensTheInstaller()
{
    m_world->httpClient.answer = QByteArrayLiteral("image");
    update();
    QCOMPARE(m_world->httpClient.urls(),
             QStringList{QStringLiteral("https://download.test/VARNO_darwin_setup_2.1.0.dmg")});
    QCOMPARE(m_world->folder.read(QStringLiteral("VARNO_darwin_setup_2.1.0.dmg")),
             QByteArrayLiteral("image"));
    QCOMPARE(m_world->workspace.requests(), QStringList{openingOf(installer())});
    QCOMPARE(m_world->terminations, 1);
    QCOMPARE(m_world->child<TextLabel>("statusLabel").stringValue(),
             QStringLiteral("Downloading new launcher..."));
}

void TestLauncherUpdate::overwritesAnEarlierInstaller()
{
    m_world->folder.write(QStringLiteral("VARNO_darwin_setup_2.1.0.dmg"),
                          QByteArrayLiteral("a much longer earlier image"));
    m_world->httpClient.answer = QByteArrayLiteral("image");
    update();
    QCOMPARE(m_world->folder.read(QStringLiteral("VARNO_darwin_setup_2.1.0.dmg")),
             QByteArrayLiteral("image"));
}

void TestLauncherUpdate::takesAnyBodyForAnInstaller()
{
    m_world->httpClient.answer = QByteArrayLiteral("");
    update();
    QCOMPARE(m_world->folder.read(QStringLiteral("VARNO_darwin_setup_2.1.0.dmg")),
             QByteArrayLiteral(""));
    QCOMPARE(m_world->workspace.requests(), QStringList{openingOf(installer())});
}

void TestLauncherUpdate::goesToThePageWhenTheHostIsUnreachable()
{
    const LogCapture log;
    update();
    QCOMPARE(m_world->httpClient.urls().size(), 1);
    QCOMPARE(m_world->workspace.requests().value(0), QString::fromLatin1(FallbackPage));
    QVERIFY(m_world->terminations >= 1);
    QVERIFY(!m_world->folder.read(QStringLiteral("VARNO_darwin_setup_2.1.0.dmg")));
    QCOMPARE(log.lines(), QStringList());
}

void TestLauncherUpdate::opensWhatLiesThereWhenNothingCame()
{
    m_world->folder.write(QStringLiteral("VARNO_darwin_setup_2.1.0.dmg"),
                          QByteArrayLiteral("earlier"));
    update();
    QCOMPARE(m_world->workspace.requests(),
             (QStringList{QString::fromLatin1(FallbackPage), openingOf(installer())}));
    QCOMPARE(m_world->folder.read(QStringLiteral("VARNO_darwin_setup_2.1.0.dmg")),
             QByteArrayLiteral("earlier"));
}

void TestLauncherUpdate::goesToThePageAndLogsWhenTheFileCannotBeWritten()
{
    const LogCapture log;
    m_world->folder.makeFolder(QStringLiteral("VARNO_darwin_setup_2.1.0.dmg"));
    m_world->httpClient.answer = QByteArrayLiteral("image");
    update();
    QCOMPARE(m_world->workspace.requests(), QStringList{QString::fromLatin1(FallbackPage)});
    QVERIFY(m_world->terminations >= 1);
    QCOMPARE(log.lines().size(), 1);
    QVERIFY(log.lines().first().startsWith(QStringLiteral("+[ErrorHandler log:] [line 14]: ")));
}

void TestLauncherUpdate::usesVersionsAsTheyAre_data()
{
    QTest::addColumn<QString>("version");
    QTest::newRow("digits") << QStringLiteral("2.1.0");
    QTest::newRow("letters") << QStringLiteral("2.1.0-beta+7");
    QTest::newRow("nothing") << QString();
}

void TestLauncherUpdate::usesVersionsAsTheyAre()
{
    QFETCH(QString, version);
    m_world->httpClient.answer = QByteArrayLiteral("image");
    update(version);
    QCOMPARE(m_world->httpClient.urls(),
             QStringList{
                 QStringLiteral("https://download.test/VARNO_darwin_setup_%1.dmg").arg(version)});
    QCOMPARE(m_world->workspace.requests(), QStringList{openingOf(installer(version))});
}

void TestLauncherUpdate::asksForNoUrlForVersionsThatAreNone_data()
{
    QTest::addColumn<QString>("version");
    QTest::newRow("a space") << QStringLiteral("2 1");
    QTest::newRow("a bad escape") << QStringLiteral("2%zz");
    QTest::newRow("a backslash") << QStringLiteral("2\\1");
    QTest::newRow("a brace") << QStringLiteral("2{1}");
    QTest::newRow("a letter outside ASCII") << QStringLiteral("2.1\u00e9");
    QTest::newRow("a control character") << QStringLiteral("2.1\n");
}

void TestLauncherUpdate::asksForNoUrlForVersionsThatAreNone()
{
    QFETCH(QString, version);
    m_world->httpClient.answer = QByteArrayLiteral("image");
    update(version);
    QCOMPARE(m_world->httpClient.urls(), QStringList());
    QCOMPARE(m_world->workspace.requests(),
             (QStringList{QString::fromLatin1(FallbackPage), openingOf(installer(version))}));
    QVERIFY(m_world->terminations >= 1);
}

void TestLauncherUpdate::opensNoFileForVersionsThatNameNone_data()
{
    QTest::addColumn<QString>("version");
    QTest::newRow("a folder") << QStringLiteral("x/2.1.0");
    QTest::newRow("the folder above") << QStringLiteral("/../../2.1.0");
    QTest::newRow("a hidden file") << QStringLiteral(".2.1.0");
    QTest::newRow("a NUL") << QStringLiteral("2.1") + QChar(0) + QStringLiteral("0");
}

void TestLauncherUpdate::opensNoFileForVersionsThatNameNone()
{
    QFETCH(QString, version);
    m_world->httpClient.answer = QByteArrayLiteral("image");
    update(version);
    QCOMPARE(m_world->httpClient.urls(), QStringList());
    QCOMPARE(m_world->workspace.requests(), QStringList{QString::fromLatin1(FallbackPage)});
    QVERIFY(m_world->terminations >= 1);
}

void TestLauncherUpdate::showsTheDownloadLinkAndEnds()
{
    m_world->view->showDownloadLink();
    QCOMPARE(m_world->workspace.requests(), QStringList{QString::fromLatin1(FallbackPage)});
    QCOMPARE(m_world->terminations, 1);
}

QUELLMOOR_TEST(TestLauncherUpdate, "LauncherUpdate")
#include "tst_LauncherUpdate.moc"

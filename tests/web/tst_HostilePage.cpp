#include "FakeAlertPresenter.h"
#include "FakeBiometricContext.h"
#include "Heartbeat.h"
#include "LogCapture.h"
#include "RefusingHttpClient.h"
#include "TestFolder.h"
#include "TestMain.h"
#include "TestServer.h"
#include "account/LocalAuthenticationHandler.h"
#include "app/Configuration.h"
#include "platform/UserDefaults.h"
#include "platform/Workspace.h"
#include "ui/InterfaceLoader.h"
#include "ui/LauncherView.h"
#include "ui/NewsPage.h"

#include <QBuffer>
#include <QDesktopServices>
#include <QDirIterator>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineView>

namespace {

constexpr int Patience = 60000;
constexpr int LongestFrame = 250;
constexpr qsizetype NumberOfTricks = 15;
constexpr const char *Schemes[] = {"http",       "https", "mailto", "file", "data",
                                   "javascript", "about", "chrome", "ftp",  "blob"};
const QByteArray Done = "document.title = 'done';";

TestReply html(const QByteArray &body)
{
    return TestReply::whole(body, 200, {{"Content-Type", "text/html; charset=utf-8"}});
}

// Few bytes on the way, 200 MB in memory.
QByteArray largePicture()
{
    QImage image(8000, 6250, QImage::Format_Mono);
    image.fill(1);
    QBuffer png;
    png.open(QIODevice::WriteOnly);
    image.save(&png, "PNG");
    return png.data();
}

// All files of the player, with their sizes.
QStringList filesOfThePlayer()
{
    QStringList files;
    QDirIterator all(QDir::homePath(), QDir::Files | QDir::Hidden | QDir::System,
                     QDirIterator::Subdirectories);
    while (all.hasNext()) {
        all.next();
        files += QStringLiteral("%1 %2").arg(all.filePath()).arg(all.fileInfo().size());
    }
    files.sort();
    return files;
}

} // namespace

// What a page could try that somebody else has put in the place of the news: the real view, engine
// and way to the desktop.
class TestHostilePage : public QObject
{
    Q_OBJECT

public slots:
    void openedByTheDesktop(const QUrl &url) { m_opened += url; }

private slots:
    void initTestCase();
    void cleanupTestCase();
    void getsNothingButItsLinksOut_data();
    void getsNothingButItsLinksOut();

private:
    void serveTraps();
    void show(const QByteArray &page, const QString &title);
    [[nodiscard]] QWebEngineView *engine() const { return m_view->findChild<QWebEngineView *>(); }

    QList<QUrl> m_opened;
    TestServer m_server;
    TestFolder m_folder;
    Configuration m_configuration;
    RefusingHttpClient m_httpClient;
    std::unique_ptr<Workspace> m_workspace = makeWorkspace();
    FakeAlertPresenter m_alerts;
    FakeBiometricContext m_biometrics;
    UserDefaults m_userDefaults{m_folder.path(QStringLiteral("settings.sqlite"))};
    LocalAuthenticationHandler m_localAuthentication{m_biometrics, m_userDefaults, m_alerts};
    std::unique_ptr<LauncherView> m_view;
};

void TestHostilePage::initTestCase()
{
    QCoreApplication::addLibraryPath(QStringLiteral(QUELLMOOR_PLUGIN_FOLDER));
    for (const char *scheme : Schemes)
        QDesktopServices::setUrlHandler(QLatin1String(scheme), this, "openedByTheDesktop");
    serveTraps();
    m_configuration.accountHost = QStringLiteral("localhost:%1").arg(m_server.port());
    m_configuration.extraCertificateFile = Certificates::shared().authorityFile();
    m_view.reset(qobject_cast<LauncherView *>(InterfaceLoader().load(QStringLiteral("Launcher"))));
    m_view->setServices({m_configuration, m_httpClient, *m_workspace, m_alerts,
                         m_localAuthentication, [] {},
                         newsPages(m_httpClient, m_configuration.extraCertificateFile)});
    m_server.route("/launcher/", html("<title>quiet</title>"));
    m_view->awakeFromNib();
    m_view->show();
    m_view->activateWindow();
    QTRY_VERIFY_WITH_TIMEOUT(engine(), Patience);
    QTRY_COMPARE_WITH_TIMEOUT(engine()->title(), QStringLiteral("quiet"), Patience);
}

void TestHostilePage::cleanupTestCase()
{
    m_view.reset();
    for (const char *scheme : Schemes)
        QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
}

void TestHostilePage::serveTraps()
{
    m_server.route("/picture.png",
                   TestReply::whole(largePicture(), 200, {{"Content-Type", "image/png"}}));
    m_server.route(
        "/attachment",
        TestReply::whole("x", 200,
                         {{"Content-Disposition",
                           "attachment; filename=\"../../.config/autostart/x.desktop\""}}));
}

void TestHostilePage::show(const QByteArray &page, const QString &title)
{
    m_server.route("/launcher/", html(page));
    m_view->downloadNews();
    QTRY_COMPARE_WITH_TIMEOUT(engine()->title(), title, Patience);
}

void TestHostilePage::getsNothingButItsLinksOut_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<int>("links"); // how many the browser gets
    QFile file(QStringLiteral(QUELLMOOR_TRICKS));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QJsonArray tricks = QJsonDocument::fromJson(file.readAll()).array();
    QCOMPARE(tricks.size(), NumberOfTricks);
    for (const auto trick : tricks)
        QTest::newRow(trick[u"name"].toString().toUtf8().constData())
            << trick[u"body"].toString().toUtf8() << trick[u"script"].toString().toUtf8()
            << trick[u"links"].toInt();
}

void TestHostilePage::getsNothingButItsLinksOut()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, script);
    QFETCH(int, links);
    const QStringList files = filesOfThePlayer();
    m_opened.clear();
    const QList<QUrl> expected(links, m_server.url("/elsewhere"));

    Heartbeat heart;
    show("<title>trick</title>" + body + "<script>onload = () => {" + script + Done + "}</script>",
         QStringLiteral("done"));
    QTRY_COMPARE_WITH_TIMEOUT(m_opened.size(), expected.size(), Patience);
    show("<title>quiet again</title>", QStringLiteral("quiet again"));

    QCOMPARE(m_opened, expected);
    QCOMPARE(m_server.requestCount("/elsewhere"), 0);
    QCOMPARE(filesOfThePlayer(), files);
    QCOMPARE(QApplication::topLevelWidgets().count(m_view.get()), 1);
    QVERIFY(!m_view->isFullScreen());
    const qint64 longest = heart.longestTurn();
    QVERIFY2(longest <= LongestFrame, qPrintable(QString::number(longest)));
}

QUELLMOOR_TEST(TestHostilePage, "HostilePage")
#include "tst_HostilePage.moc"

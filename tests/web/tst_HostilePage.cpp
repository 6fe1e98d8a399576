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
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineView>

namespace {

constexpr int Patience = 60000;
constexpr int LongestFrame = 250;
constexpr int NavigationsInALoop = 100;
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
                         m_localAuthentication, [] {}, makeNewsPage});
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
    QTest::addColumn<QStringList>("links"); // what the browser gets
    const QStringList none;
    const QStringList link{QStringLiteral("/elsewhere")};
    const auto row = [](const char *name, const QByteArray &body, const QByteArray &script,
                        const QStringList &links) {
        QTest::newRow(name) << body << script << links;
    };
    row("scripted navigation", "", "location.href = '/elsewhere';", link);
    row("javascript:", "<a id=a href=\"javascript:void(document.body.innerHTML='x')\">a</a>",
        "document.getElementById('a').click(); location.href = 'javascript:void(0)';", none);
    row("file:",
        "<a id=a href=\"file:///etc/passwd\">a</a><iframe src=\"file:///etc/passwd\"></iframe>",
        "document.getElementById('a').click(); window.open('file:///etc/passwd');", none);
    row("data:", "<a id=a href=\"data:text/html,x\">a</a>",
        "document.getElementById('a').click(); window.open('data:text/html,x');", none);
    row("popup", "", "window.open('/elsewhere', '_blank', 'width=100,height=100');", link);
    row("download with a path in its name",
        "<a id=a href=\"data:application/octet-stream,x\" download=\"../../.profile\">a</a>"
        "<a id=b href=\"/attachment\" download=\"/etc/cron.d/x\">b</a>",
        "document.getElementById('a').click(); document.getElementById('b').click();", none);
    row("meta refresh", "<meta http-equiv=refresh content=\"0;url=/elsewhere\">", "", link);
    row("nested frames",
        "<iframe srcdoc=\"<iframe srcdoc='<iframe src=/elsewhere></iframe>'></iframe>\"></iframe>",
        "", link);
    row("100 navigations in a loop", "",
        "for (let i = 0; i < 100; ++i) { const f = document.createElement('iframe');"
        "f.src = '/elsewhere'; document.body.appendChild(f); }",
        QStringList(NavigationsInALoop, link.first()));
    row("permission requests", "",
        "navigator.geolocation.getCurrentPosition(() => {}); Notification.requestPermission();"
        "navigator.mediaDevices.getUserMedia({audio: true, video: true}).catch(() => {});"
        "navigator.clipboard.readText().catch(() => {});"
        "navigator.registerProtocolHandler('mailto', '/elsewhere?%s');",
        none);
    row("full screen", "<div id=a>a</div>",
        "document.getElementById('a').requestFullscreen().catch(() => {});"
        "document.body.requestPointerLock();",
        none);
    row("a picture of 200 MB", "<img src=\"/picture.png\">", "", none);
    row("an endless page", "",
        "setInterval(() => { for (let i = 0; i < 1000; ++i)"
        "document.body.appendChild(document.createElement('p')).textContent = 'more'; }, 0);",
        none);
    row("print", "", "window.print();", none);
    row("unload prompts", "",
        "onbeforeunload = event => { event.preventDefault(); return event.returnValue = 'Stay'; };"
        "alert('a'); confirm('b'); prompt('c');",
        none);
}

void TestHostilePage::getsNothingButItsLinksOut()
{
    QFETCH(QByteArray, body);
    QFETCH(QByteArray, script);
    QFETCH(QStringList, links);
    const QStringList files = filesOfThePlayer();
    m_opened.clear();
    QList<QUrl> expected;
    for (const QString &link : links)
        expected += m_server.url(link.toUtf8());

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

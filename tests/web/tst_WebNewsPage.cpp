#include "LogCapture.h"
#include "RefusingHttpClient.h"
#include "TestMain.h"
#include "TestServer.h"
#include "ui/NewsPage.h"

#include <QApplication>
#include <QDir>
#include <QPushButton>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTest>
#include <QWebEngineDownloadRequest>
#include <QWebEnginePage>
#include <QWebEngineProfile>
#include <QWebEngineSettings>
#include <QWebEngineView>

namespace {

constexpr int Patience = 60000;

TestReply html(const QByteArray &body)
{
    return TestReply::whole(body, 200, {{"Content-Type", "text/html; charset=utf-8"}});
}

} // namespace

// With the real engine and its processes.
class TestWebNewsPage : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QCoreApplication::addLibraryPath(QStringLiteral(QUELLMOOR_PLUGIN_FOLDER));
    }

    void showsWhatTheHostSends();
    void trustsOnlyWhomItShould_data();
    void trustsOnlyWhomItShould();
    void putsEveryNavigationToThePolicy_data();
    void putsEveryNavigationToThePolicy();
    void putsARedirectToThePolicy();
    void loadsAnewWhatAWindowWasToShow();
    void keepsNothingOnTheDisk();
    void refusesWhatPagesLikeToHave_data();
    void refusesWhatPagesLikeToHave();
    void refusesPermissions();
    void refusesDownloads();
    void isTransparentWhenAsked();
    void hasItsPlaceInTheOrderOfTab();
    void letsNoPageKeepThePlayer();
    void isEmptyAfterAFailure();
    void asksTheHostForNothingElse();
    void survivesTheEndOfItsProcess();

private:
    // A page of one server in a window of its own. The policy allows what the test says, by default
    // the page "/launcher/" only.
    struct World
    {
        explicit World(TestServer &pages,
                       const QString &authorityFile = Certificates::shared().authorityFile())
            : server(pages),
              page(newsPages(noClient, authorityFile)(&window, [this](const QUrl &url) {
                  asked += url;
                  return allowsAll || url == server.url("/launcher/");
              }))
        {
            window.resize(400, 300);
            page->widget()->resize(400, 300);
            window.show();
        }

        // Waits until the page with that body is there.
        void load(const QByteArray &body)
        {
            const QByteArray title = "page " + QByteArray::number(++loads);
            server.route("/launcher/", html("<title>" + title + "</title>" + body));
            page->load(server.url("/launcher/"));
            QTRY_COMPARE_WITH_TIMEOUT(view().title(), QString::fromLatin1(title), Patience);
        }
        [[nodiscard]] QWebEngineView &view() const
        {
            return *qobject_cast<QWebEngineView *>(page->widget());
        }
        // The value of the script, or nothing when it took too long.
        [[nodiscard]] QVariant run(const QString &script) const
        {
            std::optional<QVariant> result;
            view().page()->runJavaScript(script, [&](const QVariant &value) { result = value; });
            const bool isDone = QTest::qWaitFor([&] { return result.has_value(); }, Patience);
            return isDone ? *result : QVariant();
        }

        TestServer &server;
        QList<QUrl> asked;
        bool allowsAll = false;
        int loads = 0;
        RefusingHttpClient noClient; // the engine has its own way to the network
        QWidget window;
        std::unique_ptr<NewsPage> page;
    };
};

void TestWebNewsPage::showsWhatTheHostSends()
{
    TestServer server;
    World world(server);
    world.load("<p id=\"p\">News</p>");
    QCOMPARE(world.run(QStringLiteral("document.getElementById('p').textContent")).toString(),
             QStringLiteral("News"));
    QCOMPARE(world.asked, QList{server.url("/launcher/")});
}

void TestWebNewsPage::trustsOnlyWhomItShould_data()
{
    const Certificates &certificates = Certificates::shared();
    QTest::addColumn<QString>("certificate");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("authority");
    QTest::newRow("unknown authority") << certificates.localhost().certificateFile
                                       << certificates.localhost().keyFile << QString();
    QTest::newRow("another host") << certificates.otherHost().certificateFile
                                  << certificates.otherHost().keyFile
                                  << certificates.authorityFile();
    QTest::newRow("expired") << certificates.expired().certificateFile
                             << certificates.expired().keyFile << certificates.authorityFile();
}

void TestWebNewsPage::trustsOnlyWhomItShould()
{
    QFETCH(QString, certificate);
    QFETCH(QString, key);
    QFETCH(QString, authority);
    TestServer server(Certificates::Identity{certificate, key});
    server.route("/launcher/", html("<title>ready</title>"));
    World world(server, authority);
    QSignalSpy finished(world.view().page(), &QWebEnginePage::loadFinished);
    world.page->load(server.url("/launcher/"));
    QVERIFY(finished.wait(Patience));
    QCOMPARE(finished.first().first().toBool(), false);
    QCOMPARE(server.requests().size(), 0);
}

void TestWebNewsPage::putsEveryNavigationToThePolicy_data()
{
    QTest::addColumn<QString>("script");
    const std::pair<const char *, const char *> rows[] = {
        {"link", "document.getElementById('a').click()"},
        {"link to a new window", "document.getElementById('b').click()"},
        {"location", "location.href = '/elsewhere'"},
        {"replaced location", "location.replace('/elsewhere')"},
        {"new window", "window.open('/elsewhere')"},
        {"form", "document.getElementById('f').submit()"},
        {"fragment", "document.getElementById('c').click()"},
        {"scripted fragment", "location.hash = 'top'"},
        {"frame", "var f = document.createElement('iframe'); f.src = '/elsewhere';"
                  "document.body.appendChild(f)"},
    };
    for (const auto &[name, script] : rows)
        QTest::newRow(name) << QString::fromLatin1(script);
}

void TestWebNewsPage::putsEveryNavigationToThePolicy()
{
    QFETCH(QString, script);
    TestServer server;
    server.route("/elsewhere", html("<title>elsewhere</title>"));
    World world(server);
    world.view().page()->settings()->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows,
                                                  true);
    world.load("<a id=a href=/elsewhere>a</a> <a id=b target=_blank href=/elsewhere>b</a>"
               "<a id=c href=#top>c</a><form id=f method=post action=/elsewhere></form>");
    world.view().page()->runJavaScript(script);
    QTRY_COMPARE_WITH_TIMEOUT(world.asked.size(), 2, Patience);
    const bool isFragment = QByteArray(QTest::currentDataTag()).endsWith("fragment");
    QCOMPARE(world.asked.last(), server.url(isFragment ? "/launcher/#top" : "/elsewhere"));
    QCOMPARE(world.run(QStringLiteral("location.pathname + location.hash")).toString(),
             QStringLiteral("/launcher/"));
    QCOMPARE(server.requestCount("/elsewhere"), 0);
}

void TestWebNewsPage::putsARedirectToThePolicy()
{
    TestServer server;
    server.route("/launcher/", TestReply::redirect(server.url("/elsewhere")));
    server.route("/elsewhere", html("<title>elsewhere</title>"));
    World world(server);
    world.page->load(server.url("/launcher/"));
    QTRY_COMPARE_WITH_TIMEOUT(world.asked.size(), 2, Patience);
    QCOMPARE(world.asked.last(), server.url("/elsewhere"));
    world.load("<p>News</p>");
    QCOMPARE(server.requestCount("/elsewhere"), 0);
}

void TestWebNewsPage::loadsAnewWhatAWindowWasToShow()
{
    TestServer server;
    World world(server);
    world.load("<a id=a target=_blank href=/launcher/>a</a>");
    world.view().page()->runJavaScript(QStringLiteral("document.getElementById('a').click()"));
    QTRY_COMPARE_WITH_TIMEOUT(server.requestCount("/launcher/"), 2, Patience);
}

void TestWebNewsPage::keepsNothingOnTheDisk()
{
    TestServer server;
    World world(server);
    world.load("");
    QVERIFY(world.view().page()->profile()->isOffTheRecord());
}

void TestWebNewsPage::refusesWhatPagesLikeToHave_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QVariant>("answer");
    QTest::newRow("dialogs") << QStringLiteral("alert('x'); confirm('y')") << QVariant(false);
    QTest::newRow("answers") << QStringLiteral("prompt('x') === null") << QVariant(true);
    QTest::newRow("full screen") << QStringLiteral("document.fullscreenEnabled") << QVariant(false);
    QTest::newRow("printing") << QStringLiteral("window.print(); 1") << QVariant(1);
}

void TestWebNewsPage::refusesWhatPagesLikeToHave()
{
    QFETCH(QString, script);
    TestServer server;
    World world(server);
    world.load("");
    QTEST(world.run(script), "answer");
}

void TestWebNewsPage::refusesPermissions()
{
    TestServer server;
    World world(server);
    world.load("");
    QCOMPARE(world.run(QStringLiteral("isSecureContext")), QVariant(true));
    world.view().page()->runJavaScript(
        QStringLiteral("navigator.geolocation.getCurrentPosition("
                       "() => { document.title = 'given' },"
                       "error => { document.title = 'refused ' + error.code })"));
    QTRY_COMPARE_WITH_TIMEOUT(world.view().title(), QStringLiteral("refused 1"), Patience);
}

void TestWebNewsPage::refusesDownloads()
{
    TestServer server;
    World world(server);
    QSignalSpy requested(world.view().page()->profile(), &QWebEngineProfile::downloadRequested);
    server.route("/launcher/",
                 TestReply::whole(QByteArray(100000, 'x'), 200,
                                  {{"Content-Disposition", "attachment; filename=\"news.bin\""}}));
    world.page->load(server.url("/launcher/"));
    QTRY_COMPARE_WITH_TIMEOUT(requested.count(), 1, Patience);
    world.load("");
    const QDir downloads(QStandardPaths::writableLocation(QStandardPaths::DownloadLocation));
    QCOMPARE(downloads.entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             QStringList());
}

void TestWebNewsPage::isTransparentWhenAsked()
{
    TestServer server;
    World world(server);
    world.page->setDrawsBackground(false);
    QCOMPARE(world.view().page()->backgroundColor().alpha(), 0);
    world.page->setDrawsBackground(true);
    QCOMPARE(world.view().page()->backgroundColor().alpha(), 255);
}

void TestWebNewsPage::hasItsPlaceInTheOrderOfTab()
{
    class AnyPage final : public WebPolicyDelegate
    {
        void webViewDecidePolicyForNavigationAction(const QUrl &,
                                                    DecisionListener &listener) override
        {
            listener.use();
        }
    } policy;
    TestServer server;
    server.route("/launcher/", html("<title>page</title><a href=/elsewhere>a</a>"));
    RefusingHttpClient noClient;
    QWidget window;
    QPushButton before(&window);
    NewsView view(&window);
    QPushButton after(&window);
    QWidget::setTabOrder(&before, &view);
    QWidget::setTabOrder(&view, &after);
    view.resize(400, 300);
    view.setPolicyDelegate(&policy);
    view.setPageFactory(newsPages(noClient, Certificates::shared().authorityFile()));
    view.load(server.url("/launcher/"));
    window.show();
    window.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&window));
    QTRY_VERIFY_WITH_TIMEOUT(view.page(), Patience);
    const auto &web = *qobject_cast<QWebEngineView *>(view.page()->widget());
    QTRY_COMPARE_WITH_TIMEOUT(web.title(), QStringLiteral("page"), Patience);
    QTRY_VERIFY(web.isVisible());

    before.setFocus();
    QTest::keyClick(&before, Qt::Key_Tab);
    QVERIFY(web.isAncestorOf(QApplication::focusWidget()));
    after.setFocus();
    QTest::keyClick(&after, Qt::Key_Backtab);
    QVERIFY(web.isAncestorOf(QApplication::focusWidget()));
}

// A page may ask whether it shall be left once the player has clicked into it.
void TestWebNewsPage::letsNoPageKeepThePlayer()
{
    TestServer server;
    World world(server);
    QVERIFY(QTest::qWaitForWindowExposed(&world.window));
    world.load("<a href=/elsewhere style='position:fixed;inset:0'>a</a><script>"
               "addEventListener('click', () => document.title = 'clicked');"
               "addEventListener('beforeunload', event => event.preventDefault());"
               "onbeforeunload = () => 'Stay';</script>");
    const auto clicksTheLink = [&world] {
        QTest::mouseClick(world.view().focusProxy(), Qt::LeftButton, {}, QPoint(200, 150));
        return QTest::qWaitFor([&] { return world.view().title() == QStringLiteral("clicked"); },
                               Patience);
    };
    QVERIFY(clicksTheLink());
    QTRY_COMPARE_WITH_TIMEOUT(world.asked.size(), 2, Patience);
    QCOMPARE(world.asked.last(), server.url("/elsewhere"));
    QTest::mouseClick(world.view().focusProxy(), Qt::LeftButton, {}, QPoint(200, 150));
    QTRY_COMPARE_WITH_TIMEOUT(world.asked.size(), 3, Patience);
    world.load("<p>News</p>");
}

void TestWebNewsPage::isEmptyAfterAFailure()
{
    TestServer server;
    World world(server);
    world.load("<p>News</p><a id=a href=/elsewhere>a</a>");
    QTRY_COMPARE_WITH_TIMEOUT(world.view().page()->isLoading(), false, Patience);
    QSignalSpy finished(world.view().page(), &QWebEnginePage::loadFinished);
    world.view().page()->runJavaScript(QStringLiteral("document.getElementById('a').click()"));
    QVERIFY(finished.wait(Patience));
    QCOMPARE(finished.first().first().toBool(), false);
    QVERIFY(!world.page->widget()->isHidden()); // a link that was refused is no failure

    world.allowsAll = true;
    world.page->load(QUrl(QStringLiteral("https://127.0.0.1:1/launcher/")));
    QTRY_VERIFY_WITH_TIMEOUT(world.page->widget()->isHidden(), Patience);
    world.load("<p>News</p>");
    QTRY_VERIFY_WITH_TIMEOUT(!world.page->widget()->isHidden(), Patience);
}

void TestWebNewsPage::asksTheHostForNothingElse()
{
    TestServer server;
    server.route("/favicon.ico", html("x"));
    server.route("/picture", html("x"));
    World world(server);
    world.load("<link rel=icon href=/picture><p>News</p>");
    world.load("<p>News</p>"); // by now the icon of the first would have been asked for
    QCOMPARE(server.requestCount("/favicon.ico"), 0);
    QCOMPARE(server.requestCount("/picture"), 0);
}

void TestWebNewsPage::survivesTheEndOfItsProcess()
{
    const LogCapture log;
    TestServer server;
    World world(server);
    world.load("<p>News</p>");
    world.allowsAll = true;
    world.page->load(QUrl(QStringLiteral("chrome://crash")));
    QTRY_VERIFY_WITH_TIMEOUT(world.page->widget()->isHidden(), Patience);
    QVERIFY(log.lines().last().contains(QStringLiteral("The news page's process ended")));
    world.load("<p id=p>News again</p>");
    QTRY_VERIFY_WITH_TIMEOUT(!world.page->widget()->isHidden(), Patience);
    QCOMPARE(world.run(QStringLiteral("document.getElementById('p').textContent")).toString(),
             QStringLiteral("News again"));
}

QUELLMOOR_TEST(TestWebNewsPage, "WebNewsPage")
#include "tst_WebNewsPage.moc"

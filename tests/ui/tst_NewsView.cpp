#include "FakeHttpClient.h"
#include "TestMain.h"
#include "TestServer.h"
#include "platform/HttpClient.h"
#include "ui/NewsPage.h"

#include <QTest>
#include <QTextBrowser>

namespace {

class RecordingPage final : public NewsPage
{
public:
    RecordingPage(QWidget *parent, QStringList &calls)
        : m_widget(new QWidget(parent)), m_calls(calls)
    {
    }
    QWidget *widget() override { return m_widget; }
    void load(const QUrl &url) override { m_calls += QStringLiteral("load ") + url.toString(); }
    void setDrawsBackground(bool drawsBackground) override
    {
        m_calls += drawsBackground ? QStringLiteral("opaque") : QStringLiteral("clear");
    }

private:
    QWidget *const m_widget;
    QStringList &m_calls;
};

class OneUrlPolicy final : public WebPolicyDelegate
{
public:
    explicit OneUrlPolicy(const QUrl &used) : m_used(used) {}
    void webViewDecidePolicyForNavigationAction(const QUrl &url,
                                                DecisionListener &listener) override
    {
        asked += url;
        if (url == m_used)
            listener.use();
    }
    QList<QUrl> asked;

private:
    const QUrl m_used;
};

} // namespace

class TestNewsView : public QObject
{
    Q_OBJECT

private slots:
    void makesItsPageALittleLater();
    void loadsOnlyTheLastUrlThatWasAskedForBefore();
    void passesLaterWishesOn();
    void keepsThePageAsLargeAsItself();
    void refusesEverythingWithoutADelegate();

    void textPageShowsWhatTheHostSends();
    void textPageTrustsNobodyElse();
    void textPageAsksBeforeItFollowsALink();
    void textPageAsksBeforeItFollowsARedirect();
    void textPageGivesUpOnACircleOfRedirects();
    void textPageFetchesNothingThatIsNotAllowed();
    void textPageIsEmptyAfterAFailure();
    void textPageForgetsALoadOnceANewerOneHasBegun();
    void textPageLaysOutWhateverComesAtOnce_data();
    void textPageLaysOutWhateverComesAtOnce();
    void textPageLoadsNoPictures();

private:
    // A view over a text page of that server, shown; only its "/launcher/" is allowed.
    struct TextView
    {
        explicit TextView(const TestServer &server,
                          const QString &authorityFile = Certificates::shared().authorityFile())
            : httpClient(makeHttpClient(authorityFile)), policy(server.url("/launcher/"))
        {
            view.setPageFactory([this](QWidget *parent, const NewsView::Policy &newsPolicy) {
                auto page = textNewsPages(*httpClient)(parent, newsPolicy);
                connect(qobject_cast<QTextBrowser *>(page->widget()), &QTextBrowser::textChanged,
                        &view, [this] { ++shownPages; });
                return page;
            });
            view.setPolicyDelegate(&policy);
            view.resize(400, 300);
            view.load(server.url("/launcher/"));
            view.show();
            view.activateWindow();
        }
        ~TextView() { QCoreApplication::sendPostedEvents(); } // what still needs the client
        TextView(const TextView &) = delete;
        TextView &operator=(const TextView &) = delete;
        [[nodiscard]] QString text() const
        {
            const auto *browser = view.findChild<QTextBrowser *>();
            return browser ? browser->toPlainText() : QStringLiteral("no browser");
        }

        const std::unique_ptr<HttpClient> httpClient;
        OneUrlPolicy policy;
        int shownPages = 0; // empty ones after a failure, too
        NewsView view;
    };

    static TestReply html(const QByteArray &body)
    {
        return TestReply::whole(body, 200, {{"Content-Type", "text/html; charset=utf-8"}});
    }
};

void TestNewsView::makesItsPageALittleLater()
{
    QStringList calls;
    NewsView view;
    view.setPageFactory([&calls](QWidget *parent, const NewsView::Policy &) {
        return std::make_unique<RecordingPage>(parent, calls);
    });
    view.load(QUrl(QStringLiteral("https://a.test/")));
    view.setDrawsBackground(false);
    QCOMPARE(calls, QStringList());
    QTRY_COMPARE(calls,
                 (QStringList{QStringLiteral("clear"), QStringLiteral("load https://a.test/")}));
}

void TestNewsView::loadsOnlyTheLastUrlThatWasAskedForBefore()
{
    QStringList calls;
    NewsView view;
    view.setPageFactory([&calls](QWidget *parent, const NewsView::Policy &) {
        return std::make_unique<RecordingPage>(parent, calls);
    });
    view.load(QUrl(QStringLiteral("https://a.test/")));
    view.load(QUrl(QStringLiteral("https://b.test/")));
    view.show();
    view.activateWindow();
    QTRY_COMPARE(calls,
                 (QStringList{QStringLiteral("opaque"), QStringLiteral("load https://b.test/")}));
}

void TestNewsView::passesLaterWishesOn()
{
    QStringList calls;
    NewsView view;
    view.setPageFactory([&calls](QWidget *parent, const NewsView::Policy &) {
        return std::make_unique<RecordingPage>(parent, calls);
    });
    view.show();
    view.activateWindow();
    QTRY_VERIFY(view.page());
    calls.clear();
    view.load(QUrl(QStringLiteral("https://a.test/")));
    view.setDrawsBackground(false);
    QCOMPARE(calls, (QStringList{QStringLiteral("load https://a.test/"), QStringLiteral("clear")}));
}

void TestNewsView::keepsThePageAsLargeAsItself()
{
    QStringList calls;
    NewsView view;
    view.resize(300, 200);
    view.setPageFactory([&calls](QWidget *parent, const NewsView::Policy &) {
        return std::make_unique<RecordingPage>(parent, calls);
    });
    view.show();
    view.activateWindow();
    QTRY_VERIFY(view.page());
    QCOMPARE(view.page()->widget()->geometry(), QRect(0, 0, 300, 200));
    view.resize(400, 250);
    QCOMPARE(view.page()->widget()->geometry(), QRect(0, 0, 400, 250));
}

void TestNewsView::refusesEverythingWithoutADelegate()
{
    QStringList calls;
    NewsView::Policy policy;
    NewsView view;
    view.setPageFactory([&](QWidget *parent, const NewsView::Policy &given) {
        policy = given;
        return std::make_unique<RecordingPage>(parent, calls);
    });
    view.show();
    view.activateWindow();
    QTRY_VERIFY(view.page());
    const QUrl url(QStringLiteral("https://a.test/"));
    QVERIFY(!policy(url));
    OneUrlPolicy delegate(url);
    view.setPolicyDelegate(&delegate);
    QVERIFY(policy(url));
    view.setPolicyDelegate(nullptr);
    QVERIFY(!policy(url));
}

void TestNewsView::textPageShowsWhatTheHostSends()
{
    TestServer server;
    server.route("/launcher/", html("<h1>News</h1><p>Gr\xc3\xbc\xc3\x9f"
                                    "e</p><script>document.write('x')</script>"));
    const TextView view(server);
    QTRY_COMPARE(view.text(), QStringLiteral("News\nGr\u00fc\u00dfe"));
}

void TestNewsView::textPageTrustsNobodyElse()
{
    TestServer server;
    server.route("/launcher/", html("<p>News</p>"));
    const TextView view(server, QString());
    QTRY_COMPARE(view.shownPages, 1);
    QCOMPARE(view.text(), QString());
    QCOMPARE(server.requestCount("/launcher/"), 0);
}

void TestNewsView::textPageAsksBeforeItFollowsALink()
{
    TestServer server;
    server.route("/launcher/", html("<a href=\"/elsewhere\">more</a>"));
    TextView view(server);
    QTRY_COMPARE(view.text(), QStringLiteral("more"));
    emit view.view.findChild<QTextBrowser *>()->anchorClicked(QUrl(QStringLiteral("/elsewhere")));
    QCOMPARE(view.policy.asked.last(), server.url("/elsewhere"));
    QCOMPARE(view.text(), QStringLiteral("more"));
    QCOMPARE(server.requestCount("/elsewhere"), 0);
}

void TestNewsView::textPageAsksBeforeItFollowsARedirect()
{
    TestServer server;
    server.route("/launcher/", TestReply::redirect(server.url("/elsewhere")));
    server.route("/elsewhere", html("<p>Elsewhere</p>"));
    const TextView view(server);
    QTRY_COMPARE(view.policy.asked.size(), 2);
    QCOMPARE(view.policy.asked.last(), server.url("/elsewhere"));
    QCOMPARE(view.text(), QString());
    QCOMPARE(server.requestCount("/elsewhere"), 0);
}

void TestNewsView::textPageGivesUpOnACircleOfRedirects()
{
    TestServer server;
    server.route("/launcher/", html("<p>News</p>"));
    TextView view(server);
    QTRY_COMPARE(view.text(), QStringLiteral("News"));
    server.route("/launcher/", TestReply::redirect(server.url("/launcher/")));
    view.view.load(server.url("/launcher/"));
    QTRY_COMPARE(view.text(), QString());
    QVERIFY(server.requestCount("/launcher/") < 20);
}

void TestNewsView::textPageFetchesNothingThatIsNotAllowed()
{
    TestServer server;
    server.route("/launcher/", html("<p>News</p>"));
    TextView view(server);
    QTRY_COMPARE(view.text(), QStringLiteral("News"));
    view.view.load(server.url("/elsewhere"));
    QCOMPARE(view.policy.asked.last(), server.url("/elsewhere"));
    view.view.load(server.url("/launcher/"));
    QVERIFY(server.waitForRequests(2));
    QCOMPARE(server.requestCount("/elsewhere"), 0);
}

void TestNewsView::textPageIsEmptyAfterAFailure()
{
    TestServer server;
    server.route("/launcher/", html("<p>News</p>"));
    TextView view(server);
    QTRY_COMPARE(view.text(), QStringLiteral("News"));
    server.route("/launcher/", TestReply({TestReply::Reset{}}));
    view.view.load(server.url("/launcher/"));
    QTRY_COMPARE(view.text(), QString());
}

// Whether it fails late, succeeds late or leads elsewhere.
void TestNewsView::textPageForgetsALoadOnceANewerOneHasBegun()
{
    const QUrl url(QStringLiteral("https://a.test/launcher/"));
    FakeHttpClient httpClient;
    QList<QUrl> asked;
    const auto page = textNewsPages(httpClient)(nullptr, [&asked](const QUrl &target) {
        asked += target;
        return true;
    });
    const auto text = [&page] {
        return qobject_cast<QTextBrowser *>(page->widget())->toPlainText();
    };
    for (int i = 0; i < 3; ++i)
        page->load(url);
    QCoreApplication::sendPostedEvents();
    QCOMPARE(httpClient.connectionCount(), 3);
    httpClient.last()->deliver("<p>News</p>");
    QCOMPARE(text(), QStringLiteral("News"));

    httpClient.connection(0)->fail(QStringLiteral("reset"));
    QCOMPARE(text(), QStringLiteral("News"));
    QVERIFY(!httpClient.connection(1)->request().mayFollow(
        url.resolved(QUrl(QStringLiteral("/elsewhere")))));
    QCOMPARE(asked, QList<QUrl>(3, url));
    httpClient.connection(1)->deliver("<p>Old news</p>");
    QCOMPARE(text(), QStringLiteral("News"));
}

// Each would hold the window for seconds, or for ever, as it is.
void TestNewsView::textPageLaysOutWhateverComesAtOnce_data()
{
    QTest::addColumn<QByteArray>("page");
    QTest::newRow("tables in tables")
        << QByteArray("<table><tr><td>").repeated(200) + QByteArray("<td>deep").repeated(1000);
    QTest::newRow("cells of many columns")
        << "<table>" + QByteArray("<tr><td colspan=1000 rowspan=1000>deep").repeated(1000);
    QTest::newRow("lists in lists") << QByteArray("<ul><li>").repeated(50'000) + "deep";
    QTest::newRow("a long word") << QByteArray("deep").repeated(1'000'000);
    QTest::newRow("many links") << QByteArray("<b><i><a href=x>deep</a>").repeated(100'000);
}

void TestNewsView::textPageLaysOutWhateverComesAtOnce()
{
    QFETCH(QByteArray, page);
    TestServer server;
    server.route("/launcher/", html(page));
    const TextView view(server);
    QElapsedTimer clock;
    qint64 longest = 0; // between two rounds of events
    QElapsedTimer whole;
    whole.start();
    while (!view.text().contains(QStringLiteral("deep")) && whole.elapsed() < 30'000) {
        clock.start();
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        longest = std::max(longest, clock.elapsed());
    }
    QVERIFY(view.text().contains(QStringLiteral("deep")));
    QVERIFY2(longest < 2000, qPrintable(QString::number(longest)));
}

void TestNewsView::textPageLoadsNoPictures()
{
    TestServer server;
    server.route("/launcher/", html("<p>News</p><img src=\"/picture.png\">"
                                    "<img src=\"file:///etc/hostname\">"));
    TextView view(server);
    QTRY_VERIFY(view.text().startsWith(QStringLiteral("News")));
    view.view.grab();
    view.view.load(server.url("/launcher/"));
    QVERIFY(server.waitForRequests(2));
    QCOMPARE(server.requestCount("/picture.png"), 0);
}

QUELLMOOR_TEST(TestNewsView, "NewsView")
#include "tst_NewsView.moc"

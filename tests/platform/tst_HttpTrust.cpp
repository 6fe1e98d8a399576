#include "RecordingConnectionDelegate.h"
#include "TestMain.h"
#include "TestServer.h"
#include "platform/HttpClient.h"

#include <QSslConfiguration>
#include <QTest>

#include <ctime>

using Redirects = HttpRequest::Redirects;
Q_DECLARE_METATYPE(Certificates::Identity)

// Where requests may go and whom the client believes.
class TestHttpTrust : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void followsARedirect_data();
    void followsARedirect();
    void tellsNothingOfTheRedirectItself();
    void readsPastALongPageOfTheRedirect();
    void followsFromHttpToHttps();
    void neverFollowsFromHttpsToHttp_data();
    void neverFollowsFromHttpsToHttp();
    void staysWithinTheOriginWhenTold_data();
    void staysWithinTheOriginWhenTold();
    void followsOnlyWhereItMay();
    void givesUpOnACircleOfRedirects_data();
    void givesUpOnACircleOfRedirects();
    void timesOutInARedirectLikeAnywhere();
    void refusesAServerThatCannotProveItself_data();
    void refusesAServerThatCannotProveItself();
    void refusesTheTestAuthorityWhenItIsNotAdded_data();
    void refusesTheTestAuthorityWhenItIsNotAdded();
    void doesNotReadAllAuthoritiesForItsFirstConnection();

private:
    std::unique_ptr<HttpClient> m_client;
};

namespace {

const QByteArray Secret = "password=hunter2";

std::shared_ptr<RecordingConnectionDelegate> run(HttpClient &client, const HttpRequest &request)
{
    auto delegate = std::make_shared<RecordingConnectionDelegate>();
    const auto connection = client.makeConnection(request, delegate);
    if (!connection)
        qFatal("no connection");
    connection->start();
    if (!QTest::qWaitFor([delegate] { return delegate->hasEnded(); }, 20000))
        qFatal("the connection never ended");
    return delegate;
}

HttpRequest get(const QUrl &url)
{
    HttpRequest request;
    request.url = url;
    return request;
}

HttpRequest postSecret(const QUrl &url, Redirects redirects)
{
    HttpRequest request = get(url);
    request.method = "POST";
    request.body = Secret;
    request.redirects = redirects;
    return request;
}

// What the thread had of the processor, which is the same on a busy machine.
double secondsOfThisThread()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) / 1e9;
}

void addRedirectStatuses()
{
    QTest::addColumn<int>("status");
    for (const int status : {301, 302, 303, 307, 308})
        QTest::addRow("%d", status) << status;
}

} // namespace

void TestHttpTrust::initTestCase()
{
    m_client = makeHttpClient(Certificates::shared().authorityFile());
}

void TestHttpTrust::followsARedirect_data() { addRedirectStatuses(); }

void TestHttpTrust::followsARedirect()
{
    QFETCH(int, status);
    TestServer first;
    TestServer second;
    first.route("/", TestReply::redirect(second.url("/there"), status));
    second.route("/there", TestReply::whole("arrived"));
    const auto delegate = run(*m_client, get(first.url()));
    QCOMPARE(delegate->events(), QStringList({QStringLiteral("response 200 7"),
                                              QStringLiteral("data"), QStringLiteral("finish")}));
    QCOMPARE(delegate->data(), QByteArray("arrived"));
}

void TestHttpTrust::tellsNothingOfTheRedirectItself()
{
    TestServer server;
    server.route("/", TestReply::whole("moved", 302, {{"Location", "/there"}}));
    server.route("/there", TestReply::whole("not here", 404));
    const auto delegate = run(*m_client, get(server.url()));
    QCOMPARE(delegate->events(), QStringList({QStringLiteral("response 404 8"),
                                              QStringLiteral("data"), QStringLiteral("finish")}));
    QCOMPARE(delegate->data(), QByteArray("not here"));
}

void TestHttpTrust::readsPastALongPageOfTheRedirect()
{
    TestServer server;
    const QByteArray page(4 * 1024 * 1024, 'm'); // more than waits unread in any buffer
    server.route("/", TestReply::whole(page, 302, {{"Location", "/there"}}));
    server.route("/there", TestReply::whole("arrived"));
    QCOMPARE(run(*m_client, get(server.url()))->data(), QByteArray("arrived"));
}

void TestHttpTrust::followsFromHttpToHttps()
{
    TestServer open(TestServer::Scheme::Http);
    TestServer safe;
    open.route("/", TestReply::redirect(safe.url("/there")));
    safe.route("/there", TestReply::whole("arrived"));
    QCOMPARE(run(*m_client, get(open.url()))->data(), QByteArray("arrived"));
}

void TestHttpTrust::neverFollowsFromHttpsToHttp_data() { addRedirectStatuses(); }

void TestHttpTrust::neverFollowsFromHttpsToHttp()
{
    QFETCH(int, status);
    TestServer safe;
    TestServer open(TestServer::Scheme::Http);
    open.setHandler([](const TestRequest &) { return TestReply::whole("trap"); });
    safe.route("/", TestReply::redirect(open.url(), status));
    const auto delegate = run(*m_client, postSecret(safe.url(), Redirects::NoLessSafe));
    QCOMPARE(delegate->events(), QStringList{QStringLiteral("failure")});
    QCOMPARE(open.receivedBytes(), QByteArray());
    QVERIFY(safe.receivedBytes().endsWith(Secret));
}

void TestHttpTrust::staysWithinTheOriginWhenTold_data() { addRedirectStatuses(); }

void TestHttpTrust::staysWithinTheOriginWhenTold()
{
    QFETCH(int, status);
    TestServer own;
    TestServer stranger;
    stranger.setHandler([](const TestRequest &) { return TestReply::whole("trap"); });
    own.route("/away", TestReply::redirect(stranger.url(), status));
    own.route("/near", TestReply::redirect(own.url("/there"), status));
    own.route("/there", TestReply::whole("arrived"));
    QCOMPARE(run(*m_client, postSecret(own.url("/away"), Redirects::SameOrigin))->events(),
             QStringList{QStringLiteral("failure")});
    QCOMPARE(run(*m_client, postSecret(own.url("/near"), Redirects::SameOrigin))->data(),
             QByteArray("arrived"));
    QCOMPARE(stranger.receivedBytes(), QByteArray());
}

void TestHttpTrust::followsOnlyWhereItMay()
{
    TestServer server;
    server.route("/", TestReply::redirect(server.url("/near")));
    server.route("/near", TestReply::redirect(server.url("/away")));
    server.route("/away", TestReply::whole("arrived"));
    QList<QUrl> asked;
    HttpRequest request = get(server.url());
    request.mayFollow = [&](const QUrl &target) {
        asked += target;
        return target == server.url("/near");
    };
    QCOMPARE(run(*m_client, request)->events(), QStringList{QStringLiteral("failure")});
    QCOMPARE(asked, QList<QUrl>({server.url("/near"), server.url("/away")}));
    QCOMPARE(server.requestCount("/away"), 0);
    // Of a target that is never followed, too: whoever is asked may have another use for it.
    request.mayFollow = [&asked](const QUrl &target) { return (asked += target, true); };
    server.route("/", TestReply::redirect(QUrl(QStringLiteral("http://localhost:1/"))));
    QCOMPARE(run(*m_client, request)->events(), QStringList{QStringLiteral("failure")});
    QCOMPARE(asked.last(), QUrl(QStringLiteral("http://localhost:1/")));
}

void TestHttpTrust::givesUpOnACircleOfRedirects_data()
{
    QTest::addColumn<QByteArray>("method");
    QTest::newRow("without a body") << QByteArray("GET");
    QTest::newRow("with a body") << QByteArray("POST");
}

void TestHttpTrust::givesUpOnACircleOfRedirects()
{
    QFETCH(QByteArray, method);
    TestServer server;
    server.route("/", TestReply::redirect(server.url("/"), 307));
    HttpRequest request = postSecret(server.url(), Redirects::SameOrigin);
    request.method = method;
    QCOMPARE(run(*m_client, request)->events(), QStringList{QStringLiteral("failure")});
    QVERIFY(server.requestCount("/") > 5);
}

void TestHttpTrust::timesOutInARedirectLikeAnywhere()
{
    TestServer server;
    const QByteArray head = "HTTP/1.1 307 Moved\r\nLocation: /there\r\nContent-Length: 9\r\n\r\n";
    server.route("/", TestReply({head, TestReply::Wait{}}));
    HttpRequest request = postSecret(server.url(), Redirects::SameOrigin);
    request.idleTimeout = std::chrono::milliseconds(500);
    const auto delegate = run(*m_client, request);
    QCOMPARE(delegate->events(), QStringList{QStringLiteral("failure")});
    QCOMPARE(delegate->error().localizedDescription, QStringLiteral("The request timed out."));
    QCOMPARE(server.requests().size(), 1);
}

void TestHttpTrust::refusesAServerThatCannotProveItself_data()
{
    QTest::addColumn<Certificates::Identity>("identity");
    QTest::newRow("of another host") << Certificates::shared().otherHost();
    QTest::newRow("expired") << Certificates::shared().expired();
}

void TestHttpTrust::refusesAServerThatCannotProveItself()
{
    QFETCH(Certificates::Identity, identity);
    TestServer server(identity);
    const auto delegate = run(*m_client, postSecret(server.url(), Redirects::NoLessSafe));
    QCOMPARE(delegate->events(), QStringList{QStringLiteral("failure")});
    QCOMPARE(server.receivedBytes(), QByteArray());
}

void TestHttpTrust::refusesTheTestAuthorityWhenItIsNotAdded_data()
{
    QTest::addColumn<QString>("extraCertificateFile");
    QTest::newRow("no file") << QString();
    QTest::newRow("a missing file") << QStringLiteral("/does/not/exist.pem");
    QTest::newRow("a file without certificates") << QStringLiteral("/etc/passwd");
}

void TestHttpTrust::refusesTheTestAuthorityWhenItIsNotAdded()
{
    QFETCH(QString, extraCertificateFile);
    TestServer server;
    const auto client = makeHttpClient(extraCertificateFile);
    const auto delegate = run(*client, postSecret(server.url(), Redirects::NoLessSafe));
    QCOMPARE(delegate->events(), QStringList{QStringLiteral("failure")});
    QCOMPARE(server.receivedBytes(), QByteArray());
}

void TestHttpTrust::doesNotReadAllAuthoritiesForItsFirstConnection()
{
    const auto start = secondsOfThisThread();
    QVERIFY(!QSslConfiguration::systemCaCertificates().isEmpty());
    const auto reading = secondsOfThisThread() - start;
    const auto client = makeHttpClient(Certificates::shared().authorityFile());
    const auto before = secondsOfThisThread();
    const auto connection = client->makeConnection(get(QUrl(QStringLiteral("https://localhost/"))),
                                                   std::make_shared<RecordingConnectionDelegate>());
    const auto connecting = secondsOfThisThread() - before;
    QVERIFY(connection);
    QVERIFY2(connecting < reading / 3,
             qPrintable(QStringLiteral("%1 s of %2 s").arg(connecting).arg(reading)));
}

QUELLMOOR_TEST(TestHttpTrust, "HttpTrust")
#include "tst_HttpTrust.moc"

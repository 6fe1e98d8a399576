// Hosts whose names QUrl refuses: they are asked as any other host is, and trusted as little.
#include "RecordingConnectionDelegate.h"
#include "TestMain.h"
#include "TestServer.h"
#include "platform/HttpClient.h"
#include "platform/HttpUrl.h"
#include "platform/Limits.h"

#include <QTest>

using namespace std::chrono_literals;

Q_DECLARE_METATYPE(Certificates::Identity)

class TestRefusedHost : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void asksTheHostByItsName_data();
    void asksTheHostByItsName();
    void sendsABodyOnce();
    void refusesAServerThatCannotProveItself_data();
    void refusesAServerThatCannotProveItself();
    void usesNoConnectionThatWasMadeForAnotherHost();
    void followsARedirect_data();
    void followsARedirect();
    void staysWithinTheOriginWhenTold_data();
    void staysWithinTheOriginWhenTold();
    void neverFollowsFromHttpsToHttp();
    void tellsThatTheHostIsNotFound();
    void tellsThatNobodyListens();
    void keepsTheFailureBackWhilePaused();
    void timesOut_data();
    void timesOut();

private:
    std::shared_ptr<RecordingConnectionDelegate> run(const HttpRequest &request);

    std::unique_ptr<HttpClient> m_client;
};

namespace {

constexpr int Limit = 20000;
const QByteArray Secret = "password=hunter2";
const auto Refused = QStringLiteral("download-.localhost");

QUrl urlAt(const QString &host, const TestServer &server, const QString &path)
{
    return HttpUrl::fromText(
        QStringLiteral("https://%1:%2%3").arg(host).arg(server.port()).arg(path));
}

HttpRequest get(const QUrl &url)
{
    HttpRequest request;
    request.url = url;
    return request;
}

HttpRequest postSecret(const QUrl &url)
{
    HttpRequest request = get(url);
    request.method = "POST";
    request.body = Secret;
    request.redirects = HttpRequest::Redirects::SameOrigin;
    return request;
}

QByteArray hostHeader(const QString &host, const TestServer &server)
{
    return host.toLatin1() + ':' + QByteArray::number(server.port());
}

TestReply redirectTo(const QString &place)
{
    return TestReply::whole("moved", 307, {{"Location", place.toLatin1()}});
}

} // namespace

void TestRefusedHost::initTestCase()
{
    m_client = makeHttpClient(Certificates::shared().authorityFile());
}

std::shared_ptr<RecordingConnectionDelegate> TestRefusedHost::run(const HttpRequest &request)
{
    auto delegate = std::make_shared<RecordingConnectionDelegate>();
    const auto connection = m_client->makeConnection(request, delegate);
    if (!connection)
        qFatal("no connection");
    connection->start();
    if (!QTest::qWaitFor([delegate] { return delegate->hasEnded(); }, Limit))
        qFatal("the connection never ended");
    return delegate;
}

void TestRefusedHost::asksTheHostByItsName_data()
{
    QTest::addColumn<QString>("host");
    QTest::newRow("nothing behind the hyphen") << Refused;
    QTest::newRow("a name that ends in one") << QStringLiteral("download-x-.localhost");
}

// The server listens at one of the host's two addresses only.
void TestRefusedHost::asksTheHostByItsName()
{
    QFETCH(QString, host);
    TestServer server;
    server.route("/mac/a%20b.bz2", TestReply::whole("body"));
    for (int i = 0; i < 2; ++i) {
        const auto delegate = run(get(urlAt(host, server, QStringLiteral("/mac/a%20b.bz2?c"))));
        QCOMPARE(delegate->events(),
                 QStringList({QStringLiteral("response 200 4"), QStringLiteral("data"),
                              QStringLiteral("finish")}));
    }
    const auto contents = m_client->dataWithContentsOfURL(
        urlAt(host, server, QStringLiteral("/mac/a%20b.bz2?c")), Limits::Manifest);
    QCOMPARE(contents.data, QByteArray("body"));
    const auto requests = server.requests();
    QCOMPARE(requests.size(), 3);
    for (const TestRequest &request : requests) {
        QCOMPARE(request.target, QByteArray("/mac/a%20b.bz2?c"));
        QCOMPARE(request.header("Host"), QList<QByteArray>{hostHeader(host, server)});
    }
}

void TestRefusedHost::sendsABodyOnce()
{
    TestServer server;
    server.route("/", TestReply::whole("thanks"));
    server.route("/closes", TestReply({TestReply::Close{}}));
    QCOMPARE(run(postSecret(urlAt(Refused, server, QStringLiteral("/"))))->data(),
             QByteArray("thanks"));
    QCOMPARE(run(postSecret(urlAt(Refused, server, QStringLiteral("/closes"))))->events(),
             QStringList{QStringLiteral("failure")});
    QCOMPARE(server.receivedBytes().count(Secret), 2);
}

void TestRefusedHost::refusesAServerThatCannotProveItself_data()
{
    QTest::addColumn<Certificates::Identity>("identity");
    QTest::addColumn<QString>("host");
    // It names another host that QUrl refuses; Qt by itself takes that for this one.
    QTest::newRow("of another host") << Certificates::shared().otherHost() << Refused;
    QTest::newRow("of a host called nearly so")
        << Certificates::shared().localhost() << QStringLiteral("download-y-.localhost");
    QTest::newRow("expired") << Certificates::shared().expired() << Refused;
}

void TestRefusedHost::refusesAServerThatCannotProveItself()
{
    QFETCH(Certificates::Identity, identity);
    QFETCH(QString, host);
    TestServer server(identity);
    server.setHandler([](const TestRequest &) { return TestReply::whole("trap"); });
    for (int i = 0; i < 3; ++i) { // the connection of a refused server is not used again either
        const auto delegate = run(postSecret(urlAt(host, server, QStringLiteral("/"))));
        QCOMPARE(delegate->events(), QStringList{QStringLiteral("failure")});
        const QString text = delegate->error().localizedDescription;
        QVERIFY2(text == QStringLiteral("The certificate is not one of %1.").arg(host) ||
                     text.contains(QStringLiteral("expired")),
                 qPrintable(text));
    }
    QCOMPARE(server.receivedBytes(), QByteArray());
}

void TestRefusedHost::usesNoConnectionThatWasMadeForAnotherHost()
{
    TestServer server;
    server.route("/", TestReply::whole("here"));
    const auto path = QStringLiteral("/");
    QCOMPARE(run(get(urlAt(Refused, server, path)))->data(), QByteArray("here"));
    QCOMPARE(run(get(urlAt(QStringLiteral("download-y-.localhost"), server, path)))->events(),
             QStringList{QStringLiteral("failure")});
    QCOMPARE(server.requests().size(), 1);
}

void TestRefusedHost::followsARedirect_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("place"); // %1 is the port
    QTest::addColumn<QString>("to");
    const auto ordinary = QStringLiteral("download.localhost");
    QTest::newRow("on the host") << Refused << QStringLiteral("/there") << Refused;
    QTest::newRow("to another such host")
        << Refused << QStringLiteral("https://download-x-.localhost:%1/there")
        << QStringLiteral("download-x-.localhost");
    QTest::newRow("to an ordinary host")
        << Refused << QStringLiteral("https://download.localhost:%1/there") << ordinary;
    QTest::newRow("from an ordinary host")
        << ordinary << QStringLiteral("//download-.localhost:%1/there") << Refused;
}

void TestRefusedHost::followsARedirect()
{
    QFETCH(QString, from);
    QFETCH(QString, place);
    QFETCH(QString, to);
    TestServer server;
    server.route("/",
                 redirectTo(place.replace(QStringLiteral("%1"), QString::number(server.port()))));
    server.route("/there", TestReply::whole("arrived"));
    const auto delegate = run(get(urlAt(from, server, QStringLiteral("/"))));
    QCOMPARE(delegate->data(), QByteArray("arrived"));
    QCOMPARE(server.requests().first().header("Host"), {hostHeader(from, server)});
    QCOMPARE(server.requests().last().header("Host"), {hostHeader(to, server)});
}

void TestRefusedHost::staysWithinTheOriginWhenTold_data()
{
    QTest::addColumn<QString>("place");
    QTest::addColumn<bool>("isFollowed");
    QTest::newRow("a path") << QStringLiteral("/there") << true;
    QTest::newRow("the same host")
        << QStringLiteral("https://DOWNLOAD-.localhost:%1/there") << true;
    QTest::newRow("another such host")
        << QStringLiteral("https://download-x-.localhost:%1/there") << false;
    QTest::newRow("an ordinary host")
        << QStringLiteral("https://download.localhost:%1/there") << false;
    QTest::newRow("its address") << QStringLiteral("https://127.0.0.1:%1/there") << false;
    QTest::newRow("another port") << QStringLiteral("https://download-.localhost:1/there") << false;
}

void TestRefusedHost::staysWithinTheOriginWhenTold()
{
    QFETCH(QString, place);
    QFETCH(bool, isFollowed);
    TestServer server;
    server.route("/",
                 redirectTo(place.replace(QStringLiteral("%1"), QString::number(server.port()))));
    server.route("/there", TestReply::whole("arrived"));
    const auto delegate = run(postSecret(urlAt(Refused, server, QStringLiteral("/"))));
    QCOMPARE(delegate->data(), QByteArray(isFollowed ? "arrived" : ""));
    QCOMPARE(server.requestCount("/there"), int(isFollowed));
    QCOMPARE(server.receivedBytes().count(Secret), isFollowed ? 2 : 1);
}

void TestRefusedHost::neverFollowsFromHttpsToHttp()
{
    TestServer open(TestServer::Scheme::Http);
    open.setHandler([](const TestRequest &) { return TestReply::whole("trap"); });
    TestServer server;
    server.route("/", redirectTo(QStringLiteral("http://%1:%2/").arg(Refused).arg(open.port())));
    QCOMPARE(run(get(urlAt(Refused, server, QStringLiteral("/"))))->events(),
             QStringList{QStringLiteral("failure")});
    QCOMPARE(open.receivedBytes(), QByteArray());
}

void TestRefusedHost::tellsThatTheHostIsNotFound()
{
    const auto delegate = run(get(HttpUrl::fromText(QStringLiteral("https://download-..x/"))));
    QCOMPARE(delegate->events(), QStringList{QStringLiteral("failure")});
    QCOMPARE(delegate->error().localizedDescription, QStringLiteral("Host download-..x not found"));
    QVERIFY(delegate->error().code != 0);
}

void TestRefusedHost::tellsThatNobodyListens()
{
    const auto delegate =
        run(get(HttpUrl::fromText(QStringLiteral("https://download-.localhost:1/"))));
    QCOMPARE(delegate->events(), QStringList{QStringLiteral("failure")});
    QCOMPARE(delegate->error().localizedDescription, QStringLiteral("Connection refused"));
}

void TestRefusedHost::keepsTheFailureBackWhilePaused()
{
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    const auto connection = m_client->makeConnection(
        get(HttpUrl::fromText(QStringLiteral("https://download-..x/"))), delegate);
    connection->start();
    connection->setPaused(true);
    // By the time that another one has failed, so has this one.
    run(get(HttpUrl::fromText(QStringLiteral("https://download-..y/"))));
    QCOMPARE(delegate->events(), QStringList());
    connection->setPaused(false);
    QTRY_COMPARE_WITH_TIMEOUT(delegate->events(), QStringList{QStringLiteral("failure")}, Limit);
}

void TestRefusedHost::timesOut_data()
{
    QTest::addColumn<int>("milliseconds");
    QTest::newRow("while the host is looked up") << 0;
    QTest::newRow("while nothing arrives") << 500;
}

void TestRefusedHost::timesOut()
{
    QFETCH(int, milliseconds);
    TestServer server;
    server.route("/", TestReply({TestReply::Wait{}}));
    HttpRequest request = get(urlAt(Refused, server, QStringLiteral("/")));
    request.idleTimeout = std::chrono::milliseconds(milliseconds);
    const auto delegate = run(request);
    QCOMPARE(delegate->events(), QStringList{QStringLiteral("failure")});
    QCOMPARE(delegate->error().localizedDescription, QStringLiteral("The request timed out."));
    QVERIFY(delegate->error().code != 0);
    QCOMPARE(server.requests().size(), milliseconds == 0 ? 0 : 1);
}

QUELLMOOR_TEST(TestRefusedHost, "RefusedHost")
#include "tst_RefusedHost.moc"

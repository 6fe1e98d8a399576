#include "RecordingConnectionDelegate.h"
#include "TestMain.h"
#include "TestServer.h"
#include "platform/HttpClient.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QTimer>

#include <new>

Q_DECLARE_METATYPE(TestReply)

using namespace std::chrono_literals;

namespace {

constexpr int PatienceMs = 20000;
const QByteArray Body(100'000, 'b');

// Has no room for any data.
class FullDelegate final : public HttpConnectionDelegate
{
public:
    void connectionDidReceiveResponse(const HttpResponse & /*response*/) override {}
    void connectionDidReceiveData(const QByteArray & /*data*/) override { throw std::bad_alloc(); }
    void connectionDidFinishLoading() override { ends += QStringLiteral("finish"); }
    void connectionDidFailWithError(const Error &error) override
    {
        ends += error.localizedDescription;
    }

    QStringList ends;
};

} // namespace

class TestHttpLimits : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void takesABodyAsLargeAsTheLimit_data();
    void takesABodyAsLargeAsTheLimit();
    void failsBeyondTheLimitAndHandsNothingMoreOn_data();
    void failsBeyondTheLimitAndHandsNothingMoreOn();
    void endsABodyWithoutEnd();
    void endsWhatComesBeforeABodyAndNeverEnds_data();
    void endsWhatComesBeforeABodyAndNeverEnds();
    void failsWhenThereIsNoMemoryForTheBody_data();
    void failsWhenThereIsNoMemoryForTheBody();
    void connectsAnewAfterAHandshakeThatTimedOut();

private:
    template<class Delegate>
    void start(const TestServer &server, qint64 largestBody,
               const std::shared_ptr<Delegate> &delegate);

    std::unique_ptr<HttpClient> m_client;
};

void TestHttpLimits::initTestCase()
{
    m_client = makeHttpClient(Certificates::shared().authorityFile());
}

template<class Delegate>
void TestHttpLimits::start(const TestServer &server, qint64 largestBody,
                           const std::shared_ptr<Delegate> &delegate)
{
    HttpRequest request;
    request.url = server.url();
    request.largestBody = largestBody;
    m_client->makeConnection(request, delegate)->start();
}

namespace {

void addWaysToSend()
{
    QTest::addColumn<TestReply>("reply");
    QTest::newRow("with its length") << TestReply::whole(Body);
    QTest::newRow("in chunks") << TestReply::chunked(Body);
    QTest::newRow("until it closes") << TestReply::closeDelimited(Body);
    QTest::newRow("with a lying length") << TestReply::announcing(1LL << 40, Body);
}

} // namespace

void TestHttpLimits::takesABodyAsLargeAsTheLimit_data()
{
    QTest::addColumn<TestReply>("reply");
    QTest::newRow("with its length") << TestReply::whole(Body);
    QTest::newRow("in chunks") << TestReply::chunked(Body);
}

void TestHttpLimits::takesABodyAsLargeAsTheLimit()
{
    QFETCH(TestReply, reply);
    TestServer server;
    server.route("/", reply);
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    start(server, Body.size(), delegate);
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), PatienceMs);
    QCOMPARE(delegate->events().last(), QStringLiteral("finish"));
    QCOMPARE(delegate->data(), Body);
}

void TestHttpLimits::failsBeyondTheLimitAndHandsNothingMoreOn_data() { addWaysToSend(); }

void TestHttpLimits::failsBeyondTheLimitAndHandsNothingMoreOn()
{
    QFETCH(TestReply, reply);
    TestServer server;
    server.route("/", reply);
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    start(server, Body.size() - 1, delegate);
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), PatienceMs);
    QCOMPARE(delegate->events().last(), QStringLiteral("failure"));
    QCOMPARE(delegate->error().localizedDescription,
             QStringLiteral("The answer is larger than 99999 bytes."));
    QVERIFY(delegate->data().size() < Body.size());
}

// The server never ends the body; the exchange does.
void TestHttpLimits::endsABodyWithoutEnd()
{
    TestServer server;
    server.route("/", TestReply({QByteArray("HTTP/1.1 200 OK\r\n\r\n"), Body, TestReply::Wait{}}));
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    start(server, 1000, delegate);
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), PatienceMs);
    QCOMPARE(delegate->events().last(), QStringLiteral("failure"));
}

void TestHttpLimits::endsWhatComesBeforeABodyAndNeverEnds_data()
{
    QTest::addColumn<QByteArray>("beginning");
    QTest::addColumn<QByteArray>("more");
    const QByteArray head("HTTP/1.1 200 OK\r\n");
    QTest::newRow("a status line") << QByteArray("HTTP/1.1 200 ") << QByteArray("OK ");
    QTest::newRow("headers") << head << QByteArray("X-More: more\r\n");
    QTest::newRow("a header") << head + "X-More: " << QByteArray("more ");
    QTest::newRow("the line of a chunk") << head + "Transfer-Encoding: chunked\r\n\r\n"
                                         << QByteArray("5;more");
}

// None of it counts as something that arrives, so that the idle time-out ends it.
void TestHttpLimits::endsWhatComesBeforeABodyAndNeverEnds()
{
    constexpr int Pieces = 200;
    QFETCH(QByteArray, beginning);
    QFETCH(QByteArray, more);
    std::vector<TestReply::Step> steps{beginning};
    for (int piece = 0; piece < Pieces; ++piece) {
        steps.emplace_back(TestReply::Wait{});
        steps.emplace_back(more);
    }
    TestServer server;
    server.route("/", TestReply(std::move(steps)));
    int sent = 0;
    QTimer sender;
    connect(&sender, &QTimer::timeout, &sender, [&] {
        server.release();
        ++sent;
    });
    sender.start(50);
    HttpRequest request;
    request.url = server.url();
    request.idleTimeout = 500ms;
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    m_client->makeConnection(request, delegate)->start();
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), PatienceMs);
    QCOMPARE(delegate->error().localizedDescription, QStringLiteral("The request timed out."));
    QVERIFY(sent > 1);
    QVERIFY(sent < Pieces);
}

void TestHttpLimits::failsWhenThereIsNoMemoryForTheBody_data() { addWaysToSend(); }

void TestHttpLimits::failsWhenThereIsNoMemoryForTheBody()
{
    QFETCH(TestReply, reply);
    TestServer server;
    server.route("/", reply);
    const auto delegate = std::make_shared<FullDelegate>();
    start(server, Body.size() * 2, delegate);
    QTRY_VERIFY_WITH_TIMEOUT(!delegate->ends.isEmpty(), PatienceMs);
    QCOMPARE(delegate->ends,
             QStringList{QStringLiteral("There is not enough memory for the answer.")});
}

void TestHttpLimits::connectsAnewAfterAHandshakeThatTimedOut()
{
    // The first connection is never answered, the others are passed on.
    TestServer server;
    server.route("/file", TestReply::whole("body"));
    QTcpServer doorman;
    QVERIFY(doorman.listen(QHostAddress::LocalHost));
    int count = 0;
    connect(&doorman, &QTcpServer::newConnection, this, [&] {
        QTcpSocket *client = doorman.nextPendingConnection();
        if (++count == 1)
            return;
        auto *inside = new QTcpSocket(client);
        inside->connectToHost(QHostAddress::LocalHost, server.port());
        connect(client, &QTcpSocket::readyRead, inside, [=] { inside->write(client->readAll()); });
        connect(inside, &QTcpSocket::readyRead, client, [=] { client->write(inside->readAll()); });
    });
    HttpRequest request;
    request.url = server.url("/file");
    request.url.setPort(doorman.serverPort());
    request.idleTimeout = 500ms;
    const auto first = std::make_shared<RecordingConnectionDelegate>();
    m_client->makeConnection(request, first)->start();
    QTRY_VERIFY_WITH_TIMEOUT(first->hasEnded(), PatienceMs);
    QCOMPARE(first->error().localizedDescription, QStringLiteral("The request timed out."));
    request.idleTimeout = 5000ms;
    const auto second = std::make_shared<RecordingConnectionDelegate>();
    m_client->makeConnection(request, second)->start();
    QTRY_VERIFY_WITH_TIMEOUT(second->hasEnded(), PatienceMs);
    QCOMPARE(second->error().localizedDescription, QString());
    QCOMPARE(second->data(), QByteArray("body"));
    QCOMPARE(count, 2);
}

QUELLMOOR_TEST(TestHttpLimits, "HttpLimits")
#include "tst_HttpLimits.moc"

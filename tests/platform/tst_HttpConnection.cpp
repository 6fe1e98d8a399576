#include "RecordingConnectionDelegate.h"
#include "TestMain.h"
#include "TestServer.h"
#include "platform/HttpClient.h"

#include <QEventLoop>
#include <QTest>
#include <QTimer>

#include <thread>

using namespace std::chrono_literals;

Q_DECLARE_METATYPE(TestReply)

class TestHttpConnection : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void finishesWithEveryStatusAndBody_data();
    void finishesWithEveryStatusAndBody();
    void failsWhenTheAnswerDoesNotArriveWhole_data();
    void failsWhenTheAnswerDoesNotArriveWhole();
    void handsOnDataAsItArrives();
    void asksForAFreshBodyThatIsNotPacked();
    void sendsMethodHeadersAndBodyAsAskedFor();
    void freesItsDelegateAfterTheLastMessage();
    void asksAgainOnAConnectionThatTheServerHasClosed();
    void neverSendsABodyTwice_data();
    void neverSendsABodyTwice();
    void timesOutWhenNothingArrives_data();
    void timesOutWhenNothingArrives();
    void doesNotTimeOutWhileDataArrives();
    void slowsTheSenderDownWhilePausedAndGoesOnAfterwards();
    void keepsTheEndBackWhilePaused_data();
    void keepsTheEndBackWhilePaused();
    void canBePausedBeforeItStarts();
    void canBePausedByAnotherThread();
    void canBePausedByItsDelegateAtTheResponse_data();
    void canBePausedByItsDelegateAtTheResponse();
    void speaksOnTheMainThreadForAThreadWithoutEventLoop();
    void speaksOnTheThreadThatStartedItWithAnEventLoop();

private:
    std::shared_ptr<HttpConnection>
    makeConnection(const HttpRequest &request,
                   const std::shared_ptr<RecordingConnectionDelegate> &delegate);
    // Waits for the end.
    std::shared_ptr<RecordingConnectionDelegate> run(const HttpRequest &request);

    std::unique_ptr<HttpClient> m_client;
};

namespace {

constexpr int Limit = 20000;
const QByteArray megabyte(1024 * 1024, 'm');

HttpRequest get(const QUrl &url)
{
    HttpRequest request;
    request.url = url;
    return request;
}

TestReply raw(const QByteArray &bytes) { return TestReply({bytes, TestReply::Close{}}); }

// Resets only when the test has seen what came before.
TestReply resetLater(const QByteArray &bytes)
{
    return TestReply({bytes, TestReply::Wait{}, TestReply::Reset{}});
}

} // namespace

void TestHttpConnection::initTestCase()
{
    m_client = makeHttpClient(Certificates::shared().authorityFile());
}

std::shared_ptr<HttpConnection>
TestHttpConnection::makeConnection(const HttpRequest &request,
                                   const std::shared_ptr<RecordingConnectionDelegate> &delegate)
{
    auto connection = m_client->makeConnection(request, delegate);
    if (!connection)
        qFatal("no connection");
    return connection;
}

std::shared_ptr<RecordingConnectionDelegate> TestHttpConnection::run(const HttpRequest &request)
{
    auto delegate = std::make_shared<RecordingConnectionDelegate>();
    makeConnection(request, delegate)->start();
    if (!QTest::qWaitFor([delegate] { return delegate->hasEnded(); }, Limit))
        qFatal("the connection never ended");
    return delegate;
}

void TestHttpConnection::finishesWithEveryStatusAndBody_data()
{
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("response");
    QTest::newRow("a body") << TestReply::whole("body") << QByteArray("body") << "response 200 4";
    QTest::newRow("an empty body") << TestReply::whole({}) << QByteArray() << "response 200 0";
    QTest::newRow("a large body") << TestReply::whole(megabyte.repeated(5)) << megabyte.repeated(5)
                                  << "response 200 5242880";
    QTest::newRow("no content") << raw("HTTP/1.1 204 No Content\r\n\r\n") << QByteArray()
                                << "response 204 -1";
    QTest::newRow("unknown length")
        << TestReply::closeDelimited("body") << QByteArray("body") << "response 200 -1";
    QTest::newRow("in chunks") << TestReply::chunked("body in chunks")
                               << QByteArray("body in chunks") << "response 200 -1";
    QTest::newRow("no chunk") << TestReply::chunked({}) << QByteArray() << "response 200 -1";
    QTest::newRow("more than announced")
        << TestReply::announcing(3, "0123456789") << QByteArray("012") << "response 200 3";
    for (const int status : {206, 300, 304, 400, 401, 403, 404, 405, 407, 409, 410,
                             416, 418, 429, 451, 499, 500, 501, 502, 503, 504, 599})
        QTest::addRow("%d", status)
            << TestReply::whole(status == 304 ? "" : "a page", status)
            << QByteArray(status == 304 ? "" : "a page")
            << QStringLiteral("response %1 %2").arg(status).arg(status == 304 ? 0 : 6);
    QTest::newRow("401 with a challenge")
        << TestReply::whole("a page", 401, {{"WWW-Authenticate", "Basic realm=\"x\""}})
        << QByteArray("a page") << "response 401 6";
    QTest::newRow("packed although not asked for")
        << TestReply::whole("packed", 200, {{"Content-Encoding", "gzip"}}) << QByteArray("packed")
        << "response 200 6";
}

void TestHttpConnection::finishesWithEveryStatusAndBody()
{
    QFETCH(TestReply, reply);
    QFETCH(QByteArray, data);
    QFETCH(QString, response);
    TestServer server;
    server.route("/", reply);
    const auto delegate = run(get(server.url()));
    QStringList events{response};
    if (!data.isEmpty())
        events += QStringLiteral("data");
    events += QStringLiteral("finish");
    QCOMPARE(delegate->events(), events);
    QVERIFY(delegate->data() == data);
}

void TestHttpConnection::failsWhenTheAnswerDoesNotArriveWhole_data()
{
    QTest::addColumn<TestReply>("reply");
    const QByteArray head = "HTTP/1.1 200 OK\r\n";
    QTest::newRow("no answer") << raw({});
    QTest::newRow("half a head") << raw(head + "Content-Le");
    QTest::newRow("no HTTP") << raw("220 mail.example ESMTP\r\n\r\n");
    QTest::newRow("no body") << TestReply::announcing(4, {});
    QTest::newRow("a short body") << TestReply::cut("0123456789", 9);
    QTest::newRow("a short body of an error page")
        << raw("HTTP/1.1 404 Not Found\r\nContent-Length: 9\r\n\r\nshort");
    QTest::newRow("a redirect without a target") << TestReply::whole("a page", 302);
    QTest::newRow("chunks without the last")
        << raw(head + "Transfer-Encoding: chunked\r\n\r\n4\r\nbody\r\n");
    QTest::newRow("half a chunk") << raw(head + "Transfer-Encoding: chunked\r\n\r\n8\r\nbody");
    QTest::newRow("reset before the head") << resetLater({});
    QTest::newRow("reset in the body") << resetLater(head + "Content-Length: 9\r\n\r\nbody");
    QTest::newRow("reset between chunks")
        << resetLater(head + "Transfer-Encoding: chunked\r\n\r\n4\r\nbody\r\n");
    QTest::newRow("half a packed body")
        << raw(head + "Content-Encoding: gzip\r\nContent-Length: 28\r\n\r\n" +
               QByteArray::fromHex("1f8b08000000000002ffcb48cdc9c957c840"));
}

void TestHttpConnection::failsWhenTheAnswerDoesNotArriveWhole()
{
    QFETCH(TestReply, reply);
    TestServer server;
    server.route("/", reply);
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    makeConnection(get(server.url()), delegate)->start();
    const bool waits =
        reply.steps().size() > 1 && std::holds_alternative<TestReply::Wait>(reply.steps().at(1));
    if (waits) {
        const auto &before = std::get<QByteArray>(reply.steps().front());
        QVERIFY(server.waitForWaiting());
        QTRY_VERIFY_WITH_TIMEOUT(delegate->data() == "body" || !before.contains("body"), Limit);
        // A request whose connection goes before any answer is sent once more.
        server.release(10);
    }
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), Limit);
    QCOMPARE(delegate->events().last(), QStringLiteral("failure"));
    QVERIFY(!delegate->events().contains(QStringLiteral("finish")));
}

void TestHttpConnection::handsOnDataAsItArrives()
{
    TestServer server;
    server.route("/", TestReply::inPieces({"first", "second"}));
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    makeConnection(get(server.url()), delegate)->start();
    QTRY_COMPARE_WITH_TIMEOUT(delegate->events(), QStringList{QStringLiteral("response 200 11")},
                              Limit);
    server.release();
    QTRY_COMPARE_WITH_TIMEOUT(delegate->data(), QByteArray("first"), Limit);
    server.release();
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), Limit);
    QCOMPARE(delegate->data(), QByteArray("firstsecond"));
}

void TestHttpConnection::asksForAFreshBodyThatIsNotPacked()
{
    TestServer server;
    server.route("/", TestReply::whole({}));
    run(get(server.url()));
    const TestRequest sent = server.requests().first();
    QCOMPARE(sent.header("Cache-Control"), {QByteArray("no-cache")});
    QCOMPARE(sent.header("Accept-Encoding"), {QByteArray("identity")});
}

void TestHttpConnection::sendsMethodHeadersAndBodyAsAskedFor()
{
    TestServer server;
    server.route("/", TestReply::whole({}));
    HttpRequest request = get(server.url("/?a=%20b&c"));
    request.method = "PUT";
    request.headers = {{"X-One", "1"}, {"X-Two", "a b"}};
    request.body = QByteArray("\0\r\n\xff", 4);
    run(request);
    QCOMPARE(server.requests().size(), 1);
    const TestRequest sent = server.requests().first();
    QCOMPARE(sent.method, QByteArray("PUT"));
    QCOMPARE(sent.target, QByteArray("/?a=%20b&c"));
    QCOMPARE(sent.header("x-one") + sent.header("x-two"), QList<QByteArray>({"1", "a b"}));
    QCOMPARE(sent.body, request.body);
}

void TestHttpConnection::freesItsDelegateAfterTheLastMessage()
{
    TestServer server;
    server.route("/", TestReply::stalled("body"));
    auto delegate = std::make_shared<RecordingConnectionDelegate>();
    const std::weak_ptr<RecordingConnectionDelegate> watched = delegate;
    makeConnection(get(server.url()), delegate)->start();
    delegate.reset();
    QVERIFY(server.waitForWaiting());
    QVERIFY(!watched.expired());
    server.release();
    QTRY_VERIFY_WITH_TIMEOUT(watched.expired(), Limit);
}

void TestHttpConnection::asksAgainOnAConnectionThatTheServerHasClosed()
{
    TestServer server;
    server.setHandler([](const TestRequest &) {
        return TestReply(
            {QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 1\r\n\r\nx"), TestReply::Close{}});
    });
    for (int i = 0; i < 5; ++i)
        QCOMPARE(run(get(server.url()))->events().last(), QStringLiteral("finish"));
}

void TestHttpConnection::neverSendsABodyTwice_data()
{
    QTest::addColumn<bool>("isReused");
    QTest::newRow("on a new connection") << false;
    QTest::newRow("on one that has served before") << true;
}

void TestHttpConnection::neverSendsABodyTwice()
{
    QFETCH(bool, isReused);
    TestServer server;
    server.route("/before", TestReply::whole({}));
    server.route("/", TestReply({TestReply::Close{}}));
    if (isReused)
        run(get(server.url("/before")));
    HttpRequest request = get(server.url());
    request.method = "POST";
    request.body = "password=hunter2";
    QCOMPARE(run(request)->events(), QStringList{QStringLiteral("failure")});
    QCOMPARE(server.receivedBytes().count(request.body), 1);
}

void TestHttpConnection::timesOutWhenNothingArrives_data()
{
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("no head") << TestReply({TestReply::Wait{}}) << QByteArray();
    QTest::newRow("no body") << TestReply::stalled("0123456789") << QByteArray();
    QTest::newRow("half a body") << TestReply::stalled("0123456789", 5) << QByteArray("01234");
}

void TestHttpConnection::timesOutWhenNothingArrives()
{
    QFETCH(TestReply, reply);
    QFETCH(QByteArray, data);
    TestServer server;
    server.route("/", reply);
    HttpRequest request = get(server.url());
    request.idleTimeout = 500ms;
    const auto delegate = run(request);
    QCOMPARE(delegate->data(), data);
    QCOMPARE(delegate->events().last(), QStringLiteral("failure"));
    QCOMPARE(delegate->error().localizedDescription, QStringLiteral("The request timed out."));
    QVERIFY(delegate->error().code != 0);
}

void TestHttpConnection::doesNotTimeOutWhileDataArrives()
{
    TestServer server;
    server.route("/", TestReply::inPieces({"1", "2", "3", "4", "5", "6", "7", "8"}));
    HttpRequest request = get(server.url());
    request.idleTimeout = 1200ms;
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    QTimer pulse;
    connect(&pulse, &QTimer::timeout, &pulse, [&server] { server.release(); });
    pulse.start(300);
    makeConnection(request, delegate)->start();
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), Limit);
    QCOMPARE(delegate->data(), QByteArray("12345678"));
    QCOMPARE(delegate->events().last(), QStringLiteral("finish"));
}

void TestHttpConnection::slowsTheSenderDownWhilePausedAndGoesOnAfterwards()
{
    constexpr qint64 MostInBuffers = 20 * 1024 * 1024;
    const QByteArray body = megabyte.repeated(50);
    TestServer server;
    server.route("/", TestReply::inPieces({megabyte, body}));
    HttpRequest request = get(server.url());
    request.idleTimeout = 1000ms;
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    const auto connection = makeConnection(request, delegate);
    connection->start();
    server.release();
    QTRY_COMPARE_WITH_TIMEOUT(delegate->data().size(), megabyte.size(), Limit);
    connection->setPaused(true);
    server.release();
    // Long enough for the whole body, and for the idle time-out, if the pause did not hold them.
    QTest::qWait(2500);
    QCOMPARE(delegate->data().size(), megabyte.size());
    QVERIFY(!delegate->hasEnded());
    QVERIFY2(server.sentByteCount() < MostInBuffers,
             qPrintable(QString::number(server.sentByteCount())));

    connection->setPaused(false);
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), Limit);
    QCOMPARE(delegate->events().last(), QStringLiteral("finish"));
    QVERIFY(delegate->data() == megabyte + body);
}

void TestHttpConnection::keepsTheEndBackWhilePaused_data()
{
    QTest::addColumn<TestReply>("reply");
    QTest::addColumn<QString>("end");
    QTest::newRow("finish") << TestReply::inPieces({"first", "second"}) << "finish";
    QTest::newRow("failure") << TestReply(
                                    {QByteArray("HTTP/1.1 200 OK\r\nContent-Length: 11\r\n\r\n"),
                                     TestReply::Wait{}, QByteArray("first"), TestReply::Wait{},
                                     TestReply::Close{}})
                             << "failure";
}

void TestHttpConnection::keepsTheEndBackWhilePaused()
{
    QFETCH(TestReply, reply);
    QFETCH(QString, end);
    TestServer server;
    server.route("/", reply);
    server.route("/other", TestReply::whole("other"));
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    const auto connection = makeConnection(get(server.url()), delegate);
    connection->start();
    server.release();
    QTRY_COMPARE_WITH_TIMEOUT(delegate->data(), QByteArray("first"), Limit);
    connection->setPaused(true);
    connection->setPaused(true);
    server.release();
    // What was sent before this exchange has arrived, too.
    run(get(server.url("/other")));
    QCOMPARE(delegate->events(),
             QStringList({QStringLiteral("response 200 11"), QStringLiteral("data")}));
    QCOMPARE(delegate->data(), QByteArray("first"));
    connection->setPaused(false);
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), Limit);
    QCOMPARE(delegate->events(),
             QStringList({QStringLiteral("response 200 11"), QStringLiteral("data"), end}));
}

void TestHttpConnection::canBePausedBeforeItStarts()
{
    TestServer server;
    server.route("/", TestReply::whole("body"));
    server.route("/other", TestReply::whole("other"));
    HttpRequest request = get(server.url());
    request.idleTimeout = 500ms;
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    const auto connection = makeConnection(request, delegate);
    connection->setPaused(true);
    connection->start();
    QVERIFY(server.waitForRequests(1));
    run(get(server.url("/other")));
    QTest::qWait(1000); // the idle time-out would have come
    QCOMPARE(delegate->events(), QStringList());
    connection->setPaused(false);
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), Limit);
    QCOMPARE(delegate->data(), QByteArray("body"));
}

void TestHttpConnection::canBePausedByAnotherThread()
{
    TestServer server;
    server.route("/", TestReply::inPieces({"first", "second"}));
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    const auto connection = makeConnection(get(server.url()), delegate);
    connection->start();
    server.release();
    QTRY_COMPARE_WITH_TIMEOUT(delegate->data(), QByteArray("first"), Limit);
    std::thread([connection] { connection->setPaused(true); }).join();
    QCoreApplication::sendPostedEvents();
    server.release();
    QTest::qWait(500); // the rest would have come
    QCOMPARE(delegate->data(), QByteArray("first"));
    std::thread([connection] { connection->setPaused(false); }).join();
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), Limit);
    QCOMPARE(delegate->data(), QByteArray("firstsecond"));
}

void TestHttpConnection::canBePausedByItsDelegateAtTheResponse_data()
{
    QTest::addColumn<bool>("isPausedBefore");
    QTest::newRow("before the body came") << false;
    QTest::newRow("after the body came") << true;
}

void TestHttpConnection::canBePausedByItsDelegateAtTheResponse()
{
    QFETCH(bool, isPausedBefore);
    TestServer server;
    server.route("/", TestReply::whole("body"));
    server.route("/other", TestReply::whole("other"));
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    const auto connection = makeConnection(get(server.url()), delegate);
    delegate->onResponse = [connection] { connection->setPaused(true); };
    connection->setPaused(isPausedBefore);
    connection->start();
    QVERIFY(server.waitForRequests(1));
    run(get(server.url("/other")));
    if (isPausedBefore)
        connection->setPaused(false);
    QTRY_COMPARE_WITH_TIMEOUT(delegate->events().size(), 1, Limit);
    run(get(server.url("/other")));
    QCOMPARE(delegate->events(), QStringList{QStringLiteral("response 200 4")});
    connection->setPaused(false);
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), Limit);
    QCOMPARE(delegate->data(), QByteArray("body"));
}

void TestHttpConnection::speaksOnTheMainThreadForAThreadWithoutEventLoop()
{
    TestServer server;
    server.route("/", TestReply::whole("body"));
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    std::thread([&] { makeConnection(get(server.url()), delegate)->start(); }).join();
    QTRY_VERIFY_WITH_TIMEOUT(delegate->hasEnded(), Limit);
    QCOMPARE(delegate->data(), QByteArray("body"));
    QVERIFY(delegate->thread() == std::this_thread::get_id());
}

void TestHttpConnection::speaksOnTheThreadThatStartedItWithAnEventLoop()
{
    TestServer server;
    server.route("/", TestReply::whole("body"));
    const auto delegate = std::make_shared<RecordingConnectionDelegate>();
    std::thread::id identifier;
    std::thread([&] {
        identifier = std::this_thread::get_id();
        QEventLoop loop;
        QTimer::singleShot(0, &loop, [&] { makeConnection(get(server.url()), delegate)->start(); });
        QTimer watch;
        connect(&watch, &QTimer::timeout, &loop, [&] {
            if (delegate->hasEnded())
                loop.quit();
        });
        watch.start(10);
        QTimer::singleShot(Limit, &loop, &QEventLoop::quit);
        loop.exec();
    }).join();
    QVERIFY(delegate->hasEnded());
    QCOMPARE(delegate->data(), QByteArray("body"));
    QVERIFY(delegate->thread() == identifier);
}

QUELLMOOR_TEST(TestHttpConnection, "HttpConnection")
#include "tst_HttpConnection.moc"

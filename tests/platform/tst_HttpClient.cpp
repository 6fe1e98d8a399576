#include "RecordingConnectionDelegate.h"
#include "TestMain.h"
#include "TestServer.h"
#include "platform/DispatchQueue.h"
#include "platform/HttpClient.h"

#include <QTest>
#include <QThread>

#include <future>

using namespace std::chrono_literals;

class TestHttpClient : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void readsAWholeResourceFromAThreadWithoutEventLoop();
    void readsSeveralResourcesAtOnce();
    void tellsTheStatusAlongWithTheBody();
    void givesNoDataWhenTheBodyIsCutShort();
    void givesNoDataForWhatIsNoUrlOfTheWeb_data();
    void givesNoDataForWhatIsNoUrlOfTheWeb();
    void makesNoConnectionForWhatIsNoUrlOfTheWeb_data();
    void makesNoConnectionForWhatIsNoUrlOfTheWeb();
    void completesASentRequestOnTheMainThread();
    void completesARequestWithAnInvalidUrlOnTheMainThread();
    void completesWithTheErrorWhenNobodyListens();

    void holdsNoConnectionForAPauseThatNobodyCarriesOut();

private:
    std::unique_ptr<HttpClient> m_client;
};

namespace {

HttpClient::Contents readOnWorker(HttpClient &client, const QUrl &url,
                                  qint64 largestBody = 10000000)
{
    auto contents = std::async(std::launch::async,
                               [&] { return client.dataWithContentsOfURL(url, largestBody); });
    return contents.get();
}

// How one request sent by a worker ended, and where.
struct Completed
{
    bool isDone = false;
    bool wasOnMainThread = false;
    std::optional<QByteArray> body;
    std::optional<Error> error;
};

Completed sendFromWorker(HttpClient &client, const QUrl &url)
{
    const auto completed = std::make_shared<Completed>();
    std::thread([&client, url, completed] {
        HttpRequest request;
        request.url = url;
        client.sendAsynchronousRequest(
            request, [completed](std::optional<QByteArray> body, std::optional<Error> error) {
                const bool isMain = QThread::currentThread() == qApp->thread();
                *completed = {true, isMain, std::move(body), std::move(error)};
            });
    }).join();
    if (!QTest::qWaitFor([completed] { return completed->isDone; }, 20000))
        qFatal("the request never completed");
    return *completed;
}

void addInvalidUrls()
{
    QTest::addColumn<QUrl>("url");
    QTest::newRow("null") << QUrl();
    QTest::newRow("file") << QUrl(QStringLiteral("file:///etc/passwd"));
    QTest::newRow("ftp") << QUrl(QStringLiteral("ftp://localhost/"));
    QTest::newRow("data") << QUrl(QStringLiteral("data:,text"));
    QTest::newRow("resource") << QUrl(QStringLiteral("qrc:/file"));
    QTest::newRow("no host") << QUrl(QStringLiteral("https:///path"));
    QTest::newRow("relative") << QUrl(QStringLiteral("path/only"));
    QTest::newRow("bad port") << QUrl(QStringLiteral("https://localhost:99999/"));
}

} // namespace

void TestHttpClient::initTestCase()
{
    m_client = makeHttpClient(Certificates::shared().authorityFile());
}

void TestHttpClient::readsAWholeResourceFromAThreadWithoutEventLoop()
{
    TestServer server;
    const QByteArray body(3'000'000, 'x');
    server.route("/file", TestReply::whole(body));
    const HttpClient::Contents contents = readOnWorker(*m_client, server.url("/file"));
    QVERIFY(!contents.error);
    QVERIFY(contents.data == body);
    QCOMPARE(server.requestCount("/file"), 1);
}

void TestHttpClient::readsSeveralResourcesAtOnce()
{
    TestServer server;
    server.route("/slow", TestReply::stalled("slow"));
    server.route("/quick", TestReply::whole("quick"));
    auto slow = std::async(std::launch::async,
                           [&] { return readOnWorker(*m_client, server.url("/slow")); });
    QVERIFY(server.waitForWaiting());
    QCOMPARE(readOnWorker(*m_client, server.url("/quick")).data, QByteArray("quick"));
    server.release();
    QCOMPARE(slow.get().data, QByteArray("slow"));
}

void TestHttpClient::tellsTheStatusAlongWithTheBody()
{
    TestServer server;
    server.route("/", TestReply::whole("gone", 410));
    const HttpClient::Contents contents = readOnWorker(*m_client, server.url());
    QCOMPARE(contents.data, QByteArray("gone"));
    QCOMPARE(contents.status, 410);
    QVERIFY(!contents.error);
}

void TestHttpClient::givesNoDataWhenTheBodyIsCutShort()
{
    TestServer server;
    server.route("/", TestReply::cut("0123456789", 5));
    const HttpClient::Contents contents = readOnWorker(*m_client, server.url());
    QVERIFY(!contents.data);
    QVERIFY(contents.error);
}

void TestHttpClient::givesNoDataForWhatIsNoUrlOfTheWeb_data() { addInvalidUrls(); }

void TestHttpClient::givesNoDataForWhatIsNoUrlOfTheWeb()
{
    QFETCH(QUrl, url);
    const HttpClient::Contents contents = readOnWorker(*m_client, url);
    QVERIFY(!contents.data);
    QVERIFY(contents.error);
}

void TestHttpClient::makesNoConnectionForWhatIsNoUrlOfTheWeb_data() { addInvalidUrls(); }

void TestHttpClient::makesNoConnectionForWhatIsNoUrlOfTheWeb()
{
    QFETCH(QUrl, url);
    HttpRequest request;
    request.url = url;
    QVERIFY(!m_client->makeConnection(request, nullptr));
}

void TestHttpClient::completesASentRequestOnTheMainThread()
{
    TestServer server;
    server.route("/", TestReply::whole("body", 500));
    const Completed completed = sendFromWorker(*m_client, server.url());
    QVERIFY(completed.wasOnMainThread);
    QCOMPARE(completed.body, QByteArray("body"));
    QVERIFY(!completed.error);
}

void TestHttpClient::completesARequestWithAnInvalidUrlOnTheMainThread()
{
    const Completed completed = sendFromWorker(*m_client, QUrl());
    QVERIFY(completed.wasOnMainThread);
    QVERIFY(!completed.body);
    QVERIFY(completed.error && !completed.error->localizedDescription.isEmpty());
}

void TestHttpClient::completesWithTheErrorWhenNobodyListens()
{
    QUrl url;
    {
        const TestServer server;
        url = server.url();
    }
    const Completed completed = sendFromWorker(*m_client, url);
    QVERIFY(!completed.body);
    QVERIFY(completed.error && completed.error->code != 0);
}

void TestHttpClient::holdsNoConnectionForAPauseThatNobodyCarriesOut()
{
    HttpRequest request;
    request.url = QUrl(QStringLiteral("https://localhost/"));
    auto connection =
        m_client->makeConnection(request, std::make_shared<RecordingConnectionDelegate>());
    const std::weak_ptr<HttpConnection> observed = connection;
    std::thread([connection] { connection->setPaused(true); }).join();
    connection.reset();
    QVERIFY(observed.expired());
}

QUELLMOOR_TEST(TestHttpClient, "HttpClient")
#include "tst_HttpClient.moc"

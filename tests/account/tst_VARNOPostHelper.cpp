#include "TestMain.h"
#include "TestServer.h"
#include "account/VARNOPostHelper.h"

#include <QTest>
#include <QThread>

using Form = VARNOPostHelper::Form;

class TestVARNOPostHelper : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void keepsOrEncodesEachAsciiCharacter_data();
    void keepsOrEncodesEachAsciiCharacter();
    void encodesTexts_data();
    void encodesTexts();
    void buildsNothingFromAnEmptyDictionary();
    void putsNoSeparatorBeforeTheFirstPair();
    void joinsPairsInTheOrderTheDictionaryYieldsThem();
    void encodesNamesLikeValues();
    void postsTheFormWithItsLengthInBytes_data();
    void postsTheFormWithItsLengthInBytes();
    void handsBackABodyWhateverTheStatus_data();
    void handsBackABodyWhateverTheStatus();
    void completesOnTheMainThreadWhenCalledFromAnother();
    void completesWithAnErrorForAUrlThatDoesNotParse();
    void completesWithoutDataWhenTheNetworkFails();
    void neverSendsTheFormToAnotherOrigin_data();
    void neverSendsTheFormToAnotherOrigin();
    void followsARedirectWithinTheOrigin();

private:
    std::unique_ptr<HttpClient> m_client;
};

namespace {

struct Completed
{
    int calls = 0;
    bool wasOnMainThread = false;
    std::optional<QByteArray> body;
    std::optional<Error> error;
};

Completed post(HttpClient &client, const QString &url, const Form &form)
{
    const auto completed = std::make_shared<Completed>();
    VARNOPostHelper(client).postToURL(
        url, form, [completed](std::optional<QByteArray> body, std::optional<Error> error) {
            ++completed->calls;
            completed->wasOnMainThread = QThread::currentThread() == qApp->thread();
            completed->body = std::move(body);
            completed->error = std::move(error);
        });
    if (!QTest::qWaitFor([completed] { return completed->calls > 0; }, 20000))
        qFatal("the post never completed");
    return *completed;
}

const Form secretForm{{QStringLiteral("password"), QStringLiteral("hunter2")}};

} // namespace

void TestVARNOPostHelper::initTestCase()
{
    m_client = makeHttpClient(Certificates::shared().authorityFile());
}

void TestVARNOPostHelper::keepsOrEncodesEachAsciiCharacter_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("encoded");
    const auto kept = QLatin1String("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"
                                    "!$&'()*+,-./:;=?@_~");
    for (char16_t code = 0; code < 128; ++code) {
        const QString text = QChar(code);
        const QString escape =
            QStringLiteral("%%1").arg(uint(code), 2, 16, QLatin1Char('0')).toUpper();
        QTest::addRow("%02x", uint(code)) << text << (kept.contains(text) ? text : escape);
    }
}

void TestVARNOPostHelper::keepsOrEncodesEachAsciiCharacter()
{
    QFETCH(QString, text);
    QFETCH(QString, encoded);
    QCOMPARE(VARNOPostHelper::urlEncode(text), encoded);
}

void TestVARNOPostHelper::encodesTexts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("encoded");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("a space is never a plus") << "a b"
                                             << "a%20b";
    QTest::newRow("separators stay") << "a&b=c+d"
                                     << "a&b=c+d";
    QTest::newRow("percent") << "100%41"
                             << "100%2541";
    QTest::newRow("two bytes") << QStringLiteral(u"\u00e4\u00df") << "%C3%A4%C3%9F";
    QTest::newRow("three bytes") << QStringLiteral(u"\u20ac") << "%E2%82%AC";
    QTest::newRow("four bytes") << QStringLiteral(u"\U0001f511") << "%F0%9F%94%91";
    QTest::newRow("combining mark") << QStringLiteral(u"a\u0308") << "a%CC%88";
    QTest::newRow("last below three bytes") << QStringLiteral(u"\u07ff") << "%DF%BF";
}

void TestVARNOPostHelper::encodesTexts()
{
    QFETCH(QString, text);
    QFETCH(QString, encoded);
    QCOMPARE(VARNOPostHelper::urlEncode(text), encoded);
}

void TestVARNOPostHelper::buildsNothingFromAnEmptyDictionary()
{
    QCOMPARE(VARNOPostHelper::buildPostString({}), QString());
}

void TestVARNOPostHelper::putsNoSeparatorBeforeTheFirstPair()
{
    QCOMPARE(VARNOPostHelper::buildPostString({{QStringLiteral("name"), QStringLiteral("value")}}),
             QStringLiteral("name=value"));
}

void TestVARNOPostHelper::joinsPairsInTheOrderTheDictionaryYieldsThem()
{
    const Form form{{QStringLiteral("a"), QStringLiteral("1")},
                    {QStringLiteral("b"), QString()},
                    {QStringLiteral("c"), QStringLiteral("3")}};
    QStringList pairs;
    for (auto field = form.cbegin(); field != form.cend(); ++field)
        pairs += field.key() + QLatin1Char('=') + field.value();
    QCOMPARE(VARNOPostHelper::buildPostString(form), pairs.join(QLatin1Char('&')));
}

void TestVARNOPostHelper::encodesNamesLikeValues()
{
    QCOMPARE(VARNOPostHelper::buildPostString(
                 {{QStringLiteral(u"user \u00e4"), QStringLiteral("p#q r&s")}}),
             QStringLiteral("user%20%C3%A4=p%23q%20r&s"));
}

void TestVARNOPostHelper::postsTheFormWithItsLengthInBytes_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QByteArray>("body");
    QTest::newRow("ascii") << "secret" << QByteArray("field=secret");
    QTest::newRow("a two-byte character")
        << QStringLiteral(u"caf\u00e9") << QByteArray("field=caf%C3%A9");
    QTest::newRow("separators") << "a&b=c" << QByteArray("field=a&b=c");
    QTest::newRow("empty") << QString() << QByteArray("field=");
}

void TestVARNOPostHelper::postsTheFormWithItsLengthInBytes()
{
    QFETCH(QString, value);
    QFETCH(QByteArray, body);
    TestServer server;
    server.route("/login/", TestReply::whole("{}"));
    const Completed completed =
        post(*m_client, server.url("/login/").toString(), {{QStringLiteral("field"), value}});
    QCOMPARE(completed.body, QByteArray("{}"));
    QCOMPARE(server.requests().size(), 1);
    const TestRequest request = server.requests().first();
    QCOMPARE(request.method, QByteArray("POST"));
    QCOMPARE(request.body, body);
    QCOMPARE(request.header("Content-Length"), {QByteArray::number(body.size())});
    QCOMPARE(request.header("Content-Type"), {QByteArray("application/x-www-form-urlencoded")});
    QVERIFY(server.receivedBytes().endsWith("\r\n\r\n" + body));
}

void TestVARNOPostHelper::handsBackABodyWhateverTheStatus_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {200, 400, 401, 403, 404, 410, 500, 503})
        QTest::addRow("%d", status) << status;
}

void TestVARNOPostHelper::handsBackABodyWhateverTheStatus()
{
    QFETCH(int, status);
    TestServer server;
    server.route("/", TestReply::whole("an answer", status));
    const Completed completed = post(*m_client, server.url().toString(), secretForm);
    QCOMPARE(completed.body, QByteArray("an answer"));
    QVERIFY(!completed.error);
}

void TestVARNOPostHelper::completesOnTheMainThreadWhenCalledFromAnother()
{
    TestServer server;
    server.route("/", TestReply::whole("done"));
    const auto completed = std::make_shared<Completed>();
    const std::unique_ptr<QThread> worker(QThread::create([&] {
        VARNOPostHelper(*m_client).postToURL(
            server.url().toString(), secretForm,
            [completed](std::optional<QByteArray> body, std::optional<Error>) {
                completed->wasOnMainThread = QThread::currentThread() == qApp->thread();
                completed->body = std::move(body);
            });
    }));
    worker->start();
    QVERIFY(worker->wait(20000));
    QTRY_VERIFY(completed->body.has_value());
    QVERIFY(completed->wasOnMainThread);
}

void TestVARNOPostHelper::completesWithAnErrorForAUrlThatDoesNotParse()
{
    const Completed completed =
        post(*m_client, QStringLiteral("https://not a host/%zz"), secretForm);
    QVERIFY(!completed.body);
    QVERIFY(completed.error && !completed.error->localizedDescription.isEmpty());
    QVERIFY(completed.wasOnMainThread);
}

void TestVARNOPostHelper::completesWithoutDataWhenTheNetworkFails()
{
    TestServer server;
    server.route("/", TestReply::cut("a longer answer", 3));
    const Completed completed = post(*m_client, server.url().toString(), secretForm);
    QVERIFY(!completed.body);
    QVERIFY(completed.error && !completed.error->localizedDescription.isEmpty());
    QCOMPARE(completed.calls, 1);
}

void TestVARNOPostHelper::neverSendsTheFormToAnotherOrigin_data()
{
    QTest::addColumn<int>("status");
    for (const int status : {301, 302, 303, 307, 308})
        QTest::addRow("%d", status) << status;
}

void TestVARNOPostHelper::neverSendsTheFormToAnotherOrigin()
{
    QFETCH(int, status);
    TestServer account;
    TestServer stranger;
    account.route("/", TestReply::redirect(stranger.url("/steal"), status));
    const Completed completed = post(*m_client, account.url().toString(), secretForm);
    QVERIFY(!completed.body);
    QVERIFY(completed.error);
    QCOMPARE(account.requestCount("/"), 1);
    QCOMPARE(stranger.receivedBytes(), QByteArray());
}

void TestVARNOPostHelper::followsARedirectWithinTheOrigin()
{
    TestServer server;
    server.route("/", TestReply::redirect(server.url("/moved"), 307));
    server.route("/moved", TestReply::whole("here"));
    QCOMPARE(post(*m_client, server.url().toString(), secretForm).body, QByteArray("here"));
    QCOMPARE(server.requests().last().body, QByteArray("password=hunter2"));
}

QUELLMOOR_TEST(TestVARNOPostHelper, "VARNOPostHelper")
#include "tst_VARNOPostHelper.moc"

#include "TestMain.h"
#include "platform/HttpUrl.h"

#include <QTest>

class TestHttpUrl : public QObject
{
    Q_OBJECT

private slots:
    void leavesTheUrlsOfOtherHostsAlone_data();
    void leavesTheUrlsOfOtherHostsAlone();
    void carriesAHostThatQUrlRefuses_data();
    void carriesAHostThatQUrlRefuses();
    void keepsHostsApart();
    void resolvesRelativePlacesOnTheSameHost();
    void refusesWhatIsNoHostName_data();
    void refusesWhatIsNoHostName();
};

void TestHttpUrl::leavesTheUrlsOfOtherHostsAlone_data()
{
    QTest::addColumn<QString>("text");
    for (const auto *text :
         {"https://download.x:8443/a%20b?c#d", "https://download--x.y/", "https://download-_x.y/",
          "https://_x.y/", "https://127.0.0.1/", "https://[::1]:1/", "https://x.invalid/", "/there",
          "there-.x/y", "?https://x-.y/", "ftp://x-y/"})
        QTest::newRow(text) << QString::fromLatin1(text);
}

void TestHttpUrl::leavesTheUrlsOfOtherHostsAlone()
{
    QFETCH(QString, text);
    const QUrl url = HttpUrl::fromText(text);
    QVERIFY(url.isValid());
    QCOMPARE(url, QUrl(text, QUrl::StrictMode));
    QVERIFY(!HttpUrl::refusedHost(url));
}

void TestHttpUrl::carriesAHostThatQUrlRefuses_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("host");
    const auto add = [](const char *text, const char *host) {
        QTest::newRow(text) << QString::fromLatin1(text) << QString::fromLatin1(host);
    };
    add("https://download-.localhost:8443/mac/a%20b.bz2?c#d", "download-.localhost");
    add("https://Download-X-.Example", "download-x-.example");
    add("http://-x/", "-x");
    add("//download-.x/y", "download-.x");
    add("https://download-._x_.n--a.x?y", "download-._x_.n--a.x");
    add("https://download-a..b.x#y", "download-a..b.x");
    add("https://download-.x./", "download-.x.");
}

void TestHttpUrl::carriesAHostThatQUrlRefuses()
{
    QFETCH(QString, text);
    QFETCH(QString, host);
    QVERIFY(!QUrl(text, QUrl::StrictMode).isValid());
    QUrl url = HttpUrl::fromText(text);
    QVERIFY(url.isValid());
    QCOMPARE(HttpUrl::refusedHost(url), std::optional(host));
    // All else is as it was given.
    QString expected = text;
    expected.replace(host, QStringLiteral("host"), Qt::CaseInsensitive);
    url.setHost(QStringLiteral("host"));
    QCOMPARE(url.toString(QUrl::FullyEncoded), expected);
}

void TestHttpUrl::keepsHostsApart()
{
    const auto url = [](const char *host) {
        return HttpUrl::fromText(QStringLiteral("https://%1/").arg(QLatin1String(host)));
    };
    QCOMPARE(url("a-.x"), url("A-.X"));
    QVERIFY(url("a-.x") != url("a-x"));
    QVERIFY(url("a-.hh.x") != url("a-..x"));
    QVERIFY(url("a-h.hx") != url("a-.x"));
}

void TestHttpUrl::resolvesRelativePlacesOnTheSameHost()
{
    const QUrl base = HttpUrl::fromText(QStringLiteral("https://a-.x:1/b/c"));
    const QUrl url = base.resolved(HttpUrl::fromText(QStringLiteral("../d")));
    QCOMPARE(url, HttpUrl::fromText(QStringLiteral("https://a-.x:1/d")));
}

void TestHttpUrl::refusesWhatIsNoHostName_data()
{
    QTest::addColumn<QString>("text");
    const QString tooLong = QStringLiteral("a").repeated(63) + QLatin1Char('-');
    for (const QString &host : {QStringLiteral("a-.x y"), QStringLiteral("a-.x%20"),
                                QStringLiteral("user@a-.x"), QStringLiteral("a-.x:port"),
                                QStringLiteral("a-.x\\y"), QStringLiteral("a-.\u00e4"), tooLong})
        QTest::newRow(qPrintable(host)) << QStringLiteral("https://%1/").arg(host);
    QTest::newRow("no text") << QString();
}

void TestHttpUrl::refusesWhatIsNoHostName()
{
    QFETCH(QString, text);
    QVERIFY(!HttpUrl::fromText(text).isValid());
}

QUELLMOOR_TEST(TestHttpUrl, "HttpUrl")
#include "tst_HttpUrl.moc"

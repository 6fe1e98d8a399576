#include "TestMain.h"
#include "app/Configuration.h"

#include <QDir>
#include <QTest>

using Environment = std::optional<QString>;
Q_DECLARE_METATYPE(Environment)

class TestConfiguration : public QObject
{
    Q_OBJECT

private slots:
    void putsTheEnvironmentBehindTheFirstLabel_data();
    void putsTheEnvironmentBehindTheFirstLabel();
    void buildsEachUrlToTheLetter();
    void keepsTheLogInTheStateFolder_data();
    void keepsTheLogInTheStateFolder();
};

void TestConfiguration::putsTheEnvironmentBehindTheFirstLabel_data()
{
    QTest::addColumn<QString>("host");
    QTest::addColumn<Environment>("environment");
    QTest::addColumn<QString>("url");

    const auto host = QStringLiteral("download.x:8443");
    QTest::newRow("none") << host << Environment()
                          << QStringLiteral("https://download.x:8443/mac/patcher.json");
    QTest::newRow("qa") << host << Environment(QStringLiteral("qa"))
                        << QStringLiteral("https://download-qa.x:8443/mac/patcher.json");
    QTest::newRow("empty is an environment")
        << host << Environment(QString())
        << QStringLiteral("https://download-.x:8443/mac/patcher.json");
    QTest::newRow("one label with a port")
        << QStringLiteral("files:1") << Environment(QStringLiteral("qa"))
        << QStringLiteral("https://files-qa:1/mac/patcher.json");
    QTest::newRow("one label") << QStringLiteral("files") << Environment(QStringLiteral("qa"))
                               << QStringLiteral("https://files-qa/mac/patcher.json");
    for (const auto *hostile :
         {"evil.example/", "a:1", "a@b", "a?b", "a#b", "a b", "a\\b", "\u00e4"})
        QTest::newRow(
            qPrintable(QStringLiteral("cannot be in a host name: ") + QString::fromUtf8(hostile)))
            << host << Environment(QString::fromUtf8(hostile)) << QString();
}

void TestConfiguration::putsTheEnvironmentBehindTheFirstLabel()
{
    QFETCH(QString, host);
    QFETCH(Environment, environment);
    QFETCH(QString, url);
    Configuration configuration;
    configuration.downloadHost = host;
    QCOMPARE(configuration.manifestUrl(environment), url);
    QCOMPARE(configuration.gameFilesUrl(environment),
             url.chopped(qMin(url.size(), qsizetype(qstrlen("patcher.json")))));
}

void TestConfiguration::buildsEachUrlToTheLetter()
{
    Configuration configuration;
    configuration.downloadHost = QStringLiteral("download.x");
    configuration.accountHost = QStringLiteral("account.x");
    configuration.websiteHost = QStringLiteral("www.x");
    configuration.forumHost = QStringLiteral("forum.x");
    configuration.wikiHost = QStringLiteral("wiki.x");
    const QStringList urls{configuration.patchesUrl(),
                           configuration.loginUrl(),
                           configuration.newsUrl(),
                           configuration.websiteUrl(QString()),
                           configuration.websiteUrl(QStringLiteral("/help/faq/")),
                           configuration.forumUrl(),
                           configuration.wikiUrl()};
    QCOMPARE(
        urls,
        QStringList({QStringLiteral("https://download.x/mac/patches/"),
                     QStringLiteral("https://account.x/login/"),
                     QStringLiteral("https://account.x/launcher/"), QStringLiteral("https://www.x"),
                     QStringLiteral("https://www.x/help/faq/"), QStringLiteral("https://forum.x/"),
                     QStringLiteral("https://wiki.x/wiki/Main_Page")}));
}

void TestConfiguration::keepsTheLogInTheStateFolder_data()
{
    const QString usual =
        QDir::homePath() + QStringLiteral("/.local/state/quellmoor-launcher/launcher.log");
    QTest::addColumn<QByteArray>("chosen");
    QTest::addColumn<QString>("file");
    QTest::newRow("none chosen") << QByteArray() << usual;
    QTest::newRow("chosen") << QByteArray("/a state")
                            << QStringLiteral("/a state/quellmoor-launcher/launcher.log");
    QTest::newRow("relative counts as none") << QByteArray("state") << usual;
}

void TestConfiguration::keepsTheLogInTheStateFolder()
{
    QFETCH(QByteArray, chosen);
    const QByteArray before = qgetenv("XDG_STATE_HOME");
    qputenv("XDG_STATE_HOME", chosen);
    const QString file = Configuration::logFile();
    qputenv("XDG_STATE_HOME", before);
    QTEST(file, "file");
}

QUELLMOOR_TEST(TestConfiguration, "Configuration")
#include "tst_Configuration.moc"

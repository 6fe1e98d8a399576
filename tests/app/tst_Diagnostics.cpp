#include "TestMain.h"
#include "app/Configuration.h"
#include "app/Diagnostics.h"

#include <QCoreApplication>
#include <QSysInfo>
#include <QTest>

class TestDiagnostics : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void tellsEachFact_data();
    void tellsEachFact();
    void endsWithTheLog();
    void saysWhenTheLogIsEmpty();

private:
    Configuration m_configuration;
};

void TestDiagnostics::init()
{
    QCoreApplication::setApplicationVersion(QStringLiteral("4.5.6"));
    qputenv("XDG_CURRENT_DESKTOP", "Fell");
    qunsetenv("XDG_SESSION_TYPE");
    m_configuration.downloadHost = QStringLiteral("download.test");
    m_configuration.accountHost = QStringLiteral("account.test");
    m_configuration.websiteHost = QStringLiteral("www.test");
    m_configuration.forumHost = QStringLiteral("forum.test");
    m_configuration.wikiHost = QStringLiteral("wiki.test");
    m_configuration.dataFolder = QStringLiteral("/home/pat/data");
}

void TestDiagnostics::tellsEachFact_data()
{
    QTest::addColumn<QString>("value");
    QTest::newRow("Launcher") << QStringLiteral("4.5.6");
    QTest::newRow("Qt") << QString::fromLatin1(qVersion());
    QTest::newRow("System") << QStringLiteral("%1, %2 %3, %4")
                                   .arg(QSysInfo::prettyProductName(), QSysInfo::kernelType(),
                                        QSysInfo::kernelVersion(),
                                        QSysInfo::currentCpuArchitecture());
    QTest::newRow("Desktop") << QStringLiteral("Fell, unknown");
    QTest::newRow("Language") << QLocale().name();
    QTest::newRow("Hosts") << QStringLiteral(
        "download.test, account.test, www.test, forum.test, wiki.test");
    QTest::newRow("Data folder") << QStringLiteral("/home/pat/data");
    QTest::newRow("Game folder") << QStringLiteral("/home/pat/data/Game");
    QTest::newRow("Settings") << m_configuration.settingsFile();
    QTest::newRow("Log file") << Configuration::logFile();
}

void TestDiagnostics::tellsEachFact()
{
    QFETCH(QString, value);
    const QString name = QString::fromLatin1(QTest::currentDataTag()) + QLatin1Char(':');
    QStringList values;
    for (const QString &line : Diagnostics::text(m_configuration, {}).split(QLatin1Char('\n')))
        if (line.startsWith(name))
            values += line.mid(name.size()).trimmed();
    QCOMPARE(values, QStringList{value});
}

void TestDiagnostics::endsWithTheLog()
{
    const QString text =
        Diagnostics::text(m_configuration, {QStringLiteral("one"), QStringLiteral("two %1")});
    QVERIFY2(text.endsWith(QStringLiteral("\n\nLog:\none\ntwo %1\n")), qPrintable(text));
}

void TestDiagnostics::saysWhenTheLogIsEmpty()
{
    QVERIFY(Diagnostics::text(m_configuration, {}).endsWith(QStringLiteral("\n\nLog:\n(empty)\n")));
}

QUELLMOOR_TEST(TestDiagnostics, "Diagnostics")
#include "tst_Diagnostics.moc"

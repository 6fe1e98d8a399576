#include "LogCapture.h"
#include "TestMain.h"
#include "app/RecentLog.h"
#include "platform/SystemLog.h"

#include <QRegularExpression>
#include <QTest>

#include <thread>

namespace {

// Without the time in front of it.
QString textOf(const QString &line) { return line.section(QLatin1Char(' '), 2); }

QStringList textsOf(const RecentLog &log)
{
    QStringList texts;
    for (const QString &line : log.lines())
        texts += textOf(line);
    return texts;
}

} // namespace

class TestRecentLog : public QObject
{
    Q_OBJECT

private slots:
    void keepsEachLineWithItsTime();
    void keepsTheLatestLinesOnly();
    void keepsSecretsOutOfItsLines();
    void leavesTheLogToWhoeverWatchedBefore();
    void takesLinesFromAllThreads();
};

void TestRecentLog::keepsEachLineWithItsTime()
{
    const RecentLog log;
    SystemLog::write(QStringLiteral("first"));
    SystemLog::write(QStringLiteral("second\nline"));
    QCOMPARE(textsOf(log), (QStringList{QStringLiteral("first"), QStringLiteral("second\\nline")}));
    static const QRegularExpression time(
        QStringLiteral("\\A\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} first\\z"));
    QVERIFY2(time.match(log.lines().first()).hasMatch(), qPrintable(log.lines().first()));
}

void TestRecentLog::keepsTheLatestLinesOnly()
{
    const RecentLog log;
    for (int i = 1; i <= RecentLog::LineLimit + 7; ++i)
        SystemLog::write(QString::number(i));
    const QStringList texts = textsOf(log);
    QCOMPARE(texts.size(), RecentLog::LineLimit);
    QCOMPARE(texts.first(), QStringLiteral("8"));
    QCOMPARE(texts.last(), QString::number(RecentLog::LineLimit + 7));
}

void TestRecentLog::keepsSecretsOutOfItsLines()
{
    const RecentLog log;
    SystemLog::write(QStringLiteral("password=s3cret"));
    QCOMPARE(textsOf(log), QStringList{QStringLiteral("password=(removed)")});
}

void TestRecentLog::leavesTheLogToWhoeverWatchedBefore()
{
    const LogCapture watcher;
    {
        const RecentLog log;
        SystemLog::write(QStringLiteral("both"));
        QCOMPARE(textsOf(log), QStringList{QStringLiteral("both")});
    }
    SystemLog::write(QStringLiteral("alone"));
    QCOMPARE(watcher.lines(), (QStringList{QStringLiteral("both"), QStringLiteral("alone")}));
}

void TestRecentLog::takesLinesFromAllThreads()
{
    const RecentLog log;
    const auto writeHalf = [] {
        for (int i = 0; i < RecentLog::LineLimit / 2; ++i)
            SystemLog::write(QStringLiteral("line"));
    };
    std::thread other(writeHalf);
    writeHalf();
    other.join();
    QCOMPARE(log.lines().size(), RecentLog::LineLimit);
}

QUELLMOOR_TEST(TestRecentLog, "RecentLog")
#include "tst_RecentLog.moc"

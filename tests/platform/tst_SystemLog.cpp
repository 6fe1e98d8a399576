#include "LogCapture.h"
#include "TestMain.h"
#include "platform/SystemLog.h"

#include <QRegularExpression>
#include <QTemporaryFile>
#include <QTest>

#include <unistd.h>

#include <thread>
#include <vector>

class TestSystemLog : public QObject
{
    Q_OBJECT

private slots:
    void keepsEveryTextOnOneLine_data();
    void keepsEveryTextOnOneLine();
    void writesToStandardErrorWithTimeAndProcess();
    void neverMixesTheLinesOfThreads();
    void givesBackTheObserverItReplaces();
};

namespace {

// What the process writes to standard error while `write` runs.
QByteArray standardErrorOf(const std::function<void()> &write)
{
    QTemporaryFile file;
    if (!file.open())
        qFatal("no temporary file");
    const int before = dup(STDERR_FILENO);
    dup2(file.handle(), STDERR_FILENO);
    write();
    dup2(before, STDERR_FILENO);
    close(before);
    file.seek(0);
    return file.readAll();
}

} // namespace

void TestSystemLog::keepsEveryTextOnOneLine_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("line");
    QTest::newRow("plain") << "Can't write 100% of it %n %s"
                           << "Can't write 100% of it %n %s";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("line feed") << "a\nb"
                               << "a\\nb";
    QTest::newRow("carriage return") << "a\r\nb"
                                     << "a\\r\\nb";
    QTest::newRow("tab stays") << "a\tb"
                               << "a\tb";
    QTest::newRow("escape sequence") << "\x1b[31mred"
                                     << "\\x1b[31mred";
    QTest::newRow("NUL") << QString(QChar(0)) << "\\x00";
    QTest::newRow("delete") << QString(QChar(0x7f)) << "\\x7f";
    QTest::newRow("next line") << QString(QChar(0x85)) << "\\x85";
    QTest::newRow("line separator") << QString(QChar(0x2028)) << "\\x2028";
    QTest::newRow("paragraph separator") << QString(QChar(0x2029)) << "\\x2029";
    QTest::newRow("letters of the world")
        << QStringLiteral(u"\u00e4\u9f8d\U0001f409") << QStringLiteral(u"\u00e4\u9f8d\U0001f409");
}

void TestSystemLog::keepsEveryTextOnOneLine()
{
    QFETCH(QString, text);
    QFETCH(QString, line);
    const LogCapture log;
    const QByteArray written = standardErrorOf([&text] { SystemLog::write(text); });
    QCOMPARE(log.lines(), QStringList{line});
    QCOMPARE(written.count('\n'), 1);
    QVERIFY(written.endsWith("] " + line.toUtf8() + '\n'));
}

void TestSystemLog::writesToStandardErrorWithTimeAndProcess()
{
    const QByteArray written =
        standardErrorOf([] { SystemLog::write(QStringLiteral("the text")); });
    const QRegularExpression pattern(
        QStringLiteral("\\A\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} "
                       "quellmoor-launcher\\[%1\\] the text\\n\\z")
            .arg(getpid()));
    QVERIFY2(pattern.match(QString::fromUtf8(written)).hasMatch(), written.constData());
}

void TestSystemLog::neverMixesTheLinesOfThreads()
{
    constexpr int Threads = 4;
    constexpr int Lines = 100;
    const QByteArray written = standardErrorOf([] {
        std::vector<std::thread> writers;
        for (int number = 0; number < Threads; ++number) {
            writers.emplace_back([number] {
                const QString text(2000, QLatin1Char(char('a' + number)));
                for (int i = 0; i < Lines; ++i)
                    SystemLog::write(text);
            });
        }
        for (std::thread &writer : writers)
            writer.join();
    });
    const QRegularExpression whole(QStringLiteral("\\] ([a-d])\\1{1999}$"));
    const QStringList lines = QString::fromLatin1(written).split(QLatin1Char('\n'));
    QCOMPARE(lines.filter(whole).size(), Threads * Lines);
    QCOMPARE(lines.size(), Threads * Lines + 1);
}

void TestSystemLog::givesBackTheObserverItReplaces()
{
    QStringList first;
    QStringList second;
    const auto none = SystemLog::setObserver([&first](const QString &line) { first += line; });
    const auto old = SystemLog::setObserver([&second](const QString &line) { second += line; });
    SystemLog::write(QStringLiteral("one"));
    SystemLog::setObserver(old);
    SystemLog::write(QStringLiteral("two"));
    SystemLog::setObserver({});
    SystemLog::write(QStringLiteral("three"));
    QVERIFY(!none);
    QCOMPARE(second, QStringList{QStringLiteral("one")});
    QCOMPARE(first, QStringList{QStringLiteral("two")});
}

QUELLMOOR_TEST(TestSystemLog, "SystemLog")
#include "tst_SystemLog.moc"

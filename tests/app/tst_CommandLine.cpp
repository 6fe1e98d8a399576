#include "TestMain.h"
#include "app/CommandLine.h"

#include <QTest>

using Action = CommandLine::Action;
using Environment = std::optional<QString>;
Q_DECLARE_METATYPE(Action)
Q_DECLARE_METATYPE(Environment)

class TestCommandLine : public QObject
{
    Q_OBJECT

private slots:
    void understandsItsOptions_data();
    void understandsItsOptions();
    void namesEveryOptionInItsHelp();
    void tellsTheVersionAsOneLine();
};

void TestCommandLine::understandsItsOptions_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<Action>("action");
    QTest::addColumn<Environment>("environment");

    const auto row = [](const char *words, Action action, const Environment &environment = {}) {
        QTest::newRow(words) << QString::fromUtf8(words) << action << environment;
    };
    row("", Action::Window);
    row("--touch-bar", Action::Window);
    row("-platform offscreen", Action::Window);
    row("-stylesheet dark.qss", Action::Window);
    row("--verify", Action::Verify);
    row("--update", Action::Update);
    row("--update --environment qa", Action::Update, QStringLiteral("qa"));
    row("--verify --environment=", Action::Verify, QString());
    row("--help", Action::Help);
    row("-h --update", Action::Help);
    row("--version", Action::Version);
    row("--update --verify", Action::Mistake);
    row("--environment qa", Action::Mistake);
    row("--update --nonsense", Action::Mistake);
    row("--update --environment", Action::Mistake);
    row("--update environment qa", Action::Mistake);
}

void TestCommandLine::understandsItsOptions()
{
    QFETCH(QString, words);
    QFETCH(Action, action);
    QFETCH(Environment, environment);
    const CommandLine line = CommandLine::parse(QStringList(QStringLiteral("quellmoor-launcher")) +
                                                words.split(u' ', Qt::SkipEmptyParts));
    QCOMPARE(line.action, action);
    QCOMPARE(line.environment, environment);
    QCOMPARE(line.showsTouchBar, words == QStringLiteral("--touch-bar"));
}

void TestCommandLine::namesEveryOptionInItsHelp()
{
    const QString text =
        CommandLine::parse({QStringLiteral("quellmoor-launcher"), QStringLiteral("--help")}).text;
    for (const auto *option :
         {"--verify", "--update", "--environment <name>", "--touch-bar", "--help", "--version"})
        QVERIFY2(text.contains(QLatin1String(option)), option);
}

void TestCommandLine::tellsTheVersionAsOneLine()
{
    const QString text =
        CommandLine::parse({QStringLiteral("quellmoor-launcher"), QStringLiteral("--version")})
            .text;
    static const QRegularExpression line(
        QStringLiteral("\\Aquellmoor-launcher [0-9]+(\\.[0-9]+)*\n\\z"));
    QVERIFY(line.match(text).hasMatch());
}

QUELLMOOR_TEST(TestCommandLine, "CommandLine")
#include "tst_CommandLine.moc"

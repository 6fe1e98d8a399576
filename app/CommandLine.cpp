#include "app/CommandLine.h"

#include <QCommandLineParser>

namespace {

const QCommandLineOption verifyOption(QStringLiteral("verify"),
                                      QStringLiteral("Check the game folder without a window. "
                                                     "Exit code 0: every file is valid; 1: some "
                                                     "are not; 2: no manifest."));
const QCommandLineOption updateOption(QStringLiteral("update"),
                                      QStringLiteral("Make the game folder identical to the "
                                                     "manifest without a window. Exit codes as "
                                                     "above, for the folder afterwards; "
                                                     "3: another launcher is at work."));
const QCommandLineOption environmentOption(QStringLiteral("environment"),
                                           QStringLiteral("Use the manifest of that environment "
                                                          "(with --verify or --update)."),
                                           QStringLiteral("name"));
const QCommandLineOption touchBarOption(QStringLiteral("touch-bar"),
                                        QStringLiteral("Show the touch bar under the window."));
const QCommandLineOption helpOption({QStringLiteral("h"), QStringLiteral("help")},
                                    QStringLiteral("Show this text."));
const QCommandLineOption versionOption({QStringLiteral("v"), QStringLiteral("version")},
                                       QStringLiteral("Show the launcher's version."));

QString helpText()
{
    QString text = QStringLiteral("Usage: quellmoor-launcher [--touch-bar]\n"
                                  "       quellmoor-launcher --verify | --update "
                                  "[--environment NAME]\n\n"
                                  "Keeps the game Quellmoor up to date and starts it.\n\n");
    const QList<QCommandLineOption> options{verifyOption,   updateOption, environmentOption,
                                            touchBarOption, helpOption,   versionOption};
    for (const QCommandLineOption &option : options) {
        QStringList names;
        for (const QString &name : option.names())
            names += (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
        QString head = names.join(QStringLiteral(", "));
        if (!option.valueName().isEmpty())
            head += QStringLiteral(" <%1>").arg(option.valueName());
        text += QStringLiteral("  %1 %2\n").arg(head, -22).arg(option.description());
    }
    return text;
}

CommandLine mistake(const QString &text)
{
    CommandLine result;
    result.action = CommandLine::Action::Mistake;
    result.text = text + QStringLiteral("\nTry --help.\n");
    return result;
}

CommandLine::Action actionOf(const QCommandLineParser &parser)
{
    if (parser.isSet(helpOption))
        return CommandLine::Action::Help;
    if (parser.isSet(versionOption))
        return CommandLine::Action::Version;
    if (parser.isSet(verifyOption))
        return CommandLine::Action::Verify;
    if (parser.isSet(updateOption))
        return CommandLine::Action::Update;
    return CommandLine::Action::Window;
}

// Empty when every word was understood.
QString complaintAbout(const QCommandLineParser &parser, bool isUnderstood)
{
    if (!isUnderstood)
        return parser.errorText();
    const QStringList strayWords = parser.positionalArguments();
    return strayWords.isEmpty() ? QString()
                                : QStringLiteral("Unknown word '%1'.").arg(strayWords.first());
}

} // namespace

CommandLine CommandLine::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    // An option of the toolkit is one word, not a row of letters of which some are ours.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.addOptions(
        {verifyOption, updateOption, environmentOption, touchBarOption, helpOption, versionOption});
    const bool isUnderstood = parser.parse(arguments);

    CommandLine result;
    result.action = actionOf(parser);
    const bool isWithoutWindow = result.action == Action::Verify || result.action == Action::Update;
    if (result.action == Action::Help)
        result.text = helpText();
    else if (result.action == Action::Version)
        result.text =
            QStringLiteral("quellmoor-launcher %1\n").arg(QStringLiteral(QUELLMOOR_VERSION));
    else if (parser.isSet(verifyOption) && parser.isSet(updateOption))
        return mistake(QStringLiteral("--verify and --update exclude each other."));
    else if (parser.isSet(environmentOption) && !isWithoutWindow)
        return mistake(QStringLiteral("--environment goes with --verify or --update."));
    else
        result.text = complaintAbout(parser, isUnderstood);
    if (isWithoutWindow && !result.text.isEmpty())
        return mistake(result.text);

    if (parser.isSet(environmentOption))
        result.environment = parser.value(environmentOption);
    result.showsTouchBar = parser.isSet(touchBarOption);
    return result;
}

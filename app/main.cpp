#include "app/Application.h"
#include "app/CommandLine.h"

#include <QStringList>

#include <cstdio>

namespace {

constexpr int UsageMistake = 64;

QStringList textsOf(int argc, char **argv)
{
    QStringList texts;
    for (int i = 0; i < argc; ++i)
        texts += QString::fromLocal8Bit(argv[i]);
    return texts;
}

} // namespace

int main(int argc, char **argv)
{
    const CommandLine commandLine = CommandLine::parse(textsOf(argc, argv));
    switch (commandLine.action) {
    case CommandLine::Action::Help:
    case CommandLine::Action::Version:
        std::fputs(qUtf8Printable(commandLine.text), stdout);
        return 0;
    case CommandLine::Action::Mistake:
        std::fputs(qUtf8Printable(commandLine.text), stderr);
        return UsageMistake;
    case CommandLine::Action::Verify:
    case CommandLine::Action::Update:
        return Application::runWithoutWindow(commandLine, argc, argv);
    case CommandLine::Action::Window:
        return Application::runWithWindow(commandLine, argc, argv);
    }
    return UsageMistake;
}

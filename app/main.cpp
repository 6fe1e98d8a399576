#include "app/Application.h"

#include <cstdio>

int main(int argc, char **argv)
{
    Application::outliveLimitsOfSize();
    const CommandLine commandLine = Application::commandLineOf(argc, argv);
    switch (commandLine.action) {
    case CommandLine::Action::Help:
    case CommandLine::Action::Version:
        std::fputs(qUtf8Printable(commandLine.text), stdout);
        return 0;
    case CommandLine::Action::Verify:
    case CommandLine::Action::Update:
        return Application::runWithoutWindow(commandLine, argc, argv);
    case CommandLine::Action::Window:
        return Application::becomeWindow(argv);
    case CommandLine::Action::Mistake:
        break;
    }
    std::fputs(qUtf8Printable(commandLine.text), stderr);
    return Application::UsageMistake;
}

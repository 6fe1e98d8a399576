#include "app/Application.h"

#include "platform/DispatchQueue.h"

#include <QCoreApplication>

#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace Application {

namespace {

constexpr int MillisecondsForUnfinishedWork = 2000;

} // namespace

CommandLine commandLineOf(int argc, char **argv)
{
    QStringList words;
    for (int i = 0; i < argc; ++i)
        words += QString::fromLocal8Bit(argv[i]);
    return CommandLine::parse(words);
}

void outliveLimitsOfSize() { std::signal(SIGXFSZ, SIG_IGN); }

void name()
{
    QCoreApplication::setApplicationName(QStringLiteral("quellmoor-launcher"));
    QCoreApplication::setApplicationVersion(QStringLiteral(QUELLMOOR_VERSION));
}

// A thread that still waits would find its world gone, so the process then ends without tearing it
// down.
int end(int exitCode)
{
    if (DispatchQueue::drain(MillisecondsForUnfinishedWork)) {
        // Qt would let the blocks that nobody runs any more go while it holds its list of events,
        // for ever if what they hold has an event to post.
        QCoreApplication::removePostedEvents(nullptr);
        return exitCode;
    }
    std::fflush(nullptr);
    std::_Exit(exitCode);
}

} // namespace Application

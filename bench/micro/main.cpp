#include "platform/Memory.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

int main(int argc, char *argv[])
{
    Memory::giveLargeBuffersBackAtOnce(); // as the launcher does
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

// A check of an unchanged installation beside what the system itself needs for its dates.
#include "InstalledGame.h"
#include "Workload.h"
#include "platform/UserDefaults.h"

#include <benchmark/benchmark.h>

#include <sys/stat.h>

namespace {

void fileCounts(benchmark::internal::Benchmark *benchmark)
{
    benchmark->Unit(benchmark::kMillisecond);
    if (Workload::isQuick()) {
        benchmark->Arg(100);
        return;
    }
    for (const int64_t count : {100, 1'000, 10'000, 50'000, 100'000})
        benchmark->Arg(count);
}

void setFileCount(benchmark::State &state)
{
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void check_statLoop(benchmark::State &state)
{
    const InstalledGame &game = InstalledGame::withFiles(state.range(0));
    for (auto _ : state) {
        for (const std::string &path : game.paths()) {
            struct stat attributes
            {
            };
            benchmark::DoNotOptimize(stat(path.c_str(), &attributes));
        }
    }
    setFileCount(state);
}
BENCHMARK(check_statLoop)->Apply(fileCounts);

void check_unchanged(benchmark::State &state)
{
    const InstalledGame &game = InstalledGame::withFiles(state.range(0));
    UserDefaults settings(game.settingsFile());
    for (auto _ : state)
        game.check(settings);
    setFileCount(state);
}
BENCHMARK(check_unchanged)->Apply(fileCounts);

void check_unchangedWithLoading(benchmark::State &state)
{
    const InstalledGame &game = InstalledGame::withFiles(state.range(0));
    for (auto _ : state) {
        UserDefaults settings(game.settingsFile());
        game.check(settings);
    }
    setFileCount(state);
}
BENCHMARK(check_unchangedWithLoading)->Apply(fileCounts);

} // namespace

#include "model/PatchSolver.h"
#include "model/VARNOPatchFile.h"

#include <benchmark/benchmark.h>

namespace {

// A chain of that many patches, listed in the order of their making.
void solver_chain(benchmark::State &state)
{
    const auto hashOf = [](qint64 version) {
        return QStringLiteral("%1").arg(version, 7, 16, QLatin1Char('0'));
    };
    PatchSolver::PatchFiles patches;
    for (qint64 version = 0; version < state.range(0); ++version) {
        const QString from = hashOf(version);
        const QString to = hashOf(version + 1);
        patches += std::make_shared<VARNOPatchFile>(
            QStringLiteral("file_%1_%2.patch").arg(from, to), QStringLiteral("/game/file"), from,
            to, QStringLiteral("https://download.localhost/mac/patches/"));
    }
    for (auto _ : state) {
        const auto chain = PatchSolver().solve(patches, hashOf(0), hashOf(state.range(0)));
        if (chain.size() != state.range(0))
            qFatal("the chain was not found");
    }
}
BENCHMARK(solver_chain)->RangeMultiplier(4)->Range(1, 256)->Unit(benchmark::kMicrosecond);

} // namespace

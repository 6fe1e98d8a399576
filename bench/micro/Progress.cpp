// What the engine does for each piece of a body, beside keeping the same pieces.
#include "FakeDownloadable.h"
#include "FakeHttpClient.h"
#include "Workload.h"
#include "patcher/VARNOPatcher.h"
#include "platform/DispatchQueue.h"

#include <benchmark/benchmark.h>

namespace {

constexpr qint64 PieceSize = 16 * 1024;
const qint64 PieceCount = Workload::sized(12'000, 100);

class SilentDelegate final : public VARNOPatcherDelegate
{
public:
    void patcherUpdateWithMegaByteCount(double megaByteCount, double, double, qint64,
                                        const QString &, qint64) override
    {
        benchmark::DoNotOptimize(megaByteCount);
    }
    void patcherWriteUpdateWithCurrentFile(qint64, qint64, const QString &) override {}
    void patcherDidFinish() override {}
};

void progress_keepOnly(benchmark::State &state)
{
    const QByteArray piece(PieceSize, 'x');
    for (auto _ : state) {
        QByteArray body;
        body.reserve(64 * 1024 * 1024);
        for (qint64 i = 0; i < PieceCount; ++i)
            body.append(piece);
        benchmark::DoNotOptimize(body.constData());
    }
    state.SetItemsProcessed(state.iterations() * PieceCount);
}
BENCHMARK(progress_keepOnly)->Unit(benchmark::kMillisecond);

void progress_keepAndReport(benchmark::State &state)
{
    const QByteArray piece(PieceSize, 'x');
    FakeHttpClient client;
    const auto engine = std::make_shared<VARNOPatcher>(client);
    engine->setDelegate(std::make_shared<SilentDelegate>());
    for (auto _ : state) {
        state.PauseTiming();
        engine->enqueueWithFile(FakeDownloadable::named(QStringLiteral("data/archive.bin")));
        engine->start();
        state.ResumeTiming();
        client.last()->respond(PieceSize * PieceCount);
        for (qint64 i = 0; i < PieceCount; ++i)
            client.last()->receive(piece);
        state.PauseTiming();
        client.last()->fail(QStringLiteral("enough"));
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * PieceCount);
}
BENCHMARK(progress_keepAndReport)->Unit(benchmark::kMillisecond);

} // namespace

#include "InstalledGame.h"
#include "Workload.h"

#include <QJsonDocument>

#include <benchmark/benchmark.h>

namespace {

void json_parseManifest(benchmark::State &state)
{
    const auto &game = InstalledGame::withFiles(Workload::sized(50'000, 100));
    const QJsonObject manifest{{QStringLiteral("files"), game.files()}};
    const QByteArray text = QJsonDocument(manifest).toJson();
    for (auto _ : state) {
        const auto document = QJsonDocument::fromJson(text);
        if (document.object() != manifest)
            qFatal("the manifest was not parsed");
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}
BENCHMARK(json_parseManifest)->Unit(benchmark::kMillisecond);

} // namespace

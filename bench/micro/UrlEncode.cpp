#include "account/VARNOPostHelper.h"

#include <benchmark/benchmark.h>

namespace {

void urlEncode(benchmark::State &state, const char *text)
{
    const QString string = QString::fromUtf8(text);
    for (auto _ : state)
        benchmark::DoNotOptimize(VARNOPostHelper::urlEncode(string));
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(urlEncode, plain,
                  "https://download.localhost/mac/data/region_12/archive_345.bin.bz2");
BENCHMARK_CAPTURE(urlEncode, encoded,
                  "https://download.localhost/mac/Ein Gr\u00fcn (1)/50% \u00e9\u00e8.bin.bz2");

} // namespace

#include "patcher/Bzip2.h"

#include "CompressBzip2.h"
#include "Workload.h"
#include "patcher/Bzip2Blocks.h"

#include <benchmark/benchmark.h>

namespace {

struct Stream
{
    QByteArray contents;
    QByteArray compressed;
};

const Stream &largeStream()
{
    static const Stream stream = [] {
        const QByteArray contents = Workload::realBytes(Workload::sized(200'000'000, 4'000'000));
        return Stream{contents, compressBzip2(contents)};
    }();
    return stream;
}

void decompress(benchmark::State &state)
{
    const Stream &stream = largeStream();
    for (auto _ : state) {
        const auto contents = decompressBzip2(stream.compressed, int(state.range(0)));
        if (contents != stream.contents)
            qFatal("the stream was not decompressed");
    }
    state.SetBytesProcessed(state.iterations() * stream.contents.size());
}
BENCHMARK(decompress)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();

// libbz2 as its manual shows it, into a buffer of the right size.
void decompress_libbz2(benchmark::State &state)
{
    const Stream &stream = largeStream();
    QByteArray input = stream.compressed;
    for (auto _ : state) {
        QByteArray output(stream.contents.size(), Qt::Uninitialized);
        auto size = unsigned(output.size());
        const int result = BZ2_bzBuffToBuffDecompress(output.data(), &size, input.data(),
                                                      unsigned(input.size()), 0, 0);
        if (result != BZ_OK || output != stream.contents)
            qFatal("libbz2: %d", result);
    }
    state.SetBytesProcessed(state.iterations() * stream.contents.size());
}
BENCHMARK(decompress_libbz2)->Unit(benchmark::kMillisecond)->UseRealTime();

void scan(benchmark::State &state)
{
    const Stream &stream = largeStream();
    for (auto _ : state) {
        const auto blocks = findBzip2Blocks(stream.compressed);
        if (!blocks)
            qFatal("no blocks were found");
        benchmark::DoNotOptimize(blocks);
    }
    state.SetBytesProcessed(state.iterations() * stream.compressed.size());
}
BENCHMARK(scan)->Unit(benchmark::kMillisecond);

} // namespace

#include "patcher/Bzip2.h"

#include "CompressBzip2.h"
#include "Workload.h"
#include "patcher/Bzip2Blocks.h"

#include <benchmark/benchmark.h>

#include <QFile>

namespace {

constexpr qsizetype LargestArchive = 256 * 1024 * 1024; // of its contents

struct Stream
{
    QByteArray contents;
    QByteArray compressed;
};

// libbz2 as its manual shows it, into a buffer of the right size.
void decompressPlainly(const QByteArray &compressed, QByteArray &output)
{
    QByteArray input = compressed;
    auto size = unsigned(output.size());
    const int result = BZ2_bzBuffToBuffDecompress(output.data(), &size, input.data(),
                                                  unsigned(input.size()), 0, 0);
    if (result != BZ_OK)
        qFatal("libbz2: %d", result);
    output.truncate(size);
}

// That of the archive in QUELLMOOR_BENCH_ARCHIVE, otherwise one of this machine's libraries.
const Stream &largeStream()
{
    static const Stream stream = [] {
        QFile archive(qEnvironmentVariable("QUELLMOOR_BENCH_ARCHIVE"));
        if (archive.open(QIODevice::ReadOnly)) {
            Stream found{QByteArray(LargestArchive, Qt::Uninitialized), archive.readAll()};
            decompressPlainly(found.compressed, found.contents);
            return found;
        }
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
BENCHMARK(decompress)
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->MeasureProcessCPUTime()
    ->UseRealTime();

void decompress_libbz2(benchmark::State &state)
{
    const Stream &stream = largeStream();
    for (auto _ : state) {
        QByteArray output(stream.contents.size(), Qt::Uninitialized);
        decompressPlainly(stream.compressed, output);
        if (output != stream.contents)
            qFatal("the stream was not decompressed");
    }
    state.SetBytesProcessed(state.iterations() * stream.contents.size());
}
BENCHMARK(decompress_libbz2)->Unit(benchmark::kMillisecond)->MeasureProcessCPUTime()->UseRealTime();

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

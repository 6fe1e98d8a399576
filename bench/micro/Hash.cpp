#include "Workload.h"
#include "model/SHA256.h"

#include <benchmark/benchmark.h>

#include <QFile>

#include <openssl/sha.h>

namespace {

const QByteArray &largeFile()
{
    static const QByteArray bytes = Workload::realBytes(Workload::sized(200'000'000, 1'000'000));
    return bytes;
}

void hash_file(benchmark::State &state)
{
    const QString path = Workload::scratchFolder() + QStringLiteral("/file");
    QFile file(path);
    const qint64 size = state.range(0);
    if (!file.open(QIODevice::WriteOnly) || file.write(largeFile().constData(), size) != size ||
        !file.flush())
        qFatal("cannot write %s", qUtf8Printable(path));
    for (auto _ : state)
        benchmark::DoNotOptimize(SHA256OfFile(path));
    state.SetBytesProcessed(state.iterations() * size);
}
BENCHMARK(hash_file)->Arg(20'000)->Arg(1'000'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(hash_file)->Arg(Workload::sized(200'000'000, 1'000'000))->Unit(benchmark::kMicrosecond);

void hash_libcryptoInMemory(benchmark::State &state)
{
    unsigned char digest[SHA256_DIGEST_LENGTH];
    const auto *bytes = reinterpret_cast<const unsigned char *>(largeFile().constData());
    for (auto _ : state)
        benchmark::DoNotOptimize(::SHA256(bytes, size_t(largeFile().size()), digest));
    state.SetBytesProcessed(state.iterations() * largeFile().size());
}
BENCHMARK(hash_libcryptoInMemory)->Unit(benchmark::kMicrosecond);

} // namespace

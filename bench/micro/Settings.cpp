#include "Workload.h"
#include "platform/UserDefaults.h"

#include <QFile>

#include <benchmark/benchmark.h>

namespace {

const qint64 FileCount = Workload::sized(50'000, 100);

QString keyOf(qint64 number) { return QStringLiteral("lastValid/mac/data/%1.bin.bz2").arg(number); }

Date dateOf(qint64 number)
{
    return Date(std::chrono::nanoseconds(1'700'000'000'123'456'789 + number));
}

// The two entries of each file of a game.
void fill(UserDefaults &settings)
{
    for (qint64 number = 0; number < FileCount; ++number) {
        settings.set(keyOf(number), dateOf(number));
        settings.set(QStringLiteral("lastValidHash/mac/data/%1.bin.bz2").arg(number),
                     QStringLiteral("01234ab"));
    }
}

QString settingsFile() { return Workload::scratchFolder() + QStringLiteral("/settings.sqlite"); }

void settings_load(benchmark::State &state)
{
    {
        UserDefaults settings(settingsFile());
        fill(settings);
    }
    for (auto _ : state) {
        const UserDefaults settings(settingsFile());
        if (!settings.contains(keyOf(FileCount - 1)))
            qFatal("the settings were not loaded");
    }
    state.SetItemsProcessed(state.iterations() * FileCount * 2);
}
BENCHMARK(settings_load)->Unit(benchmark::kMillisecond);

void settings_saveAll(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        QFile::remove(settingsFile());
        UserDefaults settings(settingsFile());
        fill(settings);
        state.ResumeTiming();
        if (settings.synchronize())
            qFatal("the settings were not saved");
    }
    state.SetItemsProcessed(state.iterations() * FileCount * 2);
}
BENCHMARK(settings_saveAll)->Unit(benchmark::kMillisecond);

void settings_saveOne(benchmark::State &state)
{
    UserDefaults settings(settingsFile());
    fill(settings);
    settings.synchronize();
    qint64 number = 0;
    for (auto _ : state) {
        settings.set(keyOf(0), dateOf(++number));
        if (settings.synchronize())
            qFatal("the settings were not saved");
    }
}
BENCHMARK(settings_saveOne)->Unit(benchmark::kMillisecond);

} // namespace

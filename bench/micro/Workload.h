#pragma once

#include <QByteArray>
#include <QString>

// What the benchmarks work on.
namespace Workload {

// Whether this run only proves that the benchmarks work: everything is then small.
[[nodiscard]] bool isQuick();

// `full` or, in a quick run, `quick`.
[[nodiscard]] inline qint64 sized(qint64 full, qint64 quick) { return isQuick() ? quick : full; }

// That many bytes of this machine's programs and libraries, the same in each run. Ends the process
// when there are not enough.
[[nodiscard]] QByteArray realBytes(qint64 count);

// A folder of this process's own, removed at its end.
[[nodiscard]] QString scratchFolder();

} // namespace Workload

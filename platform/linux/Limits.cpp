#include "platform/Limits.h"

#include <unistd.h>

#include <algorithm>

namespace Limits {

namespace {

constexpr qint64 Megabyte = 1024LL * 1024;

qint64 physicalMemory()
{
    static const qint64 size = qint64(sysconf(_SC_PHYS_PAGES)) * sysconf(_SC_PAGESIZE);
    return size;
}

} // namespace

qint64 gameFileBody() { return std::max(physicalMemory() / 4, 512 * Megabyte); }

qint64 gameFileContents() { return std::max(physicalMemory() / 2, 1024 * Megabyte); }

} // namespace Limits

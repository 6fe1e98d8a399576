#include "platform/Memory.h"

#include <malloc.h>

namespace Memory {

void giveLargeBuffersBackAtOnce()
{
#ifdef M_MMAP_THRESHOLD
    // Left alone, the library raises these limits with each large buffer that is freed.
    constexpr int largeBuffer = 4 * 1024 * 1024;
    mallopt(M_MMAP_THRESHOLD, largeBuffer);
    mallopt(M_TRIM_THRESHOLD, largeBuffer); // what is free at the end of a thread's memory
#endif
}

} // namespace Memory

#include "platform/Memory.h"

#include <malloc.h>

namespace Memory {

void giveLargeBuffersBackAtOnce()
{
#ifdef M_MMAP_THRESHOLD
    // Left alone, the library raises this limit with each large buffer that is freed.
    constexpr int largeBuffer = 1024 * 1024;
    mallopt(M_MMAP_THRESHOLD, largeBuffer);
#endif
}

} // namespace Memory

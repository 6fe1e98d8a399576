#pragma once

namespace Memory {

// From now on this process gives large buffers back to the system as soon as they are freed. Bodies
// and contents of files come and go by the hundred; kept for later, the gaps between them would add
// up. Call it before there are other threads.
void giveLargeBuffersBackAtOnce();

} // namespace Memory

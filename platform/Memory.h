#pragma once

namespace Memory {

// From now on this process gives buffers of more than 4 MB back to the system as soon as they are
// freed, and keeps up to 4 MB a thread for the next ones. Bodies and contents of files come and go
// by the hundred; all kept for later, the gaps between them would add up, and none kept, the system
// would clear a thousand pages for each. Call it before there are other threads.
void giveLargeBuffersBackAtOnce();

} // namespace Memory

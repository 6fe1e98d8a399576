#pragma once

// The system's message bus, before Qt connects to it.
namespace SystemBus {

// Whether the bus says anything to a client, for which it has about a second. Any thread that may
// wait. To be asked before each connection: while Qt waits for a silent bus, for ever, so does
// whatever touches any bus in the process, such as Qt's accessibility on the main thread.
bool answers();

} // namespace SystemBus

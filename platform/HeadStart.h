#pragma once

// What the first frame would otherwise wait for, done on another thread meanwhile: each step takes
// milliseconds, and nothing depends on whether or when it was done.
namespace HeadStart {

// Reads which fonts the system has. Any thread, before the application object is made; no text may
// be laid out meanwhile, or the fonts are read twice.
void readFonts();

// Connects to the session's message bus, which accessibility needs, and lists for the application
// the fonts that were read. Any thread, once the application object is there; who needs one of them
// meanwhile waits for it. A bus that is silent holds it for ever.
void meetDesktop();

} // namespace HeadStart

#pragma once

namespace FontLibrary {

// Reads which fonts the system has, which takes several milliseconds and otherwise happens when the
// first text is laid out. May be called on any thread, before the application object is made; no
// text may be laid out meanwhile, or the fonts are read twice.
void load();

} // namespace FontLibrary

#pragma once

struct CommandLine;

// Builds the graph of the launcher's objects, in one place, and runs it: who gets which settings,
// client, timer and desktop is decided here and nowhere else.
namespace Application {

// Both return the process's exit code. They end the process's threads as far as those can be ended;
// one that waits for a running game is left behind with the process.
int runWithWindow(const CommandLine &commandLine, int argc, char **argv);
int runWithoutWindow(const CommandLine &commandLine, int argc, char **argv);

} // namespace Application

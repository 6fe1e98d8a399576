#pragma once

#include "app/CommandLine.h"

// What both programs of the launcher begin and end with. `quellmoor-launcher` understands the
// command line and works without a window; for the window it becomes `quellmoor-launcher-window`,
// so that a check or an update never loads a user interface.
namespace Application {

constexpr int UsageMistake = 64;

[[nodiscard]] CommandLine commandLineOf(int argc, char **argv);

// First of all: a file that may not grow any more shall fail to be written, not end the launcher.
// The game is started with the system's own ways.
void outliveLimitsOfSize();

// Gives the application object's name and version.
void name();

// Checks or updates the game folder; returns the process's exit code.
int runWithoutWindow(const CommandLine &commandLine, int argc, char **argv);

// Becomes the window's program with the same words. Returns only when that cannot be, with the exit
// code.
int becomeWindow(char **argv);

// To be returned from main() once the event loop has ended. Ends the process at once when a thread
// still waits, for a server or for a running game.
int end(int exitCode);

} // namespace Application

#pragma once

// The program with the window, from its first moment to its last; returns the process's exit code.
int runWindowProgram(int argc, char **argv);

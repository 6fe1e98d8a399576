#include "app/WindowProgram.h"

int main(int argc, char **argv) { return runWindowProgram(argc, argv); }

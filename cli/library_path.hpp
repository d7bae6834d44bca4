// Where what belongs to the command is.
#pragma once

#include <string>

// The path of the library that belongs to this command: ../lib/libstats_hw.so seen from the
// command's own directory (or the multiarch directory the install put it in), else the command's
// directory, else the bare name for the loader's search path.
std::string findStatisticsLibrary();

// The folder of the examples: ../share/vexel/examples seen from the command, or that of the sources
// it was built from; empty where there is neither.
std::string findExamples();

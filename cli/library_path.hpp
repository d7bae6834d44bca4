// Where the statistics library is.
#pragma once

#include <string>

// The path of the library that belongs to this command: ../lib/libstats_hw.so seen from the
// command's own directory (or the multiarch directory the install put it in), else the command's
// directory, else the bare name for the loader's search path.
std::string findStatisticsLibrary();

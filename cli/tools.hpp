// What the command does without a kernel: formatting scripts, explaining names, showing examples.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "options.hpp"

// The text of a file, or of standard input for "-"; nothing when it cannot be read.
std::optional<std::string> readAll(const std::string& path);

// Runs what the options ask for and returns an exit status; nothing when they ask for none of it.
std::optional<int> runTool(const Options& options);

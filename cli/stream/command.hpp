// vexel describe FILE..., vexel quantile -q 0.5 FILE..., vexel tally FILE...: exact statistics of
// files that need not fit in memory.
#pragma once

#include <optional>
#include <span>
#include <string_view>

// Runs the command that the first argument names; nothing when it names none, or is a file here,
// which runs as a script as it ever did.  Returns the exit status.
std::optional<int> runStreamCommand(int argc, char** argv);

std::span<const std::string_view> streamCommands();

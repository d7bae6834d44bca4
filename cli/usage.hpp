// What is wrong with a command line, in the words of this command.
#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

// Prints the help that was asked for, or what is wrong, and returns the exit status.
int reportUsage(const CLI::App& app, const CLI::ParseError& error);

// What a FILE that cannot be read may have been meant to be, after "cannot read FILE: ..."; empty
// where there is nothing to say.
std::string meantByFile(const std::string& file);

// What the command line asks for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// One piece of input, in the order of the command line.
struct Input {
  enum class Kind { file, text } kind;
  std::string value;  // a path ("-" is standard input), or statements
};

struct Options {
  std::vector<Input> inputs;
  bool prompt = false;     // go to the prompt after the inputs
  bool json = false;       // values and errors as JSON lines on standard output
  bool keepGoing = false;  // after an error go on with the next statement
  bool quiet = false;
  bool strict = false;                 // calling an undefined name is an error
  bool format = false;                 // lay the files out instead of running them
  bool write = false;                  // in place
  std::optional<std::string> explain;  // a name to explain
  std::optional<std::string> example;  // an example to show; empty: list them
  std::optional<std::uint64_t> seed;
  std::string library;  // empty: the one installed beside the command
};

// Exit statuses of the command.
inline constexpr int kSuccess = 0;
inline constexpr int kStatementFailed = 1;
inline constexpr int kBadUsage = 2;  // bad command line or unreadable file

// Reads the command line into options.  Returns an exit status when there is nothing left to do:
// help or the version was printed, or the command line is bad and said so on standard error.
std::optional<int> readCommandLine(int argc, char** argv, Options& options);

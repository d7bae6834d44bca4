// The vexel command: runs files, texts and standard input in one kernel.

#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <string>
#include <vexel/kernel.hpp>

#include "library_path.hpp"
#include "options.hpp"

namespace {

void onInterrupt(int) { vexel::Kernel::interrupt(); }

// The text of a file, or of standard input for "-"; nothing when it cannot be read.
std::optional<std::string> readAll(const std::string& path) {
  if (path == "-") {
    return std::string(std::istreambuf_iterator<char>(std::cin), {});
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    return std::nullopt;
  }
  std::string text(std::istreambuf_iterator<char>(in), {});
  if (in.bad()) {
    return std::nullopt;
  }
  return text;
}

// Runs a text; returns the exit status.
int runText(vexel::Kernel& kernel, const std::string& text, const Options& options) {
  try {
    const vexel::Value value = kernel.eval(text);
    std::cout << (options.json ? value.json() : value.source()) << '\n';
    return kSuccess;
  } catch (const std::exception& e) {
    std::cerr << "Error, " << e.what() << '\n';
    return kStatementFailed;
  }
}

int runInputs(vexel::Kernel& kernel, const Options& options) {
  int status = kSuccess;
  for (const Input& input : options.inputs) {
    std::string text = input.value;
    if (input.kind == Input::Kind::file) {
      std::optional<std::string> contents = readAll(input.value);
      if (!contents) {
        std::cerr << "vexel: cannot read " << input.value << '\n';
        return kBadUsage;
      }
      text = std::move(*contents);
    }
    if (runText(kernel, text, options) != kSuccess) {
      status = kStatementFailed;
    }
  }
  return status;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (const std::optional<int> status = readCommandLine(argc, argv, options)) {
    return *status;
  }
  if (options.inputs.empty()) {
    options.inputs.push_back({Input::Kind::file, "-"});
  }
  std::signal(SIGINT, onInterrupt);
  try {
    vexel::Kernel kernel;
    kernel.loadLibrary(options.library.empty() ? findStatisticsLibrary() : options.library);
    if (options.seed) {
      kernel.seed(*options.seed);
    }
    return runInputs(kernel, options);
  } catch (const std::exception& e) {
    std::cerr << "vexel: " << e.what() << '\n';
    return kBadUsage;
  }
}

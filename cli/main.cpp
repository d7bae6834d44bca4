// The vexel command: runs files, texts and standard input in one kernel.

#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <vexel/kernel.hpp>
#include <vexel/session.hpp>

#include "help.hpp"
#include "kernels/text_file.hpp"
#include "library_path.hpp"
#include "options.hpp"
#include "prompt.hpp"
#include "runner.hpp"
#include "stream/command.hpp"
#include "tools.hpp"
#include "usage.hpp"

namespace {

void onInterrupt(int) { vexel::Kernel::interrupt(); }

// -e '?mean', as at the prompt.
bool isQuestion(const std::string& text) {
  const std::size_t at = text.find_first_not_of(" \t\n");
  return at != std::string::npos && text[at] == '?';
}

// Runs the inputs in order; false when a file cannot be read.
bool runInputs(Runner& runner, const Options& options) {
  for (const Input& input : options.inputs) {
    if (runner.finished()) {
      break;
    }
    if (input.kind == Input::Kind::text) {
      if (!options.json && isQuestion(input.value)) {
        runner.note(printHelp(helpTopic(input.value), {}));
        continue;
      }
      runner.run(input.value, "-e");
      continue;
    }
    const std::optional<std::string> contents = readAll(input.value);
    if (!contents) {
      const std::string meant = meantByFile(input.value);
      std::cerr << "vexel: cannot read " << input.value << ": "
                << vexel::kernels::whyUnreadable(input.value) << (meant.empty() ? "" : "\n")
                << meant << '\n';
      return false;
    }
    if (const auto fault = vexel::kernels::whyNoText(*contents); !fault.empty()) {
      std::cerr << "vexel: cannot read " << input.value << ": " << fault << '\n';
      return false;
    }
    runner.run(*contents, input.value == "-" ? "standard input" : input.value);
    if (runner.failed() && input.value.ends_with(".csv") && !options.quiet) {
      std::cerr << "vexel: is " << input.value << " a script?  vexel describe " << input.value
                << " gives the statistics of data\n";
    }
  }
  return true;
}

void catchInterrupts() {
  struct sigaction action = {};
  action.sa_handler = onInterrupt;  // no SA_RESTART: the prompt's read must return
  sigaction(SIGINT, &action, nullptr);
}

}  // namespace

int main(int argc, char** argv) {
  if (const std::optional<int> status = runStreamCommand(argc, argv)) {
    return *status;
  }
  Options options;
  if (const std::optional<int> status = readCommandLine(argc, argv, options)) {
    return *status;
  }
  if (const std::optional<int> status = runTool(options)) {
    return *status;
  }
  if (options.inputs.empty() && !options.prompt) {
    options.prompt = isatty(STDIN_FILENO) != 0;
    if (!options.prompt) {
      options.inputs.push_back({Input::Kind::file, "-"});
    }
  }
  catchInterrupts();
  try {
    vexel::Kernel kernel;
    kernel.loadLibrary(options.library.empty() ? findStatisticsLibrary() : options.library);
    if (options.seed) {
      kernel.seed(*options.seed);
    }
    vexel::setStrict(kernel, options.strict);
    kernel.eval("none := Array([], datatype = float[8]):");  // no weights, as the pages write it
    if (std::getenv("VEXEL_STRESS") != nullptr) {
      kernel.stress(true);  // a collection at every allocation, to find what the collector misses
    }
    Runner runner(kernel, options);
    if (!runInputs(runner, options)) {
      return kBadUsage;
    }
    if (options.prompt && !runner.finished()) {
      if (options.json && isatty(STDIN_FILENO) == 0) {
        serveStatements(kernel, runner);
      } else {
        runPrompt(kernel, runner, options.quiet);
      }
    }
    return vexel::exitStatus(kernel).value_or(runner.failed() ? kStatementFailed : kSuccess);
  } catch (const std::exception& e) {
    std::cerr << "vexel: " << e.what() << '\n';
    return kBadUsage;
  }
}

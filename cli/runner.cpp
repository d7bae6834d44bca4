// Running texts statement by statement and reporting values and errors.

#include "runner.hpp"

#include <iostream>
#include <vexel/session.hpp>

void Runner::printValue(const vexel::Value& value) const {
  if (options_.json) {
    std::cout << value.json() << std::endl;
  } else {
    std::cout << (shorten_ ? vexel::shortened(value) : value.source()) << std::endl;
  }
}

void Runner::reportError(const vexel::Outcome& outcome, const std::string& source) {
  failed_ = true;
  if (options_.json) {
    std::cout << outcome.json << std::endl;
    return;
  }
  std::cout.flush();
  std::cerr << "Error, " << outcome.error << '\n';
  if (!source.empty()) {
    std::cerr << "  at " << source << ", line " << outcome.line << ", column " << outcome.column
              << '\n';
  }
  if (!outcome.source.empty()) {
    std::cerr << outcome.source << '\n';
  }
}

void Runner::run(const std::string& text, const std::string& source) {
  vexel::Script script(kernel_, text);
  vexel::Outcome outcome;
  while (script.next(outcome)) {
    if (outcome.kind == vexel::Outcome::Kind::value) {
      if (outcome.printed) {
        printValue(outcome.value);
      }
      continue;
    }
    reportError(outcome, source);
    if (!options_.json && !options_.keepGoing) {
      finished_ = !source.empty();  // the prompt goes on
      return;
    }
  }
  finished_ = finished_ || vexel::quitRequested(kernel_);
}

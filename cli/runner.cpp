// Running texts statement by statement and reporting values and errors.

#include "runner.hpp"

#include <iostream>
#include <stdexcept>
#include <utility>
#include <vexel/session.hpp>

#include "help.hpp"
#include "progress.hpp"
#include "reference.hpp"

Runner::Runner(vexel::Kernel& kernel, const Options& options) : kernel_(kernel), options_(options) {
  vexel::onShown(kernel, [this](const vexel::Value& value, bool effect) {
    vexel::Outcome outcome;
    outcome.value = value;
    outcome.effect = effect;
    if (!isNeedless(outcome) && !printValue(outcome)) {
      throw std::runtime_error(outcome.error);
    }
  });
}

// A loop or printf need not say that it has no value, nor anything else at the prompt.
bool Runner::isNeedless(const vexel::Outcome& outcome) const {
  return (shorten_ || outcome.effect) && !options_.json && outcome.value.isNull();
}

bool Runner::printValue(vexel::Outcome& outcome) const {
  const vexel::Value& value = outcome.value;
  try {
    std::cout << (options_.json ? value.json() : vexel::displayed(value, shorten_)) << std::endl;
    return true;
  } catch (const std::runtime_error& e) {  // vexel::Error or vexel::Interrupted
    outcome.error = e.what();
  }
  outcome.json = value.kernel()->string(outcome.error).json();
  outcome.json =
      "{\"error\": " + outcome.json + ", \"message\": " + outcome.json + ", \"args\": []}";
  return false;
}

namespace {

// The function of a call that has come back as it was; empty for any other value.
std::string unknownFunction(vexel::Kernel& kernel, const vexel::Value& value) {
  try {
    if (kernel.call("typeof", value).text() == "call") {
      const std::string source = vexel::shortened(value);
      return source.substr(0, source.find('('));
    }
  } catch (const std::runtime_error&) {  // the session has a typeof of its own
  }
  return "";
}

// Says at the prompt what an unknown function may have been meant to be.
void printHint(vexel::Kernel& kernel, const vexel::Value& value) {
  const std::string function = unknownFunction(kernel, value);
  if (value == kernel.name("help") || function == "help") {
    std::cout << "  ? says what there is, ?name explains one" << std::endl;
    return;
  }
  const std::string meant = meantName(function);
  if (!meant.empty() && meant != function) {
    std::cout << "  " << function << " is not defined; ?" << meant << " explains " << meant
              << std::endl;
  }
}

void printPlace(const char* what, const std::string& source, int line, int column) {
  std::cerr << "  " << what << ' ' << source << ", line " << line << ", column " << column << '\n';
}

// Where the error was raised and, for one in a procedure, the statement that called it.
void printPlaces(const vexel::Outcome& outcome, const std::string& source) {
  if (outcome.raisedLine != 0) {
    printPlace("at", outcome.raisedIn, outcome.raisedLine, outcome.raisedColumn);
    const bool samePlace = outcome.raisedIn == source && outcome.raisedLine == outcome.line &&
                           outcome.raisedColumn == outcome.column;
    if (!outcome.inProcedure || samePlace) {
      return;
    }
  }
  if (!source.empty()) {
    printPlace(outcome.raisedLine != 0 ? "called from" : "at", source, outcome.line,
               outcome.column);
  }
}

}  // namespace

// A script that misspells a function would go on with the call itself as its value.  Of names that
// are no entry point's, those are told that print: others are symbols as a rule.
void Runner::warnOfMisspelling(const vexel::Outcome& outcome, const std::string& source) {
  const std::string function = unknownFunction(kernel_, outcome.value);
  const bool isEntry = function.starts_with("STATS_") || function.starts_with("Vexel");
  if (function.empty() || (!isEntry && symbols_.contains(function))) {
    return;
  }
  const std::string meant = meantName(function);
  const bool isNone = meant.empty() || meant == function;
  if (!isNone && !outcome.printed && !isEntry && meant == similarName(function)) {
    return;
  }
  symbols_.insert(function);
  if (isNone) {
    return;
  }
  std::cout.flush();
  std::cerr << "Warning, " << function << " is not defined; "
            << (function == "help" ? "vexel --explain name explains a name" : meant + " is")
            << '\n';
  printPlace("at", source, outcome.line, outcome.column);
}

void Runner::reportError(const vexel::Outcome& outcome, const std::string& source) {
  failed_ = true;
  if (options_.json) {
    std::cout << outcome.json << std::endl;
    return;
  }
  std::cout.flush();
  std::cerr << "Error, " << outcome.error << '\n';
  printPlaces(outcome, source);
  if (!outcome.source.empty()) {
    std::cerr << outcome.source << '\n';
  }
}

void Runner::run(const std::string& text, const std::string& source) {
  vexel::Script script(kernel_, text, source);
  vexel::Outcome outcome;
  Progress progress(options_.quiet ? "" : source);
  for (progress.atLine(script.line()); script.next(outcome); progress.atLine(script.line())) {
    progress.clear();
    if (outcome.kind == vexel::Outcome::Kind::value) {
      if (!options_.quiet && !source.empty()) {
        warnOfMisspelling(outcome, source);
      }
      if (!outcome.printed && acknowledged_) {
        std::cout << "{\"done\": true}" << std::endl;
      }
      if (!outcome.printed || isNeedless(outcome)) {
        continue;
      }
      if (printValue(outcome)) {
        if (hints_) {
          printHint(kernel_, outcome.value);
        }
        continue;
      }
    }
    reportError(outcome, source);
    if (!options_.json && !options_.keepGoing) {
      finished_ = !source.empty();  // the prompt goes on
      return;
    }
  }
  finished_ = finished_ || vexel::quitRequested(kernel_);
}

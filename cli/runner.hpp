// Running texts statement by statement and reporting values and errors.
#pragma once

#include <set>
#include <string>
#include <vexel/kernel.hpp>
#include <vexel/session.hpp>

#include "options.hpp"

class Runner {
 public:
  Runner(vexel::Kernel& kernel, const Options& options);
  Runner(const Runner&) = delete;  // the kernel calls it
  Runner& operator=(const Runner&) = delete;

  // Runs the statements of text.  source names the file for errors; empty at the prompt.  Stops at
  // the first error unless JSON or keep-going is on.
  void run(const std::string& text, const std::string& source);

  // That something beside the statements succeeded, or did not.
  void note(bool success) { failed_ = failed_ || !success; }

  bool failed() const { return failed_; }      // some statement raised an error
  bool finished() const { return finished_; }  // nothing more is to be run
  // At the prompt long values are shortened, and what looks like a slip gets a hint.
  void atPrompt(bool hints) {
    shorten_ = true;
    hints_ = hints;
  }
  // With JSON: statements that print no value print a line, too.
  void acknowledge() { acknowledged_ = true; }

 private:
  bool isNeedless(const vexel::Outcome& outcome) const;
  // False when the value cannot be printed (it is nested too deep); the outcome tells then.
  bool printValue(vexel::Outcome& outcome) const;
  void warnOfMisspelling(const vexel::Outcome& outcome, const std::string& source);
  void reportError(const vexel::Outcome& outcome, const std::string& source);

  vexel::Kernel& kernel_;
  const Options& options_;
  std::set<std::string> symbols_;  // functions that were told of, or need not be
  bool failed_ = false;
  bool finished_ = false;
  bool shorten_ = false;
  bool hints_ = false;
  bool acknowledged_ = false;
};

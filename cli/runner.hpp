// Running texts statement by statement and reporting values and errors.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vexel/kernel.hpp>

#include "options.hpp"

class Runner {
 public:
  Runner(vexel::Kernel& kernel, const Options& options) : kernel_(kernel), options_(options) {}

  // Runs the statements of text.  source names the file for errors; empty at the prompt.  Stops at
  // the first error unless JSON or keep-going is on.
  void run(std::string_view text, const std::string& source);

  bool failed() const { return failed_; }      // some statement raised an error
  bool finished() const { return finished_; }  // nothing more is to be run
  void shortenValues(bool on) { shorten_ = on; }

 private:
  void printValue(const vexel::Value& value) const;
  void reportError(const std::string& filled, const std::string& message,
                   std::span<const vexel::Value> arguments, const std::string& source, int line);

  vexel::Kernel& kernel_;
  const Options& options_;
  bool failed_ = false;
  bool finished_ = false;
  bool shorten_ = false;
};

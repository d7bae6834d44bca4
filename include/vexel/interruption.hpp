// Stopping and watching long work.
//
//   vexel::Watch watch([&](double done) { bar.set(done); return !stopRequested; });
//   vexel::sort(x);      // throws vexel::Interrupted when the callback returns false
//
// While a Watch lives, the functions that this thread calls report what share of their work is
// done, at least ten times a second, and end with Interrupted when the callback says so.  Inputs
// are never changed by an interrupted call; what it was given to fill (`out`) is left partly
// filled.  Without a Watch nothing is reported and nothing is asked.
#pragma once

#include <functional>
#include <stdexcept>
#include <vexel/export.hpp>

namespace vexel {

class VEXEL_API Interrupted : public std::runtime_error {
 public:
  Interrupted() : std::runtime_error("interrupted") {}
};

// One watch over this thread's calls; the innermost is asked.
class VEXEL_API Watch {
 public:
  // keepGoing(done), 0 <= done <= 1, is called from this thread only and may throw.
  explicit Watch(std::function<bool(double)> keepGoing);
  ~Watch();
  Watch(const Watch&) = delete;
  Watch& operator=(const Watch&) = delete;

 private:
  std::function<bool(double)> keepGoing_;
  void* state_[3];  // the watcher of kernels/watch.hpp and the one before it
};

}  // namespace vexel

// How long work says how far it is and learns that it shall stop.
//
// Kernels call poll(done) every few milliseconds.  Whoever calls kernels may install a Watcher on
// the thread; its callback may throw, and what it throws leaves the kernel.  Without one, poll is a
// load and a branch.
#pragma once

namespace vexel::kernels {

struct Watcher {
  void (*report)(void* data, double done);
  void* data;
  Watcher* previous;
};

inline thread_local Watcher* currentWatcher = nullptr;

inline void poll(double done) {
  if (currentWatcher != nullptr) {
    currentWatcher->report(currentWatcher->data, done);
  }
}

// How many elements of cheap work to do between two polls: a few milliseconds.
inline constexpr long pollInterval = 1L << 20;

}  // namespace vexel::kernels

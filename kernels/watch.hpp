// How long work says how far it is and learns that it shall stop.
//
// Kernels poll every few milliseconds.  Whoever calls kernels may install a Watcher on the thread;
// its callback may throw, and what it throws leaves the kernel.  Without one, poll is a load and a
// branch.
#pragma once

#include <algorithm>
#include <cstddef>
#include <limits>

namespace vexel::kernels {

struct Watcher {
  void (*report)(void* data, double done);
  void* data;
  Watcher* previous;
};

inline thread_local Watcher* currentWatcher = nullptr;

// What share of the work is done, where the kernel is a part of it and cannot say.
inline constexpr double shareUnknown = std::numeric_limits<double>::quiet_NaN();

inline void poll(double done = shareUnknown) {
  if (currentWatcher != nullptr) {
    currentWatcher->report(currentWatcher->data, done);
  }
}

// How many elements of cheap work to do between two polls: a few milliseconds.
inline constexpr long pollInterval = 1L << 20;

// work(begin, end) for the stretches of 0..n-1 in their order, with polls between them.  Sums that
// work adds up are added up as in one loop.
template <typename Size, typename Work>
void inStretches(Size n, Work work) {
  for (Size begin = 0; begin < n;) {
    const Size end = n - begin > static_cast<Size>(pollInterval)
                         ? static_cast<Size>(begin + static_cast<Size>(pollInterval))
                         : n;
    work(begin, end);
    begin = end;
    if (begin < n) {
      poll();
    }
  }
}

// element(i) for i in 0..n-1, polling.
template <typename Size, typename Element>
void forEach(Size n, Element element) {
  inStretches(n, [&](Size begin, Size end) {
    for (Size i = begin; i < end; ++i) {
      element(i);
    }
  });
}

// std::copy_n and std::count_if, polling.
template <typename T>
void copyWatched(const T* from, std::ptrdiff_t n, T* to) {
  inStretches(n, [=](std::ptrdiff_t begin, std::ptrdiff_t end) {
    std::copy(from + begin, from + end, to + begin);
  });
}
template <typename T, typename Condition>
std::ptrdiff_t countWatched(const T* x, std::ptrdiff_t n, Condition condition) {
  std::ptrdiff_t count = 0;
  inStretches(n, [&](std::ptrdiff_t begin, std::ptrdiff_t end) {
    count += std::count_if(x + begin, x + end, condition);
  });
  return count;
}

}  // namespace vexel::kernels

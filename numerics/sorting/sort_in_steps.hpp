// Sorting of very many integers in steps of some milliseconds, so that it can be watched and
// stopped.  Without a watcher the sorts take their integers at once.
#pragma once

#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

#include "kernels/watch.hpp"
#include "numerics/sorting/vector_sort.hpp"

namespace nag2 {

// Thrown on a thread beside the watched one, whose own exception is what the caller sees.
struct SortStopped {};

// How far a sort is, for the thread that has the watcher; the other one looks whether to stop.
class SortProgress {
 public:
  explicit SortProgress(std::size_t n) : size_(static_cast<double>(n)) {}

  void done(std::size_t n) {
    if (vexel::kernels::currentWatcher == nullptr) {
      if (stopped_.load(std::memory_order_relaxed)) {
        throw SortStopped();
      }
      return;
    }
    done_ += static_cast<double>(n);
    try {
      vexel::kernels::poll(std::min(1.0, done_ / size_));
    } catch (...) {
      stopped_.store(true, std::memory_order_relaxed);
      throw;
    }
  }

 private:
  double size_;
  double done_ = 0;
  std::atomic<bool> stopped_{false};
};

inline constexpr std::size_t kSortStep = std::size_t{1} << 22;
// Of elements that are only read or written, between two looks.
inline constexpr std::size_t kPassStep = std::size_t{1} << 20;

template <typename Integer>
Integer middling(const Integer* x, std::size_t n) {
  std::array<Integer, 255> some;
  for (std::size_t i = 0; i < some.size(); ++i) {
    some[i] = x[i * (n / some.size())];
  }
  std::nth_element(some.begin(), some.begin() + some.size() / 2, some.end());
  return some[some.size() / 2];
}

// Sorts signed integers; scratch has as much room.
template <typename Integer>
void sortInSteps(Integer* x, Integer* scratch, std::size_t n, bool descending,
                 SortProgress& progress) {
  if (n <= kSortStep) {
    vectorSort(x, n, descending);
    progress.done(n);
    return;
  }
  Parting<Integer> by{false, descending, middling(x, n)};
  const auto countBefore = [&] {
    std::size_t before = 0;
    for (std::size_t start = 0; start < n; start += kSortStep) {
      before += static_cast<std::size_t>(
          std::count_if(x + start, x + std::min(n, start + kSortStep),
                        [&](Integer v) { return descending ? by.pivot < v : v < by.pivot; }));
      progress.done(0);
    }
    return before;
  };
  std::size_t before = countBefore();
  bool frontIsEqual = false;
  if (before == 0) {
    // Nothing sorts before the pivot: its equals are split off instead.
    const Integer end =
        descending ? std::numeric_limits<Integer>::min() : std::numeric_limits<Integer>::max();
    if (by.pivot == end) {
      return;  // all are equal
    }
    by.pivot = static_cast<Integer>(by.pivot + (descending ? -1 : 1));
    before = countBefore();
    frontIsEqual = true;
  }
  Integer* front = scratch;
  Integer* back = scratch + before;
  for (std::size_t start = 0; start < n; start += kSortStep) {
    const std::size_t size = std::min(n - start, kSortStep);
    const std::size_t parted = part(x + start, size, by, front, back);
    front += parted;
    back += size - parted;
    progress.done(0);
  }
  if (!frontIsEqual) {
    sortInSteps(scratch, x, before, descending, progress);
  }
  sortInSteps(scratch + before, x + before, n - before, descending, progress);
  std::copy(scratch, scratch + n, x);
}

// Sorts signed integers with vector instructions: at once, or in steps where somebody watches.
template <typename Integer>
void vectorSortWatched(Integer* x, std::size_t n, bool descending, bool watched,
                       SortProgress& progress) {
  if (!watched || n <= kSortStep) {
    vectorSort(x, n, descending);
    return;
  }
  const auto scratch = std::make_unique_for_overwrite<Integer[]>(n);
  sortInSteps(x, scratch.get(), n, descending, progress);
}

}  // namespace nag2

// Many sums of the same length at once.
//
// A sum whose order of additions is fixed cannot be split over the lanes of a vector register, but
// neighbouring windows can: each lane sums one window, in its own order.
#pragma once

#include <cstddef>

#include "kernels/lookout.hpp"

namespace vexel::kernels {

// out[s] = 0 + term(s, 0) + ... + term(s, length - 1), in this order, for s < count.
template <typename Term>
void sumsSideBySide(std::ptrdiff_t count, std::ptrdiff_t length, double* out, Lookout& lookout,
                    Term term) {
  // Twelve registers of two doubles: as many as a loop can hold, more than hide an addition's
  // latency.  (With sixteen lanes GCC 12 shuffles them through memory, at half the speed.)
  constexpr int kLanes = 24;
  std::ptrdiff_t s = 0;
  for (; s <= count - kLanes; s += kLanes) {
    double sum[kLanes] = {};
    for (std::ptrdiff_t j = 0; j < length; ++j) {
      for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
        sum[lane] += term(s + lane, j);
      }
    }
    for (std::ptrdiff_t lane = 0; lane < kLanes; ++lane) {
      out[s + lane] = sum[lane];
    }
    lookout.done(kLanes * length);
  }
  for (; s < count; ++s) {
    double sum = 0.0;
    for (std::ptrdiff_t j = 0; j < length; ++j) {
      sum += term(s, j);
    }
    out[s] = sum;
  }
}

}  // namespace vexel::kernels

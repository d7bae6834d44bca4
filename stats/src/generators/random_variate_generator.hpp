// What the random sample driver draws from.
#pragma once

#include <vexelc/vexelc.h>

// A source of variates that a host object describes.
class STATS_RandomVariateGenerator_HW {
 public:
  explicit STATS_RandomVariateGenerator_HW(VKernelVector kv) : kv_(kv) {}
  virtual ~STATS_RandomVariateGenerator_HW() = default;
  STATS_RandomVariateGenerator_HW(const STATS_RandomVariateGenerator_HW&) = delete;
  STATS_RandomVariateGenerator_HW& operator=(const STATS_RandomVariateGenerator_HW&) = delete;

  // Nonzero when setup makes a usable generator, 0 when it does not; a malformed setup raises. Host
  // procedures in setup must stay reachable while the generator is used.
  virtual int initialize(VKernelVector kv, ALGEB setup) = 0;

  // One variate.
  virtual double next(VKernelVector kv) = 0;

  // The next n variates, as n calls of next give them.
  virtual void fill(VKernelVector kv, double* out, V_INT n) {
    for (V_INT j = 0; j < n; ++j) {
      out[j] = next(kv);
    }
  }

 protected:
  VKernelVector kv_;
};

// Variates of the built-in distributions, chosen by a numeric code.
#pragma once

#include <array>
#include <cstdint>

#include "generators/random_variate_generator.hpp"

class STATS_DefaultGenerator_HW : public STATS_RandomVariateGenerator_HW {
 public:
  using Variate = double (*)(VKernelVector, const double*);
  using Sample = void (*)(VKernelVector, double*, std::int32_t, const double*);

  explicit STATS_DefaultGenerator_HW(VKernelVector kv) : STATS_RandomVariateGenerator_HW(kv) {}

  // setup: [type code, [parameters]], at most five parameters.  Their number is not compared with
  // what the distribution needs; missing ones are 0.  0 for a code without a distribution.
  int initialize(VKernelVector kv, ALGEB setup) override;

  double next(VKernelVector kv) override { return variate_(kv, parameters_.data()); }
  void fill(VKernelVector kv, double* out, V_INT n) override;

 private:
  Variate variate_ = nullptr;
  Sample sample_ = nullptr;  // of distributions with a faster way to the same variates
  std::array<double, 5> parameters_{};
};

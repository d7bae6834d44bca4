// Variates of the built-in distributions, chosen by a numeric code.
#pragma once

#include <array>

#include "generators/random_variate_generator.hpp"

class STATS_DefaultGenerator_HW : public STATS_RandomVariateGenerator_HW {
 public:
  using Variate = double (*)(VKernelVector, const double*);

  explicit STATS_DefaultGenerator_HW(VKernelVector kv) : STATS_RandomVariateGenerator_HW(kv) {}

  // spec: [type code, [parameters]], at most five parameters.  Their number is not compared with
  // what the distribution needs; missing ones are 0.  0 for a code without a distribution.
  int initialize(VKernelVector kv, ALGEB spec) override;

  double next(VKernelVector kv) override { return variate_(kv, parameters_.data()); }

 private:
  Variate variate_ = nullptr;
  std::array<double, 5> parameters_{};
};

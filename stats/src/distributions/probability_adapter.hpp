// A distribution function with its parameters bound, as the root finders take it.
#pragma once

#include <utility>

#include "kernel/callback_adapters.hpp"

template <typename F>
class STATS_ProbabilityAdapter_HW : public STATS_VexelCallbackAdapter_HW {
 public:
  STATS_ProbabilityAdapter_HW(VKernelVector kv, F f)
      : STATS_VexelCallbackAdapter_HW(kv), f_(std::move(f)) {}
  double Call(double x) override { return f_(x); }

 private:
  F f_;
};

// Walker's alias urn (kernels/classic/alias_urn.hpp) on the host's random numbers.
#pragma once

#include "kernel/uniform_source.hpp"
#include "kernels/classic/alias_urn.hpp"

class STATS_AliasUrnGenerator_HW : public vexel::kernels::classic::AliasUrn {
 public:
  using AliasUrn::AliasUrn;
  void Reset(int m, int n, const double* weights) { reset(m, n, weights); }

  // One index.  An urn without cells raises a host error.
  int Next() {
    if (cells().empty()) {
      raiseNoCells();
    }
    STATS_VexelRandomStream_HW uniforms;
    return next(uniforms);
  }

 private:
  [[noreturn]] static void raiseNoCells();
};

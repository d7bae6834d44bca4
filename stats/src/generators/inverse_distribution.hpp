// Variates of a distribution that the host gives as two procedures, distribution function and
// density, on an interval: inversion of one uniform by safeguarded Newton iteration.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

class STATS_ICDFGenerator_HW {
 public:
  // A host procedure of one double.
  struct VexelCallback {
    VKernelVector kv;
    ALGEB proc;
    int useEvalhf;  // nonzero: try hardware evaluation first
  };

  // lower, upper and tol must be host numbers; tol is the absolute length of the last step.  The
  // procedures must stay reachable while the generator lives.  Evaluates cdf at both ends.
  STATS_ICDFGenerator_HW(VKernelVector kv, ALGEB cdf, ALGEB pdf, ALGEB lower, ALGEB upper,
                         ALGEB tol, int useEvalhf);

  // proc(x): in hardware if asked and possible, else in software with evalf of a value that is no
  // number.  Raises "%1 does not evaluate to float" when neither works.
  static double EvalfVexelProc1(const VexelCallback& callback, double x);

  // The x in [lower, upper] where cdf is p (kernels/rootfinding/inversion.hpp).
  static double Quantile(const VexelCallback& cdf, const VexelCallback& pdf, double p, double lower,
                         double upper, double tol);

  // One variate, from one uniform.
  double Next() const;

 private:
  double lower_;
  double upper_;
  double tol_;
  VexelCallback cdf_;
  VexelCallback pdf_;
  double cdfLower_;
  double cdfUpper_;
  double cdfRange_;
};

// n values of the host procedure expression, each on one variate of every variable in the list
// variables: a variable is a list whose elements 2 and 3 are distribution function and density.
ALGEB STATS_InverseDistributionSample_HW(VKernelVector kv, std::int32_t n, ALGEB expression,
                                         ALGEB variables, ALGEB lower, ALGEB upper, ALGEB tol,
                                         int useEvalhf);

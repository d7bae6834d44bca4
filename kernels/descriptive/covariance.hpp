// The sums that covariance, variances and correlation of two paired samples are made of.
#pragma once

namespace vexel::kernels {

struct CovarianceSums {
  double xy;     // sum w (x - mean x)(y - mean y)
  double xx;     // sum w (x - mean x)^2
  double yy;     // sum w (y - mean y)^2
  double total;  // sum w, the number of pairs when unweighted
};

// Two passes, each from the first pair to the last.  w may be null; skipMissing leaves out every
// index at which something is NaN.  A total of 0 makes the means 0/0.
CovarianceSums covarianceSums(const double* x, const double* y, const double* w, int n,
                              bool skipMissing);

}  // namespace vexel::kernels

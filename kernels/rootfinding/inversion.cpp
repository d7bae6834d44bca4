// Inversion of a distribution function.

#include "kernels/rootfinding/inversion.hpp"

#include <cmath>

namespace vexel::kernels {

double invert(RealFunction cdf, RealFunction pdf, double p, double lower, double upper,
              double tol) {
  constexpr int kPasses = 100;
  double xl = lower;
  double xh = upper;
  double x = (lower + upper) * 0.5;
  double dx = upper - lower;  // signed; a reversed interval starts with a negative step
  double dxOld = dx;
  double g = cdf(x) - p;
  double d = pdf(x);
  for (int pass = 0; pass < kPasses; ++pass) {
    const bool staysInside = ((x - xh) * d - g) * ((x - xl) * d - g) <= 0.0;
    const bool halvesStep = std::abs(2.0 * g) <= std::abs(dxOld * d);
    dxOld = dx;
    const bool newton = staysInside && halvesStep;
    dx = newton ? g / d : (xh - xl) * 0.5;
    const double next = newton ? x - dx : xl + dx;
    if (next == (newton ? x : xl)) {
      return next;
    }
    x = next;
    if (std::abs(dx) < tol) {
      return x;
    }
    g = cdf(x) - p;
    d = pdf(x);
    (g < 0.0 ? xl : xh) = x;
  }
  return x;
}

}  // namespace vexel::kernels

// Prefixes of the gamma and beta families in saddle-point form: the Stirling error and the deviance
// stay small where differences of log-gamma lose their digits.
//
// C. Loader, Fast and Accurate Computation of Binomial Probabilities (2000).  Exponents are held in
// long double: at a probability of 1e-300 a double exponent alone would cost 1e-13.
#pragma once

namespace nag2 {

// log Gamma(z + 1) - (z + 1/2) log z + z - log(2 pi) / 2 for z > 0.
long double stirlingError(double z);

// a log(a / m) + m - a >= 0 for a > 0, m > 0; difference is m - a, which the caller may know
// better.
long double deviance(long double a, long double m, long double difference);

// x^a exp(-x) / Gamma(a + 1); the Poisson probability of a at mean x.
double poissonWeight(double a, double x);

// x^a y^b Gamma(a + b + 1) / (Gamma(a + 1) Gamma(b + 1)), x + y = 1; the binomial probability of a
// successes and b failures.  Zero exponents and arguments are allowed.
double binomialWeight(double a, double b, long double x, long double y);

}  // namespace nag2

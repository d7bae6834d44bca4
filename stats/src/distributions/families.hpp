// The workers of every family of distributions, and what holds for all of them.
//
// Names       Probability(x, ...) is P(X <= x), Deviate(p, ...) the quantile at p,
// RandomVariate(...)
//             one variate, RandomSample(data, n, ...) the next n, faster than one by one.
// Ranges      Parameters are not checked here.  The numerical library checks those of its families
//             and raises its own text; an impossible parameter of a closed form gives whatever the
//             formula gives, most often a NaN.  A quantile outside [0, 1] raises where it is the
//             numerical library's or a search's (Exponential too), and is what the formula gives
//             elsewhere.
// Ends        Quantiles at 0 and 1 are the ends of the support where the family says nothing else.
// NaN         goes through closed forms.  A NaN or negative shape of a gamma, and what is made of
//             one, gives NaN without a draw.
// Draws       By inversion, one uniform a variate, unless the family says otherwise; the order of
//             draws is part of what a seed means.  kv is not where they come from: they are those
//             of the kernel that the library was started for.
// Error       Probabilities and quantiles of the numerical library: below 1e-14 times the condition
//             of the point (docs/accuracy.md); closed forms: a few units of the last place times
//             the condition (tests/reference/data/closed_forms.txt).  Searches end at the tolerance
//             they are given, non-central quantiles at 15 Digits within 1e-14 too.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

#include "kernel/uniform_source.hpp"
#include "kernels/classic/variates.hpp"
#include "kernels/rootfinding/real_function.hpp"

// NOLINTBEGIN(bugprone-macro-parentheses): parameter lists
#define STATS_VARIATE(Name, ...) \
  double STATS_##Name##RandomVariate_HW(VKernelVector kv, __VA_ARGS__)
#define STATS_FAMILY(Name, ...)                                                 \
  double STATS_##Name##Probability_HW(VKernelVector kv, double x, __VA_ARGS__); \
  double STATS_##Name##Deviate_HW(VKernelVector kv, double p, __VA_ARGS__);     \
  STATS_VARIATE(Name, __VA_ARGS__)
#define STATS_DISCRETE(Name, X, ...)                                              \
  double STATS_##Name##Probability_HW(VKernelVector kv, X x, __VA_ARGS__);        \
  std::int32_t STATS_##Name##Deviate_HW(VKernelVector kv, double u, __VA_ARGS__); \
  STATS_VARIATE(Name, __VA_ARGS__)
#define STATS_SAMPLE(Name, ...) \
  void STATS_##Name##RandomSample_HW(VKernelVector kv, double* data, std::int32_t size, __VA_ARGS__)
// tol is the relative accuracy at which a series may stop, and a search after it.
#define STATS_SERIES(Name, ...) \
  double STATS_##Name##Probability_HW(VKernelVector kv, double x, __VA_ARGS__, double tol)
#define STATS_SEARCH(Name, ...) \
  double STATS_##Name##Deviate_HW(VKernelVector kv, double p, __VA_ARGS__, double tol)
// NOLINTEND(bugprone-macro-parentheses)

// --- closed forms ---
STATS_FAMILY(Cauchy, double a, double b);                // location, scale; see kernels/classic
STATS_FAMILY(Gumbel, double a, double b);                // of the largest value: location, scale
STATS_FAMILY(Laplace, double a, double b);               // location, scale
STATS_FAMILY(Logistic, double a, double b);              // location, scale
STATS_FAMILY(Pareto, double a, double c);                // on x >= a, shape c
STATS_FAMILY(Power, double b, double c);                 // on (0, b), shape c
STATS_FAMILY(Rayleigh, double sigma);                    // scale
STATS_FAMILY(Triangular, double a, double b, double c);  // on (a, b), mode c
STATS_FAMILY(Uniform, double a, double b);               // on (a, b)
STATS_FAMILY(Weibull, double b, double c);               // scale, shape
// Scale (mean) b; a negative x gives the formula's negative value.  Variates from the ziggurat,
// whose law is not exactly exponential.
double STATS_ExponentialProbability_HW(VKernelVector kv, double x, double b);
double STATS_ExponentialDeviate_HW(VKernelVector kv, double p, double b);
inline double STATS_ExponentialRandomVariate_HW(VKernelVector, double b) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::exponential(uniforms, b);
}

// --- the numerical library's ---
STATS_FAMILY(Beta, double nu1, double nu2);        // two gamma variates, that of nu1 first
STATS_FAMILY(ChiSquare, double nu);                // degrees of freedom; a gamma variate
STATS_FAMILY(FRatio, double nu1, double nu2);      // two chi-square variates, the numerator's first
STATS_FAMILY(Gamma, double b, double c);           // scale, shape; see kernels/classic
STATS_FAMILY(LogNormal, double mu, double sigma);  // of the logarithm; a normal variate
STATS_FAMILY(StudentT, double nu);                 // degrees of freedom
// Mean mu, deviation sigma; variates from the ziggurat.
double STATS_NormalProbability_HW(VKernelVector kv, double x, double mu, double sigma);
double STATS_NormalDeviate_HW(VKernelVector kv, double p, double mu, double sigma);
inline double STATS_NormalRandomVariate_HW(VKernelVector, double mu, double sigma) {
  STATS_VexelRandomStream_HW uniforms;
  return vexel::kernels::classic::normal(uniforms, mu, sigma);
}

// --- non-central; delta is the noncentrality ---
STATS_SERIES(NonCentralBeta, double nu1, double nu2, double delta);  // X / (X + Y), X non-central
STATS_SEARCH(NonCentralBeta, double nu1, double nu2, double delta);  // chi-square (2 nu1, delta)
STATS_VARIATE(NonCentralBeta, double nu1, double nu2, double delta);
STATS_SERIES(NonCentralChiSquare, double nu, double delta);
STATS_SEARCH(NonCentralChiSquare, double nu, double delta);
// A sum of squared normals if method is nonzero, else by inversion.  The sum has ceil(nu) terms, so
// it follows this law only for whole nu; more than 2^31 - 1 terms are an error.
STATS_VARIATE(NonCentralChiSquare, double nu, double delta, int method);
STATS_SERIES(NonCentralFRatio, double nu1, double nu2, double delta);  // non-central numerator
STATS_SEARCH(NonCentralFRatio, double nu1, double nu2, double delta);
STATS_VARIATE(NonCentralFRatio, double nu1, double nu2, double delta);
STATS_SERIES(NonCentralStudentT, double nu, double delta);  // (Z + delta) / sqrt(chi-square / nu)
STATS_VARIATE(NonCentralStudentT, double nu, double delta);

// --- discrete ---
// P(X = x), which is 0 unless x is 0 or 1: not a cumulative probability, in spite of the name.
STATS_DISCRETE(Bernoulli, std::int32_t, double p);
STATS_DISCRETE(Binomial, double, std::int32_t n, double p);  // successes in n trials
STATS_SAMPLE(Binomial, std::int32_t n, double p);
STATS_DISCRETE(DiscreteUniform, double, std::int32_t a, std::int32_t b);  // a, a + 1, ..., b
STATS_DISCRETE(Geometric, double, double p);  // failures before the first success
// Marked items among l drawn from a population of n with m marked.
STATS_DISCRETE(Hypergeometric, double, std::int32_t n, std::int32_t l, std::int32_t m);
STATS_SAMPLE(Hypergeometric, std::int32_t n, std::int32_t l, std::int32_t m);
STATS_DISCRETE(NegativeBinomial, double, double n, double p);  // failures before success number n,
STATS_SAMPLE(NegativeBinomial, double n, double p);            // which need not be whole
STATS_DISCRETE(Poisson, double, double lambda);                // mean
STATS_SAMPLE(Poisson, double lambda);

// --- variates only; their draws are with their methods ---
STATS_VARIATE(Error, double a, double b, double c);  // exponential power: location, scale, shape
STATS_VARIATE(InverseGaussian, double mu, double lambda);  // mean, shape
STATS_VARIATE(Maxwell, double a);                          // scale
STATS_VARIATE(Moyal, double a, double b);                  // location, scale

// The x with F(x) = p of an error distribution by Newton-Raphson, f the derivative of F.  b and c
// are not looked at: the procedures know them.
double STATS_ErrorDeviate_HW(VKernelVector kv, double p, vexel::kernels::RealFunction F,
                             vexel::kernels::RealFunction f, double a, double b, double c,
                             double tol);

#undef STATS_VARIATE
#undef STATS_FAMILY
#undef STATS_DISCRETE
#undef STATS_SAMPLE
#undef STATS_SERIES
#undef STATS_SEARCH

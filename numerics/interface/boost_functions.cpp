// The functions taken from Boost.Math, in double only.
//
// Promotion to long double is off: it costs a factor of ten.  The callers keep to the ranges where
// the double versions are accurate, or use the value as the start of an iteration of their own.

// Boost's assertions would end the process where its own intermediate results degenerate; their
// values are checked or corrected by the callers instead.
#define BOOST_DISABLE_ASSERTS

#include "numerics/interface/boost_functions.hpp"

#include <boost/math/policies/policy.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/digamma.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <exception>
#include <limits>

namespace nag2 {

namespace {

namespace policies = boost::math::policies;

using DoubleOnly =
    policies::policy<policies::promote_double<false>, policies::promote_float<false>,
                     policies::overflow_error<policies::ignore_error>,
                     policies::underflow_error<policies::ignore_error>,
                     policies::denorm_error<policies::ignore_error>,
                     policies::domain_error<policies::ignore_error>,
                     policies::pole_error<policies::ignore_error>,
                     policies::evaluation_error<policies::ignore_error>,
                     policies::max_series_iterations<20000>, policies::max_root_iterations<100>>;

// One call with every exception turned into a NaN.
template <typename Function>
double guarded(Function function) {
  try {
    return function(DoubleOnly());
  } catch (const std::exception&) {
    return std::numeric_limits<double>::quiet_NaN();
  }
}

}  // namespace

double boostGammaP(double a, double x) {
  return guarded([=](auto policy) { return boost::math::gamma_p(a, x, policy); });
}

double boostGammaQ(double a, double x) {
  return guarded([=](auto policy) { return boost::math::gamma_q(a, x, policy); });
}

double boostDigamma(double x) {
  return guarded([=](auto policy) { return boost::math::digamma(x, policy); });
}

double boostGammaPInverse(double a, double p) {
  return guarded([=](auto policy) { return boost::math::gamma_p_inv(a, p, policy); });
}

double boostGammaQInverse(double a, double q) {
  return guarded([=](auto policy) { return boost::math::gamma_q_inv(a, q, policy); });
}

double boostBetaInverse(double a, double b, double p, double* complement) {
  return guarded([=](auto policy) { return boost::math::ibeta_inv(a, b, p, complement, policy); });
}

double boostBetaComplementInverse(double a, double b, double q, double* complement) {
  return guarded([=](auto policy) { return boost::math::ibetac_inv(a, b, q, complement, policy); });
}

}  // namespace nag2

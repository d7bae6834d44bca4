// The table of type codes, and the reading of a distribution's description.

#include "generators/default_generator.hpp"

#include <array>
#include <limits>

#include "distributions/bernoulli.hpp"
#include "distributions/beta.hpp"
#include "distributions/binomial.hpp"
#include "distributions/cauchy.hpp"
#include "distributions/chi_square.hpp"
#include "distributions/discrete_uniform.hpp"
#include "distributions/error.hpp"
#include "distributions/exponential.hpp"
#include "distributions/f_ratio.hpp"
#include "distributions/gamma.hpp"
#include "distributions/geometric.hpp"
#include "distributions/gumbel.hpp"
#include "distributions/hypergeometric.hpp"
#include "distributions/inverse_gaussian.hpp"
#include "distributions/laplace.hpp"
#include "distributions/log_normal.hpp"
#include "distributions/logistic.hpp"
#include "distributions/maxwell.hpp"
#include "distributions/moyal.hpp"
#include "distributions/negative_binomial.hpp"
#include "distributions/non_central_beta.hpp"
#include "distributions/non_central_student_t.hpp"
#include "distributions/normal.hpp"
#include "distributions/pareto.hpp"
#include "distributions/poisson.hpp"
#include "distributions/power.hpp"
#include "distributions/rayleigh.hpp"
#include "distributions/student_t.hpp"
#include "distributions/triangular.hpp"
#include "distributions/uniform.hpp"
#include "distributions/weibull.hpp"
#include "kernel/conversions.hpp"

namespace {

// By type code.  Codes 0, 7 and 32 are none.
constexpr std::array<STATS_DefaultGenerator_HW::Variate, 34> kVariates = {
    nullptr,                                   // 0
    STATS_BernoulliRandomVariate_HW,           // 1
    STATS_BetaRandomVariate_HW,                // 2
    STATS_BinomialRandomVariate_HW,            // 3
    STATS_CauchyRandomVariate_HW,              // 4
    STATS_ChiSquareRandomVariate_HW,           // 5
    STATS_DiscreteUniformRandomVariate_HW,     // 6
    nullptr,                                   // 7
    STATS_ErrorRandomVariate_HW,               // 8
    STATS_ExponentialRandomVariate_HW,         // 9
    STATS_FRatioRandomVariate_HW,              // 10
    STATS_GammaRandomVariate_HW,               // 11
    STATS_GeometricRandomVariate_HW,           // 12
    STATS_GumbelRandomVariate_HW,              // 13
    STATS_HypergeometricRandomVariate_HW,      // 14
    STATS_InverseGaussianRandomVariate_HW,     // 15
    STATS_LaplaceRandomVariate_HW,             // 16
    STATS_LogisticRandomVariate_HW,            // 17
    STATS_LogNormalRandomVariate_HW,           // 18
    STATS_MaxwellRandomVariate_HW,             // 19
    STATS_MoyalRandomVariate_HW,               // 20
    STATS_NegativeBinomialRandomVariate_HW,    // 21
    STATS_NonCentralBetaRandomVariate_HW,      // 22
    STATS_NonCentralStudentTRandomVariate_HW,  // 23
    STATS_NormalRandomVariate_HW,              // 24
    STATS_ParetoRandomVariate_HW,              // 25
    STATS_PoissonRandomVariate_HW,             // 26
    STATS_PowerRandomVariate_HW,               // 27
    STATS_RayleighRandomVariate_HW,            // 28
    STATS_StudentTRandomVariate_HW,            // 29
    STATS_TriangularRandomVariate_HW,          // 30
    STATS_UniformRandomVariate_HW,             // 31
    nullptr,                                   // 32
    STATS_WeibullRandomVariate_HW,             // 33
};

STATS_DefaultGenerator_HW::Sample sampleOf(V_BOOL code) {
  switch (code) {
    case 3:
      return STATS_BinomialRandomSample_HW;
    case 14:
      return STATS_HypergeometricRandomSample_HW;
    case 21:
      return STATS_NegativeBinomialRandomSample_HW;
    case 26:
      return STATS_PoissonRandomSample_HW;
    default:
      return nullptr;
  }
}

}  // namespace

int STATS_DefaultGenerator_HW::initialize(VKernelVector kv, ALGEB setup) {
  if (!IsVexelList(kv, setup)) {
    VexelRaiseError1(kv, "expected: list, received: %1", setup);
  }
  if (VexelNumArgs(kv, setup) != 2) {
    VexelRaiseError1(kv, "expected: list of size 2, received: %1", setup);
  }
  const ALGEB type = VexelListSelect(kv, setup, 1);
  if (!IsVexelInteger8(kv, type)) {
    VexelRaiseError1(kv, "invalid random variate type, expected: integer, received: %1", type);
  }
  const ALGEB coefficients = VexelListSelect(kv, setup, 2);
  if (!IsVexelList(kv, coefficients)) {
    VexelRaiseError1(kv, "expected: list of coefficients, received: %1", coefficients);
  }
  const V_INT count = VexelNumArgs(kv, coefficients);
  if (count > static_cast<V_INT>(parameters_.size())) {
    VexelRaiseError1(kv, "invalid number of parameters: %1", coefficients);
  }
  const V_BOOL code = VexelToV_BOOL(kv, type);  // hands an integer through
  if (code < 0 || code >= static_cast<V_BOOL>(kVariates.size())) {
    return 0;
  }
  variate_ = kVariates[static_cast<std::size_t>(code)];
  if (variate_ == nullptr) {
    return 0;
  }
  sample_ = sampleOf(code);
  for (V_INT i = 0; i < count; ++i) {
    parameters_[static_cast<std::size_t>(i)] =
        STATS_VexelUtils_HW::VexelDAGToDouble(VexelListSelect(kv, coefficients, i + 1));
  }
  return 1;
}

void STATS_DefaultGenerator_HW::fill(VKernelVector kv, double* out, V_INT n) {
  if (sample_ != nullptr && n <= std::numeric_limits<std::int32_t>::max()) {
    sample_(kv, out, static_cast<std::int32_t>(n), parameters_.data());
  } else {
    STATS_RandomVariateGenerator_HW::fill(kv, out, n);
  }
}

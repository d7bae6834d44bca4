// The table of type codes, and the reading of a distribution's description.

#include "generators/default_generator.hpp"

#include <algorithm>
#include <iterator>
#include <limits>
#include <type_traits>
#include <utility>

#include "distributions/families.hpp"
#include "kernel/conversions.hpp"

namespace {

// A parameter as the worker wants it: whole ones are truncated.
template <typename T>
T parameter(double x) {
  if constexpr (std::is_same_v<T, double>) {
    return x;
  } else {
    return STATS_DoubleToInteger_HW(x);
  }
}

// Workers called with as many of the parameters as they take.
template <typename Worker>
struct Caller;
template <typename... P>
struct Caller<double (*)(VKernelVector, P...)> {
  template <auto worker, std::size_t... i>
  static double variate(VKernelVector kv, const double* params, std::index_sequence<i...>) {
    return worker(kv, parameter<P>(params[i])...);
  }
  using Indices = std::index_sequence_for<P...>;
};
template <typename... P>
struct Caller<void (*)(VKernelVector, double*, std::int32_t, P...)> {
  template <auto worker, std::size_t... i>
  static void sample(VKernelVector kv, double* data, std::int32_t n, const double* params,
                     std::index_sequence<i...>) {
    worker(kv, data, n, parameter<P>(params[i])...);
  }
  using Indices = std::index_sequence_for<P...>;
};

template <auto worker>
double variateOf(VKernelVector kv, const double* params) {
  using C = Caller<decltype(worker)>;
  return C::template variate<worker>(kv, params, typename C::Indices());
}
template <auto worker>
void sampleOf(VKernelVector kv, double* data, std::int32_t n, const double* params) {
  using C = Caller<decltype(worker)>;
  C::template sample<worker>(kv, data, n, params, typename C::Indices());
}

// By type code; 0, 7 and 32 are none.
struct Family {
  int code;
  STATS_DefaultGenerator_HW::Variate variate;
  STATS_DefaultGenerator_HW::Sample sample = nullptr;  // a faster way to the same variates
};
constexpr Family kFamilies[] = {
    {1, variateOf<STATS_BernoulliRandomVariate_HW>},
    {2, variateOf<STATS_BetaRandomVariate_HW>},
    {3, variateOf<STATS_BinomialRandomVariate_HW>, sampleOf<STATS_BinomialRandomSample_HW>},
    {4, variateOf<STATS_CauchyRandomVariate_HW>},
    {5, variateOf<STATS_ChiSquareRandomVariate_HW>},
    {6, variateOf<STATS_DiscreteUniformRandomVariate_HW>},
    {8, variateOf<STATS_ErrorRandomVariate_HW>},
    {9, variateOf<STATS_ExponentialRandomVariate_HW>},
    {10, variateOf<STATS_FRatioRandomVariate_HW>},
    {11, variateOf<STATS_GammaRandomVariate_HW>},
    {12, variateOf<STATS_GeometricRandomVariate_HW>},
    {13, variateOf<STATS_GumbelRandomVariate_HW>},
    {14, variateOf<STATS_HypergeometricRandomVariate_HW>,
     sampleOf<STATS_HypergeometricRandomSample_HW>},
    {15, variateOf<STATS_InverseGaussianRandomVariate_HW>},
    {16, variateOf<STATS_LaplaceRandomVariate_HW>},
    {17, variateOf<STATS_LogisticRandomVariate_HW>},
    {18, variateOf<STATS_LogNormalRandomVariate_HW>},
    {19, variateOf<STATS_MaxwellRandomVariate_HW>},
    {20, variateOf<STATS_MoyalRandomVariate_HW>},
    {21, variateOf<STATS_NegativeBinomialRandomVariate_HW>,
     sampleOf<STATS_NegativeBinomialRandomSample_HW>},
    {22, variateOf<STATS_NonCentralBetaRandomVariate_HW>},
    {23, variateOf<STATS_NonCentralStudentTRandomVariate_HW>},
    {24, variateOf<STATS_NormalRandomVariate_HW>},
    {25, variateOf<STATS_ParetoRandomVariate_HW>},
    {26, variateOf<STATS_PoissonRandomVariate_HW>, sampleOf<STATS_PoissonRandomSample_HW>},
    {27, variateOf<STATS_PowerRandomVariate_HW>},
    {28, variateOf<STATS_RayleighRandomVariate_HW>},
    {29, variateOf<STATS_StudentTRandomVariate_HW>},
    {30, variateOf<STATS_TriangularRandomVariate_HW>},
    {31, variateOf<STATS_UniformRandomVariate_HW>},
    {33, variateOf<STATS_WeibullRandomVariate_HW>},
};

const Family* familyOf(V_BOOL code) {
  const auto* const found = std::find_if(std::begin(kFamilies), std::end(kFamilies),
                                         [=](const Family& f) { return f.code == code; });
  return found == std::end(kFamilies) ? nullptr : found;
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
  const Family* const family = familyOf(code);
  if (family == nullptr) {
    return 0;
  }
  variate_ = family->variate;
  sample_ = family->sample;
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

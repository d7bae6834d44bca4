// Bootstrap: resamples of an array, and a statistic over many resamples (B. Efron, Bootstrap
// methods: another look at the jackknife, 1979).

#include <cstdint>
#include <limits>

#include "generators/alias_urn.hpp"
#include "kernel/conversions.hpp"
#include "kernel/data_argument.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernel/uniform_source.hpp"

namespace {

// Uniform indices 0 .. size - 1, size >= 1: the top bits of an integer, drawn again while they are
// beyond the range.  For a size that is a power of two one bit more than needed is taken; the
// width decides which draws are used, and with it every stored sample.
class UniformIndex {
 public:
  UniformIndex(VKernelVector kv, V_INT size) : last_(static_cast<std::uint32_t>(size - 1)) {
    if (size - 1 > V_INT{std::numeric_limits<std::uint32_t>::max()}) {
      VexelRaiseError(kv, "cannot resample more than 4294967296 elements");
    }
    for (std::uint32_t range = 0x7FFFFFFFU; range > last_; range >>= 1) {
      ++shift_;
    }
  }
  std::size_t Next() const {
    STATS_VexelRandomStream_HW uniforms;
    return vexel::kernels::classic::indexUpTo(uniforms, last_, shift_);
  }

 private:
  std::uint32_t last_;
  int shift_ = 0;
};

// out[0..n-1] from elements of in at the indices that next gives.
template <typename T, typename Next>
void resample(const T* in, T* out, V_INT n, Next next) {
  for (V_INT k = 0; k < n; ++k) {
    out[k] = in[next()];
  }
}

// The same for arrays of one of the element types that can be resampled.
template <typename Next>
void resampleArray(VKernelVector kv, ALGEB data, int dataType, ALGEB out, Next next) {
  const void* from = RTableDataBlock(kv, data);
  void* to = RTableDataBlock(kv, out);
  const V_INT n = RTableNumElements(kv, out);
  if (dataType == RTABLE_DAG) {
    resample(static_cast<const ALGEB*>(from), static_cast<ALGEB*>(to), n, next);
  } else if (dataType == RTABLE_INTEGER32) {
    resample(static_cast<const std::int32_t*>(from), static_cast<std::int32_t*>(to), n, next);
  } else {
    resample(static_cast<const float*>(from), static_cast<float*>(to), n, next);
  }
}

void requireOneDimension(VKernelVector kv, ALGEB x) {
  STATS_RequireVector_HW(kv, x, "expected: one-dimensional array, received %1");
}

double statisticOf(VKernelVector kv, ALGEB statistic, ALGEB sample) {
  return STATS_VexelUtils_HW::VexelDAGToDouble(EvalVexelProc(kv, statistic, 1, sample));
}

}  // namespace

// (data, rows, columns, weights): a rows x columns array of elements of data, drawn uniformly or,
// when weights has elements, by weight.
//
// data holds 32-bit integers, 32-bit floats or host objects; hosts pass nothing else.
STATS_ENTRY(STATS_VexelBootstrapSample_HW) {
  const Arguments arg(kv, args, 4, "expected 4 arguments, received: %1");
  const ALGEB data = arg[1];
  const ALGEB weights = arg[4];
  requireOneDimension(kv, data);
  requireOneDimension(kv, weights);
  const V_INT rows = arg.integer(2);
  const V_INT columns = arg.integer(3);
  RTableSettings settings;
  RTableGetSettings(kv, &settings, data);
  if (settings.storage != RTABLE_RECTANGULAR) {
    VexelRaiseError1(kv, "input array must have rectangular storage type", ToVexelNULL(kv));
  }
  const int type = settings.data_type;
  if (type != RTABLE_DAG && type != RTABLE_INTEGER32 && type != RTABLE_FLOAT32) {
    VexelRaiseError1(
        kv, "expected: array of integer[4], float[4] or host objects as data, received %1", data);
  }
  const V_INT n = RTableNumElements(kv, data);
  if (n < 1) {
    VexelRaiseError1(kv, "expected: non-empty array as data, received %1", data);
  }
  settings.num_dimensions = 2;
  const V_INT bounds[] = {1, rows, 1, columns};
  const ALGEB result = RTableCreate(kv, &settings, nullptr, bounds);

  if (RTableNumElements(kv, weights) == 0) {
    const UniformIndex index(kv, n);
    resampleArray(kv, data, type, result, [&] { return index.Next(); });
    return result;
  }
  if (RTableNumElements(kv, weights) != n) {
    VexelRaiseError1(kv, "data array and weights array must have the same number of elements",
                     ToVexelNULL(kv));
  }
  const STATS_VexelDataSample_HW weightSample(kv, weights);
  STATS_AliasUrnGenerator_HW urn(weightSample.size(), weightSample.size(), weightSample.points());
  resampleArray(kv, data, type, result, [&] { return static_cast<std::size_t>(urn.Next()); });
  return result;
}

// (data, weights, statistic, resample size n, replications m): m values of the statistic, each of n
// points drawn from data.
//
// Without weights indices run over 0 .. n - 1, so that n is at most the number of points.  The
// statistic gets the same array every time, filled anew.
STATS_ENTRY(STATS_VexelBootstrapStatistic_HW) {
  const Arguments arg(kv, args, 5, "expected 5 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  const ALGEB statistic = arg[3];
  const V_INT n = arg.integer(4);
  const V_INT m = arg.integer(5);
  if (!sample.weighted() && n > sample.size()) {
    VexelRaiseError2(kv, "resample size %1 exceeds the number of data points in %2", arg[4],
                     arg[1]);
  }
  const ALGEB values = STATS_CreateFloatVector_HW(kv, m);
  const ALGEB resampled = STATS_CreateFloatVector_HW(kv, n);
  double* value = STATS_FloatBlock_HW(kv, values);
  double* points = STATS_FloatBlock_HW(kv, resampled);

  const auto replicate = [&](auto next) {
    for (V_INT k = 0; k < m; ++k) {
      resample(sample.points(), points, n, next);
      value[k] = statisticOf(kv, statistic, resampled);
    }
  };
  if (sample.weighted()) {
    STATS_AliasUrnGenerator_HW urn(sample.size(), sample.size(), sample.weights());
    replicate([&] { return static_cast<std::size_t>(urn.Next()); });
  } else {
    const UniformIndex index(kv, n > 0 ? n : 1);
    replicate([&] { return index.Next(); });
  }
  return values;
}

// (sampler, statistic, sample size, replications m): m values of the statistic, each of a sample
// that the sampler makes from the sample size as it was given.
STATS_ENTRY(STATS_VexelBootstrapStatisticRV_HW) {
  const Arguments arg(kv, args, 4, "expected 4 arguments, received: %1");
  const ALGEB sampler = arg[1];
  const ALGEB statistic = arg[2];
  const ALGEB size = arg[3];
  const V_INT m = arg.integer(4);
  VexelToV_INT(kv, size);  // only an integer is accepted
  const ALGEB values = STATS_CreateFloatVector_HW(kv, m);
  double* value = STATS_FloatBlock_HW(kv, values);
  for (V_INT k = 0; k < m; ++k) {
    value[k] = statisticOf(kv, statistic, EvalVexelProc(kv, sampler, 1, size));
  }
  return values;
}

// The entry points of the moving mean and the moving median.
//
// A result has the offset's leading values as they are, then one value for each window.  When
// missing values are dropped the series gets shorter, the offset does not: leading values that are
// then not there are undefined.

#include <algorithm>
#include <limits>

#include "descriptive/given_names.hpp"
#include "kernel/data_argument.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernels/lookout.hpp"
#include "smoothing/given_names.hpp"

namespace {

struct Window {
  int size;
  int offset;
};

// Reads and checks arguments 2 and 3 against the number of data.
Window windowArguments(VKernelVector kv, const Arguments& arg, int dataSize) {
  const V_INT size = arg.integer(2);
  const V_INT offset = arg.integer(3);
  if (size < 1 || size > dataSize) {
    VexelRaiseError2(kv,
                     "invalid size of the moving window, expected: integer between 1 and %1, "
                     "received: %2",
                     ToVexelInteger(kv, dataSize), arg[2]);
  }
  if (offset < 0 || offset >= dataSize) {
    VexelRaiseError2(kv,
                     "invalid offset for the moving window, expected: integer between 0 and %1, "
                     "received: %2",
                     ToVexelInteger(kv, V_INT{dataSize} - 1), arg[3]);
  }
  return {static_cast<int>(size), static_cast<int>(offset)};
}

// The series and the weights that a call works on.
struct Series {
  double* values;
  const double* weights;  // null when unweighted
  int n;
  V_INT results;  // offset + number of windows, or fewer when the series is shorter than a window
};

V_INT resultCount(const Window& window, int n) {
  return std::max(V_INT{window.offset} + (n - window.size) + 1, V_INT{0});
}

void checkWeights(VKernelVector kv, int count, const Window& window) {
  if (count != window.size) {
    VexelRaiseError1(kv,
                     "the number of elements in the weights array must be equal to the size of the "
                     "moving window",
                     ToVexelNULL(kv));
  }
}

Series inPlace(VKernelVector kv, const STATS_VexelDataSample_HW& data,
               const STATS_VexelDataSample_HW& weights, const Window& window) {
  if (weights.size() == 0) {
    return {data.points(), nullptr, data.size(), resultCount(window, data.size())};
  }
  checkWeights(kv, weights.size(), window);
  return {data.points(), weights.points(), data.size(), resultCount(window, data.size())};
}

// Copies with room for every result, so that results can be written back; what is not there of the
// leading values is undefined.
Series copied(VKernelVector kv, const STATS_VexelDataSample_HW& data,
              const STATS_VexelDataSample_HW& weights, const Window& window, bool ignoreMissing) {
  const V_INT room = resultCount(window, data.size());
  Series series{STATS_AllocDoubles_HW(kv, std::max(V_INT{data.size()}, room)), nullptr, 0, 0};
  series.n = STATS_CopyData_HW(data, series.values, nullptr, ignoreMissing);
  series.results = resultCount(window, series.n);
  for (V_INT i = series.n; i < series.results; ++i) {
    series.values[i] = std::numeric_limits<double>::quiet_NaN();
  }
  double* kept = STATS_AllocDoubles_HW(kv, weights.size());
  const int count = STATS_CopyData_HW(weights, kept, nullptr, ignoreMissing);
  if (count != 0) {
    checkWeights(kv, count, window);
    series.weights = kept;
  }
  return series;
}

// A new result 1..series.results whose leading values are the series'.
ALGEB newResult(VKernelVector kv, ALGEB data, const Series& series, const Window& window,
                double** block) {
  const ALGEB result = STATS_FloatsLike_HW(kv, data, 1, series.results);
  *block = STATS_FloatBlock_HW(kv, result);
  std::copy_n(series.values, std::min(V_INT{window.offset}, series.results), *block);
  return result;
}

}  // namespace

// STATS_VexelMovingMean_HW(data, window size, offset, weights, ignore, kind, recursive)
//
// weights    one for each place in the window, or an empty array
// kind       of mean, as for STATS_VexelMean_HW
// recursive  each mean takes the place of the value at its offset, for later windows to see
STATS_ENTRY(STATS_VexelMovingMean_HW) {
  const Arguments arg(kv, args, 7, "VexelMovingMean expects 7 arguments, received: %1");
  const STATS_VexelDataSample_HW data(kv, arg[1]);
  const STATS_VexelDataSample_HW weights(kv, arg[4]);
  const bool ignoreMissing = arg.boolean(5);
  const Window window = windowArguments(kv, arg, data.size());
  const bool recursive = arg.boolean(7);
  const Series series = ignoreMissing || recursive
                            ? copied(kv, data, weights, window, ignoreMissing)
                            : inPlace(kv, data, weights, window);
  const STATS_MEAN_TYPE_HW type = STATS_ToMeanType_HW(arg.integer(6));

  if (recursive) {
    vexel::kernels::Lookout lookout;
    for (int s = 0; s <= series.n - window.size; ++s) {
      series.values[V_INT{window.offset} + s] =
          STATS_Mean_HW(kv, series.values + s, series.weights, window.size, type);
      lookout.done(window.size);
    }
  }
  double* block = nullptr;
  const ALGEB result = newResult(kv, arg[1], series, window, &block);
  if (recursive) {
    std::copy_n(series.values, series.results, block);
  } else {
    STATS_MovingMean_HW(kv, series.values, series.weights, series.n, window.size, type,
                        block + window.offset);
  }
  return result;
}

// STATS_VexelMovingMedian_HW(data, window size, offset, weights, ignore, recursive), as the moving
// mean.
STATS_ENTRY(STATS_VexelMovingMedian_HW) {
  const Arguments arg(kv, args, 6, "VexelMovingMedian expects 6 arguments, received: %1");
  const STATS_VexelDataSample_HW data(kv, arg[1]);
  const STATS_VexelDataSample_HW weights(kv, arg[4]);
  const bool ignoreMissing = arg.boolean(5);
  const Window window = windowArguments(kv, arg, data.size());
  const bool recursive = arg.boolean(6);
  const Series series = ignoreMissing || recursive
                            ? copied(kv, data, weights, window, ignoreMissing)
                            : inPlace(kv, data, weights, window);

  double* block = nullptr;
  const ALGEB result = newResult(kv, arg[1], series, window, &block);
  double* out = block + window.offset;
  if (series.weights == nullptr) {
    STATS_MovingMedian_HW(kv, series.values, series.n, window.size, window.offset, recursive, out);
  } else {
    STATS_WeightedMovingMedian_HW(kv, series.values, series.weights, series.n, window.size,
                                  window.offset, recursive, STATS_AllocDoubles_HW(kv, window.size),
                                  STATS_AllocDoubles_HW(kv, window.size), out);
  }
  return result;
}

// Trimming and winsorizing arrays in their own element type.

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "kernel/conversions.hpp"
#include "kernel/data_argument.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernels/sorting/split_by_key.hpp"
#include "kernels/watch.hpp"

namespace {

struct Percentiles {
  double lower;
  double upper;
};

// Arguments 2 and 3.
Percentiles percentiles(VKernelVector kv, const Arguments& arg) {
  const double lower = arg.real(2);
  const double upper = arg.real(3);
  if (!(lower >= 0.0 && lower <= 100.0)) {
    VexelRaiseError1(kv,
                     "expected second argument (lower percentile) to be a numeric constant between "
                     "0 and 100, received: %1",
                     arg[2]);
  }
  if (!(upper >= 0.0 && upper <= 100.0)) {
    VexelRaiseError1(
        kv,
        "expected third argument (upper percentile) to be a numeric constant between 0 "
        "and 100, received: %1",
        arg[3]);
  }
  if (lower > upper) {
    VexelRaiseError2(kv,
                     "the value of lower percentile is expected to be smaller than the value of "
                     "upper percentile, received: %1, %2",
                     arg[2], arg[3]);
  }
  return {lower, upper};
}

// Elements apart at two percentiles: positions below low hold the smallest, those from low to
// high - 1 the middle, position high, when there is one, the smallest of the rest.
struct CutElements {
  char* elements;
  int count;
  int low;
  int high;
  int elementSize;

  char* at(int position) const {
    return elements + static_cast<std::ptrdiff_t>(position) * elementSize;
  }
};

// Copies the data to elements and rearranges them there.
CutElements cut(VKernelVector kv, ALGEB array, const STATS_ElementReader_HW& data, Percentiles p,
                char* elements) {
  const STATS_VexelDataSample_HW sample(kv, array);
  const int m = sample.size();
  const STATS_ElementBuffer_HW scratch(kv, RTABLE_FLOAT64, m);
  auto* const keys = reinterpret_cast<double*>(scratch.data());
  STATS_CopyData_HW(sample, keys);
  data.copyTo(elements);

  const int low = std::clamp(STATS_DoubleToInteger_HW(p.lower * m * 0.01), 0, m);
  const int high = std::clamp(STATS_DoubleToInteger_HW(p.upper * m * 0.01), low, m);
  const CutElements result{elements, m, low, high, data.elementSize()};
  vexel::kernels::splitByKey(keys, elements, m, low, data.elementSize());
  vexel::kernels::splitByKey(keys + low, result.at(low), m - low, high - low, data.elementSize());
  return result;
}

RTableSettings denseSettings(const STATS_ElementReader_HW& data) {
  RTableSettings settings = data.settings();
  settings.storage = RTABLE_RECTANGULAR;
  return settings;
}

// The count message names the same entry point for both, and always has.
constexpr char kCountMessage[] = "VexelTrim expects 3 arguments, received: %1";

}  // namespace

// STATS_VexelTrim_HW(data, lower, upper): the elements between two percentiles, as a dense array
// from 1, in no particular order.
//
// Of n elements those ranked from lower n / 100 up to, but not including, upper n / 100 are kept,
// both truncated; equal percentiles keep none.
STATS_ENTRY(STATS_VexelTrim_HW) {
  const Arguments arg(kv, args, 3, kCountMessage);
  const Percentiles p = percentiles(kv, arg);
  STATS_RequireVector_HW(kv, arg[1], STATS_kInvalidVector_HW);
  const STATS_ElementReader_HW data(kv, arg[1]);
  const STATS_ElementBuffer_HW raw(kv, data.dataType(), data.size());
  const CutElements parts = cut(kv, arg[1], data, p, raw.data());
  return STATS_CreateLike_HW(kv, denseSettings(data), 1, parts.high - parts.low,
                             parts.at(parts.low));
}

// STATS_VexelWinsorize_HW(data, lower, upper): all elements, as a dense array from 1 in no
// particular order, those below the lower percentile replaced by the element there and those above
// the upper one by the element there.
STATS_ENTRY(STATS_VexelWinsorize_HW) {
  const Arguments arg(kv, args, 3, kCountMessage);
  const Percentiles p = percentiles(kv, arg);
  STATS_RequireVector_HW(kv, arg[1], STATS_kInvalidVector_HW);
  const STATS_ElementReader_HW data(kv, arg[1]);
  const ALGEB result = STATS_CreateLike_HW(kv, denseSettings(data), 1, data.size());
  if (data.size() == 0) {
    return result;
  }
  const CutElements parts =
      cut(kv, arg[1], data, p, static_cast<char*>(RTableDataBlock(kv, result)));
  const auto copyElement = [&](int from, int to) {
    std::memcpy(parts.at(to), parts.at(from), static_cast<std::size_t>(parts.elementSize));
  };
  // A lower cut at the very end takes the largest element for the cut.
  const int lowest = std::min(parts.low, parts.count - 1);
  vexel::kernels::forEach(lowest, [&](int i) { copyElement(lowest, i); });
  vexel::kernels::forEach(parts.count - 1 - parts.high,
                          [&](int i) { copyElement(parts.high, parts.high + 1 + i); });
  return result;
}

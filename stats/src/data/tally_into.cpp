// Frequency tables: counting a sample into bins of equal width.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "data/host_relations.hpp"
#include "kernel/conversions.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernel/sample_view.hpp"
#include "kernels/lookout.hpp"
#include "kernels/tallies/bins.hpp"

namespace {

constexpr int kBinCost = 100;  // operations to make a bin's objects, near enough

// Room for the edges of nRanges ranges.
std::vector<double> edgeRoom(VKernelVector kv, V_INT nRanges, V_INT m) {
  constexpr V_INT kMost = std::numeric_limits<std::int32_t>::max() - 1;
  if (m < 1) {
    return {};  // each range is refused when it is split
  }
  if (nRanges > 0 && (m >= kMost || nRanges > kMost / (m + 1))) {
    VexelRaiseError(kv, "not enough memory");
  }
  return std::vector<double>(nRanges > 0 ? static_cast<std::size_t>(nRanges * (m + 1)) : 0);
}

// Writes the m + 1 edges of a host range.  A range with an infinite end can only be one bin.
void splitRange(VKernelVector kv, ALGEB range, V_INT m, double* edges) {
  const double low = STATS_VexelUtils_HW::VexelDAGToDouble(STATS_Operand_HW(range, 1));
  const double high = STATS_VexelUtils_HW::VexelDAGToDouble(STATS_Operand_HW(range, 2));
  if (m < 1 || (m > 1 && (std::isinf(low) || std::isinf(high)))) {
    VexelRaiseError1(kv, "unable to split the range %1", range);
  }
  const double width = (high - low) / static_cast<double>(m);
  edges[0] = low;
  for (V_INT k = 1; k < m; ++k) {
    edges[k] = static_cast<double>(k) * width + low;
  }
  edges[m] = high;
}

ALGEB binRange(VKernelVector kv, const double* edges) {
  const ALGEB low = STATS_DoubleToVexelFloat_HW(kv, edges[0]);
  const ALGEB high = STATS_DoubleToVexelFloat_HW(kv, edges[1]);
  return STATS_NewPair_HW(kv, VEXEL_TAG_RANGE, low, high);
}

void countInto(std::uint32_t* counts, const SampleView& sample, const std::vector<double>& edges,
               int nRanges, int m) {
  vexel::kernels::tallyInto(counts, sample.points, sample.size, edges.data(), nRanges, m);
}

void sumInto(double* sums, const SampleView& sample, const std::vector<double>& edges, int nRanges,
             int m) {
  vexel::kernels::weightedTallyInto(sums, sample.points, sample.weights, sample.size, edges.data(),
                                    nRanges, m);
}

// The list of (bin = value(cell)) for all bins of all ranges.
template <typename Value>
ALGEB equationList(VKernelVector kv, const std::vector<double>& edges, int nRanges, int m,
                   Value value) {
  const ALGEB list = VexelListAlloc(kv, V_INT{nRanges} * m);
  vexel::kernels::Lookout lookout;
  for (V_INT r = 0; r < nRanges; ++r) {
    for (V_INT k = 0; k < m; ++k) {
      const V_INT cell = r * m + k;
      lookout.done(kBinCost);
      const ALGEB bin = binRange(kv, edges.data() + r * (m + 1) + k);
      const ALGEB count = value(static_cast<std::size_t>(cell));
      VexelListAssign(kv, list, cell + 1, STATS_NewPair_HW(kv, VEXEL_TAG_EQUATION, bin, count));
    }
  }
  return list;
}

// The array of running sums of the n cells of frequencies.
template <typename T>
ALGEB cumulativeArray(VKernelVector kv, int dataType, ALGEB frequencies, V_INT n) {
  const ALGEB result = STATS_CreateVector_HW(kv, dataType, 1, n);
  const T* const f = static_cast<const T*>(RTableDataBlock(kv, frequencies));
  T* const out = static_cast<T*>(RTableDataBlock(kv, result));
  out[0] = f[0];
  for (V_INT k = 1; k < n; ++k) {
    out[k] = out[k - 1] + f[k];
  }
  return result;
}

}  // namespace

// STATS_VexelTallyInto_HW(data, weights, ignore, ranges, m): a list of equations bin = count, m for
// each range of the list in turn.
//
// Counts are integers, or floats of summed weights when weights are given.  ignore drops missing
// values first; a NaN that stays is in no bin.
STATS_ENTRY(STATS_VexelTallyInto_HW) {
  const Arguments arg(kv, args, 5, "expected 5 arguments, received: %1");
  const STATS_VexelDataSample_HW given(kv, arg[1], arg[2]);
  const SampleView sample = SampleView::forReading(kv, given, arg.boolean(3));
  const ALGEB ranges = arg[4];
  if (IsVexelList(kv, ranges) == 0) {
    VexelRaiseError1(kv, "expected 4th argument to be of type list(range), received: %1", ranges);
  }
  const V_INT length = VexelNumArgs(kv, ranges);
  const V_INT bins = arg.integer(5);
  std::vector<double> edges = edgeRoom(kv, length, bins);
  for (V_INT r = 0; r < length; ++r) {
    const ALGEB range = VexelListSelect(kv, ranges, r + 1);
    if (!STATS_IsRange_HW(range)) {
      VexelRaiseError1(
          kv, "invalid argument; expected a positive integer or a list of ranges, received: %1",
          ranges);
    }
    splitRange(kv, range, bins, edges.data() + (bins > 0 ? r * (bins + 1) : 0));
  }
  if (length == 0) {
    return VexelListAlloc(kv, 0);
  }

  const int nRanges = static_cast<int>(length);
  const int m = static_cast<int>(bins);
  const std::size_t cells = static_cast<std::size_t>(nRanges) * static_cast<std::size_t>(m);
  if (given.weighted()) {
    std::vector<double> sums(cells);
    sumInto(sums.data(), sample, edges, nRanges, m);
    return equationList(kv, edges, nRanges, m, [&](std::size_t cell) {
      return STATS_DoubleToVexelFloat_HW(kv, sums[cell]);
    });
  }
  std::vector<std::uint32_t> counts(cells);
  countInto(counts.data(), sample, edges, nRanges, m);
  return equationList(kv, edges, nRanges, m,
                      [&](std::size_t cell) { return ToVexelInteger(kv, counts[cell]); });
}

// STATS_VexelFrequencyData_HW(data, weights, ignore, range, m): a list of three arrays from 1 to m,
// the bins, their frequencies and the running sums of these.
//
// Frequencies are integer[4], or float[8] when weights are given.
STATS_ENTRY(STATS_VexelFrequencyData_HW) {
  const Arguments arg(kv, args, 5, "expected 5 arguments, received: %1");
  const STATS_VexelDataSample_HW given(kv, arg[1], arg[2]);
  const SampleView sample = SampleView::forReading(kv, given, arg.boolean(3));
  const ALGEB range = arg[4];
  if (!STATS_IsRange_HW(range)) {
    VexelRaiseError1(kv, "expected 4th argument to be of type range, received: %1", range);
  }
  const V_INT bins = arg.integer(5);
  std::vector<double> edges = edgeRoom(kv, 1, bins);
  splitRange(kv, range, bins, edges.data());
  const int m = static_cast<int>(bins);

  const ALGEB binArray = STATS_CreateVector_HW(kv, RTABLE_DAG, 1, m);
  auto* const binCells = static_cast<ALGEB*>(RTableDataBlock(kv, binArray));
  vexel::kernels::Lookout lookout;
  for (int k = 0; k < m; ++k) {
    lookout.done(kBinCost);
    binCells[k] = binRange(kv, edges.data() + k);
  }
  const int dataType = given.weighted() ? RTABLE_FLOAT64 : RTABLE_INTEGER32;
  const ALGEB frequencies = STATS_CreateVector_HW(kv, dataType, 1, m);
  void* const cells = RTableDataBlock(kv, frequencies);
  ALGEB cumulative = nullptr;
  if (given.weighted()) {
    sumInto(static_cast<double*>(cells), sample, edges, 1, m);
    cumulative = cumulativeArray<double>(kv, dataType, frequencies, m);
  } else {
    countInto(static_cast<std::uint32_t*>(cells), sample, edges, 1, m);
    cumulative = cumulativeArray<std::uint32_t>(kv, dataType, frequencies, m);
  }
  const ALGEB result = VexelListAlloc(kv, 3);
  VexelListAssign(kv, result, 1, binArray);
  VexelListAssign(kv, result, 2, frequencies);
  VexelListAssign(kv, result, 3, cumulative);
  return result;
}

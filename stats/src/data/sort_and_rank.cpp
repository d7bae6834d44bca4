// Sorting and ranking entry points.

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "data/rank.hpp"
#include "kernel/data_argument.hpp"
#include "kernel/element_types.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernels/lookout.hpp"
#include "kernels/watch.hpp"

namespace {

// Moves the first of each run of equal elements of a sorted block to the front; how many there are.
template <typename T, typename Differ>
V_INT compactRuns(T* sorted, V_INT n, Differ differ) {
  V_INT kept = 0;
  vexel::kernels::forEach(n, [&](V_INT i) {
    if (i == 0 || differ(sorted[kept - 1], sorted[i])) {
      sorted[kept++] = sorted[i];
    }
  });
  return kept;
}

// NaNs stay, all of them.  Host objects are compared by value, so of an integer 2 and a float 2.0
// the earlier one stays.
V_INT uniquify(char* sorted, V_INT n, int dataType) {
  if (!STATS_IsMachineRealType_HW(dataType)) {
    return compactRuns(reinterpret_cast<ALGEB*>(sorted), n, [](const ALGEB& a, const ALGEB& b) {
      return STATS_NumericCompareALGEB_HW(reinterpret_cast<const char*>(&a),
                                          reinterpret_cast<const char*>(&b)) != 0;
    });
  }
  V_INT kept = 0;
  STATS_WithMachineType_HW(dataType, [&]<typename T>(T*) {
    kept = compactRuns(reinterpret_cast<T*>(sorted), n, [](T a, T b) { return a != b; });
  });
  return kept;
}

// value -> 1, 2, 3, ... for each run of one object.
ALGEB denseRanks(VKernelVector kv, const ALGEB* sorted, V_INT n) {
  const ALGEB table = VexelTableAlloc(kv);
  if (n < 1) {
    return table;
  }
  V_INT counter = 1;
  ALGEB value = sorted[0];
  constexpr int kEntryCost = 1000;  // operations for an entry of a large host table, near enough
  vexel::kernels::Lookout lookout;
  for (V_INT i = 1; i < n; ++i) {
    lookout.done(1);
    if (sorted[i] == value) {
      continue;
    }
    if (IsVexelNumeric(kv, value) == 0) {
      VexelRaiseError1(kv, "expected: numeric data, received: %1", value);
    }
    lookout.done(kEntryCost);
    VexelTableAssign(kv, table, value, ToVexelInteger(kv, counter++));
    value = sorted[i];
  }
  // The last value goes in whatever it is: data of one symbol rank it 1.
  VexelTableAssign(kv, table, value, ToVexelInteger(kv, counter));
  return table;
}

}  // namespace

// STATS_VexelSort_HW(data, ascending, uniquify): the elements of a dense one-dimensional array in
// sorted order, as a new array from 1.
//
// NaNs sort after every number.  With uniquify equal elements are merged, NaNs never.  An integer
// for ascending other than 1 sorts descending, as the ranking reads the flag.
STATS_ENTRY(STATS_VexelSort_HW) {
  const Arguments arg(kv, args, 3, "expected 3 arguments, received: %1");
  const ALGEB data = arg[1];
  STATS_RequireVector_HW(kv, data, STATS_kInvalidVector_HW);
  const RTableSettings settings = STATS_SettingsOf_HW(kv, data);
  if (settings.storage != RTABLE_RECTANGULAR) {
    VexelRaiseError1(kv, "invalid storage type, expected: dense array, received %1", data);
  }
  const V_INT n = RTableNumElements(kv, data);
  const ALGEB sorted = STATS_CreateLike_HW(kv, settings, 1, n);
  auto* const block = static_cast<char*>(RTableDataBlock(kv, sorted));
  STATS_SortDataBlock_HW(kv, RTableDataBlock(kv, data), block, n, settings.data_type,
                         VexelToV_BOOL(kv, arg[2]));
  if (!arg.boolean(3)) {
    return sorted;
  }
  const V_INT kept = uniquify(block, n, settings.data_type);
  return STATS_CreateLike_HW(kv, settings, 1, kept, block);
}

// STATS_VexelRankSort_HW(data, asRanks, ascending): with asRanks nonzero an integer[4] array,
// indexed as the data, of each element's rank from 1; otherwise a table from each distinct value to
// its position among them.
STATS_ENTRY(STATS_VexelRankSort_HW) {
  const Arguments arg(kv, args, 3, "expected 3 arguments, received: %1");
  STATS_RequireVector_HW(kv, arg[1], STATS_kInvalidVector_HW);
  const ALGEB data = STATS_DenseArray_HW(kv, arg[1]);
  RTableSettings settings = STATS_SettingsOf_HW(kv, data);
  const V_INT n = RTableNumElements(kv, data);
  const V_INT lower = RTableLowerBound(kv, data, 1);

  const RTableSettings rankSettings = STATS_VectorSettings_HW(kv, RTABLE_INTEGER32);
  const ALGEB result = STATS_CreateLike_HW(kv, rankSettings, lower, n);
  auto* const ranks = static_cast<std::uint32_t*>(RTableDataBlock(kv, result));
  STATS_RankSortDataBlock_HW(kv, RTableDataBlock(kv, data), ranks, n, settings.data_type,
                             VexelToV_BOOL(kv, arg[3]));
  if (arg.integer(2) != 0) {
    vexel::kernels::forEach(n, [=](V_INT i) { ++ranks[i]; });
    return result;
  }
  ALGEB sorted = STATS_CreateLike_HW(kv, settings, lower, n);
  STATS_RankOrderDataBlock_HW(kv, static_cast<const char*>(RTableDataBlock(kv, data)), 1, 0,
                              static_cast<char*>(RTableDataBlock(kv, sorted)), 1, 0, n, 0, 1,
                              STATS_RTableDataSize_HW(kv, settings.data_type), ranks, nullptr, true,
                              false);
  settings.data_type = RTABLE_DAG;
  sorted = RTableCopy(kv, &settings, sorted);
  return denseRanks(kv, static_cast<const ALGEB*>(RTableDataBlock(kv, sorted)), n);
}

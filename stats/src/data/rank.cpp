// Ranking and placing through the numerical library.
//
// Machine types go through its typed entries, which give the ranks of the comparator form without a
// call per comparison.  Host objects are brought to doubles once each, then ranked as doubles.

#include "data/rank.hpp"

#include <nag2/nag2.h>

#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

#include "kernel/conversions.hpp"
#include "kernel/element_types.hpp"
#include "kernel/nag_call.hpp"
#include "kernels/watch.hpp"

namespace {

int orderCode(int ascending) { return ascending == 1 ? Nag_Ascending : Nag_Descending; }

void requireRankable(VKernelVector kv, V_INT n, int dataType) {
  if (STATS_ElementComparatorOf_HW(dataType) == nullptr) {
    VexelRaiseError1(kv, "unable to compare complex numbers", nullptr);
  }
  if (n > std::numeric_limits<std::int32_t>::max()) {
    VexelRaiseError1(kv, "too many elements to rank: %1", ToVexelInteger(kv, n));
  }
}

// The order of STATS_NumericCompareALGEB_HW.  A single element is never compared, so nothing is
// asked of it.
std::vector<double> objectKeys(const ALGEB* objects, V_INT n) {
  std::vector<double> keys(static_cast<std::size_t>(n), 0.0);
  vexel::kernels::forEach(n > 1 ? n : 0, [&](V_INT i) {
    if (STATS_VexelUtils_HW::VexelDAGToDouble(objects[i], &keys[static_cast<std::size_t>(i)]) ==
        0) {
      STATS_VexelUtils_HW::ReportNonNumeric(objects[i]);
    }
  });
  return keys;
}

// Copies rows of bytes bytes; with Bytes an integral constant a copy is one or two moves.
template <typename Bytes>
void placeRows(VKernelVector kv, const char* source, std::ptrdiff_t sourceStep, char* target,
               std::ptrdiff_t targetStep, V_INT nRows, V_INT rankBase, Bytes bytes,
               const std::uint32_t* ranks, std::uint32_t* used, bool forward,
               bool checkDuplicates) {
  vexel::kernels::forEach(nRows, [&](V_INT i) {
    const V_INT rank = static_cast<std::int32_t>(ranks[i]);
    const V_INT k = rank - rankBase;
    if (k < 0 || k >= nRows) {
      VexelRaiseError1(kv, "invalid rank: %1", ToVexelInteger(kv, rank));
    }
    const V_INT position = forward ? k : nRows - 1 - k;
    if (bytes > 0) {  // rows without columns have ranks all the same
      std::memcpy(target + position * targetStep, source, bytes);
    }
    if (used != nullptr) {
      if (checkDuplicates && used[position] == 1) {
        VexelRaiseError1(kv, "duplicate rank: %1", ToVexelInteger(kv, rank));
      }
      used[position] = 1;
    }
    source += sourceStep;
  });
}

}  // namespace

void STATS_RankSortDataBlock_HW(VKernelVector kv, const void* block, std::uint32_t* ranks, V_INT n,
                                int dataType, int ascending) {
  requireRankable(kv, n, dataType);
  const auto count = static_cast<std::size_t>(n);
  NagError fail = STATS_NagError_HW();
  if (STATS_IsMachineRealType_HW(dataType)) {
    nag2_rank_typed(block, count, dataType, orderCode(ascending), ranks, &fail);
  } else {
    const std::vector<double> keys = objectKeys(static_cast<const ALGEB*>(block), n);
    nag2_rank_typed(keys.data(), count, NAG2_FLOAT64, orderCode(ascending), ranks, &fail);
  }
  STATS_RaiseNagError_HW(kv, fail);
}

void STATS_SortDataBlock_HW(VKernelVector kv, const void* block, char* sorted, V_INT n,
                            int dataType, int ascending) {
  requireRankable(kv, n, dataType);
  if (n < 1) {
    return;
  }
  if (STATS_IsMachineRealType_HW(dataType)) {
    NagError fail = STATS_NagError_HW();
    nag2_sort_typed(block, static_cast<std::size_t>(n), dataType, orderCode(ascending), sorted,
                    &fail);
    STATS_RaiseNagError_HW(kv, fail);
    return;
  }
  std::vector<std::uint32_t> ranks(static_cast<std::size_t>(n));
  STATS_RankSortDataBlock_HW(kv, block, ranks.data(), n, dataType, ascending);
  STATS_RankOrderDataBlock_HW(kv, static_cast<const char*>(block), 1, 0, sorted, 1, 0, n, 0, 1,
                              STATS_RTableDataSize_HW(kv, dataType), ranks.data(), nullptr, true,
                              false);
}

void STATS_RankOrderDataBlock_HW(VKernelVector kv, const char* source, V_INT sourceStride,
                                 V_INT sourceStart, char* target, V_INT targetStride,
                                 V_INT targetStart, V_INT nRows, V_INT rankBase, V_INT rowElements,
                                 int elementSize, const std::uint32_t* ranks, std::uint32_t* used,
                                 bool forward, bool checkDuplicates) {
  const auto place = [&](auto bytes) {
    placeRows(kv, source + sourceStart * elementSize, sourceStride * elementSize,
              target + targetStart * elementSize, targetStride * elementSize, nRows, rankBase,
              bytes, ranks, used, forward, checkDuplicates);
  };
  const auto bytes = static_cast<std::size_t>(rowElements * elementSize);
  switch (bytes) {
    case 1:
      return place(std::integral_constant<std::size_t, 1>{});
    case 2:
      return place(std::integral_constant<std::size_t, 2>{});
    case 4:
      return place(std::integral_constant<std::size_t, 4>{});
    case 8:
      return place(std::integral_constant<std::size_t, 8>{});
    case 16:
      return place(std::integral_constant<std::size_t, 16>{});
    default:
      return place(bytes);
  }
}

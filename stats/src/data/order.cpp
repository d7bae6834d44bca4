// Moving rows of an array to given positions.

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include "data/rank.hpp"
#include "kernel/data_argument.hpp"
#include "kernel/element_types.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernels/watch.hpp"

namespace {

struct Shape {
  V_INT dimensions;
  V_INT rows;
  V_INT columns;
};

Shape shapeOf(VKernelVector kv, ALGEB source) {
  const V_INT dimensions = RTableNumDimensions(kv, source);
  if (dimensions == 1) {
    return {dimensions, RTableNumElements(kv, source), 1};
  }
  if (dimensions == 2) {
    return {dimensions, STATS_Extent_HW(kv, source, 1), STATS_Extent_HW(kv, source, 2)};
  }
  VexelRaiseError1(kv, "only 1- and 2- dimensional rtables can be ordered, received: %1", source);
}

// Where rows and columns of a block lie, in elements.
struct Layout {
  V_INT rowStride;
  V_INT columnStep;

  Layout(const RTableSettings& settings, const Shape& shape)
      : rowStride(settings.order == RTABLE_COLUMN_MAJOR ? 1 : shape.columns),
        columnStep(settings.order == RTABLE_COLUMN_MAJOR ? shape.rows : 1) {}
};

ALGEB denseRankArray(VKernelVector kv, ALGEB ranks) {
  RTableSettings settings = STATS_SettingsOf_HW(kv, ranks);
  if (STATS_IsDense_HW(settings, RTABLE_INTEGER32)) {
    return ranks;
  }
  settings.storage = RTABLE_RECTANGULAR;
  settings.data_type = RTABLE_INTEGER32;
  return RTableCopy(kv, &settings, ranks);
}

// Closes the gaps that positions without a row leave; how many rows there are.
V_INT dropUnused(char* block, V_INT rows, int elementSize, const std::uint32_t* used) {
  V_INT kept = 0;
  vexel::kernels::forEach(rows, [&](V_INT i) {
    if (used[i] != 0) {
      std::memmove(block + kept * elementSize, block + i * elementSize,
                   static_cast<std::size_t>(elementSize));
      ++kept;
    }
  });
  return kept;
}

}  // namespace

// STATS_VexelOrder_HW(source, target, forward, uniquify, ranks): a new array with the source's
// elements, or the rows of a two-dimensional source, at the positions that ranks name.
//
// The target is not written: its settings and lower bounds shape the result.  forward false counts
// positions from the end.  uniquify lets ranks repeat (the later row stays) and drops positions
// that no rank names.
STATS_ENTRY(STATS_VexelOrder_HW) {
  // The text has said 4 from the start and hosts match on it.
  const Arguments arg(kv, args, 5, "expected 4 arguments, received: %1");
  if (IsVexelRTable(kv, arg[1]) == 0) {
    VexelRaiseError1(kv, "expected rtables as the source, received: %1", arg[1]);
  }
  const ALGEB target = arg[2];
  if (IsVexelRTable(kv, target) == 0) {
    VexelRaiseError1(kv, "expected rtables as the target, received: %1", target);
  }
  const Shape shape = shapeOf(kv, arg[1]);
  STATS_RequireVector_HW(kv, arg[5],
                         "invalid ranks data, expected: one-dimensional array, received %1");
  if (RTableNumElements(kv, arg[5]) != shape.rows) {
    VexelRaiseError1(
        kv, "data sample and ranks table are expected to have the same number of rows/elements",
        nullptr);
  }
  const ALGEB source = STATS_DenseArray_HW(kv, arg[1]);
  const ALGEB rankArray = denseRankArray(kv, arg[5]);
  const RTableSettings sourceSettings = STATS_SettingsOf_HW(kv, source);
  RTableSettings settings = STATS_SettingsOf_HW(kv, target);
  if (sourceSettings.data_type != settings.data_type) {
    VexelRaiseError1(kv, "the source and the target must have the same datatype", nullptr);
  }
  const int elementSize = STATS_RTableDataSize_HW(kv, settings.data_type);
  const V_INT elements = RTableNumElements(kv, source);
  const STATS_ElementBuffer_HW output(kv, settings.data_type, elements);
  std::vector<std::uint32_t> used(static_cast<std::size_t>(shape.rows), 0);
  const bool forward = arg.boolean(3);
  const bool unique = arg.boolean(4);
  if (unique && shape.columns != 1) {
    VexelRaiseError1(kv, "only one-dimensional rtabled can be uniquified", nullptr);
  }

  if (shape.rows > 0) {
    const auto* const from = static_cast<const char*>(RTableDataBlock(kv, source));
    const auto* const ranks = static_cast<const std::uint32_t*>(RTableDataBlock(kv, rankArray));
    const Layout in(sourceSettings, shape);
    const Layout out(settings, shape);
    const bool wholeRows = in.rowStride == shape.columns && out.rowStride == shape.columns;
    const V_INT passes = wholeRows ? 1 : shape.columns;
    for (V_INT c = 0; c < passes; ++c) {
      STATS_RankOrderDataBlock_HW(kv, from, in.rowStride, c * in.columnStep, output.data(),
                                  out.rowStride, c * out.columnStep, shape.rows, 1,
                                  wholeRows ? shape.columns : 1, elementSize, ranks,
                                  c == 0 ? used.data() : nullptr, forward, !unique);
    }
  }
  const V_INT rows =
      unique ? dropUnused(output.data(), shape.rows, elementSize, used.data()) : shape.rows;

  settings.num_dimensions = static_cast<std::int32_t>(shape.dimensions);
  const STATS_Bounds_HW first = STATS_BoundsFrom_HW(kv, RTableLowerBound(kv, target, 1), rows);
  V_INT bounds[] = {first.lower, first.upper, 0, 0};
  if (shape.dimensions == 2) {
    const STATS_Bounds_HW second =
        STATS_BoundsFrom_HW(kv, RTableLowerBound(kv, target, 2), shape.columns);
    bounds[2] = second.lower;
    bounds[3] = second.upper;
  }
  return RTableCreate(kv, &settings, rows * shape.columns > 0 ? output.data() : nullptr, bounds);
}

// The alias tables, and the entry point that draws a sample of indices.

#include "generators/alias_urn.hpp"

#include <algorithm>
#include <bit>

#include "kernel/conversions.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"

namespace {

using Cell = STATS_AliasUrnGenerator_HW::Cell;

// Gives each small cell the most recent large cell as alias and takes what is missing in the small
// one off the large one.  worklist holds small cells from its start, large ones from its end.
void pairCells(std::vector<Cell>& cells, std::vector<std::int32_t>& worklist, std::size_t small,
               std::size_t large) {
  const std::size_t end = worklist.size();
  while (small > 0 && large < end) {
    Cell& needy = cells[static_cast<std::size_t>(worklist[small - 1])];
    const std::int32_t donor = worklist[large];
    Cell& giver = cells[static_cast<std::size_t>(donor)];
    needy.alias = donor;
    giver.cutoff = needy.cutoff - 1.0 + giver.cutoff;
    if (giver.cutoff < 1.0) {
      worklist[small - 1] = donor;
      ++large;
    } else {
      --small;
    }
  }
  // Without rounding both lists would end together; what is left keeps its own index.
  for (; small > 0; --small) {
    const std::int32_t rest = worklist[small - 1];
    cells[static_cast<std::size_t>(rest)] = {1.0, rest};
  }
}

}  // namespace

void STATS_AliasUrnGenerator_HW::Reset(int m, int n, const double* weights) {
  m_ = std::max(m, 0);
  n_ = std::clamp(n, 0, m_);
  const auto cells = static_cast<std::size_t>(m_);
  cells_.assign(cells, {0.0, 0});
  if (m_ == 0) {
    return;
  }
  // One bit more than the last cell needs, so that a quarter to a half of the integers are used.
  // The width decides which integers are skipped, and with it every stored sample.
  shift_ = 31 - static_cast<int>(std::bit_width(static_cast<std::uint32_t>(m_ - 1)));
  if (m_ == 1) {
    cells_[0].cutoff = 1.0;
    return;
  }
  const auto weighted = static_cast<std::size_t>(n_);
  double total = 0.0;
  for (std::size_t i = 0; i < weighted; ++i) {
    total += weights[i];
  }
  const double scale = m_ / total;
  std::vector<std::int32_t> worklist(cells);
  std::size_t small = 0;
  std::size_t large = cells;
  for (std::size_t i = 0; i < cells; ++i) {
    const auto cell = static_cast<std::int32_t>(i);
    cells_[i].cutoff = i < weighted ? scale * weights[i] : 0.0;
    if (i < weighted && cells_[i].cutoff >= 1.0) {
      worklist[--large] = cell;
      cells_[i].alias = cell;
    } else {
      worklist[small++] = cell;
    }
  }
  pairCells(cells_, worklist, small, large);
}

void STATS_AliasUrnGenerator_HW::raiseNoCells() {
  VexelRaiseError(STATS_VexelUtils_HW::gVKernelVector, "no weights to draw an index from");
}

// (sample length, weights): an integer[4] array of indices into the weights, counted from 0.
STATS_ENTRY(STATS_VexelAliasUrnSample_HW) {
  const Arguments arg(kv, args, 2, "expected 2 arguments, received: %1");
  if (!IsVexelInteger32(kv, arg[1])) {
    VexelRaiseError1(kv, "invalid sample length, expected positive integer, received: %1", arg[1]);
  }
  const std::int32_t length = arg.integer32(1);
  const STATS_VexelDataSample_HW weights(kv, arg[2]);
  if (weights.size() < 1) {
    VexelRaiseError1(kv, "expected at least one weight, received: %1", arg[2]);
  }
  STATS_AliasUrnGenerator_HW urn(weights.size(), weights.size(), weights.points());
  const ALGEB sample = STATS_CreateVector_HW(kv, RTABLE_INTEGER32, 1, length);
  auto* index = static_cast<std::int32_t*>(RTableDataBlock(kv, sample));
  for (std::int32_t k = 0; k < length; ++k) {
    index[k] = urn.Next();
  }
  return sample;
}

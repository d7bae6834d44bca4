// The alias tables.

#include "kernels/classic/alias_urn.hpp"

#include <algorithm>
#include <bit>

#include "kernels/lookout.hpp"
#include "kernels/watch.hpp"

namespace vexel::kernels::classic {

namespace {

using Cell = AliasUrn::Cell;

// Gives each small cell the most recent large cell as alias and takes what is missing in the small
// one off the large one.  worklist holds small cells from its start, large ones from its end.
void pairCells(std::vector<Cell>& cells, std::vector<std::int32_t>& worklist, std::size_t small,
               std::size_t large) {
  constexpr int kPairCost = 10;  // operations, near enough
  Lookout lookout;
  const std::size_t end = worklist.size();
  while (small > 0 && large < end) {
    lookout.done(kPairCost);
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

void AliasUrn::reset(int m, int n, const double* weights) {
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
  forEach(weighted, [&](std::size_t i) { total += weights[i]; });
  const double scale = m_ / total;
  std::vector<std::int32_t> worklist(cells);
  std::size_t small = 0;
  std::size_t large = cells;
  forEach(cells, [&](std::size_t i) {
    const auto cell = static_cast<std::int32_t>(i);
    cells_[i].cutoff = i < weighted ? scale * weights[i] : 0.0;
    if (i < weighted && cells_[i].cutoff >= 1.0) {
      worklist[--large] = cell;
      cells_[i].alias = cell;
    } else {
      worklist[small++] = cell;
    }
  });
  pairCells(cells_, worklist, small, large);
}

}  // namespace vexel::kernels::classic

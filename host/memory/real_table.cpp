// The real table's growth and renewal.

#include "memory/real_table.hpp"

#include <algorithm>
#include <bit>

namespace vexel {

void RealTable::grow() {
  std::vector<Word> before(2 * slots_.size());
  before.swap(slots_);
  used_ = 0;
  for (const Word slot : before) {
    if (slot != 0) {
      keep(reinterpret_cast<ALGEB>(slot & ~kMarks));
    }
  }
}

// What stays is no more than there was, so that there is room for all of it; a table that has
// become much too large gives memory back, where that can be done.
void RealTable::startAnew() noexcept {
  const std::size_t enough = std::max(kSmallest, std::bit_ceil(2 * (used_ + 1)));
  if (slots_.size() > 4 * enough) {
    slots_.resize(enough);
    slots_.shrink_to_fit();
  }
  std::fill(slots_.begin(), slots_.end(), 0);
  used_ = 0;
}

}  // namespace vexel

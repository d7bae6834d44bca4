// A hash table from 64-bit keys to counts, for tallying machine values: open addressing with linear
// probing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "kernels/watch.hpp"

namespace vexel::kernels {

class CountTable {
 public:
  CountTable() : seed_(reinterpret_cast<std::uintptr_t>(this)), cells_(kFirstSize) {}

  void add(std::uint64_t key) {
    std::size_t at = position(key);
    while (cells_[at].count != 0) {
      if (cells_[at].key == key) {
        ++cells_[at].count;
        return;
      }
      at = (at + 1) & (cells_.size() - 1);
    }
    cells_[at] = {key, 1};
    order_.push_back(key);
    // A small table is kept sparse, so that the first probe nearly always decides.
    if (order_.size() > cells_.size() / (cells_.size() < kLargeSize ? 8 : 2)) {
      grow();
    }
  }

  // The keys in the order of their first occurrence.
  const std::vector<std::uint64_t>& keys() const { return order_; }

  std::int64_t count(std::uint64_t key) const {
    std::size_t at = position(key);
    while (cells_[at].count != 0 && cells_[at].key != key) {
      at = (at + 1) & (cells_.size() - 1);
    }
    return cells_[at].count;
  }

 private:
  struct Cell {
    std::uint64_t key;
    std::int64_t count;  // 0: empty
  };
  static constexpr std::size_t kFirstSize = 1024;
  static constexpr std::size_t kLargeSize = 16384;

  // Bits mixed well (the finalizer of D. Stafford's 13th variant, 2011), so that neither a regular
  // step nor a few varying bits, as in round floats, crowd one part of the table.  The table's
  // first address goes in as well: data made to collide would have to know it.
  std::size_t position(std::uint64_t key) const {
    std::uint64_t h = key ^ seed_;
    h = (h ^ (h >> 30)) * 0xBF58476D1CE4E5B9U;
    h = (h ^ (h >> 27)) * 0x94D049BB133111EBU;
    return static_cast<std::size_t>(h ^ (h >> 31)) & (cells_.size() - 1);
  }

  void grow() {
    std::vector<Cell> old(cells_.size() * 2);
    old.swap(cells_);
    forEach(old.size(), [&](std::size_t i) {
      const Cell& cell = old[i];
      if (cell.count != 0) {
        std::size_t at = position(cell.key);
        while (cells_[at].count != 0) {
          at = (at + 1) & (cells_.size() - 1);
        }
        cells_[at] = cell;
      }
    });
  }

  std::uint64_t seed_;
  std::vector<Cell> cells_;  // a power of two of them
  std::vector<std::uint64_t> order_;
};

}  // namespace vexel::kernels

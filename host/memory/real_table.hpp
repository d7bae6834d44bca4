// The table of the floats that are doubles, by their bits: what makes equal ones one object.
//
// Open addressing with linear probing, at most half full.  An object's address is a multiple of 16,
// so that the low four bits of a slot have room for four bits of the hash: of sixteen other objects
// that a search passes, it reads one.
//
// The entries are weak.  A collection makes the table anew, from the objects that its sweep comes
// by and keeps: their memory is read in order, which the table's is not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "memory/handle.hpp"

namespace vexel {

class RealTable {
 public:
  RealTable() : slots_(kSmallest) {}

  // Small integers and neighbouring addresses differ in their low bits only, tables are indexed by
  // the low bits, and doubles of few digits differ in their high ones: the product carries low bits
  // up, the shift brings high ones down.
  static std::uint64_t mix(std::uint64_t h) {
    h *= 0x9E3779B97F4A7C15U;  // 2^64 divided by the golden ratio
    return h ^ (h >> 32);
  }

  // The object with these bits, mix(bits) being hash; null when there is none.
  ALGEB find(Word bits, std::uint64_t hash) const {
    const std::size_t mask = slots_.size() - 1;
    const Word mark = markOf(hash);
    for (std::size_t i = hash & mask; slots_[i] != 0; i = (i + 1) & mask) {
      const Word differing = slots_[i] ^ mark;  // an address when the marks agree
      if ((differing & kMarks) == 0 && reinterpret_cast<const Word*>(differing)[1] == bits) {
        return reinterpret_cast<ALGEB>(differing);
      }
    }
    return nullptr;
  }

  // Enters a new object; throws std::bad_alloc, with nothing changed.
  void add(ALGEB x, std::uint64_t hash) {
    if (2 * (used_ + 1) > slots_.size()) [[unlikely]] {
      grow();
    }
    enter(x, hash);
  }

  // For the collector: forgets everything; then keep is called for all that stays.
  void startAnew() noexcept;
  void keep(ALGEB x) noexcept { enter(x, mix(words(x)[1])); }

 private:
  static constexpr std::size_t kSmallest = 1024;
  static constexpr Word kMarks = 15;

  static Word markOf(std::uint64_t hash) { return hash >> 60; }

  void enter(ALGEB x, std::uint64_t hash) noexcept {
    const std::size_t mask = slots_.size() - 1;
    std::size_t i = hash & mask;
    while (slots_[i] != 0) {
      i = (i + 1) & mask;
    }
    slots_[i] = reinterpret_cast<Word>(x) | markOf(hash);
    ++used_;
  }

  void grow();

  std::vector<Word> slots_;  // a power of two; 0 is empty
  std::size_t used_ = 0;
};

}  // namespace vexel

// A hash table from keys to counts or numbers, for as long as there are few keys.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

namespace vexel {

class Levels {
 public:
  static constexpr std::size_t most = std::size_t{1} << 15;

  // The slot of a key; null when there is no room for another one.
  struct Slot {
    std::uint64_t key = 0;
    std::uint64_t value = 0;  // 0: the slot is free
  };
  Levels() : slots_(1024), shift_(64 - 10) {}

  // value of a new key is 0, and the caller makes it positive.  Key 0 finds a free slot without
  // more ado, since free slots have that key; one more key than counted does no harm.
  Slot* find(std::uint64_t key) {
    for (std::size_t i = place(key);; i = (i + 1) & (slots_.size() - 1)) {
      Slot& slot = slots_[i];
      if (slot.key == key) [[likely]] {
        return &slot;
      }
      if (slot.value == 0) {
        return makeSlot(key, slot);
      }
    }
  }

  template <typename Before>
  std::vector<Slot> ascending(Before before) const {
    std::vector<Slot> used;
    used.reserve(size_);
    std::copy_if(slots_.begin(), slots_.end(), std::back_inserter(used),
                 [](const Slot& s) { return s.value != 0; });
    std::sort(used.begin(), used.end(), before);
    return used;
  }

 private:
  // Slots for each key.  A small table has many, so that the first one looked at nearly always
  // decides.
  std::size_t sparseness() const {
    constexpr std::size_t small = 4096;
    return slots_.size() <= small ? 4 : 2;
  }
  std::size_t place(std::uint64_t key) const {
    return static_cast<std::size_t>(key * 0x9E3779B97F4A7C15U >> shift_);  // 2^64 / golden ratio
  }
  Slot* makeSlot(std::uint64_t key, Slot& slot) {
    if (size_ == most) {
      return nullptr;
    }
    ++size_;
    if (sparseness() * size_ <= slots_.size()) {
      slot.key = key;
      return &slot;
    }
    std::vector<Slot> old(2 * slots_.size());
    old.swap(slots_);
    --shift_;
    const auto freeSlot = [&](std::uint64_t k) -> Slot& {
      std::size_t i = place(k);
      while (slots_[i].value != 0) {
        i = (i + 1) & (slots_.size() - 1);
      }
      return slots_[i];
    };
    for (const Slot& s : old) {
      if (s.value != 0) {
        freeSlot(s.key) = s;
      }
    }
    Slot& made = freeSlot(key);
    made.key = key;
    return &made;
  }

  std::vector<Slot> slots_;
  int shift_;
  std::size_t size_ = 0;
};

}  // namespace vexel

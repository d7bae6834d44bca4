// Tables that make equal values one object.
//
// The entries are weak: the collector removes those whose objects it is about to free.  Lookups
// compare the words of an object, so one table serves every interned kind; floats that are doubles
// have a table of their own (real_table.hpp) because they are made most often.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "memory/handle.hpp"
#include "memory/heap.hpp"
#include "memory/real_table.hpp"

namespace vexel {

class InternTables {
 public:
  explicit InternTables(Heap& heap) : heap_(heap) {}

  // The float object of a double.  d must not be a NaN other than the canonical one.
  //
  // Doubles are one object when their bits are: 0 and -0 are two objects, and each NaN is equal to
  // itself, which its == is not.  Whatever compares reals compares their values, not their handles.
  ALGEB real(double d) {
    const Word bits = std::bit_cast<Word>(d);
    const std::uint64_t hash = RealTable::mix(bits);
    if (ALGEB x = reals_.find(bits, hash)) {
      return heap_.found(x);
    }
    return newReal(bits, hash);
  }

  // The object of kind t whose words 1 ... n are those given.  May collect; handles among the
  // words must be reachable otherwise (locals are).
  ALGEB words(Tag t, const Word* payload, std::size_t n);

  // The string or name of that text (name: unassigned when it is new).
  ALGEB string(std::string_view text);
  ALGEB name(std::string_view text);

  // For the collector: names that have a value or a function stay; entries of unmarked objects go,
  // of floats all, for the sweep to bring back those that stay.
  void markNames(Marker& marker);
  void dropUnmarked();
  void keepReal(ALGEB x) noexcept { reals_.keep(x); }

  // Calls f(name) for every name.
  template <typename F>
  void forEachName(F f) const {
    for (ALGEB x : names_.slots) {
      if (isEntry(x)) {
        f(x);
      }
    }
  }

 private:
  struct Table {
    std::vector<ALGEB> slots;  // open addressing, a power of two; null is empty
    std::size_t used = 0;      // slots taken, removed ones included
    std::size_t removed = 0;
  };

  ALGEB newReal(Word bits, std::uint64_t hash);
  static std::uint64_t hashOf(ALGEB x);
  template <typename Equal>
  static ALGEB find(const Table& table, std::uint64_t hash, Equal equal);
  static void insert(Table& table, ALGEB x, std::uint64_t hash);
  static void grow(Table& table);
  static bool isEntry(ALGEB slot);  // neither empty nor removed

  Heap& heap_;
  RealTable reals_;
  Table values_;  // all other interned kinds except names
  Table names_;
};

}  // namespace vexel

// The tables of interned objects: open addressing with linear probing, at most half full.  Entries
// that the collector removes leave a mark that searches skip; the next growth drops them.
//
// An object of an interned kind is in its table from its birth to the collection that frees it, and
// its words never change.  A name's value and function do: only its text is hashed and compared.

#include "memory/interning.hpp"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>

#include "memory/layout.hpp"

namespace vexel {

namespace {

constexpr std::size_t kSmallestTable = 1024;
const ALGEB kRemoved = reinterpret_cast<ALGEB>(Word{2});  // never the address of an object

std::uint64_t mix(std::uint64_t h) { return RealTable::mix(h); }

std::uint64_t hashWords(Tag t, const Word* payload, std::size_t n) {
  std::uint64_t h = static_cast<std::uint64_t>(t) + 64 * n;
  for (std::size_t i = 0; i < n; ++i) {
    h = mix(h ^ payload[i]) + i;
  }
  return mix(h);
}

std::uint64_t hashText(std::string_view s) { return mix(std::hash<std::string_view>{}(s)); }

}  // namespace

// The hash that an object was filed under, from the object alone: growing needs no room for hashes.
// It has to agree with what real, words, string and name compute before there is an object.
std::uint64_t InternTables::hashOf(ALGEB x) {
  switch (tag(x)) {
    case Tag::string:
    case Tag::name:
      return hashText(text(x));
    default:
      return hashWords(tag(x), vexel::words(x) + 1, length(x) - 1U);
  }
}

// Linear probing ends at the first slot that was never used: there always is one, since tables are
// at most half full, removed entries counted.
template <typename Equal>
ALGEB InternTables::find(const Table& table, std::uint64_t hash, Equal equal) {
  if (table.slots.empty()) {
    return nullptr;
  }
  const std::size_t mask = table.slots.size() - 1;
  for (std::size_t i = hash & mask;; i = (i + 1) & mask) {
    ALGEB x = table.slots[i];
    if (x == nullptr || (x != kRemoved && equal(x))) {
      return x;
    }
  }
}

// x is new: nobody looks for an equal entry here.
void InternTables::insert(Table& table, ALGEB x, std::uint64_t hash) {
  // used counts removed entries too; their slots are not used again before the table is made anew.
  if (2 * (table.used + 1) > table.slots.size() || table.removed > table.used / 2) {
    grow(table);
  }
  const std::size_t mask = table.slots.size() - 1;
  std::size_t i = hash & mask;
  while (table.slots[i] != nullptr) {
    i = (i + 1) & mask;
  }
  table.slots[i] = x;
  ++table.used;
}

// Makes the table anew, without its removed entries.  Only this takes memory, and it does so before
// it changes anything: where there is none the table stays as it was.
void InternTables::grow(Table& table) {
  // Where most entries were removed the table shrinks, by half at a time, lest it grow at once
  // again.
  const std::size_t live = table.used - table.removed;
  const std::size_t capacity =
      std::max({kSmallestTable, std::bit_ceil(4 * (live + 1)), table.slots.size() / 2});
  std::vector<ALGEB> fresh(capacity, nullptr);
  for (ALGEB x : table.slots) {
    if (x == nullptr || x == kRemoved) {
      continue;
    }
    std::size_t i = hashOf(x) & (capacity - 1);
    while (fresh[i] != nullptr) {
      i = (i + 1) & (capacity - 1);
    }
    fresh[i] = x;
  }
  table.slots = std::move(fresh);
  table.used = live;
  table.removed = 0;
}

// Allocating may collect, and so drop entries, but never adds one: that there is none stays true.
ALGEB InternTables::newReal(Word bits, std::uint64_t hash) {
  ALGEB x = heap_.allocate(Tag::softwareFloat, 2);
  vexel::words(x)[1] = bits;
  reals_.add(x, hash);
  return x;
}

// payload may lie in another object: nothing moves.  Handles in it are the caller's to keep alive
// over the allocation.
ALGEB InternTables::words(Tag t, const Word* payload, std::size_t n) {
  const std::uint64_t hash = hashWords(t, payload, n);
  const auto same = [&](ALGEB x) {
    return tag(x) == t && length(x) == n + 1 &&
           std::equal(payload, payload + n, vexel::words(x) + 1);
  };
  if (ALGEB x = find(values_, hash, same)) {
    return heap_.found(x);
  }
  ALGEB x = heap_.allocate(t, n + 1);
  std::copy_n(payload, n, vexel::words(x) + 1);
  insert(values_, x, hash);
  return x;
}

// At least one byte is left over behind the text, of a cell that was cleared: texts end with a zero
// for C.
ALGEB InternTables::string(std::string_view s) {
  const std::uint64_t hash = hashText(s);
  const auto same = [&](ALGEB x) { return tag(x) == Tag::string && text(x) == s; };
  if (ALGEB x = find(values_, hash, same)) {
    return heap_.found(x);
  }
  ALGEB x = heap_.allocate(Tag::string,
                           sizeof(StringObject) / sizeof(Word) + s.size() / sizeof(Word) + 1);
  auto& object = *reinterpret_cast<StringObject*>(x);
  object.size = s.size();
  s.copy(object.bytes, s.size());
  insert(values_, x, hash);
  return x;
}

// As a string, with words for value and function before the text, which are cleared: unassigned.
ALGEB InternTables::name(std::string_view s) {
  const std::uint64_t hash = hashText(s);
  if (ALGEB x = find(names_, hash, [&](ALGEB n) { return text(n) == s; })) {
    return heap_.found(x);
  }
  ALGEB x =
      heap_.allocate(Tag::name, sizeof(NameObject) / sizeof(Word) + s.size() / sizeof(Word) + 1);
  nameOf(x).size = s.size();
  s.copy(nameOf(x).bytes, s.size());
  insert(names_, x, hash);
  return x;
}

// A name without either is nothing but its text: it goes when nobody holds it, and comes back
// equal.
void InternTables::markNames(Marker& marker) {
  forEachName([&](ALGEB n) {
    if (nameValue(n) != nullptr || nameFunction(n) != nullptr) {
      marker.mark(n);
    }
  });
}

bool InternTables::isEntry(ALGEB slot) { return slot != nullptr && slot != kRemoved; }

// The tables do not keep their entries alive.  Runs between marking and sweep, while the words of
// the dying can still be read, and allocates nothing.
void InternTables::dropUnmarked() {
  // Few that stay are put into a cleared table, so that no marks lengthen searches.
  constexpr std::size_t kFew = 2048;
  std::array<ALGEB, kFew> few;
  reals_.startAnew();
  for (Table* table : {&values_, &names_}) {
    std::size_t live = 0;
    for (ALGEB& slot : table->slots) {
      if (!isEntry(slot)) {
        continue;
      }
      if ((vexel::words(slot)[0] & 1U) == 0) {
        slot = kRemoved;
        ++table->removed;
      } else if (++live <= kFew) {
        few[live - 1] = slot;
      }
    }
    if (live <= kFew && table->removed > 0) {
      std::fill(table->slots.begin(), table->slots.end(), nullptr);
      table->used = 0;
      table->removed = 0;
      for (std::size_t i = 0; i < live; ++i) {
        insert(*table, few[i], hashOf(few[i]));
      }
    }
  }
}

}  // namespace vexel

// The heap's own test.

#include <string>

#include "memory/heap_chunk.hpp"
#include "memory/layout.hpp"
#include "memory/memory.hpp"
#include "memory/object_state.hpp"

namespace vexel {

// For tests: what must hold of every object between two collections, by a walk over all of them;
// empty when it does.
std::string Heap::check() {
  buildExtents();
  std::string fault;
  const auto valid = [&](ALGEB x) {
    return x == nullptr || isImmediate(x) || objectAt(reinterpret_cast<Word>(x)) == x;
  };
  const auto inspect = [&](ALGEB x, std::size_t room) {
    if (isMarked(x)) {
      fault = "an object is marked outside a collection";
    } else if (length(x) == 0 || length(x) * sizeof(Word) > room) {
      fault = "an object is longer than its cell";
    }
    const Tag t = tag(x);
    if (t == Tag::block && !isBlockIntact(x)) {
      fault = "memory was written past the end of a block";
    } else if (t == Tag::array && ownsData(arrayOf(x)) && !isDataIntact(arrayOf(x))) {
      fault = "memory was written outside the elements of an array";
    }
    const bool holdsHandles = t == Tag::rational || t == Tag::complex || t == Tag::list ||
                              t == Tag::sequence || t == Tag::sum || t == Tag::product ||
                              t == Tag::power || t == Tag::application || t == Tag::range ||
                              isRelation(x);
    for (std::size_t i = 1; fault.empty() && holdsHandles && i < length(x); ++i) {
      if (!valid(operand(x, i))) {
        fault = "an operand is no object";
      }
    }
  };
  for (Chunk* chunk : chunks_) {
    for (char* p = chunk->first(); p != chunk->next && fault.empty(); p += chunk->cellBytes) {
      ALGEB x = reinterpret_cast<ALGEB>(p);
      if (tag(x) != Tag::free) {
        inspect(x, chunk->cellBytes);
      }
    }
  }
  for (ALGEB x : large_) {
    inspect(x, length(x) * sizeof(Word));
  }
  extents_.clear();
  return fault;
}

}  // namespace vexel

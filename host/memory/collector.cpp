// The mark-sweep collector: precise in the heap, conservative on the stack and in blocks.
//
// Marking keeps its own stack, so that deep structures cost no machine stack; sweeping visits every
// cell and rebuilds the free lists in address order.  Nothing moves: a handle is an address for
// life.
//
// A collection: the extents of large objects and of arrays' blocks are sorted, for conservative
// lookups; roots are marked (Handles, protected objects, the state's, names that have a value, what
// root sources add), then the stack, then all that these reach; dispose functions of unreachable
// pointers run, while everything they may look at is still there; interned objects that die leave
// their tables (floats all, and the sweep brings back those that live); the sweep frees.  What a
// dispose function makes is born marked, so that this sweep keeps it.

#include <malloc.h>
#include <sys/mman.h>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>

#include "memory/heap_chunk.hpp"
#include "memory/layout.hpp"
#include "memory/memory.hpp"
#include "memory/object_state.hpp"
#include "memory/stack_bounds.hpp"
#include "memory/unwinding.hpp"

namespace vexel {

namespace {

// Collections that a freed cell sits out in stress mode.
constexpr std::uint32_t kQuarantine = 64;

// The header of a float that is a double.
constexpr Word kDoubleHeader = (Word{2} << 32) | (static_cast<Word>(Tag::softwareFloat) << 26);

// Whether an object of that kind has more than its cell to give back.
bool holdsMore(Tag t) {
  return t == Tag::procedure || t == Tag::function || t == Tag::table || t == Tag::foreign ||
         t == Tag::array;
}

// Ends the process when the guards of an object are damaged.
void checkGuards(ALGEB x) {
  if (tag(x) == Tag::block && !isBlockIntact(x)) {
    reportDamage("memory was written past the end of a block");
  }
  if (tag(x) == Tag::array && ownsData(arrayOf(x)) && !isDataIntact(arrayOf(x))) {
    reportDamage("memory was written outside the elements of an array");
  }
}

}  // namespace

// ---- marking

// Nothing allocates from the heap between the first mark and the end of the sweep but dispose
// functions, and what memory the collection itself wants (the extents, the list of what is due, the
// marking stack) it asks for before anything is decided: when that fails, the marks are taken back,
// nothing was freed, and the caller sees no more than a failed allocation.
void Heap::collect() {
  if (collecting_) {
    return;
  }
  collecting_ = true;
  // Counted for the quarantine, where 0 says that a cell never sat in it.
  collections_ += collections_ == UINT32_MAX ? 2 : 1;  // never 0
  // Every allocation from here on takes the slow path, which marks what it makes.
  limit_ = 0;
  try {
    due_.reserve(disposable_.size());
    markAll();
  } catch (const std::bad_alloc&) {
    unmarkAll();
    throw;
  }
  // In this order: dispose functions see everything as it was, and the tables let go of what the
  // sweep is about to free.
  dispose(false);
  memory_.interned.dropUnmarked();
  sweep(false);
  extents_.clear();
  collecting_ = false;
  sinceCollection_ = 0;
  // The next one when as much has been allocated as is alive now: each byte is marked a constant
  // number of times on average, however large the heap grows.
  threshold_ = std::max(kMinimalThreshold, liveBytes_ + bytesOutside_);
  resetLimit();
}

void Heap::markAll() {
  marking_ = &marker_;
  buildExtents();
  markRoots();
  markStack();
  drain();
  marking_ = nullptr;
}

void Heap::keepFound(ALGEB x) {
  marking_ = &marker_;
  marker_.mark(x);
  drain();
  marking_ = nullptr;
}

// Takes a collection back that could not be finished.
void Heap::unmarkAll() noexcept {
  marking_ = nullptr;
  marker_.pending_ = {};
  extents_ = {};
  for (ALGEB x : large_) {
    words(x)[0] &= ~kMarkBit;
  }
  for (Chunk* chunk : chunks_) {
    for (char* p = chunk->first(); p != chunk->next; p += chunk->cellBytes) {
      reinterpret_cast<Cell*>(p)->header &= ~kMarkBit;
    }
  }
  collecting_ = false;
  resetLimit();
}

// After memory ran out somewhere: gives back all that can be, so that what reports the failure has
// room.
void Heap::recover() noexcept {
  try {
    collect();
  } catch (const std::bad_alloc&) {  // at another time, then
  }
  for (Chunk* chunk : emptyChunks_) {
    munmap(chunk, kChunkBytes);
  }
  emptyChunks_.clear();
  marker_.pending_.shrink_to_fit();
  malloc_trim(0);
}

// A name is a root only while it has a value or a function; a name that stands nowhere and means
// nothing goes like any other object, and is made anew when it is typed again.
void Heap::markRoots() {
  for (Handles* h = handles_; h != nullptr; h = h->next_) {
    for (ALGEB x : h->items_) {
      marker_.mark(x);
    }
  }
  for (const auto& [x, count] : protected_) {
    marker_.mark(x);
  }
  memory_.markRoots(marker_);
  memory_.interned.markNames(marker_);
  for (const auto& source : rootSources_) {
    source(marker_);
  }
}

// Callee-saved registers are put into this frame before the scan, which runs in a deeper one.
__attribute__((noinline)) void Heap::markStack() {
  __builtin_unwind_init();
  const Word here = 0;
  const Word* from =
      reinterpret_cast<const Word*>(reinterpret_cast<Word>(__builtin_frame_address(0)) & ~Word{7});
  from = std::min(from, &here);
  markConservatively(from, reinterpret_cast<const Word*>(stackBounds().high));
}

// A word that looks like the address of an object keeps it alive, whatever it was meant as.  The
// compiler may keep nothing but an address inside an object, so inner addresses count; the price is
// now and then an object too many, never one too few.  Reads the red zones of the address
// sanitizer, too.
__attribute__((noinline, no_sanitize("address"))) void Heap::markConservatively(const Word* from,
                                                                                const Word* to) {
  for (const Word* p = from; p < to; ++p) {
    const Word candidate = *p;
    // One comparison for "low <= candidate < high": below low the difference wraps around.
    // A quick look that rejects most words.
    if (candidate - lowestChunk_ < highestChunk_ - lowestChunk_ || !extents_.empty()) {
      markCandidate(candidate);
    }
  }
}

void Heap::markCandidate(Word candidate) {
  if (ALGEB x = objectAt(candidate)) {
    marker_.mark(x);
  }
}

// The object that an address, not necessarily its first, belongs to; null for none.
ALGEB Heap::objectAt(Word address) const {
  if (address - lowestChunk_ < highestChunk_ - lowestChunk_) {
    const auto found = chunkAt_.find(address / kChunkBytes);
    if (found != chunkAt_.end()) {
      Chunk* chunk = found->second;
      const Word first = reinterpret_cast<Word>(chunk->first());
      if (address >= first && address < reinterpret_cast<Word>(chunk->next)) {
        // Cells of a chunk are of one size, so the object of an inner address is a division away.
        // A free cell is none: what once pointed to it must not resurrect it.
        const Word cell = first + (address - first) / chunk->cellBytes * chunk->cellBytes;
        ALGEB x = reinterpret_cast<ALGEB>(cell);
        return tag(x) == Tag::free ? nullptr : x;
      }
      return nullptr;
    }
  }
  if (extents_.empty() || address < extents_.front().first) {
    return nullptr;
  }
  const auto after = std::upper_bound(extents_.begin(), extents_.end(), address,
                                      [](Word a, const Extent& e) { return a < e.first; });
  const Extent& e = *(after - 1);
  return address <= e.last ? e.object : nullptr;
}

// What lies outside of the chunks, by address.  An array's block counts as the array: C code walks
// a block by a pointer while it holds no other trace of the array.  One past the end belongs to it
// too, since that is where such a pointer ends.
void Heap::buildExtents() {
  extents_.clear();
  for (ALGEB x : large_) {
    const Word first = reinterpret_cast<Word>(x);
    extents_.push_back({first, first + length(x) * sizeof(Word), x});
  }
  for (ALGEB x : arrays_) {
    const ArrayObject& array = arrayOf(x);
    const Word first = reinterpret_cast<Word>(array.data);
    extents_.push_back(
        {first, first + static_cast<Word>(array.count) * elementSize(array.type), x});
  }
  std::sort(extents_.begin(), extents_.end(),
            [](const Extent& a, const Extent& b) { return a.first < b.first; });
}

// Depth first, from a stack of its own: a list a million deep takes a million words here, and none
// of the machine's stack.
void Heap::drain() {
  while (!marker_.pending_.empty()) {
    ALGEB x = marker_.pending_.back();
    marker_.pending_.pop_back();
    markOperands(x);
  }
}

void Heap::markOperands(ALGEB x) {
  switch (tag(x)) {
    case Tag::integer:
    case Tag::string:
    case Tag::boolean:
    case Tag::date:
    case Tag::free:
      return;
    case Tag::softwareFloat:
      if (!isDoubleObject(x)) {
        marker_.mark(decimalObject(x).mantissa);
      }
      return;
    case Tag::name:
      // Its text lies in the object itself.
      marker_.mark(nameValue(x));
      marker_.mark(nameFunction(x));
      return;
    case Tag::procedure:
    case Tag::function:
    case Tag::table:
    case Tag::foreign:
      if (foreign(x) != nullptr) {
        foreign(x)->mark(marker_);
      }
      return;
    case Tag::array:
      markArray(x);
      return;
    case Tag::pointer:
      // The library that made the pointer says what it holds (VexelPointerSetMarkFunction).
      if (pointerOf(x).mark != nullptr) {
        pointerOf(x).mark(x);
      }
      return;
    case Tag::block:
      // Nobody knows what C code keeps in a block: handles are looked for, as on the stack.
      markConservatively(reinterpret_cast<const Word*>(blockOf(x).bytes), words(x) + length(x));
      return;
    // Every other kind is handles from its second word to its last.
    default:
      for (std::size_t i = 1; i < length(x); ++i) {
        marker_.mark(operand(x, i));
      }
  }
}

// Machine numbers hold no handles.  An array of handles that is being filled may have null
// elements; mark() passes over them.
void Heap::markArray(ALGEB x) {
  const ArrayObject& array = arrayOf(x);
  if (array.type != RTABLE_DAG && array.type != RTABLE_COMPLEX_DAG) {
    return;
  }
  const bool pairs = array.type == RTABLE_COMPLEX_DAG;
  if (array.data != nullptr) {
    const auto* elements = static_cast<const ALGEB*>(array.data);
    const std::int64_t n = pairs ? 2 * array.count : array.count;
    for (std::int64_t i = 0; i < n; ++i) {
      marker_.mark(elements[i]);
    }
  }
  if (array.sparse != nullptr) {
    for (const auto& [position, e] : *array.sparse) {
      marker_.mark(e.complexdag.re);
      if (pairs) {
        marker_.mark(e.complexdag.im);
      }
    }
  }
}

// ---- sweeping

// Runs the dispose functions of unreachable pointers, each once.
void Heap::dispose(bool everything) {
  std::erase_if(disposable_, [&](ALGEB x) {
    const bool dead = everything || !isMarked(x);
    if (dead) {
      due_.push_back(x);
    }
    return dead;
  });
  for (ALGEB x : due_) {
    auto* function = std::exchange(pointerOf(x).dispose, nullptr);
    if (function != nullptr) {
      try {
        // The pointer and all it can reach are still whole, in whatever order several of them go.
        function(x);
      } catch (const HostErrorToken&) {  // nobody to tell; the object goes all the same
      } catch (const InterruptToken&) {  // meant for what called the collector
        requestInterrupt();
      } catch (const std::exception&) {
      }
    }
  }
  due_.clear();
}

// What an object holds outside of its cell.  It may not look at other objects: those that it refers
// to may have been freed a moment ago.
void Heap::finalise(ALGEB x) noexcept {
  switch (tag(x)) {
    case Tag::procedure:
    case Tag::function:
    case Tag::table:
    case Tag::foreign:
      delete foreign(x);
      break;
    case Tag::array: {
      ArrayObject& array = arrayOf(x);
      if (ownsData(array)) {
        releaseBytes(array.data, dataBytes(array));
      }
      delete array.sparse;
      delete array.owner;
      break;
    }
    default:
      break;
  }
}

void Heap::sweep(bool everything) {
  std::erase_if(arrays_, [&](ALGEB x) { return everything || !isMarked(x); });
  liveAfterCollection_ = 0;
  allocatedObjects_ = 0;
  liveBytes_ = 0;
  sweepLarge(everything);
  Cell** tails[kClasses];
  for (std::size_t c = 0; c < kClasses; ++c) {
    freeCells_[c] = nullptr;
    tails[c] = &freeCells_[c];
  }
  std::erase_if(chunks_, [&](Chunk* chunk) {
    Cell**& tail = tails[chunk->sizeClass];
    Cell** const before = tail;
    const Swept swept = sweepChunk(*chunk, tail, everything);
    liveAfterCollection_ += swept.live;
    liveBytes_ += swept.live * chunk->cellBytes;
    // A chunk without a live cell goes as a whole, and with it the stretch of the free list that
    // its cells were put on: tail goes back to where it stood before the chunk.
    const bool isEmpty = swept.live == 0 && swept.held == 0;
    if (isEmpty) {
      tail = before;
      *tail = nullptr;
      retireChunk(chunk);
    }
    return isEmpty;
  });
}

void Heap::sweepLarge(bool everything) {
  std::erase_if(large_, [&](ALGEB x) {
    if (stress_) {
      checkGuards(x);
    }
    if (!everything && isMarked(x)) {
      words(x)[0] &= ~kMarkBit;
      ++liveAfterCollection_;
      return false;
    }
    const std::size_t bytes = length(x) * sizeof(Word);
    finalise(x);
    freeMemory(x, bytes);
    bytesOutside_ -= bytes;
    return true;
  });
}

// Frees the unmarked cells of a chunk onto the list that ends at tail.
//
// In stress mode a freed cell is poisoned and sits out some collections: the upper half of its
// header says since when.
Heap::Swept Heap::sweepChunk(Chunk& chunk, Cell**& tail, bool everything) {
  Swept swept;
  for (char* p = chunk.first(); p != chunk.next; p += chunk.cellBytes) {
    Cell* cell = reinterpret_cast<Cell*>(p);
    ALGEB x = reinterpret_cast<ALGEB>(p);
    const bool isFree = tag(x) == Tag::free;
    if (stress_ && !isFree) {
      checkGuards(x);
    }
    if ((cell->header & kMarkBit) != 0 && !everything) {
      cell->header &= ~kMarkBit;
      if (cell->header == kDoubleHeader) {
        memory_.interned.keepReal(x);
      }
      ++swept.live;
      continue;
    }
    if (!isFree) {
      if (holdsMore(tag(x))) {
        finalise(x);
      }
      if (stress_) {
        poison(p + sizeof(Word), chunk.cellBytes - sizeof(Word));
      }
      cell->header = stress_ ? Word{collections_} << 32 : 0;
    }
    if (const auto since = static_cast<std::uint32_t>(cell->header >> 32); since != 0) {
      if (stress_ && !everything && collections_ - since < kQuarantine) {
        ++swept.held;
        continue;
      }
      if (!isPoisonIntact(p + sizeof(Word), chunk.cellBytes - sizeof(Word))) {
        reportDamage("an object was written after it was collected");
      }
      cell->header = 0;
    }
    *tail = cell;
    tail = &cell->next;
  }
  // Address order makes the next objects of a size lie side by side, as those that were made
  // together should.
  *tail = nullptr;
  return swept;
}

}  // namespace vexel

// The host's memory: allocation, the mark-sweep collector, and what keeps objects alive.
//
// The collector may run at any allocation.  It knows the layout of every object; the machine stack,
// the registers and VexelAlloc blocks it reads conservatively, so a handle in a local variable is
// safe.  A handle in the ordinary heap (a std::vector, a lambda's capture, a class member) is not:
// keep it in a Handles, or in a Foreign that marks it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "memory/guards.hpp"
#include "memory/handle.hpp"

namespace vexel {

// Handed to whoever must say what it keeps alive.
class Marker {
 public:
  // Marks x and, later, all that it reaches.  Null handles and immediate integers are fine.
  void mark(ALGEB x) {
    if (x != nullptr && !isImmediate(x) && (words(x)[0] & 1U) == 0) {
      words(x)[0] |= 1U;
      if (!reachesNothing(x)) {
        pending_.push_back(x);
      }
    }
  }

 private:
  friend class Heap;
  static bool reachesNothing(ALGEB x) {
    const Tag t = tag(x);
    return t == Tag::integer || t == Tag::string || t == Tag::date ||
           (t == Tag::softwareFloat && length(x) < 3);
  }
  std::vector<ALGEB> pending_;
};

// A C++ object that lives in the host's heap: procedures, tables, machine functions.
class Foreign {
 public:
  virtual ~Foreign() = default;
  // Marks every handle that the object holds.  Must not allocate host objects.
  virtual void mark(Marker&) {}
  // Appends the printed form.  Must not allocate host objects.
  virtual void print(State& state, std::string& out) const;
  // What x[name] is, null for nothing.
  virtual ALGEB field(State&, std::string_view) { return nullptr; }
  // The function that x(...) calls with x before the arguments, null for none.
  virtual const char* calledAs() const { return nullptr; }
  // Whether the two are equal as values; an object is equal to itself only.
  virtual bool equals(const Foreign& other) const { return this == &other; }
};

class Heap;
class Memory;  // memory.hpp

// A growable array of handles that are roots while it lives.  Not copyable; any storage duration.
class Handles {
 public:
  explicit Handles(Memory& memory);
  Handles(Memory& memory, std::size_t n) : Handles(memory) { items_.resize(n); }
  ~Handles();
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;

  void push(ALGEB x) { items_.push_back(x); }
  void pop() { items_.pop_back(); }
  void resize(std::size_t n) { items_.resize(n); }
  void clear() { items_.clear(); }
  std::size_t size() const { return items_.size(); }
  bool empty() const { return items_.empty(); }
  ALGEB& operator[](std::size_t i) { return items_[i]; }
  ALGEB operator[](std::size_t i) const { return items_[i]; }
  ALGEB& back() { return items_.back(); }
  std::span<const ALGEB> span() const { return items_; }
  auto begin() { return items_.begin(); }
  auto end() { return items_.end(); }

 private:
  friend class Heap;
  Heap& heap_;
  Handles* next_;
  Handles* previous_;
  std::vector<ALGEB> items_;
};

class Heap {
 public:
  explicit Heap(Memory& memory);
  ~Heap();
  Heap(const Heap&) = delete;
  Heap& operator=(const Heap&) = delete;

  // A new object of that many words, header set, the rest null.  May collect; raises
  // "not enough memory".
  ALGEB allocate(Tag t, std::size_t lengthInWords) {
    const std::size_t bytes = lengthInWords * sizeof(Word);
    if (bytes <= kSmall && sinceCollection_ < limit_) [[likely]] {
      const std::size_t c = classOf(bytes);
      if (Cell* cell = freeCells_[c]) [[likely]] {
        freeCells_[c] = cell->next;
        sinceCollection_ += bytes;
        return initialise(cell, t, lengthInWords);
      }
    }
    return allocateSlowly(t, lengthInWords);
  }

  // Host memory outside objects (array data): cleared bytes from malloc, between guards, that count
  // toward the next collection.  The owner releases them.
  void* allocateBytes(std::size_t bytes);
  void releaseBytes(void* p, std::size_t bytes) noexcept;
  // An array whose data block a pointer on the stack keeps alive, too.
  void registerArray(ALGEB x) { arrays_.push_back(x); }
  // A pointer object whose dispose function must run before it goes.
  void registerDisposable(ALGEB x) { disposable_.push_back(x); }
  // Tells the collector of memory that an object holds elsewhere.
  void countBytes(std::size_t bytes) { sinceCollection_ += bytes; }

  // Throws std::bad_alloc, with nothing changed, where marking needs more memory than there is.
  void collect();
  // After memory has run out and what held it has unwound: collects, and gives back to the system.
  void recover() noexcept;
  // Ends every object: dispose functions run, memory is given back.
  void clear();
  void setStress(bool on);
  bool stress() const { return stress_; }
  void failAllocation(std::int64_t n, bool lasting);
  std::size_t liveObjects() const { return liveAfterCollection_ + allocatedObjects_; }

  // What a table of objects that exist once has been asked for, x itself.  A dispose function may
  // ask for one that the collection has not marked: it stays, then.
  ALGEB found(ALGEB x) {
    if (collecting_) [[unlikely]] {
      keepFound(x);
    }
    return x;
  }

  // Counted protection.
  void protect(ALGEB x);
  void allow(ALGEB x);

  // A function that marks roots of its own in each collection.
  void addRoots(std::function<void(Marker&)> f) { rootSources_.push_back(std::move(f)); }

  // Checks every object; an empty text when the heap is sound, else what is wrong.
  std::string check();

  Marker* activeMarker() { return marking_; }  // null outside a collection

 private:
  friend class Handles;
  struct Cell {
    Word header;
    Cell* next;
  };
  struct Chunk;
  // Addresses first ... last (a pointer to the end counts) that keep an object alive.
  struct Extent {
    Word first;
    Word last;
    ALGEB object;
  };

  static constexpr std::size_t kSmall = 4096;
  static constexpr std::size_t kClasses = 8 + 4 * 5;

  // Size classes: multiples of 16 up to 128 bytes, then four per doubling.
  static constexpr std::size_t classOf(std::size_t bytes) {
    if (bytes <= 128) {
      return (bytes + 15) / 16 - 1;
    }
    const std::size_t top = 63U - static_cast<std::size_t>(__builtin_clzl(bytes - 1));
    return 8 + (top - 7) * 4 + ((bytes - 1 - (std::size_t{1} << top)) >> (top - 2));
  }
  static std::size_t classBytes(std::size_t c);

  ALGEB initialise(Cell* cell, Tag t, std::size_t lengthInWords) {
    Word* w = reinterpret_cast<Word*>(cell);
    w[0] = (static_cast<Word>(lengthInWords) << 32) | (static_cast<Word>(t) << 26);
    for (std::size_t i = 1; i < lengthInWords; ++i) {
      w[i] = 0;
    }
    ++allocatedObjects_;
    return reinterpret_cast<ALGEB>(cell);
  }

  ALGEB allocateSlowly(Tag t, std::size_t lengthInWords);
  void beforeAllocation(std::size_t bytes);
  void refill(std::size_t c);
  Chunk* newChunk(std::size_t c);
  void retireChunk(Chunk* chunk);
  void resetLimit();

  void markRoots();
  void markStack();
  void markConservatively(const Word* from, const Word* to);
  void markCandidate(Word candidate);
  ALGEB objectAt(Word address) const;
  void drain();
  void markOperands(ALGEB x);
  void markArray(ALGEB x);
  void buildExtents();
  void markAll();
  void keepFound(ALGEB x);
  void unmarkAll() noexcept;
  void dispose(bool everything);
  void sweep(bool everything);
  void sweepLarge(bool everything);
  struct Swept {
    std::size_t live = 0;
    std::size_t held = 0;  // in quarantine
  };
  Swept sweepChunk(Chunk& chunk, Cell**& tail, bool everything);
  void freeMemory(void* memory, std::size_t bytes) noexcept;
  void finalise(ALGEB x) noexcept;

  Memory& memory_;
  Cell* freeCells_[kClasses] = {};
  std::size_t sinceCollection_ = 0;
  std::size_t limit_ = 0;
  std::size_t threshold_;
  std::size_t allocatedObjects_ = 0;
  std::size_t liveAfterCollection_ = 0;
  std::size_t liveBytes_ = 0;
  std::size_t bytesOutside_ = 0;
  std::int64_t failCountdown_ = -1;
  bool failuresLast_ = false;
  bool stress_ = false;
  bool collecting_ = false;
  std::uint32_t collections_ = 0;
  Quarantine quarantine_;
  Marker* marking_ = nullptr;

  Chunk* bumpChunks_[kClasses] = {};
  std::vector<Chunk*> chunks_;
  std::vector<Chunk*> emptyChunks_;
  std::unordered_map<Word, Chunk*> chunkAt_;
  std::vector<ALGEB> large_;
  std::vector<ALGEB> arrays_;      // those with a data block of their own
  std::vector<ALGEB> disposable_;  // pointers with a dispose function
  std::vector<ALGEB> due_;         // those of them that are disposed of in a collection
  std::vector<Extent> extents_;    // sorted; during a collection only
  Word lowestChunk_ = ~Word{0};
  Word highestChunk_ = 0;

  Handles* handles_ = nullptr;
  std::unordered_map<ALGEB, std::int64_t> protected_;
  std::vector<std::function<void(Marker&)>> rootSources_;
  Marker marker_;
};

}  // namespace vexel

// Allocation.
//
// Small objects live in cells of equal size inside aligned chunks; a free list a size makes
// allocation a pop.  Larger objects come from malloc one by one.
//
// The fast path is in heap.hpp: a pop while what has been allocated since the last collection is
// below limit_.  A limit of 0 sends every allocation here: during a collection, in stress mode, and
// while a failure is to be injected.

#include "memory/heap.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "kernels/large_pages.hpp"
#include "memory/guards.hpp"
#include "memory/heap_chunk.hpp"
#include "memory/memory.hpp"

namespace vexel {

namespace {

constexpr std::size_t kEmptyChunksKept = 64;

std::size_t physicalMemory() {
  static const std::size_t bytes = static_cast<std::size_t>(sysconf(_SC_PHYS_PAGES)) *
                                   static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return bytes;
}

}  // namespace

void Foreign::print(State&, std::string& out) const { out += "object"; }

Handles::Handles(Memory& memory) : heap_(memory.heap), next_(heap_.handles_), previous_(nullptr) {
  if (next_ != nullptr) {
    next_->previous_ = this;
  }
  heap_.handles_ = this;
}

Handles::~Handles() {
  (previous_ != nullptr ? previous_->next_ : heap_.handles_) = next_;
  if (next_ != nullptr) {
    next_->previous_ = previous_;
  }
}

Heap::Heap(Memory& memory) : memory_(memory), threshold_(kMinimalThreshold) {
  emptyChunks_.reserve(kEmptyChunksKept);  // a collection allocates nothing once it has marked
  resetLimit();
}

void Heap::clear() {
  collecting_ = true;
  limit_ = 0;
  dispose(true);
  sweep(true);
}

Heap::~Heap() {
  clear();
  for (Chunk* chunk : chunks_) {
    munmap(chunk, kChunkBytes);
  }
  for (Chunk* chunk : emptyChunks_) {
    munmap(chunk, kChunkBytes);
  }
}

// 16, 32, ... 128, then four sizes to each doubling: at most a fifth of a cell is left over there.
std::size_t Heap::classBytes(std::size_t c) {
  return c < 8 ? (c + 1) * 16 : (std::size_t{128} << ((c - 8) / 4)) / 4 * (5 + (c - 8) % 4);
}

void Heap::resetLimit() { limit_ = stress_ || collecting_ || failCountdown_ >= 0 ? 0 : threshold_; }

void Heap::setStress(bool on) {
  stress_ = on;
  resetLimit();
}

void Heap::failAllocation(std::int64_t n, bool lasting) {
  failCountdown_ = n;
  failuresLast_ = lasting;
  resetLimit();
}

// What precedes every allocation off the fast path: injected failures, and a collection when due.
void Heap::beforeAllocation(std::size_t bytes) {
  if (collecting_) {
    return;
  }
  if (failCountdown_ == 0) {
    failCountdown_ = failuresLast_ ? 0 : -1;
    resetLimit();
    memory_.raiseNoMemory();
  }
  failCountdown_ -= failCountdown_ > 0 ? 1 : 0;
  // The system would promise more than there is, and end the process when it is used.
  if (bytes + bytesOutside_ > physicalMemory()) {
    collect();
    if (bytes + bytesOutside_ > physicalMemory()) {
      memory_.raiseNoMemory();
    }
  }
  if (stress_ || sinceCollection_ >= threshold_) {
    collect();
  }
}

// A collection first, when one is due; then a cell, or memory of the object's own.  Lists that name
// the object grow before it is made, so that nothing fails half-way.
ALGEB Heap::allocateSlowly(Tag t, std::size_t lengthInWords) {
  if (lengthInWords >= (std::size_t{1} << 32)) {
    memory_.raiseNoMemory();
  }
  const std::size_t bytes = lengthInWords * sizeof(Word);
  beforeAllocation(bytes);
  sinceCollection_ += bytes;
  ALGEB x = nullptr;
  if (bytes <= kSmall) {
    const std::size_t c = classOf(bytes);
    if (freeCells_[c] == nullptr) {
      refill(c);
    }
    Cell* cell = freeCells_[c];
    freeCells_[c] = cell->next;
    x = initialise(cell, t, lengthInWords);
  } else {
    // The extra word lets a pointer to the end of the object belong to nothing else.
    large_.reserve(large_.size() + 1 > large_.capacity() ? 2 * large_.size() + 16 : 0);
    void* memory = std::calloc(bytes + sizeof(Word), 1);
    if (memory == nullptr && !collecting_) {
      collect();
      memory = std::calloc(bytes + sizeof(Word), 1);
    }
    if (memory == nullptr) {
      memory_.raiseNoMemory();
    }
    x = static_cast<ALGEB>(memory);
    words(x)[0] = (static_cast<Word>(lengthInWords) << 32) | (static_cast<Word>(t) << 26);
    large_.push_back(x);
    bytesOutside_ += bytes;
    ++allocatedObjects_;
  }
  if (collecting_) {
    words(x)[0] |= kMarkBit;  // made by a dispose function: survives the sweep to come
  }
  return x;
}

// A chunk is aligned to its size, so that the chunk of an address is a division away.  Empty ones
// are kept for the next that asks, of whatever cell size.
Heap::Chunk* Heap::newChunk(std::size_t c) {
  Chunk* chunk = nullptr;
  chunks_.reserve(chunks_.size() + 1 > chunks_.capacity() ? 2 * chunks_.size() + 16 : 0);
  if (!emptyChunks_.empty()) {
    chunk = emptyChunks_.back();
    emptyChunks_.pop_back();
  } else {
    // Twice the size is mapped and trimmed to an aligned chunk.
    void* raw =
        mmap(nullptr, 2 * kChunkBytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (raw == MAP_FAILED) {
      if (!collecting_) {
        memory_.raiseNoMemory();
      }
      throw std::bad_alloc();
    }
    const Word base = reinterpret_cast<Word>(raw);
    const Word aligned = (base + kChunkBytes - 1) & ~(kChunkBytes - 1);
    if (aligned > base) {
      munmap(raw, aligned - base);
    }
    if (aligned < base + kChunkBytes) {
      munmap(reinterpret_cast<void*>(aligned + kChunkBytes), base + kChunkBytes - aligned);
    }
    chunk = reinterpret_cast<Chunk*>(aligned);
  }
  chunk->sizeClass = c;
  chunk->cellBytes = classBytes(c);
  chunk->next = chunk->first();
  const std::size_t cells = (kChunkBytes - kChunkHeader) / chunk->cellBytes;
  chunk->end = chunk->first() + cells * chunk->cellBytes;
  const Word address = reinterpret_cast<Word>(chunk);
  try {
    chunkAt_[address / kChunkBytes] = chunk;
  } catch (const std::bad_alloc&) {
    munmap(chunk, kChunkBytes);
    throw;
  }
  chunks_.push_back(chunk);
  lowestChunk_ = std::min(lowestChunk_, address);
  highestChunk_ = std::max(highestChunk_, address + kChunkBytes);
  return chunk;
}

void Heap::retireChunk(Chunk* chunk) {
  chunkAt_.erase(reinterpret_cast<Word>(chunk) / kChunkBytes);
  if (bumpChunks_[chunk->sizeClass] == chunk) {
    bumpChunks_[chunk->sizeClass] = nullptr;
  }
  if (emptyChunks_.size() < kEmptyChunksKept) {
    emptyChunks_.push_back(chunk);
  } else {
    munmap(chunk, kChunkBytes);
  }
}

// Puts a batch of cells that were never used on an empty free list.
void Heap::refill(std::size_t c) {
  Chunk* chunk = bumpChunks_[c];
  if (chunk == nullptr || chunk->next == chunk->end) {
    chunk = bumpChunks_[c] = newChunk(c);
  }
  Cell** tail = &freeCells_[c];
  for (int i = 0; i < 64 && chunk->next != chunk->end; ++i, chunk->next += chunk->cellBytes) {
    Cell* cell = reinterpret_cast<Cell*>(chunk->next);
    cell->header = 0;
    *tail = cell;
    tail = &cell->next;
  }
  *tail = nullptr;
}

void* Heap::allocateBytes(std::size_t bytes) {
  const std::size_t total = bytes + 2 * kGuardBytes;
  beforeAllocation(total);
  auto* p = static_cast<char*>(std::calloc(total, 1));
  if (p == nullptr) {
    collect();
    p = static_cast<char*>(std::calloc(total, 1));
  }
  if (p == nullptr) {
    memory_.raiseNoMemory();
  }
  sinceCollection_ += bytes;
  bytesOutside_ += bytes;
  kernels::useLargePages(p, total);
  setGuard(p);
  setGuard(p + kGuardBytes + bytes);
  return p + kGuardBytes;
}

void Heap::releaseBytes(void* p, std::size_t bytes) noexcept {
  freeMemory(static_cast<char*>(p) - kGuardBytes, bytes + 2 * kGuardBytes);
  bytesOutside_ -= bytes;
}

// Gives memory back to malloc, at once or through the quarantine.
void Heap::freeMemory(void* memory, std::size_t bytes) noexcept {
  if (stress_) {
    quarantine_.hold(memory, bytes);
  } else {
    std::free(memory);
  }
}

void Heap::protect(ALGEB x) {
  if (x != nullptr && !isImmediate(x)) {
    ++protected_[x];
  }
}

void Heap::allow(ALGEB x) {
  const auto entry = protected_.find(x);
  if (entry != protected_.end() && --entry->second == 0) {
    protected_.erase(entry);
  }
}

}  // namespace vexel

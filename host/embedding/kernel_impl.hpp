// What lies behind vexel::Kernel: the kernel's state, the roots of its Values, loaded libraries.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <new>
#include <string>
#include <string_view>
#include <vector>
#include <vexel/kernel.hpp>

#include "values/big_number_work.hpp"
#include "values/errors.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// Slots that hold the handles of live Values; taking and releasing one is a few instructions.
//
// The pool outlives its kernel until the last Value is dropped: an Error carries Values, and where
// it is caught the kernel may be gone.
class RootPool {
 public:
  // The pool of a root that take has returned.
  static RootPool& of(void* root) { return *static_cast<Slot*>(root)->pool; }

  void* take(ALGEB x) {
    if (free_ == nullptr) {
      slots_.push_back({nullptr, nullptr, this});
      free_ = &slots_.back();
    }
    Slot* slot = free_;
    free_ = slot->next;
    slot->handle = x;
    ++live_;
    return slot;
  }
  void release(void* root) noexcept {
    Slot* slot = static_cast<Slot*>(root);
    slot->handle = nullptr;
    slot->next = free_;
    free_ = slot;
    if (--live_ == 0 && orphaned_) {
      delete this;
    }
  }
  void mark(Marker& marker) const {
    for (const Slot& slot : slots_) {
      marker.mark(slot.handle);
    }
  }

  // The kernel is gone, and the handles with it.
  void orphan() noexcept {
    orphaned_ = true;
    if (live_ == 0) {
      delete this;
    }
  }
  bool orphaned() const { return orphaned_; }

 private:
  ~RootPool() = default;  // by orphan or release

  struct Slot {
    ALGEB handle;
    Slot* next;
    RootPool* pool;
  };
  std::deque<Slot> slots_;
  Slot* free_ = nullptr;
  std::size_t live_ = 0;
  bool orphaned_ = false;
};

struct OrphanPool {
  void operator()(RootPool* pool) const noexcept { pool->orphan(); }
};

// The names that were called last, by a hash of a few of their bytes: most calls are of a few
// functions, and are found here sooner than in the table of all names.  A collection, which may
// free names, forgets them.
class CalledNames {
 public:
  // Where a name of that text is kept; null, or perhaps another name.
  ALGEB& of(std::string_view text) {
    std::uint64_t middle = 0;  // what entry points differ in
    const std::size_t n = std::min(text.size(), sizeof middle);
    text.copy(reinterpret_cast<char*>(&middle), n, (text.size() - n) / 2);
    return names_[((middle + text.size()) * 0x9E3779B97F4A7C15U) >> 58];
  }
  void forget() { names_.fill(nullptr); }

 private:
  std::array<ALGEB, 64> names_{};
};

// A shared object whose entry points the kernel calls.
struct LoadedLibrary {
  void* handle = nullptr;
  ALGEB (*terminate)(VKernelVector) = nullptr;
};

struct Kernel::Impl {
  explicit Impl(Kernel& k);
  ~Impl();

  // Runs f; host errors and interrupts leave as the embedding API's exceptions.
  template <typename F>
  auto run(F f) {
    const BigNumberWork work;
    try {
      return f();
    } catch (const HostErrorToken&) {
      throwError();
    } catch (const InterruptToken&) {
      throw Interrupted();
    } catch (const std::bad_alloc&) {
      throwNoMemory();
    }
  }
  // The name; raises unless it has a function or a value.
  ALGEB functionNamed(std::string_view text);
  [[noreturn]] void throwError();
  [[noreturn]] void throwNoMemory();

  Kernel& kernel;
  std::unique_ptr<RootPool, OrphanPool> roots{new RootPool};
  std::vector<LoadedLibrary> libraries;
  std::vector<std::string> entryPoints;
  CalledNames calledNames;
  State state;
};

}  // namespace vexel

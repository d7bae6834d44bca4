// What lies behind vexel::Kernel: the kernel's state, the roots of its Values, loaded libraries.
#pragma once

#include <deque>
#include <new>
#include <string>
#include <vector>
#include <vexel/kernel.hpp>

#include "core/errors.hpp"
#include "core/kernel_state.hpp"

namespace vexel {

// Slots that hold the handles of live Values; taking and releasing one is a few instructions.
class RootPool {
 public:
  void* take(ALGEB x) {
    if (free_ == nullptr) {
      slots_.emplace_back();
      slots_.back().next = nullptr;
      free_ = &slots_.back();
    }
    Slot* slot = free_;
    free_ = slot->next;
    slot->handle = x;
    return slot;
  }
  void release(void* root) noexcept {
    Slot* slot = static_cast<Slot*>(root);
    slot->handle = nullptr;
    slot->next = free_;
    free_ = slot;
  }
  void mark(Marker& marker) const {
    for (const Slot& slot : slots_) {
      marker.mark(slot.handle);
    }
  }

 private:
  struct Slot {
    ALGEB handle = nullptr;
    Slot* next = nullptr;
  };
  std::deque<Slot> slots_;
  Slot* free_ = nullptr;
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
    try {
      return f();
    } catch (const HostErrorToken&) {
      throwError();
    } catch (const InterruptToken&) {
      throw Interrupted();
    } catch (const std::bad_alloc&) {
      throw Error("not enough memory", "not enough memory", {});
    }
  }
  [[noreturn]] void throwError();

  Kernel& kernel;
  RootPool roots;
  std::vector<LoadedLibrary> libraries;
  std::vector<std::string> entryPoints;
  State state;
};

}  // namespace vexel

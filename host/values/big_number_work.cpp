// Memory functions of GMP, which MPFR and MPC share.

#include "values/big_number_work.hpp"

#include <dlfcn.h>
#include <gmp.h>
#include <mpfr.h>

#include <cstdio>
#include <cstdlib>
#include <new>

#include "memory/unwinding.hpp"

namespace vexel {

std::atomic<bool> bigNumberMemoryIsOurs = false;
constinit thread_local bool bigNumbersAbandoned = false;

namespace {

// Numbers below are done with before anybody could notice.
constexpr std::size_t kLarge = std::size_t{1} << 13;

void look(std::size_t bytes) {
  if (hostDepth > 0 && bytes >= kLarge && interruptRequested != 0) {
    bigNumbersAbandoned = true;
    throwInterrupt();
  }
}

void* checked(void* p, std::size_t bytes) {
  if (p == nullptr) {
    if (hostDepth > 0) {
      bigNumbersAbandoned = true;
      throw std::bad_alloc();
    }
    std::fprintf(stderr, "no memory for a number of %zu bytes\n", bytes);
    std::abort();
  }
  return p;
}

void* allocate(std::size_t bytes) {
  look(bytes);
  return checked(std::malloc(bytes), bytes);
}

void* reallocate(void* p, std::size_t, std::size_t bytes) {
  look(bytes);
  return checked(std::realloc(p, bytes), bytes);
}

// An operand of what was abandoned may refer to memory that is gone: nothing is given back until
// the calls into the host have unwound.
void release(void* p, std::size_t) {
  if (!bigNumbersAbandoned) {
    std::free(p);
  }
}

// GMP's own functions are those of malloc, too: numbers from before and from programs that use GMP
// beside the host may be given back here.  A program that has set functions of its own keeps them.
bool install() {
  void* (*current)(std::size_t) = nullptr;
  mp_get_memory_functions(&current, nullptr, nullptr);
  Dl_info where{};
  Dl_info gmp{};
  if (dladdr(reinterpret_cast<void*>(current), &where) != 0 &&
      dladdr(reinterpret_cast<void*>(&mp_get_memory_functions), &gmp) != 0 &&
      where.dli_fbase == gmp.dli_fbase) {
    mp_set_memory_functions(allocate, reallocate, release);
  }
  return true;
}

}  // namespace

void takeOverBigNumberMemory() {
  static const bool installed = install();
  bigNumberMemoryIsOurs.store(installed, std::memory_order_release);
}

void forgetAbandonedNumbers() {
  bigNumbersAbandoned = false;
  mpfr_free_cache();
}

}  // namespace vexel

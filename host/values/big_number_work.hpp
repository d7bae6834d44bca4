// Work on big numbers that can be abandoned: GMP and MPFR ask for memory, and where there is none,
// or an interrupt is pending, what they are doing ends with an exception instead of the process.
#pragma once

#include <atomic>

#include "memory/unwinding.hpp"

namespace vexel {

// The libraries' memory functions are ours.
extern std::atomic<bool> bigNumberMemoryIsOurs;
void takeOverBigNumberMemory();

// Something that was begun on this thread has been left to itself.  One word of the static TLS
// block, so that looking costs no call.
extern constinit thread_local bool bigNumbersAbandoned __attribute__((tls_model("initial-exec")));
void forgetAbandonedNumbers();

// While one lives, allocations of the big-number libraries on this thread throw std::bad_alloc when
// memory has run out, and InterruptToken when an interrupt is pending and the number is large.
//
// The exception passes through C functions, whose operands may be unsound then: numbers that unwind
// are left to themselves, memory and all, and the constants that MPFR keeps are dropped.
// Outside, and on other threads, allocations do what they always do.
class BigNumberWork {
 public:
  BigNumberWork() {
    if (!bigNumberMemoryIsOurs.load(std::memory_order_acquire)) [[unlikely]] {
      takeOverBigNumberMemory();
    }
  }
  ~BigNumberWork() {
    if (bigNumbersAbandoned && hostDepth == 1) [[unlikely]] {
      forgetAbandonedNumbers();
    }
  }
  BigNumberWork(const BigNumberWork&) = delete;
  BigNumberWork& operator=(const BigNumberWork&) = delete;

 private:
  InsideHost inside_;
};

}  // namespace vexel

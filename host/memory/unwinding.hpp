// What unwinds through the host: tokens without content, and the flag that asks for an interrupt.
//
// The tokens do not derive from std::exception, so that no catch of standard exceptions takes a
// host error for one.
#pragma once

namespace vexel {

struct __attribute__((visibility("default"))) HostErrorToken {};
struct __attribute__((visibility("default"))) InterruptToken {};

// Sets the flag that lookAtInterrupt looks at; safe in a signal handler.
void requestInterrupt() noexcept;
void clearInterrupt() noexcept;
extern volatile int interruptRequested;
[[noreturn]] void throwInterrupt();

// How many calls into the host are on this thread's stack.  A token that is thrown where there are
// none would reach a program that knows nothing of it.  One word of the static TLS block, so that
// counting costs no call.
extern constinit thread_local int hostDepth __attribute__((tls_model("initial-exec")));

struct InsideHost {
  InsideHost() { ++hostDepth; }
  ~InsideHost() { --hostDepth; }
  InsideHost(const InsideHost&) = delete;
  InsideHost& operator=(const InsideHost&) = delete;
};

// While a function of the embedding program runs that the host has called.
struct OutsideHost {
  OutsideHost() : depth(hostDepth) { hostDepth = 0; }
  ~OutsideHost() { hostDepth = depth; }
  OutsideHost(const OutsideHost&) = delete;
  OutsideHost& operator=(const OutsideHost&) = delete;
  int depth;
};

// Every loop that may run long looks here: an interrupt asked for leaves as InterruptToken.
inline void lookAtInterrupt() {
  if (interruptRequested != 0) [[unlikely]] {
    throwInterrupt();
  }
}

}  // namespace vexel

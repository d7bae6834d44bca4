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

// Every loop that may run long looks here: an interrupt asked for leaves as InterruptToken.
inline void lookAtInterrupt() {
  if (interruptRequested != 0) [[unlikely]] {
    throwInterrupt();
  }
}

}  // namespace vexel

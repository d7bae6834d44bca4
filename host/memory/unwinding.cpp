#include "memory/unwinding.hpp"

#include <vexel/interruption.hpp>

namespace vexel {

volatile int interruptRequested = 0;
constinit thread_local int hostDepth = 0;

void requestInterrupt() noexcept { interruptRequested = 1; }
void clearInterrupt() noexcept { interruptRequested = 0; }

void throwInterrupt() {
  interruptRequested = 0;
  if (hostDepth == 0) {
    throw Interrupted();
  }
  throw InterruptToken{};
}

}  // namespace vexel

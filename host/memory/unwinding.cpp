#include "memory/unwinding.hpp"

namespace vexel {

volatile int interruptRequested = 0;

void requestInterrupt() noexcept { interruptRequested = 1; }
void clearInterrupt() noexcept { interruptRequested = 0; }

void throwInterrupt() {
  interruptRequested = 0;
  throw InterruptToken{};
}

}  // namespace vexel

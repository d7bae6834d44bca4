// What is said of data that a function does not take.
#pragma once

#include <cstddef>

namespace vexel {

// `function` may be null where the caller's error names it.
[[noreturn]] void refuseWeight(const char* function, std::size_t place, double weight);
[[noreturn]] void refuseMissing(const char* function, std::size_t place);

}  // namespace vexel

// Checks of what a law is made of and asked for.  A text says the parameter, what is allowed and
// what came.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace vexel::detail {

// std::domain_error with the parameter, what is allowed and the value.
[[noreturn]] void refuse(const char* law, const char* parameter, const char* allowed, double value);

// std::domain_error unless the value of law's parameter is as the name says; infinities and NaN
// never are.
inline void requireFinite(const char* law, const char* parameter, double value) {
  if (!std::isfinite(value)) {
    refuse(law, parameter, "finite", value);
  }
}
inline void requirePositive(const char* law, const char* parameter, double value) {
  if (!(value > 0.0) || std::isinf(value)) {
    refuse(law, parameter, "positive and finite", value);
  }
}
inline void requireNotNegative(const char* law, const char* parameter, double value) {
  if (!(value >= 0.0) || std::isinf(value)) {
    refuse(law, parameter, "at least 0 and finite", value);
  }
}
inline void requireProbability(const char* law, const char* parameter, double value) {
  if (!(value >= 0.0 && value <= 1.0)) {
    refuse(law, parameter, "in [0, 1]", value);
  }
}
// Of magnitude at most 2^53, so that it and its neighbours are doubles.
void requireExact(const char* law, const char* parameter, std::int64_t value);
void requireBetween(const char* law, const char* parameter, std::int64_t value, std::int64_t low,
                    std::int64_t high);
// std::length_error unless an output has the size of the input.
void requireSize(const char* method, std::size_t out, std::size_t in);

}  // namespace vexel::detail

// Checks of what a law is made of and asked for.  A text says the parameter, what is allowed and
// what came.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexel::detail {

// std::domain_error unless the value of law's parameter is as the name says; infinities and NaN
// never are.
void requireFinite(const char* law, const char* parameter, double value);
void requirePositive(const char* law, const char* parameter, double value);
void requireNotNegative(const char* law, const char* parameter, double value);
void requireProbability(const char* law, const char* parameter, double value);
// Of magnitude at most 2^53, so that it and its neighbours are doubles.
void requireExact(const char* law, const char* parameter, std::int64_t value);
void requireBetween(const char* law, const char* parameter, std::int64_t value, std::int64_t low,
                    std::int64_t high);
// std::domain_error with the parameter, what is allowed and the value.
[[noreturn]] void refuse(const char* law, const char* parameter, const char* allowed, double value);

// std::length_error unless an output has the size of the input.
void requireSize(const char* method, std::size_t out, std::size_t in);

}  // namespace vexel::detail

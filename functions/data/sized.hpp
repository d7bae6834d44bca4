// Results as long as a caller asks for.
#pragma once

#include <cstddef>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

namespace vexel {

// A vector of n elements; where n is more than memory will ever hold, std::length_error with the
// function and the parameter instead of a bare std::bad_alloc.
template <typename T>
std::vector<T> sized(const char* function, const char* parameter, std::size_t n) {
  constexpr std::size_t large = std::size_t{1} << 30;  // below, memory is short for the moment
  const auto refuse = [&] {
    throw std::length_error(std::string(function) + ": " + parameter +
                            " must be a number of elements that fit into memory, got " +
                            std::to_string(n));
  };
  if (n > std::vector<T>().max_size()) {
    refuse();
  }
  try {
    return std::vector<T>(n);
  } catch (const std::bad_alloc&) {
    if (n >= large) {
      refuse();
    }
    throw;
  }
}

}  // namespace vexel

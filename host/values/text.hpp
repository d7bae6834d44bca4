// The printed form of objects: text that reads back where it can.
#pragma once

#include <cstddef>
#include <string>

#include "memory/handle.hpp"

namespace vexel {

struct TextOptions {
  std::size_t maxElements =
      static_cast<std::size_t>(-1);                      // of an array, list or table before
                                                         // "..." and, but for arrays, their number
  std::size_t maxLength = static_cast<std::size_t>(-1);  // of the whole text before "..."
  bool raiseTooDeep = true;  // nesting beyond printing raises; else it prints as "..."
};

std::string sourceText(State& state, ALGEB x, const TextOptions& options = {});
void appendSource(State& state, std::string& out, ALGEB x, const TextOptions& options = {});

// The same, but a string without its quotes and a date as 2024-02-29.
std::string plainText(State& state, ALGEB x);

// A double or a float in its shortest form: 2.0, 0.1, 1e+20, Float(undefined).
std::string doubleText(double d);
std::string floatText(ALGEB x);

}  // namespace vexel

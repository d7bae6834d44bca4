// Numbers in the texts of errors: the shortest decimal that reads back.
#pragma once

#include <charconv>
#include <string>

namespace vexel {

inline std::string number(double x) {
  char digits[32];
  return std::string(digits, std::to_chars(digits, digits + sizeof digits, x).ptr);
}

}  // namespace vexel

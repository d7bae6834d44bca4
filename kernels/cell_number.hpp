// The number in a cell of a table written as text.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <string>
#include <string_view>
#include <system_error>

namespace vexel::kernels {

inline std::string_view trimmed(std::string_view cell) {
  const std::size_t from = cell.find_first_not_of(" \t");
  return from == std::string_view::npos
             ? std::string_view()
             : cell.substr(from, cell.find_last_not_of(" \t") - from + 1);
}

// What programs write for a missing number, in letters of either case.
inline bool isMissingCell(std::string_view cell) {
  constexpr std::string_view kMissing[] = {"", "na", "n/a", "nan", ".", "null"};
  std::string lower(cell);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return std::find(std::begin(kMissing), std::end(kMissing), lower) != std::end(kMissing);
}

// The double nearest to what a cell says, NaN for a missing one.  False for anything else, as for a
// point where the decimal mark is another.
inline bool cellNumber(std::string_view cell, double& value, char decimal = '.') {
  cell = trimmed(cell);
  value = std::numeric_limits<double>::quiet_NaN();
  if (cell.size() <= 4 && isMissingCell(cell)) {
    return true;
  }
  std::string pointed;
  if (decimal != '.') {
    if (cell.find('.') != std::string_view::npos) {
      return false;
    }
    pointed = cell;
    std::replace(pointed.begin(), pointed.end(), decimal, '.');
    cell = pointed;
  }
  if (cell.front() == '+') {
    cell.remove_prefix(1);
  }
  const auto [end, error] = std::from_chars(cell.data(), cell.data() + cell.size(), value);
  if (end != cell.data() + cell.size()) {
    return false;
  }
  if (error == std::errc::result_out_of_range) {
    // from_chars leaves the value alone: too large and too small look the same to it.
    value = std::strtod(std::string(cell).c_str(), nullptr);
  }
  return error != std::errc::invalid_argument;
}

}  // namespace vexel::kernels

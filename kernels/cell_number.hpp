// The number in a cell of a table written as text.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
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

inline constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                                          1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                                          1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

// Sign, digits and a decimal mark, with a value below 2^53 times a power of ten that is a double:
// their quotient is the double nearest to the decimal (W. Clinger, How to read floating point
// numbers accurately, PLDI 1990).
inline bool plainNumber(std::string_view cell, char decimal, double& value) {
  const char* p = cell.data();
  const char* const end = p + cell.size();
  const bool negative = p != end && *p == '-';
  p += negative ? 1 : 0;
  std::uint64_t digits = 0;
  const char* const first = p;
  for (; p != end && static_cast<unsigned char>(*p - '0') < 10; ++p) {
    digits = 10 * digits + static_cast<unsigned char>(*p - '0');
  }
  auto count = p - first;
  std::size_t decimals = 0;
  if (p != end && *p == decimal) {
    const char* const fraction = ++p;
    for (; p != end && static_cast<unsigned char>(*p - '0') < 10; ++p) {
      digits = 10 * digits + static_cast<unsigned char>(*p - '0');
    }
    decimals = static_cast<std::size_t>(p - fraction);
    count += p - fraction;
  }
  if (p != end || count == 0 || count > 18 || digits >= (std::uint64_t{1} << 53)) {
    return false;
  }
  const double magnitude = static_cast<double>(digits) / kPowersOfTen[decimals];
  value = negative ? -magnitude : magnitude;
  return true;
}

// The double nearest to what a cell says, NaN for a missing one.  False for anything else, as for a
// point where the decimal mark is another.
inline bool cellNumber(std::string_view cell, double& value, char decimal = '.') {
  cell = trimmed(cell);
  if (plainNumber(cell, decimal, value)) {
    return true;
  }
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

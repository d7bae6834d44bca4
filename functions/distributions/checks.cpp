// Checks of what a law is made of and asked for.
#include "functions/distributions/checks.hpp"

#include <cmath>
#include <stdexcept>
#include <string>

#include "functions/data/text.hpp"

namespace vexel::detail {

void refuse(const char* law, const char* parameter, const char* allowed, double value) {
  throw std::domain_error(std::string(law) + ": " + parameter + " must be " + allowed + ", got " +
                          (std::isnan(value) ? "nan" : number(value)));
}

void requireExact(const char* law, const char* parameter, std::int64_t value) {
  constexpr std::int64_t most = std::int64_t{1} << 53;
  if (value < -most || value > most) {
    refuse(law, parameter, "-2^53 to 2^53", static_cast<double>(value));
  }
}

void requireBetween(const char* law, const char* parameter, std::int64_t value, std::int64_t low,
                    std::int64_t high) {
  if (value < low || value > high) {
    throw std::domain_error(std::string(law) + ": " + parameter + " must be " +
                            std::to_string(low) + " to " + std::to_string(high) + ", got " +
                            std::to_string(value));
  }
}

void requireSize(const char* method, std::size_t out, std::size_t in) {
  if (out != in) {
    throw std::length_error(std::string(method) + ": out must have the size of the input, " +
                            std::to_string(in) + ", got " + std::to_string(out));
  }
}

}  // namespace vexel::detail

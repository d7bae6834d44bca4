// Root finders: the checks and the texts of what ends a search.
#include "vexel/roots.hpp"

#include "functions/data/text.hpp"

namespace vexel::detail {

void raiseRootError(const char* what, double low, double high, RootPoint best) {
  std::string text = what;
  text += low == high ? " at " + number(low) : " between " + number(low) + " and " + number(high);
  if (best.x == best.x) {
    text +=
        "; the best point is " + number(best.x) + ", f - target is " + number(best.f) + " there";
  }
  throw RootError(text, best.x, best.f);
}

void raiseBadIntegers(std::int64_t low, std::int64_t high) {
  throw std::invalid_argument("find_integer: low must not be above high, got " +
                              std::to_string(low) + " and " + std::to_string(high));
}

void checkRootOptions(Bracket& bracket, const RootOptions& options) {
  const auto refuse = [](const std::string& text) {
    throw std::invalid_argument("find_root: " + text);
  };
  if (bracket.low != bracket.low || bracket.high != bracket.high) {
    refuse("the ends of the bracket must be numbers, got " + number(bracket.low) + " and " +
           number(bracket.high));
  }
  if (options.target != options.target) {
    refuse("target must be a number, got nan");
  }
  if (!(options.tolerance >= 0 && options.tolerance < 1)) {
    refuse("tolerance must be 0 to 1, got " + number(options.tolerance));
  }
  if (options.max_iterations < 1) {
    refuse("max_iterations must be at least 1, got " + std::to_string(options.max_iterations));
  }
  if (bracket.low > bracket.high) {
    std::swap(bracket.low, bracket.high);
  }
}

}  // namespace vexel::detail

#include "functions/data/refusals.hpp"

#include <string>
#include <vexel/errors.hpp>

#include "functions/data/text.hpp"

namespace vexel {

namespace {

std::string head(const char* function) {
  return function == nullptr ? std::string() : std::string(function) + ": ";
}

}  // namespace

ElementError::ElementError(const std::string& before, std::size_t place, std::string_view after)
    : std::invalid_argument(before + std::to_string(place) + std::string(after)),
      place_(place),
      begin_(before.size()) {}

std::string ElementError::text(std::size_t first) const {
  return std::string(what()).replace(begin_, std::to_string(place_).size(),
                                     std::to_string(place_ + first));
}

void refuseWeight(const char* function, std::size_t place, double weight) {
  throw ElementError(head(function) + "weights must be finite and not negative, weights[", place,
                     "] is " + number(weight));
}

void refuseMissing(const char* function, std::size_t place) {
  throw ElementError(head(function) + "element ", place, " is missing");
}

}  // namespace vexel

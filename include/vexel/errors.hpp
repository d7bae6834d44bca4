// Errors about one of many.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vexel/export.hpp>

namespace vexel {

// An element, weight or row that a function refuses.  what() counts it from 0; a program whose
// users count from 1 shows text(1).
class VEXEL_API ElementError : public std::invalid_argument {
 public:
  ElementError(const std::string& before, std::size_t place, std::string_view after);

  std::size_t place() const { return place_; }
  std::string text(std::size_t first) const;

 private:
  std::size_t place_;
  std::size_t begin_;  // of the number in what()
};

}  // namespace vexel

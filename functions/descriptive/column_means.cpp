// Means of several variables, eight at a time where they are columns of one matrix.
#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>

#include "kernels/vector/columns.hpp"
#include "kernels/vector/sums.hpp"
#include "kernels/watch.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

namespace {

// Whether eight variables are doubles that lie side by side, and few enough of each.
bool sideBySide(const Data* variables) {
  const Data& first = variables[0];
  if (first.element() != Element::float64 || first.size() == 0 ||
      first.size() > kernels::sumBlock) {
    return false;
  }
  const auto* const x = static_cast<const double*>(first.data());
  for (std::size_t j = 1; j < kernels::columnsTogether; ++j) {
    const Data& other = variables[j];
    if (other.element() != Element::float64 || other.size() != first.size() ||
        other.stride() != first.stride() || other.data() != x + j) {
      return false;
    }
  }
  return true;
}

}  // namespace

void mean(std::span<const Data> variables, std::span<double> out, const MeanOptions& options) {
  constexpr std::size_t together = kernels::columnsTogether;
  if (out.size() != variables.size()) {
    throw std::length_error("mean: out must have as many elements as there are variables, " +
                            std::to_string(variables.size()) + ", not " +
                            std::to_string(out.size()));
  }
  const bool plain = options.kind == Mean::arithmetic && !options.weights.given();
  std::size_t i = 0;
  while (i < variables.size()) {
    unsigned found = 0;
    std::size_t count = 1;
    if (plain && variables.size() - i >= together && sideBySide(&variables[i])) {
      count = together;
      const Data& first = variables[i];
      found = kernels::meansOfColumns(static_cast<const double*>(first.data()), first.stride(),
                                      first.size(), &out[i]);
    }
    for (std::size_t j = 0; j < count; ++j) {
      if ((found >> j & 1U) == 0) {
        out[i + j] = mean(variables[i + j], options);
      }
    }
    i += count;
    kernels::poll(static_cast<double>(i) / static_cast<double>(variables.size()));
  }
}

}  // namespace vexel

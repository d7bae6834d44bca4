// Values of a sample by rank or cumulative weight, found without sorting it.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <vector>

#include "functions/sample.hpp"

namespace vexel {

// The smallest point whose cumulative weight - without weights, whose rank from 1 - reaches weight,
// or exceeds it; the last point where none does.
struct Target {
  double weight;
  bool beyond = false;
};

class Selection {
 public:
  // With about, of the distances |x - about|.
  explicit Selection(const Sample& sample, std::optional<double> about = std::nullopt);

  // Looks at the whole sample: whether there is a result at all, and the total weight, rounded.
  bool undefined() const { return undefined_; }
  double total() const { return total_; }
  const Sample::Presence& found() const { return found_; }

  // In the order of the targets.  A sample of the points says between which two values each target
  // lies, nearly for sure; one read counts what is outside and collects what is between, a few per
  // cent (R. W. Floyd and R. L. Rivest, Expected time bounds for selection, 1975).
  std::vector<double> values(std::span<const Target> targets) const;

 private:
  const Sample& sample_;
  std::optional<double> about_;
  Sample::Presence found_;
  bool undefined_ = true;
  double total_ = 0.0;
};

}  // namespace vexel

// Values of a sample by rank or cumulative weight, found without sorting it.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "functions/data/sample.hpp"

namespace vexel {

// The smallest point whose cumulative weight - without weights, whose rank from 1 - reaches weight,
// or exceeds it; the last point where none does.
struct Target {
  double weight;
  bool beyond = false;
};

// The rank from 0 that a target means among n > 0 points without weights.
std::size_t rankOf(const Target& target, std::size_t n);

class Selection {
 public:
  // With about, of the distances |x - about|.
  explicit Selection(const Sample& sample, std::optional<double> about = std::nullopt)
      : sample_(sample), about_(about) {}

  // The targets of a sample of total weight n; called once or twice, the last call counts.
  using Targets = std::function<std::vector<Target>(double n)>;

  // The values in the order of the targets; none when the result is NaN.  A sample of the points
  // says between which two values each target lies, nearly for sure; one read counts what is
  // outside and collects what is between, a few per cent (R. W. Floyd and R. L. Rivest, Expected
  // time bounds for selection, 1975).  Weights are added up in a read before.
  std::optional<std::vector<double>> values(const Targets& targets);

  // After values(): what was found there.
  const Sample::Presence& found() const { return found_; }
  double total() const { return total_; }

 private:
  bool look();

  const Sample& sample_;
  std::optional<double> about_;
  Sample::Presence found_;
  double total_ = 0.0;
};

}  // namespace vexel

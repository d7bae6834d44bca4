// Variates of weighted points of which some are equal.
//
// Each variate sorts points and weights, and the sort is not stable: it exchanges the weights of
// equal points, each time by the same permutation, and so changes what the cumulative weights are
// rounded to and which weight comes first among equals.  Knowing the permutation, one variate costs
// a search; where the search cannot tell, the weights are put as the sorts would have left them.
#pragma once

#include <cstdint>
#include <vector>

namespace vexel::kernels {

// What sorting sorted points once more, and again, does to their weights.
class RepeatedSort {
 public:
  RepeatedSort(const double* points, const double* weights, int n);

  bool movesPoints() const { return movesPoints_; }  // zeros of both signs, or NaNs
  bool movesWeights() const { return !order_.empty(); }

  // The weight at a place, all weights, after that many more sorts.
  double weightAfter(std::int64_t sorts, int place) const;
  void weightsAfter(std::int64_t sorts, double* weights) const;

 private:
  std::vector<double> weights_;
  bool movesPoints_ = false;
  // The permutation's cycles, one after the other: after a sort each place holds the weight of the
  // next in its cycle.
  std::vector<int> order_;
  struct Cycle {
    int begin = 0;
    int end = 0;
  };
  std::vector<Cycle> cycleOf_;  // of each place; empty for one whose weight stays
  std::vector<int> placeInOrder_;
};

// Tells, in a time that grows with log n, which value a sorted sample's quantile of the first type
// has after a number of sorts, if rounding cannot make a difference.
class TiedPoints {
 public:
  // Points finite and sorted; weights finite and not negative; sort moves no points.
  TiedPoints(const double* points, const double* weights, int n, const RepeatedSort& sort);

  // False when the sums of weights as they are rounded decide.
  bool quantile(double u, std::int64_t sorts, double& result) const;

 private:
  const double* points_;
  const RepeatedSort& sort_;
  std::vector<int> starts_;   // of each run of equal points
  std::vector<double> sums_;  // of the weights up to its end
  double doubt_ = 0.0;        // how far orders of adding weights can differ
};

}  // namespace vexel::kernels

// Quantiles by selection.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "functions/descriptive/selection.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

// The value between those of two targets.
struct Place {
  Target low;
  Target high;
  double fraction;
};
// Where the quantile of a sample of total weight n lies.
Place placeOf(double q, double n, QuantileMethod method);
// Where the k-th smallest of n points lie, and the five numbers; std::domain_error where there is
// no such point.
std::vector<Place> placesOfRanks(std::span<const std::int64_t> k, double n);
std::vector<Place> placesOfFive(double n);
// The hinges on either side of the median, for any weights.
FiveNumber fiveInOrder(const FiveNumber& five);
// Throws std::domain_error unless 0 <= q <= 1 or q is NaN.
void requireProbability(double q, const char* function);

// low + (high - low) * fraction with one rounding, so that it rises with the fraction.
double between(double low, double high, double fraction);

// 0 <= q <= 1 or NaN; NaNs where the sample gives no result.
std::vector<double> quantilesOf(Selection&& selection, std::span<const double> q,
                                QuantileMethod method);
double medianOf(Selection&& selection);

// Quartiles and extremes, with what was found on the way.
struct Quartiles {
  Sample::Presence found;
  double total;
  double values[5];
};
Quartiles quartilesOf(const Sample& sample);

}  // namespace vexel

// Descriptive statistics.
//
//   vexel::mean(x, {.weights = w, .missing = vexel::Missing::omit})
//   vexel::quantile(x, {0.25, 0.5, 0.75}, {.method = vexel::QuantileMethod::hazen})
//
// Weights are frequencies: a point of weight 3 counts as three points, one of weight 0 is not
// there. They are finite and not negative, and their total, n, is positive where there are points;
// else std::invalid_argument.  A point is missing when it or its weight is NaN.  The result over
// nothing is NaN.  Nothing is changed, sorted or copied as a whole where a part will do; results do
// not depend on the instructions that the machine has.  docs/functions/statistics.md has the
// formulas.
#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <optional>
#include <span>
#include <string>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/export.hpp>
#include <vexel/ordering.hpp>

namespace vexel {

// ---- means

enum class Mean : std::uint8_t { arithmetic, geometric, harmonic, quadratic };
struct MeanOptions {
  Data weights = {};
  Mean kind = Mean::arithmetic;  // geometric and harmonic: NaN where some point is negative
  Missing missing = Missing::propagate;
};
VEXEL_API double mean(Data x, const MeanOptions& options = {});

// What most of the others take.
struct WeightedOptions {
  Data weights = {};
  Missing missing = Missing::propagate;
};

// Without the floor(cut n) smallest and largest points; winsorized: with each of those replaced by
// the nearest point that stays.
VEXEL_API double trimmed_mean(Data x, Cut cut, const WeightedOptions& options = {});
VEXEL_API double winsorized_mean(Data x, Cut cut, const WeightedOptions& options = {});

// ---- moments

struct MomentOptions {
  Data weights = {};
  std::optional<double> center = {};  // the mean where it is left out
  Missing missing = Missing::propagate;
};
// The mean of (x - center)^order, 0 <= order <= 64; several orders in one pass.
VEXEL_API double moment(Data x, int order, const MomentOptions& options = {});
VEXEL_API std::vector<double> moment(Data x, std::span<const int> orders,
                                     const MomentOptions& options = {});
inline std::vector<double> moment(Data x, std::initializer_list<int> orders,
                                  const MomentOptions& options = {}) {
  return moment(x, std::span<const int>(orders.begin(), orders.size()), options);
}

struct VarianceOptions {
  Data weights = {};
  double ddof = 1;  // the divisor is n - ddof; NaN unless it is positive
  Missing missing = Missing::propagate;
};
VEXEL_API double var(Data x, const VarianceOptions& options = {});
VEXEL_API double std(Data x, const VarianceOptions& options = {});

struct ShapeOptions {
  Data weights = {};
  bool bias = true;  // false: the estimates G1 and G2, of more than 2 and 3 points
  Missing missing = Missing::propagate;
};
VEXEL_API double skewness(Data x, const ShapeOptions& options = {});
VEXEL_API double kurtosis(Data x, const ShapeOptions& options = {});  // excess: 0 for the normal

// ---- deviations

enum class Center : std::uint8_t { mean, median };
struct MeanDeviationOptions {
  Data weights = {};
  Center center = Center::mean;
  Missing missing = Missing::propagate;
};
VEXEL_API double mean_absolute_deviation(Data x, const MeanDeviationOptions& options = {});

struct MedianDeviationOptions {
  Data weights = {};
  double scale = 1.0;  // the result is multiplied by it
  Missing missing = Missing::propagate;
};
VEXEL_API double median_absolute_deviation(Data x, const MedianDeviationOptions& options = {});

// ---- quantiles

// Hyndman and Fan's definitions 1 to 9.
enum class QuantileMethod : std::uint8_t {
  inverted_cdf,
  averaged_inverted_cdf,
  closest_observation,
  interpolated_inverted_cdf,
  hazen,
  weibull,
  linear,
  median_unbiased,
  normal_unbiased
};
struct QuantileOptions {
  Data weights = {};
  QuantileMethod method = QuantileMethod::linear;
  Missing missing = Missing::propagate;
};
// 0 <= q <= 1, else std::domain_error; NaN gives NaN.
VEXEL_API double quantile(Data x, double q, const QuantileOptions& options = {});
VEXEL_API std::vector<double> quantile(Data x, Data q, const QuantileOptions& options = {});

VEXEL_API double median(Data x, const WeightedOptions& options = {});
VEXEL_API double iqr(Data x, const QuantileOptions& options = {});

// The k-th smallest, from 1: with weights the smallest point whose cumulative weight reaches k.
// std::domain_error unless 1 <= k <= n.
VEXEL_API double order_statistic(Data x, std::int64_t k, const WeightedOptions& options = {});
VEXEL_API std::vector<double> order_statistic(Data x, std::span<const std::int64_t> k,
                                              const WeightedOptions& options = {});
inline std::vector<double> order_statistic(Data x, std::initializer_list<std::int64_t> k,
                                           const WeightedOptions& options = {}) {
  return order_statistic(x, std::span<const std::int64_t>(k.begin(), k.size()), options);
}

// ---- summaries

// Tukey's hinges: the medians of the halves, the median belonging to both when n is odd.
struct FiveNumber {
  double min;
  double lower_hinge;
  double median;
  double upper_hinge;
  double max;
};
VEXEL_API FiveNumber five_number(Data x, const WeightedOptions& options = {});

struct Description {
  double count;         // present points, or their total weight
  std::size_t missing;  // pairs
  double mean;
  double std;  // ddof 1
  double min;
  double q1;
  double median;
  double q3;
  double max;
  double skewness;
  double kurtosis;

  VEXEL_API std::string table() const;  // lines of name and value
};
VEXEL_API std::ostream& operator<<(std::ostream& out, const Description& description);

struct DescribeOptions {
  Data weights = {};
  Missing missing = Missing::omit;
};
VEXEL_API Description describe(Data x, const DescribeOptions& options = {});

// ---- two variables and more

struct CovarianceOptions {
  Data weights = {};
  double ddof = 1;
  Missing missing = Missing::propagate;
};
VEXEL_API double cov(Data x, Data y, const CovarianceOptions& options = {});

enum class Correlation : std::uint8_t { pearson, spearman, kendall };  // kendall: tau-b
struct CorrelationOptions {
  Data weights = {};
  Correlation method = Correlation::pearson;
  Missing missing = Missing::propagate;
};
VEXEL_API double corr(Data x, Data y, const CorrelationOptions& options = {});

// Symmetric, k by k; row by row.
struct SquareMatrix {
  std::size_t size = 0;
  std::vector<double> values = {};
  double operator()(std::size_t i, std::size_t j) const { return values[i * size + j]; }
};
// Of k columns of one size.  omit leaves out each row with something missing; propagate makes what
// a column with missing values takes part in NaN.
VEXEL_API SquareMatrix cov(std::span<const Data> columns, const CovarianceOptions& options = {});
VEXEL_API SquareMatrix corr(std::span<const Data> columns, const CorrelationOptions& options = {});
inline SquareMatrix cov(std::initializer_list<Data> columns,
                        const CovarianceOptions& options = {}) {
  return cov(std::span<const Data>(columns.begin(), columns.size()), options);
}
inline SquareMatrix corr(std::initializer_list<Data> columns,
                         const CorrelationOptions& options = {}) {
  return corr(std::span<const Data>(columns.begin(), columns.size()), options);
}

}  // namespace vexel

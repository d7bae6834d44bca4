// Quantiles, order statistics and what is made of them.
//
// R. J. Hyndman and Y. Fan, Sample quantiles in statistical packages, 1996.  The position h of a
// quantile in the sorted sample is computed as NumPy computes it.

#include "functions/descriptive/quantiles.hpp"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "functions/data/sample.hpp"
#include "functions/data/text.hpp"
#include "functions/descriptive/selection.hpp"
#include "kernels/double_double.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

namespace {

using kernels::DoubleDouble;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr Target kFirst{0.0};
constexpr Target kLast{kInfinity};

// With the position h from 0: between the points floor(h) and floor(h) + 1, counted from 0.
Place interpolated(double h, double n) {
  if (!(h > 0.0)) {
    return {{1.0}, {1.0}, 0.0};
  }
  if (h >= n - 1.0) {
    return {kLast, kLast, 0.0};
  }
  const double whole = std::floor(h);
  return {{whole + 1.0}, {whole + 2.0}, h - whole};
}

double rankFrom1(std::int64_t k, double n) {
  if (k < 1 || static_cast<double>(k) > n) {
    throw std::domain_error("order_statistic: k must be 1 to " + number(n) + ", got " +
                            std::to_string(k));
  }
  return static_cast<double>(k);
}

// Between which points a hinge lies, counted from either end.
struct Depth {
  double near;
  double far;
  explicit Depth(double n) {
    const double depth = std::floor((n + 3.0) / 2.0) / 2.0;
    near = std::floor(depth);
    far = std::ceil(depth);
  }
};

}  // namespace

void requireProbability(double q, const char* function) {
  if (q < 0.0 || q > 1.0) {
    throw std::domain_error(std::string(function) + ": q must be in [0, 1], got " + number(q));
  }
}

double between(double low, double high, double fraction) {
  if (low == high || fraction == 0.0) {
    return low;
  }
  if (std::isinf(low) || std::isinf(high)) {
    return low + high;
  }
  const bool large = std::max(std::fabs(low), std::fabs(high)) > 0x1p1000;
  const double sum = low + high;
  if (fraction == 0.5 && !large && std::fabs(sum) > 0x1p-1000) {
    return 0.5 * sum;  // which is rounded once, too
  }
  const double half = large ? 0.5 : 1.0;
  const DoubleDouble width = DoubleDouble::sumOf(high * half, -low * half);
  return (DoubleDouble(low * half) + width * DoubleDouble(fraction)).high / half;
}

Place placeOf(double q, double n, QuantileMethod method) {
  const auto position = [&](double alpha, double beta) {
    return interpolated(n * q + (alpha + q * (1.0 - alpha - beta)) - 1.0, n);
  };
  const double h = n * q;
  switch (method) {
    case QuantileMethod::inverted_cdf:
      return {{h}, {h}, 0.0};
    case QuantileMethod::averaged_inverted_cdf:
      return {{h}, {h, true}, 0.5};
    case QuantileMethod::closest_observation: {
      const double whole = std::floor(h - 0.5);
      const bool tie = h - 0.5 == whole && std::fmod(whole, 2.0) == 0.0;
      const Target nearest{tie ? whole : whole + 1.0};
      return {nearest, nearest, 0.0};
    }
    case QuantileMethod::interpolated_inverted_cdf:
      return position(0.0, 1.0);
    case QuantileMethod::hazen:
      return position(0.5, 0.5);
    case QuantileMethod::weibull:
      return position(0.0, 0.0);
    case QuantileMethod::median_unbiased:
      return position(1.0 / 3.0, 1.0 / 3.0);
    case QuantileMethod::normal_unbiased:
      return position(3.0 / 8.0, 3.0 / 8.0);
    default:
      return interpolated((n - 1.0) * q, n);
  }
}

std::vector<double> quantilesOf(Selection&& selection, std::span<const double> q,
                                QuantileMethod method) {
  std::vector<Place> places;
  const auto values = selection.values([&](double n) {
    std::vector<Target> targets;
    places.clear();
    for (const double p : q) {
      places.push_back(placeOf(std::isnan(p) ? 0.0 : p, n, method));
      targets.push_back(places.back().low);
      targets.push_back(places.back().high);
    }
    return targets;
  });
  std::vector<double> result(q.size(), kNaN);
  for (std::size_t i = 0; i < q.size() && values; ++i) {
    if (!std::isnan(q[i])) {
      result[i] = between((*values)[2 * i], (*values)[2 * i + 1], places[i].fraction);
    }
  }
  return result;
}

double medianOf(Selection&& selection) {
  const double half = 0.5;
  return quantilesOf(std::move(selection), {&half, 1}, QuantileMethod::linear)[0];
}

Quartiles quartilesOf(const Sample& sample) {
  Selection selection(sample);
  std::vector<Place> places;
  const auto v = selection.values([&](double n) {
    std::vector<Target> targets = {kFirst, kLast};
    places.clear();
    for (const double q : {0.25, 0.5, 0.75}) {
      places.push_back(placeOf(q, n, QuantileMethod::linear));
      targets.push_back(places.back().low);
      targets.push_back(places.back().high);
    }
    return targets;
  });
  Quartiles result{selection.found(), selection.total(), {kNaN, kNaN, kNaN, kNaN, kNaN}};
  if (v) {
    result.values[0] = (*v)[0];
    result.values[4] = (*v)[1];
    for (std::size_t i = 0; i < 3; ++i) {
      result.values[i + 1] = between((*v)[2 + 2 * i], (*v)[3 + 2 * i], places[i].fraction);
    }
  }
  return result;
}

std::vector<double> quantile(Data x, Data q, const QuantileOptions& options) {
  std::vector<double> probabilities(q.size());
  for (std::size_t i = 0; i < q.size(); ++i) {
    probabilities[i] = q[i];
    requireProbability(probabilities[i], "quantile");
  }
  const Sample sample("quantile", x, options.weights, options.missing);
  return quantilesOf(Selection(sample), probabilities, options.method);
}

double quantile(Data x, double q, const QuantileOptions& options) {
  return quantile(x, Data(&q, 1), options)[0];
}

double median(Data x, const WeightedOptions& options) {
  const Sample sample("median", x, options.weights, options.missing);
  return medianOf(Selection(sample));
}

double iqr(Data x, const QuantileOptions& options) {
  const Sample sample("iqr", x, options.weights, options.missing);
  const double q[] = {0.25, 0.75};
  const std::vector<double> quartiles = quantilesOf(Selection(sample), q, options.method);
  return quartiles[1] - quartiles[0];
}

std::vector<double> order_statistic(Data x, std::span<const std::int64_t> k,
                                    const WeightedOptions& options) {
  const Sample sample("order_statistic", x, options.weights, options.missing);
  const auto values = Selection(sample).values([&](double n) {
    std::vector<Target> targets;
    for (const std::int64_t rank : k) {
      targets.push_back({rankFrom1(rank, n)});
    }
    return targets;
  });
  return values ? *values : std::vector<double>(k.size(), kNaN);
}

double order_statistic(Data x, std::int64_t k, const WeightedOptions& options) {
  return order_statistic(x, std::span<const std::int64_t>(&k, 1), options)[0];
}

// Points of weights below 1 may reach neither depth nor median.
FiveNumber fiveInOrder(const FiveNumber& five) {
  return {five.min, std::min(five.lower_hinge, five.median), five.median,
          std::max(five.upper_hinge, five.median), five.max};
}

FiveNumber five_number(Data x, const WeightedOptions& options) {
  const Sample sample("five_number", x, options.weights, options.missing);
  Place center{};
  const auto values = Selection(sample).values([&](double n) {
    const Depth depth(n);
    center = interpolated((n - 1.0) * 0.5, n);
    return std::vector<Target>{
        kFirst,      {depth.near},           {depth.far},           center.low,
        center.high, {n + 1.0 - depth.near}, {n + 1.0 - depth.far}, kLast};
  });
  if (!values) {
    return {kNaN, kNaN, kNaN, kNaN, kNaN};
  }
  const std::vector<double>& v = *values;
  return fiveInOrder({v[0], between(v[1], v[2], 0.5), between(v[3], v[4], center.fraction),
                      between(v[6], v[5], 0.5), v[7]});
}

std::vector<Place> placesOfRanks(std::span<const std::int64_t> k, double n) {
  std::vector<Place> places;
  for (const std::int64_t rank : k) {
    const Target target{rankFrom1(rank, n)};
    places.push_back({target, target, 0.0});
  }
  return places;
}

std::vector<Place> placesOfFive(double n) {
  const Depth depth(n);
  return {{kFirst, kFirst, 0.0},
          {{depth.near}, {depth.far}, 0.5},
          interpolated((n - 1.0) * 0.5, n),
          {{n + 1.0 - depth.far}, {n + 1.0 - depth.near}, 0.5},
          {kLast, kLast, 0.0}};
}

}  // namespace vexel

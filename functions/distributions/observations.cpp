// Data that a law is fitted to: values that are there, with their weights.
#include "functions/distributions/observations.hpp"

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <stdexcept>
#include <string>

#include "functions/data/text.hpp"
#include "functions/distributions/checks.hpp"
#include "vexel/ordering.hpp"

namespace vexel::detail {

void refuseFit(const char* law, const std::string& why) {
  throw std::domain_error(std::string(law) + ".fit: " + why);
}

void refuseEqual(const char* law, double value) {
  refuseFit(law, "x must be of more than one value, all are " + number(value));
}

void refuseNoMaximum(const char* law) {
  refuseFit(law, "the likelihood of these data has no maximum");
}

void requireWeightsSize(const char* function, const Data& weights, std::size_t size) {
  if (weights.given() && weights.size() != size) {
    throw std::length_error(std::string(function) + ": weights must have the size of the data, " +
                            std::to_string(size) + ", got " + std::to_string(weights.size()));
  }
}

double Observations::min() const { return *std::min_element(x.begin(), x.end()); }

double Observations::max() const { return *std::max_element(x.begin(), x.end()); }

void Observations::requireSpread(const char* law) const {
  if (min() == max()) {
    refuseEqual(law, min());
  }
}

void Observations::sortByValue() {
  const std::vector<std::int64_t> order = argsort(x);
  Observations sorted{std::vector<double>(x.size()), std::vector<double>(x.size()), total};
  kernels::forEach(order.size(), [&](std::size_t i) {
    const auto from = static_cast<std::size_t>(order[i]);
    sorted.x[i] = x[from];
    sorted.w[i] = w[from];
  });
  *this = std::move(sorted);
}

double Observations::median() const {
  Sum below;
  for (std::size_t i = 0; i + 1 < x.size(); ++i) {
    if (i % pollStretch == 0) {
      kernels::poll();
    }
    below.add(w[i]);
    if (below.value() >= 0.5 * total) {
      return below.value() > 0.5 * total ? x[i] : std::midpoint(x[i], x[i + 1]);
    }
  }
  return x.back();
}

namespace {

// require(value) throws where a value is none of the law's.
template <typename Require>
Observations observed(const std::string& function, const Data& x, const FitOptions& options,
                      Require require) {
  Observations result;
  const Missing missing = options.missing == Missing::omit ? Missing::omit : Missing::raise;
  Sum total;
  forEachPair(function.c_str(), x, options.weights, missing, [&](double value, double w) {
    require(value);
    result.x.push_back(value);
    result.w.push_back(w);
    total.add(w);
  });
  result.total = total.value();
  if (result.x.empty()) {
    throw std::invalid_argument(function + ": x must hold at least one value of positive weight");
  }
  if (!std::isfinite(result.total)) {
    throw std::invalid_argument(function + ": the sum of the weights must be finite");
  }
  return result;
}

}  // namespace

Observations observe(const char* law, const Data& x, const FitOptions& options, Interval allowed,
                     bool whole) {
  return observed(std::string(law) + ".fit", x, options, [&](double value) {
    if (!(value >= allowed.low && value <= allowed.high) || std::isinf(value)) {
      refuseFit(law, "x must be finite and in the law's support, got " + number(value));
    }
    if (whole && value != std::floor(value)) {
      refuseFit(law, "x must be whole numbers, got " + number(value));
    }
  });
}

Observations observeAny(const std::string& function, const Data& x, const FitOptions& options) {
  return observed(function, x, options, [&](double value) {
    if (std::isinf(value)) {
      throw std::domain_error(function + ": x must be finite, got " + number(value));
    }
  });
}

}  // namespace vexel::detail

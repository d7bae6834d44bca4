// The law of a sample.
//
// Method  Sums of the weights up to each distinct value and behind it; probabilities and quantiles
//         by binary search.
// Source  The definition.
// Draws   One uniform, by inversion.
// Error   Not measured: every probability is one rounded quotient of a compensated sum.
#include "vexel/distributions/empirical.hpp"

#include <algorithm>
#include <cstddef>

#include "functions/distributions/frame.hpp"
#include "functions/distributions/precise.hpp"

namespace vexel {

namespace detail {

template <>
struct Formulas<Empirical> {
  const Empirical& law;

  static double place(double x) { return x; }
  bool holds(double x) const {
    return std::binary_search(law.values_.begin(), law.values_.end(), x);
  }
  // Of the last value up to x, which is not below the first one.
  std::size_t index(double x) const {
    const auto behind = std::upper_bound(law.values_.begin(), law.values_.end(), x);
    return static_cast<std::size_t>(behind - law.values_.begin()) - 1;
  }

  Interval support() const { return {law.values_.front(), law.values_.back()}; }
  double pmf(double x) const { return law.weights_[index(x)] / law.total_; }
  double logpmf(double x) const { return std::log(pmf(x)); }
  double cdf(double x) const { return law.below_[index(x)]; }
  double sf(double x) const { return law.above_[index(x)]; }
  double logcdf(double x) const { return logOfTail(cdf(x), sf(x)); }
  double logsf(double x) const { return logOfTail(sf(x), cdf(x)); }
  double quantile(double p) const {
    const auto at = std::lower_bound(law.below_.begin(), law.below_.end(), p);
    return at == law.below_.end() ? law.values_.back()
                                  : law.values_[static_cast<std::size_t>(at - law.below_.begin())];
  }
  double isf(double q) const {
    const auto at = std::lower_bound(law.above_.begin(), law.above_.end(), q,
                                     [](double share, double most) { return share > most; });
    return law.values_[static_cast<std::size_t>(at - law.above_.begin())];
  }

  // sum of the weights times (x - center)^order over their total.
  double moment(double center, int order) const {
    Sum sum;
    for (std::size_t i = 0; i < law.values_.size(); ++i) {
      const double d = law.values_[i] - center;
      double power = d;
      for (int k = 1; k < order; ++k) {
        power *= d;
      }
      sum.addProduct(law.weights_[i], power);
    }
    return sum.value() / law.total_;
  }
  double mean() const { return moment(0.0, 1); }
  double var() const { return moment(mean(), 2); }
  double skewness() const {
    const double m = mean();
    const double v = moment(m, 2);
    return v == 0.0 ? nan : moment(m, 3) / (v * std::sqrt(v));
  }
  double kurtosis() const {
    const double m = mean();
    const double v = moment(m, 2);
    return v == 0.0 ? nan : moment(m, 4) / (v * v) - 3.0;
  }
};

}  // namespace detail

bool Empirical::Parameters::operator==(const Parameters& other) const {
  const auto same = [](const Data& a, const Data& b) {
    if (a.size() != b.size()) {
      return false;
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
      if (a[i] != b[i]) {
        return false;
      }
    }
    return true;
  };
  return same(x, other.x) && same(weights, other.weights);
}

Empirical::Empirical(const Parameters& parameters) {
  detail::Observations data =
      detail::observeAny(name, parameters.x, {.weights = parameters.weights});
  data.sortByValue();
  total_ = data.total;
  // Sums of the weights up to each distinct value, and of those behind it.
  detail::Sum sum;
  for (std::size_t i = 0; i < data.x.size(); ++i) {
    sum.add(data.w[i]);
    if (values_.empty() || data.x[i] != values_.back()) {
      values_.push_back(data.x[i]);
      weights_.push_back(data.w[i]);
      below_.push_back(sum.value() / total_);
    } else {
      weights_.back() += data.w[i];
      below_.back() = sum.value() / total_;
    }
  }
  above_.resize(values_.size());
  detail::Sum behind;
  for (std::size_t i = values_.size(); i-- > 0;) {
    above_[i] = behind.value() / total_;
    behind.add(weights_[i]);
  }
}

VEXEL_DISCRETE_LAW(Empirical)

}  // namespace vexel

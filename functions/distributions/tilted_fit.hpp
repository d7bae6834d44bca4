// Maximum likelihood for laws whose density is exp(-(z + exp(-z)) / c) up to its factor.
#pragma once

#include <cmath>
#include <utility>

#include "functions/distributions/checks.hpp"
#include "functions/distributions/maximize.hpp"

namespace vexel::detail {

// Location and scale.  The likelihood's equations are mean(exp(-z)) = 1, which gives the location
// for each scale s, and c s + A(s) = mean(x), with A the mean of x under the weights exp(-x / s):
// the left side increases.
inline std::pair<double, double> fitTilted(const char* law, const Observations& data, double c) {
  const double low = data.min();
  const double middle = data.mean();
  if (!(middle > low)) {
    refuseEqual(law, low);
  }
  const auto share = [&](double s) {
    return data.mean([=](double t) { return std::exp(-(t - low) / s); });
  };
  const auto equation = [&](double s) {
    const double total = share(s);
    const double tilted =
        data.mean([=](double t) { return (t - low) * std::exp(-(t - low) / s); }) / total;
    const double square = data.mean([=](double t) {
      const double d = (t - low) - tilted;
      return d * d * std::exp(-(t - low) / s);
    }) / total;
    return std::pair(c * s + tilted - (middle - low), c + square / (s * s));
  };
  const double most = (middle - low) / c;
  const double scale = increasingRoot(equation, 0.0, most, 0.5 * most);
  return {low - scale * std::log(share(scale)), scale};
}

}  // namespace vexel::detail

// Moving statistics: stretches of the series, one after the other.
#include <algorithm>
#include <cmath>
#include <limits>

#include "functions/data/elements.hpp"
#include "functions/series/windows.hpp"
#include "kernels/moving_sums.hpp"
#include "kernels/running_sum.hpp"
#include "kernels/watch.hpp"

namespace vexel {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// compute(stretch, minCount, out) for every stretch, but where quickly(x, results, window, out)
// does it from the first element of the first window.
template <typename Compute, typename Quickly>
void overStretches(Data data, std::size_t window, std::span<double> out,
                   const MovingOptions& options, Compute compute, Quickly quickly) {
  const bool asIs = !options.weights.given() && options.min_count <= window;
  requireSize("out", out.size(), data.size());
  const WindowPlan plan(data.size(), window, options);
  const Doubles x(data);
  std::size_t last = 0;
  for (std::size_t first = 0; first < out.size(); first = last) {
    kernels::poll(static_cast<double>(first) / static_cast<double>(out.size()));
    last = plan.stretchEnd(first);
    if (asIs && plan.holdsWindows(first, last) &&
        quickly(x.data() + first - plan.left, last - first, plan.window, out.data() + first)) {
      continue;
    }
    const Stretch stretch(plan, x.span(), first, last);
    compute(stretch, options.min_count, out.data() + first);
    for (std::size_t i = first; options.edges == Edges::nan && i < last; ++i) {
      if (plan.leavesSeries(i)) {
        out[i] = kNan;
      }
    }
  }
}

bool never(const double*, std::size_t, std::size_t, double*) { return false; }

// Skewness or kurtosis (excess) with the divisor n, of values in a scale of their own.
double shape(std::span<const double> x, std::span<const double> weights, int order) {
  const auto weight = [&](std::size_t i) { return weights.empty() ? 1 : weights[i]; };
  double size = 0;
  for (const double v : x) {
    size = std::max(size, std::abs(v));
  }
  int exponent = 0;
  std::frexp(size, &exponent);
  const auto scaled = [&](std::size_t i) { return std::ldexp(x[i], -exponent); };
  kernels::RunningSum sum;
  kernels::RunningSum total;
  for (std::size_t i = 0; i < x.size(); ++i) {
    sum.addProduct(weight(i), scaled(i));
    total.add(weight(i));
  }
  const double mean = sum.value() / total.value();
  kernels::RunningSum squares;
  kernels::RunningSum powers;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double d = scaled(i) - mean;
    squares.addProduct(weight(i), d * d);
    powers.addProduct(weight(i), order == 3 ? d * d * d : d * d * d * d);
  }
  const double variance = squares.value() / total.value();
  const double power = powers.value() / total.value();
  return order == 3 ? power / (variance * std::sqrt(variance)) : power / (variance * variance) - 3;
}

}  // namespace

namespace {

void movingStatistic(Statistic statistic, const Stretch& s, std::size_t minCount, double* out) {
  switch (statistic) {
    case Statistic::mean:
    case Statistic::sum:
      return movingSums(s, statistic == Statistic::mean, minCount, out);
    case Statistic::var:
    case Statistic::std:
      return movingVariances(s, statistic == Statistic::std, minCount, out);
    case Statistic::min:
    case Statistic::max:
      return movingExtremes(s, statistic == Statistic::max, minCount, out);
    case Statistic::median:
      return movingQuantiles(s, 0.5, minCount, out);
    case Statistic::iqr: {
      std::vector<double> lower(s.results());
      movingQuantiles(s, 0.25, minCount, lower.data());
      movingQuantiles(s, 0.75, minCount, out);
      for (std::size_t i = 0; i < lower.size(); ++i) {
        out[i] -= lower[i];
      }
      return;
    }
    case Statistic::skewness:
    case Statistic::kurtosis: {
      const int order = statistic == Statistic::skewness ? 3 : 4;
      return movingDirect(
          s, [=](auto values, auto weights) { return shape(values, weights, order); }, minCount,
          out);
    }
  }
}

}  // namespace

void moving(Data x, std::size_t window, Statistic statistic, std::span<double> out,
            const MovingOptions& options) {
  overStretches(
      x, window, out, options,
      [&](const Stretch& s, std::size_t minCount, double* results) {
        movingStatistic(statistic, s, minCount, results);
      },
      [&](const double* from, std::size_t results, std::size_t planned, double* to) {
        switch (statistic) {
          case Statistic::mean:
          case Statistic::sum:
            return kernels::movingSums(from, results, planned, statistic == Statistic::mean, to);
          case Statistic::var:
          case Statistic::std:
            return kernels::movingVariances(from, results, planned, statistic == Statistic::std,
                                            to);
          default:
            return false;
        }
      });
}

void moving(Data x, std::size_t window, Quantile quantile, std::span<double> out,
            const MovingOptions& options) {
  if (quantile.q < 0 || quantile.q > 1) {
    throw std::domain_error(mustBe("q", "a number from 0 to 1", number(quantile.q)));
  }
  overStretches(
      x, window, out, options,
      [&](const Stretch& s, std::size_t minCount, double* results) {
        if (isMissing(quantile.q)) {
          std::fill_n(results, s.results(), kNan);
        } else {
          movingQuantiles(s, quantile.q, minCount, results);
        }
      },
      never);
}

void moving(Data x, std::size_t window, const WindowStatistic& statistic, std::span<double> out,
            const MovingOptions& options) {
  if (options.weights.given()) {
    throw std::invalid_argument("weights: a statistic of one's own takes none");
  }
  overStretches(
      x, window, out, options,
      [&](const Stretch& s, std::size_t minCount, double* results) {
        movingDirect(
            s,
            [&](std::span<const double> values, std::span<const double>) {
              return statistic(values);
            },
            minCount, results);
      },
      never);
}

}  // namespace vexel

// The bootstrap: replicates of a statistic, and intervals from them.
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <string>

#include "functions/data/refusals.hpp"
#include "functions/data/sized.hpp"
#include "functions/data/text.hpp"
#include "functions/random/order_replicates.hpp"
#include "kernels/variates/resample.hpp"
#include "kernels/watch.hpp"
#include "vexel/descriptive.hpp"
#include "vexel/distributions/normal.hpp"
#include "vexel/sampling.hpp"

namespace vexel {

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

using Callable = std::function<double(std::span<const double>)>;

// One call of `one` per replicate, with a report now and then.
template <typename One>
std::vector<double> replicated(std::size_t count, std::size_t size, One one) {
  auto replicates = sized<double>("bootstrap", "replicates", count);
  const std::size_t polling = std::max<std::size_t>(1, (std::size_t{1} << 18) / (size + 1));
  for (std::size_t b = 0; b < count; ++b) {
    if (b % polling == 0) {
      kernels::poll(static_cast<double>(b) / static_cast<double>(count));
    }
    replicates[b] = one();
  }
  return replicates;
}

std::vector<double> replicatesOf(std::span<const double> x, const Callable& statistic,
                                 std::size_t count, Random& rng) {
  const kernels::Positions positions(x.size());
  std::vector<double> drawn(x.size());
  return replicated(count, x.size(), [&] {
    double* at = drawn.data();
    positions.visit(rng, x.size(), [&](std::uint64_t i, std::size_t) { *at++ = x[i]; });
    return statistic(drawn);
  });
}

// Sums of a sample's elements without rounding: of each the leading bits, so few that any n of them
// add up exactly, and the rest, which is so small that its rounding does not matter.
struct SplitSum {
  struct Pair {
    double high;
    double low;
  };
  std::vector<Pair> pairs;

  // False if the elements are too large to be split so.
  bool split(std::span<const double> x) {
    double largest = 0;
    for (const double v : x) {
      largest = std::max(largest, std::abs(v));
    }
    const double bound = 2 * largest * static_cast<double>(x.size());
    if (!(bound < 0x1p1000)) {
      return false;
    }
    const double sigma =
        bound == 0 ? 0 : 1.5 * std::ldexp(1.0, std::max(-960, std::ilogb(bound) + 1));
    pairs.resize(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
      const double high = (sigma + x[i]) - sigma;
      pairs[i] = {high, x[i] - high};
    }
    return true;
  }
};

// Means or sums, of which each is rounded once or twice.
std::vector<double> totalsOf(const SplitSum& sum, double divisor, std::size_t count, Random& rng) {
  const std::size_t n = sum.pairs.size();
  const kernels::Positions positions(n);
  const SplitSum::Pair* pairs = sum.pairs.data();
  return replicated(count, n, [&] {
    SplitSum::Pair totals[kernels::Positions::mostAtOnce] = {};
    positions.visit(rng, n, [&](std::uint64_t i, std::size_t k) {
      totals[k].high += pairs[i].high;
      totals[k].low += pairs[i].low;
    });
    double high = 0;
    double low = 0;
    for (const SplitSum::Pair& t : totals) {
      high += t.high;
      low += t.low;
    }
    return (high + low) / divisor;
  });
}

double totalOf(const SplitSum& sum, double divisor) {
  double high = 0;
  double low = 0;
  for (const SplitSum::Pair& p : sum.pairs) {
    high += p.high;
    low += p.low;
  }
  return (high + low) / divisor;
}

double valueOf(Statistic statistic, std::span<const double> x) {
  switch (statistic) {
    case Statistic::mean:
      return mean(x);
    case Statistic::median:
      return median(x);
    case Statistic::std:
      return vexel::std(x);
    case Statistic::var:
      return var(x);
    case Statistic::min:
      return *std::min_element(x.begin(), x.end());
    case Statistic::max:
      return *std::max_element(x.begin(), x.end());
    case Statistic::sum:
      return mean(x) * static_cast<double>(x.size());
    case Statistic::skewness:
      return skewness(x);
    case Statistic::kurtosis:
      return kurtosis(x);
    case Statistic::iqr:
      return iqr(x);
  }
  throw std::invalid_argument("statistic is none of the named ones");
}

// Jackknife values of a statistic of moments, each from the moments without one element.
std::vector<double> momentJackknife(Statistic statistic, std::span<const double> x) {
  const auto n = static_cast<double>(x.size());
  const double m = mean(x);
  const int orders[] = {2, 3, 4};
  const std::vector<double> central = moment(x, orders);
  const double rest = n - 1;
  std::vector<double> values(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double d = (x[i] - m) * n / rest;  // from the mean of the others
    const double m2 = std::max(0.0, central[0] * n - d * d * rest / n);
    const double m3 = central[1] * n - d * d * d * rest * (rest - 1) / (n * n) + 3 * d * m2 / n;
    const double m4 = central[2] * n -
                      d * d * d * d * rest * (rest * rest - rest + 1) / (n * n * n) -
                      6 * d * d * m2 / (n * n) + 4 * d * m3 / n;
    switch (statistic) {
      case Statistic::mean:
        values[i] = -d / n;  // but for a constant, which does not matter
        break;
      case Statistic::sum:
        values[i] = -x[i];
        break;
      case Statistic::var:
        values[i] = m2 / (rest - 1);
        break;
      case Statistic::std:
        values[i] = std::sqrt(m2 / (rest - 1));
        break;
      case Statistic::skewness:
        values[i] = (m3 / rest) / std::pow(m2 / rest, 1.5);
        break;
      default:
        values[i] = (m4 / rest) / ((m2 / rest) * (m2 / rest)) - 3;
        break;
    }
  }
  return values;
}

// Jackknife values of order statistics: of the sorted sample without its element number i.
std::vector<double> orderJackknife(Statistic statistic, std::vector<double> x) {
  std::sort(x.begin(), x.end());
  const std::size_t n = x.size();
  std::vector<double> values(n);
  for (std::size_t i = 0; i < n; ++i) {
    const auto without = [&](std::size_t k) { return x[k < i ? k : k + 1]; };
    const auto quantileWithout = [&](double q) {
      const double h = static_cast<double>(n - 2) * q;
      const auto k = static_cast<std::size_t>(h);
      const double part = h - static_cast<double>(k);
      return part == 0 ? without(k) : without(k) + part * (without(k + 1) - without(k));
    };
    switch (statistic) {
      case Statistic::min:
        values[i] = without(0);
        break;
      case Statistic::max:
        values[i] = without(n - 2);
        break;
      case Statistic::median:
        values[i] = quantileWithout(0.5);
        break;
      default:
        values[i] = quantileWithout(0.75) - quantileWithout(0.25);
        break;
    }
  }
  return values;
}

std::vector<double> jackknifeOf(Statistic statistic, std::span<const double> x) {
  switch (statistic) {
    case Statistic::median:
    case Statistic::min:
    case Statistic::max:
    case Statistic::iqr:
      return orderJackknife(statistic, {x.begin(), x.end()});
    default:
      return momentJackknife(statistic, x);
  }
}

std::vector<double> jackknifeOf(const Callable& statistic, std::span<const double> x) {
  std::vector<double> values(x.size());
  std::vector<double> others(x.begin() + 1, x.end());
  for (std::size_t i = 0; i < x.size(); ++i) {
    kernels::poll(1);
    values[i] = statistic(others);
    if (i < others.size()) {
      others[i] = x[i];
    }
  }
  return values;
}

// Sum of cubes over the cube of the root of the sum of squares, of what is below the mean.
double acceleration(const std::vector<double>& jackknife) {
  const double center = mean(jackknife);
  double squares = 0;
  double cubes = 0;
  for (const double v : jackknife) {
    const double d = center - v;
    squares += d * d;
    cubes += d * d * d;
  }
  return squares == 0 ? 0 : cubes / (6 * squares * std::sqrt(squares));
}

// Probabilities of the replicates' quantiles that BCa's interval ends at.
// Ties are with `estimate`, which was added up as they were.
Interval correctedTails(const Bootstrap& b, double estimate, double tail, double acceleration) {
  double below = 0;
  for (const double r : b.replicates) {
    below += r < estimate ? 1 : r == estimate ? 0.5 : 0;
  }
  const Normal normal;
  const double bias = normal.quantile(below / static_cast<double>(b.replicates.size()));
  const auto corrected = [&](double z) {
    const double shifted = bias + z;
    const double room = 1 - acceleration * shifted;
    if (room <= 0) {  // beyond all replicates; the quotient would come back from the other side
      return shifted > 0 ? 1.0 : 0.0;
    }
    return normal.cdf(bias + shifted / room);
  };
  const double z = normal.isf(tail);
  return {corrected(-z), corrected(z)};
}

template <typename Jackknife>
void addInterval(Bootstrap& b, double estimate, const BootstrapOptions& options,
                 Jackknife jackknife) {
  b.standard_error = vexel::std(b.replicates);
  const double tail = 0.5 * (1 - options.confidence);
  Interval at{tail, 1 - tail};
  if (options.method == BootstrapMethod::BCa) {
    at = correctedTails(b, estimate, tail, jackknife());
  }
  if (std::isnan(at.low) || std::isnan(at.high)) {
    b.interval = {nan, nan};
    return;
  }
  const std::vector<double> q = quantile(b.replicates, {at.low, at.high});
  b.interval = {q[0], q[1]};
  if (options.method == BootstrapMethod::basic) {
    b.interval = {2 * b.estimate - q[1], 2 * b.estimate - q[0]};
  }
}

void check(const BootstrapOptions& options) {
  if (options.replicates == 0) {
    throw std::invalid_argument("bootstrap: replicates must be at least 1, not 0");
  }
  if (!(options.confidence > 0 && options.confidence < 1)) {
    throw std::invalid_argument("bootstrap: confidence must be between 0 and 1, got " +
                                number(options.confidence));
  }
}

// The present elements; empty also where a missing one makes everything missing.
std::vector<double> present(const Data& x, Missing missing) {
  std::vector<double> values;
  values.reserve(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (!std::isnan(x[i])) {
      values.push_back(x[i]);
    } else if (missing == Missing::raise) {
      refuseMissing("bootstrap", i);
    } else if (missing == Missing::propagate) {
      return {};
    }
  }
  return values;
}

Bootstrap nothing(std::size_t replicates) {
  auto none = sized<double>("bootstrap", "replicates", replicates);
  std::fill(none.begin(), none.end(), nan);
  return {nan, nan, {nan, nan}, std::move(none)};
}

}  // namespace

Bootstrap bootstrap(Data x, Statistic statistic, Random& rng, const BootstrapOptions& options) {
  check(options);
  const std::vector<double> values = present(x, options.missing);
  if (values.empty()) {
    return nothing(options.replicates);
  }
  Bootstrap b{valueOf(statistic, values), nan, {nan, nan}, {}};
  const bool isMean = statistic == Statistic::mean;
  double estimate = b.estimate;
  SplitSum sum;
  if ((isMean || statistic == Statistic::sum) && sum.split(values)) {
    const double divisor = isMean ? static_cast<double>(values.size()) : 1;
    b.replicates = totalsOf(sum, divisor, options.replicates, rng);
    estimate = totalOf(sum, divisor);
  } else if (OrderReplicates::serves(statistic, values.size())) {
    OrderReplicates orders(statistic, values);
    const kernels::Positions positions(values.size());
    b.replicates =
        replicated(options.replicates, values.size(), [&] { return orders.next(positions, rng); });
    estimate = orders.estimate();
  } else {
    b.replicates = replicatesOf(
        values, [statistic](std::span<const double> y) { return valueOf(statistic, y); },
        options.replicates, rng);
  }
  addInterval(b, estimate, options,
              [&] { return values.size() < 3 ? 0 : acceleration(jackknifeOf(statistic, values)); });
  return b;
}

Bootstrap bootstrap(Data x, const Callable& statistic, Random& rng,
                    const BootstrapOptions& options) {
  check(options);
  const std::vector<double> values = present(x, options.missing);
  if (values.empty()) {
    return nothing(options.replicates);
  }
  Bootstrap b{statistic(values), nan, {nan, nan}, {}};
  b.replicates = replicatesOf(values, statistic, options.replicates, rng);
  addInterval(b, b.estimate, options,
              [&] { return values.size() < 3 ? 0 : acceleration(jackknifeOf(statistic, values)); });
  return b;
}

}  // namespace vexel

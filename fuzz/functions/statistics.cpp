// Statistics, order, series and tests of data of any kind.

#include <algorithm>
#include <numeric>
#include <optional>
#include <vexel/distributions.hpp>
#include <vexel/statistics.hpp>

#include "choices.hpp"

namespace fuzz {
namespace {

namespace vx = vexel;

// Points that a result must lie between: those of positive weight.
struct Range {
  double low = INFINITY;
  double high = -INFINITY;
  bool within(double x, double slack = 0) const {
    return std::isnan(x) || low > high || (atMost(low, x, slack) && atMost(x, high, slack));
  }
};

Range range(const Elements& x, const Elements& weights) {
  Range r;
  for (std::size_t i = 0; i < x.size(); ++i) {
    const bool counts = !weights.view().given() || (i < weights.size() && weights.view()[i] != 0);
    if (counts && !std::isnan(x.view()[i])) {
      r.low = std::min(r.low, x.view()[i]);
      r.high = std::max(r.high, x.view()[i]);
    }
  }
  return r;
}

// Of weights further apart means are rounding, or lose what underflows.
bool isLevel(const Elements& w) {
  double least = INFINITY;
  double most = 0;
  for (const double x : w.doubles()) {
    least = x > 0 ? std::min(least, x) : least;
    most = std::max(most, x);
  }
  return !(most > 1e25 * least);
}

void callMean(Choices& choices, const Elements& x, const Elements& w, const Range& r) {
  const vx::Missing missing = choices.missing();
  const vx::Cut cut(choices.probability(), choices.probability());
  switch (choices.below(4)) {
    case 0:
      expect(!isLevel(w) || r.within(vx::mean(x, {.weights = w, .missing = missing}), 1e-12),
             "mean");
      break;
    case 1:
      vx::mean(x, {.weights = w, .kind = choices.one<vx::Mean>(4), .missing = missing});
      break;
    case 2:
      expect(r.within(vx::trimmed_mean(x, cut, {.weights = w, .missing = missing}), 1e-12),
             "trimmed mean");
      break;
    default:
      expect(r.within(vx::winsorized_mean(x, cut, {.weights = w, .missing = missing}), 1e-12),
             "winsorized mean");
  }
}

void callMoment(Choices& choices, const Elements& x, const Elements& w) {
  const vx::Missing missing = choices.missing();
  switch (choices.below(5)) {
    case 0: {
      const int orders[] = {static_cast<int>(choices.below(12)) - 1,
                            static_cast<int>(choices.byte())};
      const auto center = choices.flag() ? std::optional(choices.number()) : std::nullopt;
      const auto both = vx::moment(x, orders, {.weights = w, .center = center, .missing = missing});
      const double alone =
          vx::moment(x, orders[0], {.weights = w, .center = center, .missing = missing});
      // Odd ones are good beside the terms that cancel in them.
      const double k = orders[0];
      const double terms =
          orders[0] % 2 == 0
              ? 0.0
              : std::pow(vx::moment(x, orders[0] + 1,
                                    {.weights = w, .center = center, .missing = missing}),
                         k / (k + 1));
      expect(!isLevel(w) || same(both[0], alone) || !std::isfinite(terms) ||
                 std::abs(both[0] - alone) <= 1e-12 * std::abs(alone) + 1e-14 * terms,
             "moments together and alone", k, both[0], alone);
      break;
    }
    case 1: {
      const vx::VarianceOptions options{w, choices.number(), missing};
      expect(!(vx::var(x, options) < 0) && !(vx::std(x, options) < 0), "var >= 0",
             vx::var(x, options), vx::std(x, options), options.ddof);
      break;
    }
    case 2: {
      const vx::ShapeOptions options{w, true, missing};
      const double skewness = vx::skewness(x, options);
      expect(!isLevel(w) || atMost(skewness * skewness + 1, vx::kurtosis(x, options) + 3, 1e-9),
             "kurtosis");
      vx::kurtosis(x, {.weights = w, .bias = false, .missing = missing});
      break;
    }
    case 3:
      expect(
          !(vx::mean_absolute_deviation(
                x, {.weights = w, .center = choices.one<vx::Center>(2), .missing = missing}) < 0),
          "deviation >= 0");
      break;
    default:
      expect(!(vx::median_absolute_deviation(x, {.weights = w, .missing = missing}) < 0),
             "deviation >= 0");
      vx::median_absolute_deviation(x, {.weights = w, .scale = choices.number()});
  }
}

void callQuantile(Choices& choices, const Elements& x, const Elements& w, const Range& r) {
  const vx::Missing missing = choices.missing();
  const vx::QuantileOptions options{w, choices.one<vx::QuantileMethod>(9), missing};
  switch (choices.below(4)) {
    case 0: {
      const double p = choices.probability();
      const double q = choices.probability();
      const auto both = vx::quantile(x, std::vector{p, q}, options);
      expect(r.within(both[0]) && r.within(both[1]), "quantile between min and max");
      expect(!(p <= q) || atMost(both[0], both[1], 1e-15), "quantile ascends");
      expect(same(both[0], vx::quantile(x, p, options)), "quantiles together and alone");
      break;
    }
    case 1:
      expect(r.within(vx::median(x, {.weights = w, .missing = missing})), "median");
      expect(!(vx::iqr(x, options) < 0), "iqr >= 0");
      break;
    case 2:
      expect(r.within(vx::order_statistic(x, choices.whole(), {.weights = w, .missing = missing})),
             "order statistic");
      break;
    default: {
      const vx::FiveNumber f = vx::five_number(x, {.weights = w, .missing = missing});
      expect(atMost(f.min, f.lower_hinge, 0) && atMost(f.lower_hinge, f.median, 0) &&
                 atMost(f.median, f.upper_hinge, 0) && atMost(f.upper_hinge, f.max, 0),
             "five numbers ascend");
    }
  }
}

void callDescribe(Choices& choices, const Elements& x, const Elements& w, const Range& r) {
  const vx::Description d = vx::describe(x, {.weights = w, .missing = choices.missing()});
  expect((!isLevel(w) || r.within(d.mean, 1e-12)) && r.within(d.q1) && r.within(d.median) &&
             r.within(d.q3) && r.within(d.min) && r.within(d.max),
         "describe between min and max");
  expect(atMost(d.min, d.q1, 1e-15) && atMost(d.q1, d.median, 1e-15) &&
             atMost(d.median, d.q3, 1e-15) && atMost(d.q3, d.max, 1e-15) && !(d.std < 0),
         "describe ascends");
  expect(d.missing <= x.size() && !d.table().empty(), "describe counts");
}

void callCovariance(Choices& choices, const Elements& x, const Elements& w) {
  const Elements y = choices.flag() ? x : Elements(choices, x.size());
  const vx::Missing missing = choices.missing();
  const vx::Data columns[] = {x, y, x};
  const vx::CorrelationOptions options{w, choices.one<vx::Correlation>(3), missing};
  if (choices.flag()) {
    const auto c = vx::cov(columns, {.weights = w, .ddof = choices.number(), .missing = missing});
    expect(same(c(0, 1), c(1, 0)) && !(c(1, 1) < 0), "covariance matrix", c(0, 1), c(1, 0),
           c(1, 1));
    return;
  }
  const double one = vx::corr(x, y, options);
  expect(atMost(std::abs(one), 1, 1e-13), "correlation in [-1, 1]");
  const auto all = vx::corr(columns, options);
  expect(same(all(0, 1), all(1, 0)) && atMost(std::abs(all(0, 1)), 1, 1e-13), "correlation matrix");
}

// Rules make up to 2^27 bins of far outliers or of a wide range, which takes its time.
bool suitsRules(const Elements& x) {
  const auto all = x.doubles();
  return std::all_of(all.begin(), all.end(),
                     [](double v) { return std::abs(v) <= 256 && v * 16 == std::floor(v * 16); });
}

vx::Bins bins(Choices& choices, const Elements& x, const Elements& edges, bool ranged) {
  switch (choices.below(4)) {
    case 0:
      return vx::Bins(edges.view());
    case 1:
      return suitsRules(x) && !ranged ? vx::Bins(choices.one<vx::BinRule>(4)) : vx::Bins(7);
    case 2:
      return vx::Bins(choices.whole() % 100'000);
    default:
      return vx::Bins(choices.below(20));
  }
}

void callHistogram(Choices& choices, const Elements& x, const Elements& w) {
  const Elements edges(choices, 12);
  const auto range = choices.flag()
                         ? std::optional(vx::Interval{choices.number(), choices.number()})
                         : std::nullopt;
  const vx::HistogramOptions options{w, range, choices.flag(), choices.missing()};
  const auto h = vx::histogram(x, bins(choices, x, edges, range.has_value()), options);
  expect(h.edges.size() == h.counts.size() + 1 && h.missing <= x.size(), "histogram's sizes");
  expect(std::is_sorted(h.edges.begin(), h.edges.end()), "edges ascend");
  if (!options.density && !w.view().given()) {
    const double total = std::accumulate(h.counts.begin(), h.counts.end(), 0.0);
    expect(total + static_cast<double>(h.missing) <= static_cast<double>(x.size()),
           "histogram's total");
  }
  const auto f = vx::frequency_table(x, bins(choices, x, edges, range.has_value()), options);
  expect(f.lower.size() == f.cumulative.size() && f.upper.size() == f.count.size(),
         "table's sizes");
}

template <typename T>
void callSort(Choices& choices, const Elements& x) {
  const vx::Missing missing = choices.missing();
  const auto sorted = vx::sorted<T>(x, {missing});
  const auto nanLast = [](T a, T b) { return a < b || (a == a && b != b); };
  expect(std::is_sorted(sorted.begin(), sorted.end(), nanLast), "sorted");
  const auto order = vx::argsort(x, {missing});
  expect(order.size() == sorted.size(), "argsort's size");
  std::vector<bool> seen(x.size());
  for (const std::int64_t i : order) {
    expect(i >= 0 && static_cast<std::size_t>(i) < x.size() && !seen[static_cast<std::size_t>(i)],
           "argsort is a permutation");
    seen[static_cast<std::size_t>(i)] = true;
  }
  const auto t = vx::tallyOf<T>(x, {.missing = missing});
  expect(
      std::is_sorted(t.values.begin(), t.values.end()) && t.values.size() == t.counts.size() &&
          std::accumulate(t.counts.begin(), t.counts.end(), 0.0) + static_cast<double>(t.missing) ==
              static_cast<double>(x.size()),
      "tally");
  const vx::Cut cut(choices.probability(), choices.probability());
  expect(vx::trimmed<T>(x, cut, {.missing = missing}).size() <= x.size(), "trim");
  expect(vx::winsorized<T>(x, cut, {.missing = missing}).size() <= x.size(), "winsorize");
}

}  // namespace

void callStatistic(Choices& choices) {
  const Elements x(choices, 600);
  const Elements weights(choices, x.size(), choices.below(3) == 0);
  const Range r = range(x, weights);
  x.say("x");
  weights.say("weights");
  switch (choices.below(5)) {
    case 0:
      return callMean(choices, x, weights, r);
    case 1:
      return callMoment(choices, x, weights);
    case 2:
      return callQuantile(choices, x, weights, r);
    case 3:
      return callDescribe(choices, x, weights, r);
    default:
      return callCovariance(choices, x, weights);
  }
}

void callOrder(Choices& choices) {
  const Elements x(choices, 600);
  const Elements weights(choices, x.size(), choices.below(3) == 0);
  const vx::Missing missing = choices.missing();
  switch (choices.below(8)) {
    case 0:
      return callSort<double>(choices, x);
    case 1:
      return callSort<float>(choices, x);
    case 2:
      return callSort<std::int64_t>(choices, x);
    case 3: {
      const auto ranks = vx::rank(x, {choices.one<vx::RankMethod>(5), missing});
      for (const double k : ranks) {
        expect(std::isnan(k) || (k >= 1 && k <= static_cast<double>(x.size())), "rank");
      }
      return;
    }
    case 4: {
      const auto t = vx::tally(x.view(), {weights, missing});
      expect(std::adjacent_find(t.values.begin(), t.values.end(), std::greater_equal<>()) ==
                 t.values.end(),
             "tally ascends");
      vx::mode(x, {weights, missing});
      return;
    }
    case 5: {
      const auto c = vx::cumulative(
          x, {.weights = weights, .kind = choices.one<vx::Cumulative>(4), .missing = missing});
      expect(c.size() == x.size(), "cumulative's size");
      return;
    }
    case 6: {
      const vx::Cut cut(choices.probability(), choices.probability());
      expect(vx::trim(x.view(), cut, {weights, missing}).size() <= x.size(), "trim");
      expect(vx::winsorize(x.view(), cut, {weights, missing}).size() <= x.size(), "winsorize");
      return;
    }
    default:
      return callHistogram(choices, x, weights);
  }
}

void callSeries(Choices& choices) {
  const Elements x(choices, 300);
  switch (choices.below(4)) {
    case 0:
    case 1: {
      const Elements weights(choices, x.size(), choices.below(3) == 0);
      vx::MovingOptions options{.weights = weights};
      options.align = choices.one<vx::Align>(3);
      options.edges = choices.one<vx::Edges>(4);
      options.min_count = choices.count(5);
      options.missing = choices.missing();
      std::size_t window = choices.count(40);
      if (window > 1000 && window < (std::size_t{1} << 30)) {
        window %= 1000;  // longer ones take what they take
      }
      if (choices.below(3) == 0) {
        vx::moving(x, window, vx::Quantile{choices.probability()}, options);
      } else if (window < 1000 && choices.below(8) == 7) {
        vx::moving(
            x, window, [](std::span<const double> v) { return v.empty() ? NAN : v.front(); },
            options);
      } else {
        vx::moving(x, window, choices.one<vx::Statistic>(10), options);
      }
      return;
    }
    case 2: {
      const Elements taps(choices, 12);
      const Elements initial(choices, taps.size(), choices.flag());
      const auto y = vx::filter(x, taps, {.recursive = choices.flag(), .initial = initial});
      expect(y.size() == x.size(), "filter's size");
      return;
    }
    default: {
      const auto a = vx::autocorrelation(x, choices.count(20), {choices.missing()});
      for (const double c : a) {
        expect(atMost(std::abs(c), 1, 1e-10), "autocorrelation in [-1, 1]");
      }
    }
  }
}

void callTest(Choices& choices) {
  const Elements x(choices, 300);
  const vx::Missing missing = choices.missing();
  const auto check = [](const vx::TestResult& r) {
    expect(!(r.pvalue < 0 || r.pvalue > 1), "p-value in [0, 1]");
  };
  switch (choices.below(6)) {
    case 0:
      return check(vx::shapiro(x, {missing}));
    case 1:
      return check(vx::ks_test(x, vx::Normal(choices.ordinary(), 1 + std::abs(choices.ordinary())),
                               {missing}));
    case 2: {
      const Elements expected(choices, x.size(), choices.flag());
      return check(vx::chi_square_test(x, expected, {choices.number(), missing}));
    }
    case 3:
      return check(vx::t_test(x, choices.number(), {choices.flag(), missing}));
    case 4: {
      const Elements y(choices, 100);
      return check(vx::t_test(x, y, {choices.flag(), missing}));
    }
    default: {
      const Elements weights(choices, x.size(), choices.below(3) == 0);
      vx::KdeOptions options{.weights = weights,
                             .bandwidth = choices.one<vx::BandwidthRule>(2),
                             .kernel = choices.one<vx::DensityKernel>(5),
                             .points = choices.below(200),
                             .missing = missing};
      if (choices.flag()) {
        options.bandwidth = choices.number();
      }
      if (choices.flag()) {
        options.bounds = {choices.number(), choices.number()};
      }
      const vx::KernelDensity d = vx::kde(x, options);
      const double t = choices.number();
      expect(!(d(t) < 0) && !(d.cdf(t) < 0 || d.cdf(t) > 1 + 1e-12), "density");
      for (const double y : d.y()) {
        expect(!(y < -1e-9), "density on the grid");
      }
      vx::Random rng(1);
      d.sample(3, rng);
    }
  }
}

}  // namespace fuzz

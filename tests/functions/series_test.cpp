// Series against their definitions: each window gathered and computed on its own.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <stdexcept>
#include <vexel/series.hpp>

namespace {

namespace vx = vexel;
using Doubles = std::vector<double>;
using testing::ElementsAre;
using testing::IsNan;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

struct Window {
  Doubles values;
  Doubles weights;
  bool missing = false;
  bool leaves = false;
};

// What the window of i holds, place by place.
Window windowOf(const Doubles& x, std::size_t i, std::size_t size, const vx::MovingOptions& o) {
  const auto n = static_cast<long>(x.size());
  const auto w = static_cast<long>(size);
  const long left = o.align == vx::Align::center ? w / 2 : o.align == vx::Align::right ? w - 1 : 0;
  Window window;
  for (long place = static_cast<long>(i) - left; place < static_cast<long>(i) - left + w; ++place) {
    long from = place;
    if (place < 0 || place >= n) {
      window.leaves = true;
      if (o.edges == vx::Edges::shrink || o.edges == vx::Edges::nan) {
        continue;
      }
      from = std::clamp(place, 0L, n - 1);
      if (o.edges == vx::Edges::reflect) {
        for (from = place; from < 0 || from >= n;) {
          from = from < 0 ? -1 - from : 2 * n - 1 - from;
        }
      }
    }
    const double v = x[static_cast<std::size_t>(from)];
    const double weight = o.weights.given() ? o.weights[static_cast<std::size_t>(from)] : 1;
    if (weight == 0) {
      continue;
    }
    if (std::isnan(v) || std::isnan(weight)) {
      window.missing = true;
    } else {
      window.values.push_back(v);
      window.weights.push_back(weight);
    }
  }
  return window;
}

using Definition = std::function<double(Window)>;

double total(const Doubles& x) { return std::accumulate(x.begin(), x.end(), 0.0); }
double weightedSum(const Window& w) {
  return std::inner_product(w.values.begin(), w.values.end(), w.weights.begin(), 0.0);
}
double varianceOf(const Window& w) {
  if (!(total(w.weights) > 1)) {
    return kNan;
  }
  const double mean = weightedSum(w) / total(w.weights);
  double sum = 0;
  for (std::size_t i = 0; i < w.values.size(); ++i) {
    sum += w.weights[i] * (w.values[i] - mean) * (w.values[i] - mean);
  }
  return sum / (total(w.weights) - 1);
}
double quantileOf(const Window& w, double q) {
  Doubles repeated;
  for (std::size_t i = 0; i < w.values.size(); ++i) {
    repeated.insert(repeated.end(), static_cast<std::size_t>(w.weights[i]), w.values[i]);
  }
  std::sort(repeated.begin(), repeated.end());
  const double h = q * static_cast<double>(repeated.size() - 1);
  const auto k = static_cast<std::size_t>(h);
  const double next = repeated[std::min(k + 1, repeated.size() - 1)];
  return repeated[k] + (h - static_cast<double>(k)) * (next - repeated[k]);
}
double shapeOf(const Window& w, int order) {
  const double n = total(w.weights);
  const double mean = weightedSum(w) / n;
  double squares = 0, powers = 0;
  for (std::size_t i = 0; i < w.values.size(); ++i) {
    squares += w.weights[i] * std::pow(w.values[i] - mean, 2) / n;
    powers += w.weights[i] * std::pow(w.values[i] - mean, order) / n;
  }
  return powers / std::pow(squares, order / 2.0) - (order == 4 ? 3 : 0);
}

const std::vector<std::pair<vx::Statistic, Definition>>& definitions() {
  static const std::vector<std::pair<vx::Statistic, Definition>> all = {
      {vx::Statistic::sum, weightedSum},
      {vx::Statistic::mean, [](Window w) { return weightedSum(w) / total(w.weights); }},
      {vx::Statistic::var, varianceOf},
      {vx::Statistic::std, [](Window w) { return std::sqrt(varianceOf(w)); }},
      {vx::Statistic::min,
       [](Window w) { return *std::min_element(w.values.begin(), w.values.end()); }},
      {vx::Statistic::max,
       [](Window w) { return *std::max_element(w.values.begin(), w.values.end()); }},
      {vx::Statistic::median, [](Window w) { return quantileOf(w, 0.5); }},
      {vx::Statistic::iqr, [](Window w) { return quantileOf(w, 0.75) - quantileOf(w, 0.25); }},
      {vx::Statistic::skewness, [](Window w) { return shapeOf(w, 3); }},
      {vx::Statistic::kurtosis, [](Window w) { return shapeOf(w, 4); }},
  };
  return all;
}

void expectAsDefined(const Doubles& x, std::size_t size, const vx::MovingOptions& o,
                     const Doubles& got, const Definition& definition) {
  ASSERT_EQ(got.size(), x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    const Window w = windowOf(x, i, size, o);
    const bool none = (w.missing && o.missing == vx::Missing::propagate) ||
                      (w.leaves && o.edges == vx::Edges::nan) || w.values.size() < o.min_count;
    const double wanted = none ? kNan : definition(w);
    if (std::isnan(wanted)) {
      EXPECT_TRUE(std::isnan(got[i])) << i << ": " << got[i];
    } else {
      EXPECT_NEAR(got[i], wanted, 1e-9 * (1 + std::abs(wanted))) << i;
    }
  }
}

TEST(Series, MovingStatisticsAreThoseOfEachWindow) {
  std::mt19937_64 random(11);
  int round = 0;
  for (const std::size_t n : {1, 2, 7, 40, 90}) {
    for (const std::size_t size : {1, 2, 3, 8, 15, 40, 200}) {
      for (const auto edges :
           {vx::Edges::shrink, vx::Edges::nan, vx::Edges::reflect, vx::Edges::nearest}) {
        ++round;
        Doubles x(n), w(n);
        for (std::size_t i = 0; i < n; ++i) {
          x[i] = static_cast<double>(random() % 16) - 3;
          w[i] = static_cast<double>(random() % 3);
          if (round % 3 == 0 && random() % 5 == 0) {
            (random() % 2 ? x : w)[i] = kNan;
          }
        }
        vx::MovingOptions o{.edges = edges, .align = static_cast<vx::Align>(round % 3)};
        o.min_count = round % 4 == 0 ? 3 : 1;
        o.missing = round % 2 ? vx::Missing::omit : vx::Missing::propagate;
        o.weights = round % 5 < 2 ? vx::Data(w) : vx::Data();
        for (const auto& [statistic, definition] : definitions()) {
          SCOPED_TRACE(testing::Message()
                       << "n " << n << ", window " << size << ", edges " << static_cast<int>(edges)
                       << ", statistic " << static_cast<int>(statistic) << ", round " << round);
          expectAsDefined(x, size, o, vx::moving(x, size, statistic, o), definition);
        }
        expectAsDefined(x, size, o, vx::moving(x, size, vx::Quantile{0.9}, o),
                        [](Window v) { return quantileOf(v, 0.9); });
      }
    }
  }
}

TEST(Series, LongSeriesGoInStretches) {
  std::mt19937_64 random(13);
  Doubles x(150000);
  for (double& v : x) {
    v = static_cast<double>(random() % 1000);
  }
  for (const std::size_t size : {1, 5, 16, 101, 256, 9000}) {
    const Doubles sums = vx::moving(x, size, vx::Statistic::sum);
    const Doubles medians = vx::moving(x, size, vx::Statistic::median);
    const Doubles deviations = vx::moving(x, size, vx::Statistic::std);
    for (std::size_t i = 0; i < x.size(); i += 997) {
      const Window w = windowOf(x, i, size, {});
      EXPECT_EQ(sums[i], total(w.values)) << size << " at " << i;
      EXPECT_EQ(medians[i], quantileOf(w, 0.5)) << size << " at " << i;
      EXPECT_TRUE(size == 1 ? std::isnan(deviations[i])
                            : std::abs(deviations[i] - std::sqrt(varianceOf(w))) < 1e-9);
    }
  }
}

// With an offset that raw sums of squares would not survive, and outliers on either side.
TEST(Series, VariancesKeepTheirDigits) {
  std::mt19937_64 random(19);
  Doubles x(40000);
  for (double& v : x) {
    v = 1e12 + static_cast<double>(random() % 16) + (random() % 500 == 0 ? 1e9 : 0);
  }
  for (const std::size_t size : {2, 3, 17, 101, 1000}) {
    const Doubles variances = vx::moving(x, size, vx::Statistic::var);
    for (std::size_t i = 1; i < x.size(); i += 37) {
      Window w = windowOf(x, i, size, {});
      for (double& v : w.values) {
        v -= 1e12;
      }
      const auto n = static_cast<long double>(w.values.size());
      long double sum = 0, squares = 0;
      for (const long double v : w.values) {
        sum += v;
        squares += v * v;
      }
      const auto wanted = static_cast<double>((squares - sum * sum / n) / (n - 1));
      EXPECT_NEAR(variances[i], wanted, 1e-14 * std::sqrt(static_cast<double>(n)) * wanted)
          << size << " at " << i;
    }
  }
}

// Whatever has left a window has left no trace in it.
TEST(Series, WindowsForget) {
  for (const std::size_t size : {3, 20, 101}) {
    for (const double huge : {1e17, 1e300, -1.7e308, kInf, -kInf}) {
      Doubles x(2000, 0.1);
      std::fill(x.begin() + 900, x.end(), 0.0);
      x[400] = x[401] = huge;
      x[800] = huge;
      for (const auto statistic : {vx::Statistic::sum, vx::Statistic::mean, vx::Statistic::var,
                                   vx::Statistic::std, vx::Statistic::max}) {
        const Doubles m = vx::moving(x, size, statistic);
        EXPECT_EQ(m[300], m[600]) << huge;
        EXPECT_EQ(m[1100], 0) << huge;
      }
      EXPECT_EQ(vx::moving(x, size, vx::Statistic::mean)[600], 0.1);
      EXPECT_EQ(vx::moving(x, size, vx::Statistic::var)[600], 0);
    }
  }
  EXPECT_THAT(vx::moving({1e308, 1.5e308, 1.1e308}, 3, vx::Statistic::mean),
              ElementsAre(1.25e308, testing::DoubleEq(1.2e308), 1.3e308));
  EXPECT_THAT(vx::moving({1e-200, 3e-200}, 2, vx::Statistic::std, {.edges = vx::Edges::nan}),
              ElementsAre(IsNan(), testing::DoubleEq(std::sqrt(2.0) * 1e-200)));
  EXPECT_THAT(vx::moving({1e200, 3e200}, 2, vx::Statistic::std, {.edges = vx::Edges::nan}),
              ElementsAre(IsNan(), testing::DoubleEq(std::sqrt(2.0) * 1e200)));
  const Doubles offset = {1e9 + 1, 1e9 + 2, 1e9 + 4, 1e9 + 7};
  EXPECT_EQ(vx::moving(offset, 3, vx::Statistic::var)[2], 19.0 / 3);
  EXPECT_THAT(vx::moving({kInf, 1, -kInf}, 3), ElementsAre(kInf, IsNan(), -kInf));
}

TEST(Series, OnesOwnStatisticSeesPresentValuesInOrder) {
  const auto first = [](std::span<const double> v) {
    return v.empty() ? -1 : v[0] + static_cast<double>(v.size()) / 8;
  };
  EXPECT_THAT(vx::moving({1, kNan, 3, 4}, 2, first, {.missing = vx::Missing::omit}),
              ElementsAre(1.125, 1.125, 3.125, 3.25));
  EXPECT_THAT(vx::moving({1, 2}, 2, first, {.edges = vx::Edges::nan}), ElementsAre(IsNan(), 1.25));
  EXPECT_THAT(vx::moving({kNan}, 1, first, {.min_count = 0, .missing = vx::Missing::omit}),
              ElementsAre(-1));
}

TEST(Series, FiltersAddUpProducts) {
  const Doubles x = {1, 2, 4, 8};
  EXPECT_THAT(vx::filter(x, {0.5, 0.25, 2}), ElementsAre(0.5, 1.25, 4.5, 9));
  EXPECT_THAT(vx::filter(x, {0.5, 0.25, 2}, {.initial = {4, 1}}), ElementsAre(3.5, 9.25, 4.5, 9));
  EXPECT_THAT(vx::filter(x, {0.5}, {.recursive = true}), ElementsAre(1, 2.5, 5.25, 10.625));
  EXPECT_THAT(vx::filter(x, {0, 1}, {.recursive = true, .initial = {100, 3}}),
              ElementsAre(4, 102, 8, 110));
  EXPECT_THAT(vx::filter({1e16, 1, -1e16, 5}, {1, 1, 1}), ElementsAre(1e16, 1e16, 1, -1e16 + 6));
  EXPECT_THAT(vx::filter({1, kInf, 2, kNan, 1, 1}, {1, 1}),
              ElementsAre(1, kInf, kInf, IsNan(), IsNan(), 2));
  Doubles series(70000), taps(16);
  std::mt19937_64 random(17);
  for (double& v : series) {
    v = static_cast<double>(random() % 100);
  }
  std::iota(taps.begin(), taps.end(), -7);
  const Doubles y = vx::filter(series, taps);
  for (std::size_t i = 15; i < y.size(); i += 101) {
    EXPECT_EQ(y[i],
              std::inner_product(
                  taps.begin(), taps.end(),
                  std::make_reverse_iterator(series.begin() + static_cast<long>(i) + 1), 0.0));
  }
  // Many taps, sums that nearly cancel.
  std::normal_distribution<double> normal;
  std::generate(series.begin(), series.end(), [&] { return normal(random); });
  taps.resize(57);
  std::generate(taps.begin(), taps.end(), [&] { return normal(random); });
  const Doubles many = vx::filter(series, taps);
  for (std::size_t i = 56; i < many.size(); i += 11) {
    long double sum = 0;
    for (std::size_t k = 0; k < taps.size(); ++k) {
      sum += static_cast<long double>(taps[k]) * series[i - k];
    }
    EXPECT_NEAR(many[i], static_cast<double>(sum), 3e-16 * std::abs(many[i]) + 2e-16);
  }
  EXPECT_THROW(vx::filter(x, Doubles()), std::invalid_argument);
  EXPECT_THROW(vx::filter(x, {1}, {.initial = {1}}), std::length_error);
}

TEST(Series, AutocorrelationDividesByN) {
  const Doubles r = vx::autocorrelation({1, 2, 4, 9}, 3);
  EXPECT_THAT(r, ElementsAre(1, 6.0 / 38, -10.0 / 38, -15.0 / 38));
  Doubles x(500);
  for (std::size_t i = 0; i < x.size(); ++i) {
    x[i] = std::sin(static_cast<double>(i * i)) * 1e200;
  }
  const Doubles byTransform = vx::autocorrelation(x, 400);
  for (const std::size_t lag : {0, 1, 2, 17, 400}) {
    EXPECT_NEAR(byTransform[lag], vx::autocorrelation(x, {lag})[0], 1e-13);
  }
  // A series of several stretches of the transform.
  Doubles longer(40000);
  for (std::size_t i = 0; i < longer.size(); ++i) {
    longer[i] = std::sin(0.01 * static_cast<double>(i * i % 1009)) + 1e-4 * static_cast<double>(i);
  }
  const Doubles many = vx::autocorrelation(longer, 3000);
  for (const std::size_t lag : {0, 1, 700, 2999, 3000}) {
    EXPECT_NEAR(many[lag], vx::autocorrelation(longer, {lag})[0], 1e-14) << lag;
  }
  EXPECT_TRUE(std::isnan(vx::autocorrelation({1, kNan, 2}, 1)[0]));
  EXPECT_EQ(vx::autocorrelation({1, kNan, 2}, 2, {.missing = vx::Missing::omit})[2], -0.5);
  EXPECT_TRUE(std::isnan(vx::autocorrelation({3, 3}, 1)[0]));
  EXPECT_TRUE(std::isnan(vx::autocorrelation(std::vector<double>(), 2)[2]));
}

}  // namespace

// Descriptive statistics: references, and the properties that hold for every one of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <map>
#include <random>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>
#include <vexel/descriptive.hpp>
#include <vexel/interruption.hpp>

namespace {

using vexel::Correlation;
using vexel::Data;
using vexel::Mean;
using vexel::Missing;
using vexel::QuantileMethod;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
using Vector = std::vector<double>;

// How a statistic follows a scale s and a shift of the data: to value * s^scale, and by the shift
// itself, not at all, or in no simple way.
enum class Shift { follows, ignores, other };
struct Statistic {
  std::string name;
  std::function<double(Data x, Data w, Missing missing)> of;
  int scale = 0;
  Shift shift = Shift::other;
  double ulps = 0;  // of the references
};

const Vector& partner() {
  static const Vector y = [] {
    std::mt19937_64 random(3);
    Vector all(200);
    std::generate(all.begin(), all.end(), [&] { return static_cast<double>(random() % 7); });
    return all;
  }();
  return y;
}

// Correlates with partner(), as much of it as there are points.
template <typename Options>
auto withPartner(double (*f)(Data, Data, const Options&), Options options) {
  return [=](Data x, Data w, Missing missing) mutable {
    options.weights = w;
    options.missing = missing;
    return f(x, Data(partner().data(), x.size()), options);
  };
}

// How it behaves: tests/python/properties_test.py reads the same table.
void readProperties(Statistic& s) {
  std::ifstream in(std::string(TEST_DATA_DIR) + "/statistic_properties.txt");
  for (std::string line; std::getline(in, line);) {
    std::istringstream fields(line);
    std::string name;
    std::string shift;
    std::getline(fields, name, ';');
    if (name == s.name) {
      fields >> s.scale >> shift >> s.ulps;
      s.shift = shift == "follows"   ? Shift::follows
                : shift == "ignores" ? Shift::ignores
                                     : Shift::other;
      return;
    }
  }
  throw std::logic_error("no properties of " + s.name);
}

const std::vector<Statistic>& statistics() {
  static const std::vector<Statistic> all = [] {
    std::vector<Statistic> s;
    const auto meanOf = [](Mean kind) {
      return [=](Data x, Data w, Missing m) {
        return vexel::mean(x, {.weights = w, .kind = kind, .missing = m});
      };
    };
    s.push_back({"mean", meanOf(Mean::arithmetic)});
    s.push_back({"quadratic", meanOf(Mean::quadratic)});
    s.push_back({"harmonic", meanOf(Mean::harmonic)});
    s.push_back({"geometric", meanOf(Mean::geometric)});
    s.push_back({"trimmed_mean", [](Data x, Data w, Missing m) {
                   return vexel::trimmed_mean(x, {0.1, 0.2}, {w, m});
                 }});
    s.push_back({"winsorized_mean", [](Data x, Data w, Missing m) {
                   return vexel::winsorized_mean(x, 0.15, {w, m});
                 }});
    for (const int order : {2, 3, 4, 7}) {
      s.push_back({"moment" + std::to_string(order), [=](Data x, Data w, Missing m) {
                     return vexel::moment(x, order, {.weights = w, .missing = m});
                   }});
    }
    s.push_back(
        {"var",
         [](Data x, Data w, Missing m) { return vexel::var(x, {.weights = w, .missing = m}); }, 2,
         Shift::ignores, 1});
    s.push_back(
        {"std",
         [](Data x, Data w, Missing m) { return vexel::std(x, {.weights = w, .missing = m}); }, 1,
         Shift::ignores, 1});
    for (const bool bias : {true, false}) {
      s.push_back({bias ? "skewness" : "G1", [=](Data x, Data w, Missing m) {
                     return vexel::skewness(x, {w, bias, m});
                   }});
      s.push_back({bias ? "kurtosis" : "G2", [=](Data x, Data w, Missing m) {
                     return vexel::kurtosis(x, {w, bias, m});
                   }});
    }
    for (const vexel::Center center : {vexel::Center::mean, vexel::Center::median}) {
      s.push_back({center == vexel::Center::mean ? "mean_absolute_deviation" : "about the median",
                   [=](Data x, Data w, Missing m) {
                     return vexel::mean_absolute_deviation(x, {w, center, m});
                   }});
    }
    s.push_back({"median_absolute_deviation", [](Data x, Data w, Missing m) {
                   return vexel::median_absolute_deviation(x, {w, 1.0, m});
                 }});
    for (int method = 0; method < 9; ++method) {
      s.push_back({"quantile " + std::to_string(method), [=](Data x, Data w, Missing m) {
                     return vexel::quantile(x, 0.3, {w, static_cast<QuantileMethod>(method), m});
                   }});
    }
    s.push_back({"median", [](Data x, Data w, Missing m) { return vexel::median(x, {w, m}); }});
    s.push_back(
        {"iqr",
         [](Data x, Data w, Missing m) { return vexel::iqr(x, {.weights = w, .missing = m}); }, 1,
         Shift::ignores, 1});
    s.push_back({"order_statistic", [](Data x, Data w, Missing m) {
                   return vexel::order_statistic(x, 1, {w, m});
                 }});
    s.push_back({"lower_hinge", [](Data x, Data w, Missing m) {
                   return vexel::five_number(x, {w, m}).lower_hinge;
                 }});
    s.push_back({"upper_hinge", [](Data x, Data w, Missing m) {
                   return vexel::five_number(x, {w, m}).upper_hinge;
                 }});
    s.push_back({"describe", [](Data x, Data w, Missing m) {
                   return vexel::describe(x, {w, m}).max;
                 }});
    s.push_back({"cov", withPartner<vexel::CovarianceOptions>(vexel::cov, {})});
    for (const auto& [name, method] : {std::pair{"pearson", Correlation::pearson},
                                       {"spearman", Correlation::spearman},
                                       {"kendall", Correlation::kendall}}) {
      s.push_back({name, withPartner<vexel::CorrelationOptions>(vexel::corr, {.method = method}), 0,
                   Shift::ignores, 4});
    }
    std::for_each(s.begin(), s.end(), readProperties);
    return s;
  }();
  return all;
}

// Positive multiples of 1/8 with ties, so that shifts and scales are exact.
Vector points(std::size_t n, unsigned seed) {
  std::mt19937_64 random(seed);
  Vector x(n);
  std::generate(x.begin(), x.end(), [&] { return static_cast<double>(random() % 400 + 1) / 8.0; });
  return x;
}

void expectNear(double value, double expected, double tolerance, const std::string& what) {
  if (std::isnan(expected) || std::isinf(expected)) {
    EXPECT_THAT(value, testing::NanSensitiveDoubleEq(expected)) << what;
  } else {
    EXPECT_LE(std::fabs(value - expected), tolerance * std::fabs(expected)) << what << " " << value;
  }
}

constexpr double kUlp = 0x1p-52;

class EveryStatistic : public testing::TestWithParam<Statistic> {
 protected:
  double of(Data x, Data w = {}, Missing m = Missing::propagate) { return GetParam().of(x, w, m); }
  std::string name() { return GetParam().name; }
};

TEST_P(EveryStatistic, FollowsPermutationScaleAndShift) {
  for (const std::size_t n : {5U, 40U, 150U}) {
    const Vector x = points(n, 1);
    const double value = of(x);
    if (name() != "cov" && GetParam().ulps != 4) {  // those pair by position
      Vector shuffled = x;
      std::shuffle(shuffled.begin(), shuffled.end(), std::mt19937_64(2));
      expectNear(of(shuffled), value, 8 * kUlp, name() + " permuted");
    }
    for (const int exponent : {10, 900, -900}) {
      Vector scaled = x;
      for (double& v : scaled) {
        v = std::ldexp(v, exponent);
      }
      const double expected = std::ldexp(value, exponent * GetParam().scale);
      if (std::isnormal(expected)) {
        expectNear(of(scaled), expected, 4 * kUlp, name() + " scaled");
      } else {
        EXPECT_EQ(of(scaled), expected) << name() << " scaled out of range";
      }
    }
    if (GetParam().shift != Shift::other) {
      Vector shifted = x;
      for (double& v : shifted) {
        v += 0x1p30;
      }
      const double expected = value + (GetParam().shift == Shift::follows ? 0x1p30 : 0.0);
      expectNear(of(shifted), expected, 64 * kUlp, name() + " shifted");
    }
  }
}

TEST_P(EveryStatistic, CountsWeightsAsRepetition) {
  for (const std::size_t n : {4U, 40U, 110U}) {
    const Vector x = points(n, 4);
    Vector w(n);
    std::mt19937_64 random(5);
    std::generate(w.begin(), w.end(), [&] { return static_cast<double>(random() % 3); });
    w[1] = 2.0;
    Vector repeated;
    Vector repeatedPartner;
    for (std::size_t i = 0; i < n; ++i) {
      repeated.insert(repeated.end(), static_cast<std::size_t>(w[i]), x[i]);
      repeatedPartner.insert(repeatedPartner.end(), static_cast<std::size_t>(w[i]), partner()[i]);
    }
    double expected = of(repeated);
    if (name() == "cov") {
      expected = vexel::cov(repeated, repeatedPartner);
    } else if (GetParam().ulps == 4) {
      const auto method = name() == "pearson"    ? Correlation::pearson
                          : name() == "spearman" ? Correlation::spearman
                                                 : Correlation::kendall;
      expected = vexel::corr(repeated, repeatedPartner, {.method = method});
    }
    expectNear(of(x, w), expected, 16 * kUlp, name() + " weighted");
    // A point of weight 0 is not there, whatever it is.
    Vector more = x;
    Vector moreWeights = w;
    if (GetParam().ulps != 4) {
      more.insert(more.begin(), {kNaN, kInfinity, -5.0});
      moreWeights.insert(moreWeights.begin(), {0.0, 0.0, 0.0});
      expectNear(of(more, moreWeights), of(x, w), 8 * kUlp, name() + " with weights of 0");
    }
  }
}

TEST_P(EveryStatistic, TreatsMissingAsItIsTold) {
  Vector x = points(30, 6);
  Vector y = partner();
  const Vector w(30, 2.0);
  Vector holes = x;
  Vector weightHoles = w;
  holes[29] = kNaN;
  weightHoles[29] = kNaN;
  x.pop_back();
  EXPECT_TRUE(std::isnan(of(holes)));
  EXPECT_TRUE(std::isnan(of(holes, w)));
  EXPECT_TRUE(std::isnan(of(Vector(30, 1.5), weightHoles)));
  const double rest = of(x);
  expectNear(of(holes, {}, Missing::omit), rest, 2 * kUlp, name() + " without a missing point");
  expectNear(of(holes, w, Missing::omit), of(x, Vector(29, 2.0)), 2 * kUlp, name());
  expectNear(of(holes, weightHoles, Missing::omit), of(x, Vector(29, 2.0)), 2 * kUlp, name());
  EXPECT_THROW(of(holes, {}, Missing::raise), std::invalid_argument);
  EXPECT_THROW(of(holes, w, Missing::raise), std::invalid_argument);
  EXPECT_THROW(of(Vector(30, 1.5), weightHoles, Missing::raise), std::invalid_argument);
  EXPECT_TRUE(std::isnan(of(Vector(3, kNaN), {}, Missing::omit)));
}

TEST_P(EveryStatistic, OfNothingIsNaNAndOfBadWeightsAnError) {
  EXPECT_TRUE(std::isnan(of(Vector())));
  EXPECT_TRUE(std::isnan(of(Vector(), Vector())));
  EXPECT_THROW(of(Vector{1.0, 2.0}, Vector{0.0, 0.0}), std::invalid_argument);
  EXPECT_THROW(of(Vector{1.0, 2.0}, Vector{1.0, -1.0}), std::invalid_argument);
  EXPECT_THROW(of(Vector{1.0, 2.0}, Vector{1.0, kInfinity}), std::invalid_argument);
  EXPECT_THROW(of(Vector{1.0, 2.0}, Vector{1.0}), std::length_error);
  const double one = of(Vector{3.5});
  EXPECT_TRUE(std::isnan(one) || one == 0.0 || one == 3.5 || name() == "harmonic") << one;
}

TEST_P(EveryStatistic, ReadsEveryElementTypeAndStride) {
  std::vector<std::int32_t> whole(160);
  std::mt19937_64 random(8);
  std::generate(whole.begin(), whole.end(), [&] { return static_cast<int>(random() % 1000) + 1; });
  const std::vector<float> floats(whole.begin(), whole.end());
  const std::vector<std::int64_t> large(whole.begin(), whole.end());
  const Vector doubles(whole.begin(), whole.end());
  Vector apart(3 * doubles.size());
  for (std::size_t i = 0; i < doubles.size(); ++i) {
    apart[apart.size() - 1 - 3 * i] = doubles[i];
  }
  const double expected = of(doubles);
  EXPECT_EQ(of(whole), expected);
  EXPECT_EQ(of(floats), expected);
  EXPECT_EQ(of(large), expected);
  EXPECT_EQ(of(Data(&apart.back(), doubles.size(), -3)), expected);
  EXPECT_EQ(of(doubles, std::vector<float>(160, 1.0F)), of(doubles, Vector(160, 1.0)));
}

INSTANTIATE_TEST_SUITE_P(All, EveryStatistic, testing::ValuesIn(statistics()),
                         [](const auto& tested) {
                           std::string name = tested.param.name;
                           std::replace(name.begin(), name.end(), ' ', '_');
                           return name;
                         });

// ---- references

struct References {
  std::map<std::string, Vector> samples;
  struct Row {
    std::string function, x, y, w;
    double value;
  };
  std::vector<Row> rows;
};

const References& references() {
  static const References all = [] {
    References r;
    std::ifstream in(std::string(TEST_DATA_DIR) + "/statistics.txt");
    for (std::string line; std::getline(in, line);) {
      std::istringstream words(line);
      std::string function;
      std::string names;
      std::string word;
      words >> function >> names >> word;
      if (function == "sample") {
        Vector& x = r.samples[names.substr(0, names.size() - 1)];
        do {
          x.push_back(std::strtod(word.c_str(), nullptr));
        } while (words >> word);
        continue;
      }
      words >> word;
      const std::size_t slash = names.find('/');
      const std::string pair = names.substr(0, slash);
      const std::size_t comma = pair.find(',');
      r.rows.push_back({function, pair.substr(0, comma),
                        comma == std::string::npos ? "" : pair.substr(comma + 1),
                        slash == std::string::npos ? "" : names.substr(slash + 1),
                        std::strtod(word.c_str(), nullptr)});
    }
    return r;
  }();
  return all;
}

TEST(Statistics, AreRightToTheirLastPlaces) {
  ASSERT_GT(references().rows.size(), 150U);
  for (const auto& row : references().rows) {
    const Vector& x = references().samples.at(row.x);
    const Data w = row.w.empty() ? Data() : Data(references().samples.at(row.w));
    const auto statistic = std::find_if(statistics().begin(), statistics().end(),
                                        [&](const Statistic& s) { return s.name == row.function; });
    if (statistic == statistics().end()) {
      continue;  // of the states
    }
    double value = 0.0;
    if (row.y.empty()) {
      value = statistic->of(x, w, Missing::propagate);
    } else if (row.function == "cov") {
      value = vexel::cov(x, references().samples.at(row.y), {.weights = w});
    } else {
      value = vexel::corr(x, references().samples.at(row.y),
                          {.weights = w,
                           .method = row.function == "pearson"    ? Correlation::pearson
                                     : row.function == "spearman" ? Correlation::spearman
                                                                  : Correlation::kendall});
    }
    // Odd moments and correlations near 0 are good beside the terms that cancel in them.
    const int order = statistic->scale;
    const double size =
        row.function == "moment3" || row.function == "moment7"
            ? std::pow(vexel::moment(x, order + 1, {.weights = w}), order / (order + 1.0))
        : row.function == "cov" || !row.y.empty() || order == 0
            ? std::max(1.0, std::fabs(row.value))
            : std::fabs(row.value);
    EXPECT_LE(std::fabs(value - row.value), statistic->ulps * kUlp * size)
        << row.function << " " << row.x << " " << row.y << " " << row.w << ": " << value << " for "
        << row.value;
  }
}

// ---- quantiles

// By definition: the positions of Hyndman and Fan in the sorted sample.
double quantileOfSorted(const Vector& sorted, double q, int method) {
  const auto n = static_cast<double>(sorted.size());
  const auto at = [&](double k) {
    return sorted[static_cast<std::size_t>(std::clamp(k, 1.0, n)) - 1];
  };
  const double a[] = {0, 0, 0, 0, 0.5, 0, 1, 1.0 / 3, 3.0 / 8};
  const double b[] = {0, 0, 0, 1, 0.5, 0, 1, 1.0 / 3, 3.0 / 8};
  const double nq = n * q;
  switch (method) {
    case 0:
      return at(std::ceil(nq));
    case 1:
      return nq == std::floor(nq) ? (at(nq) + at(nq + 1)) / 2 : at(std::ceil(nq));
    case 2: {
      const double j = std::floor(nq - 0.5);
      return at(j == nq - 0.5 && std::fmod(j, 2) == 0 ? j : j + 1);
    }
    default: {
      const double h =
          method == 6 ? (n - 1) * q + 1 : nq + a[method] + q * (1 - a[method] - b[method]);
      const double j = std::floor(h);
      const double low = at(j);
      const double high = at(j + 1);
      return low == high || h == j ? low : low + (high - low) * (h - j);
    }
  }
}

// Sizes on either side of the ways that selection goes, shapes that deceive its samples and cells.
TEST(Quantile, IsByDefinitionInEveryMethodAndWay) {
  std::mt19937_64 random(9);
  for (const std::size_t n : {1U, 2U, 7U, 60U, 25000U, 90000U}) {
    for (int shape = 0; shape < 6; ++shape) {
      Vector x(n);
      Vector w(n);
      for (std::size_t i = 0; i < n; ++i) {
        const auto u = static_cast<double>(random() % 1000000) / 1e6;
        const double shapes[] = {u,
                                 std::exp(60 * u),
                                 std::floor(5 * u),
                                 static_cast<double>(i) + u,
                                 -1e300 * u,
                                 u < 0.01   ? kInfinity
                                 : u < 0.02 ? -kInfinity
                                            : u};
        x[i] = shapes[shape];
        w[i] = static_cast<double>(random() % 4);
      }
      w[0] = 1.0;
      Vector repeated;
      for (std::size_t i = 0; i < n; ++i) {
        repeated.insert(repeated.end(), static_cast<std::size_t>(w[i]), x[i]);
      }
      Vector sorted = repeated;
      std::sort(sorted.begin(), sorted.end());
      Vector q = {0.5, 0.0, 1.0, 0.25};
      for (int i = 0; i < 31; ++i) {
        q.push_back(i / 31.0);
      }
      for (const std::size_t some : {std::size_t{1}, std::size_t{3}, q.size()}) {
        for (int method = 0; method < 9; ++method) {
          const auto m = static_cast<QuantileMethod>(method);
          const Data asked(q.data(), some);
          const Vector plain = vexel::quantile(repeated, asked, {.method = m});
          const Vector weighted = vexel::quantile(x, asked, {.weights = w, .method = m});
          for (std::size_t i = 0; i < some; ++i) {
            const double expected = quantileOfSorted(sorted, q[i], method);
            EXPECT_TRUE(plain[i] == weighted[i] || std::isnan(plain[i]))
                << n << " " << shape << " " << method << " " << q[i];
            if (!std::isnan(expected)) {
              expectNear(plain[i], expected, 1e-9, "method " + std::to_string(method));
            }
          }
        }
      }
    }
  }
}

TEST(Quantile, RisesWithQForAnyWeights) {
  std::mt19937_64 random(10);
  std::uniform_real_distribution<double> uniform;
  for (const double scale : {0.01, 1.0, 30.0}) {
    Vector x(40);
    Vector w(40);
    std::generate(x.begin(), x.end(), [&] { return uniform(random); });
    std::generate(w.begin(), w.end(), [&] { return scale * uniform(random); });
    Vector q(2001);
    for (std::size_t i = 0; i < q.size(); ++i) {
      q[i] = static_cast<double>(i) / 2000.0;
    }
    for (int method = 0; method < 9; ++method) {
      const Vector v =
          vexel::quantile(x, q, {.weights = w, .method = static_cast<QuantileMethod>(method)});
      EXPECT_TRUE(std::is_sorted(v.begin(), v.end())) << method << " " << scale;
    }
    const auto [min, low, median, high, max] = vexel::five_number(x, {.weights = w});
    EXPECT_TRUE(min <= low && low <= median && median <= high && high <= max) << scale;
  }
}

TEST(Statistics, OfInfinitePointsAreFiniteWhereTheyMayBe) {
  const Vector x = {-kInfinity, 1, 2, 3, 4, kInfinity};
  EXPECT_EQ(vexel::median(x), 2.5);
  EXPECT_EQ(vexel::quantile(x, 0.0), -kInfinity);
  EXPECT_EQ(vexel::quantile(x, 0.25), 1.25);
  EXPECT_EQ(vexel::trimmed_mean(x, 0.2), 2.5);
  EXPECT_EQ(vexel::winsorized_mean(x, 0.2), 2.5);
  EXPECT_EQ(vexel::median_absolute_deviation(x), 1.5);
  EXPECT_EQ(vexel::mean({1, kInfinity}), kInfinity);
  EXPECT_TRUE(std::isnan(vexel::mean(x)));
  EXPECT_EQ(vexel::mean({1, kInfinity}, {.kind = Mean::harmonic}), 2.0);
  EXPECT_EQ(vexel::mean({0, 1}, {.kind = Mean::geometric}), 0.0);
  EXPECT_TRUE(std::isnan(vexel::mean({-1, 1}, {.kind = Mean::geometric})));
  EXPECT_TRUE(std::isnan(vexel::var({1, kInfinity})));
  EXPECT_EQ(vexel::moment({1, kInfinity}, 2, {.center = 0.0}), kInfinity);
  EXPECT_EQ(vexel::corr({1, 2, 3, 4}, {1, 2, 4, kInfinity}, {.method = Correlation::kendall}), 1.0);
}

TEST(Statistics, OfEqualPointsHaveNoSpread) {
  const Vector x(1001, 0.1);
  EXPECT_EQ(vexel::mean(x), 0.1);
  EXPECT_EQ(vexel::var(x), 0.0);
  EXPECT_EQ(vexel::moment(x, 4), 0.0);
  EXPECT_EQ(vexel::cov(x, x), 0.0);
  EXPECT_EQ(vexel::mean_absolute_deviation(x), 0.0);
  EXPECT_TRUE(std::isnan(vexel::skewness(x)));
  EXPECT_TRUE(std::isnan(vexel::corr(x, x)));
}

TEST(Statistics, OfTwoOrThreePointsDivideByWhatThereIs) {
  EXPECT_TRUE(std::isnan(vexel::var({1})));
  EXPECT_EQ(vexel::var({1}, {.ddof = 0}), 0.0);
  EXPECT_TRUE(std::isnan(vexel::skewness({1, 2}, {.bias = false})));
  EXPECT_TRUE(std::isnan(vexel::kurtosis({1, 2, 4}, {.bias = false})));
  EXPECT_TRUE(std::isnan(vexel::trimmed_mean({1, 2}, 0.5)));
}

TEST(Statistics, RefuseParametersOutOfRange) {
  const Vector x = {1, 2, 3};
  EXPECT_THROW(vexel::quantile(x, 1.5), std::domain_error);
  EXPECT_THROW(vexel::order_statistic(x, 0), std::domain_error);
  EXPECT_THROW(vexel::order_statistic(x, 4), std::domain_error);
  EXPECT_THROW(vexel::moment(x, -1), std::domain_error);
  EXPECT_THROW(vexel::moment(x, 65), std::domain_error);
  EXPECT_THROW(vexel::trimmed_mean(x, 0.6), std::domain_error);
  EXPECT_THROW(vexel::trimmed_mean(x, kNaN), std::domain_error);
  EXPECT_THROW(vexel::cov(x, {1, 2}), std::length_error);
  EXPECT_TRUE(std::isnan(vexel::quantile(x, kNaN)));
}

TEST(Covariance, OfColumnsIsThatOfPairs) {
  const Vector x = points(100, 11);
  Vector y = points(100, 12);
  const Vector z = points(100, 13);
  y[50] = kNaN;
  const Data columns[] = {x, y, z};
  const auto propagated = vexel::corr(columns);
  EXPECT_EQ(propagated(0, 2), vexel::corr(x, z));
  EXPECT_EQ(propagated(2, 0), propagated(0, 2));
  EXPECT_EQ(propagated(2, 2), 1.0);
  EXPECT_TRUE(std::isnan(propagated(0, 1)) && std::isnan(propagated(1, 1)));
  Vector x99 = x;
  Vector z99 = z;
  x99.erase(x99.begin() + 50);
  z99.erase(z99.begin() + 50);
  expectNear(vexel::cov(columns, {.missing = Missing::omit})(0, 2), vexel::cov(x99, z99), 4 * kUlp,
             "complete rows");
}

TEST(Describe, PrintsATable) {
  const Vector x = {1, 2, 3, 4, kNaN, 90};
  const auto d = vexel::describe(x);
  EXPECT_EQ(d.count, 5.0);
  EXPECT_EQ(d.missing, 1U);
  EXPECT_EQ(d.mean, 20.0);
  EXPECT_EQ(d.q1, 2.0);
  EXPECT_EQ(d.std, vexel::std(x, {.missing = Missing::omit}));
  EXPECT_EQ(d.table(),
            "count            5\n"
            "missing          1\n"
            "mean            20\n"
            "std        39.1472\n"
            "min              1\n"
            "q1               2\n"
            "median           3\n"
            "q3               4\n"
            "max             90\n"
            "skewness   1.49694\n"
            "kurtosis  0.245924\n");
}

TEST(Statistics, StopWhenTold) {
  const Vector x(5000000, 1.0);
  int calls = 0;
  vexel::Watch watch([&](double done) {
    EXPECT_TRUE(done >= 0.0 && done <= 1.0);
    return ++calls < 2;
  });
  EXPECT_THROW(vexel::median(x), vexel::Interrupted);
}

}  // namespace

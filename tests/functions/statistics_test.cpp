// Descriptive statistics: references, and the properties that hold for every one of them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
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

#include "statistics_points.hpp"

namespace {

using vexel::Correlation;
using vexel::Data;
using vexel::Mean;
using vexel::Missing;
using vexel::QuantileMethod;

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

TEST(Statistics, DeviationsOfSubnormalsAreRounded) {
  EXPECT_EQ(vexel::std(Data({5e-324, 0})), 5e-324);
  EXPECT_EQ(vexel::std(Data({5e-324, 0, 0, 0})), 0.0);  // half of it: the tie goes to even
  EXPECT_EQ(vexel::std(Data({1e-322, 1e-322})), 0.0);
  EXPECT_EQ(vexel::std(Data({1e-310, 0})), std::sqrt(0.5) * 1e-310);
}

}  // namespace

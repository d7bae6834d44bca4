// What is computed of many variables at once has the bits of one variable after the other.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>
#include <vexel/columns.hpp>
#include <vexel/descriptive.hpp>
#include <vexel/interruption.hpp>

namespace {

using vexel::Columns;
using vexel::ColumnsOut;
using vexel::Data;
using vexel::Missing;
using vexel::QuantileMethod;
using Vector = std::vector<double>;

// Columns with sums that cancel, overflow, vanish, meet the middle of two doubles, with what is
// missing, with one value throughout, and far from 0.
Vector hardTable(std::size_t rows, std::size_t width) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  Vector table(rows * width);
  for (std::size_t i = 0; i < table.size(); ++i) {
    const std::size_t column = i % width;
    const std::size_t row = i / width;
    const double x = normal(random);
    table[i] = column == 1   ? std::ldexp(x, static_cast<int>(random() % 600) - 300)
               : column == 2 ? (row % 2 == 0 ? 1.0 : 1.0 + 0x1p-52)
               : column == 3 ? (row % 2 == 0 ? 1e300 : 1.0 - 1e300) * 1e8
               : column == 4 ? 5e-324 * std::floor(3.0 * x)
               : column == 5 ? 0.0 * x
               : column == 6 ? (random() % 50 == 0 ? std::nan("") : std::floor(3.0 * x))
               : column == 7 ? 1e9 + x
               : column == 8 ? 1.25
               : column == 9 ? (row == 0 ? 1e150 : x)
                             : x;
  }
  return table;
}

bool same(double a, double b) {
  return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b) ||
         (std::isnan(a) && std::isnan(b));
}

// Numbers of all columns, those of number i together, and those of one variable.
struct Function {
  std::string name;
  std::function<void(const Columns& columns, Vector& out)> many;
  std::function<Vector(Data x)> alone;
};

std::vector<Function> moments(Missing missing) {
  const vexel::MeanOptions mean{.missing = missing};
  std::vector<Function> all{{"mean",
                             [=](const Columns& c, Vector& out) { vexel::mean(c, out, mean); },
                             [=](Data x) { return Vector{vexel::mean(x, mean)}; }}};
  for (const double ddof : {1.0, 0.25, 3.0}) {
    const vexel::VarianceOptions options{.ddof = ddof, .missing = missing};
    all.push_back({"var", [=](const Columns& c, Vector& out) { vexel::var(c, out, options); },
                   [=](Data x) { return Vector{vexel::var(x, options)}; }});
    all.push_back({"std", [=](const Columns& c, Vector& out) { vexel::std(c, out, options); },
                   [=](Data x) { return Vector{vexel::std(x, options)}; }});
  }
  return all;
}

Function quantiles(const Vector& q, const vexel::QuantileOptions& options) {
  return {"quantile", [=](const Columns& c, Vector& out) { vexel::quantile(c, q, out, options); },
          [=](Data x) { return vexel::quantile(x, q, options); }};
}

std::vector<Function> orders(Missing missing) {
  const vexel::WeightedOptions plain{.missing = missing};
  const vexel::MedianDeviationOptions scaled{.scale = 1.4826, .missing = missing};
  std::vector<Function> all{
      {"median", [=](const Columns& c, Vector& out) { vexel::median(c, out, plain); },
       [=](Data x) { return Vector{vexel::median(x, plain)}; }},
      {"iqr", [=](const Columns& c, Vector& out) { vexel::iqr(c, out, {.missing = missing}); },
       [=](Data x) { return Vector{vexel::iqr(x, {.missing = missing})}; }},
      {"median_absolute_deviation",
       [=](const Columns& c, Vector& out) { vexel::median_absolute_deviation(c, out, scaled); },
       [=](Data x) { return Vector{vexel::median_absolute_deviation(x, scaled)}; }},
      {"five_number",
       [=](const Columns& c, Vector& out) {
         std::vector<vexel::FiveNumber> fives(c.count());
         vexel::five_number(c, fives, plain);
         for (std::size_t j = 0; j < fives.size(); ++j) {
           out[j] = fives[j].lower_hinge;
           out[fives.size() + j] = fives[j].max;
         }
       },
       [=](Data x) {
         const vexel::FiveNumber five = vexel::five_number(x, plain);
         return Vector{five.lower_hinge, five.max};
       }},
      quantiles({0.0}, {.missing = missing}),
      quantiles({1.0, 0.0}, {.missing = missing}),
      quantiles({}, {})};
  for (const QuantileMethod method :
       {QuantileMethod::averaged_inverted_cdf, QuantileMethod::closest_observation,
        QuantileMethod::weibull, QuantileMethod::linear}) {
    all.push_back(
        quantiles({0.1, std::nan(""), 0.5, 0.93}, {.method = method, .missing = missing}));
  }
  return all;
}

void expectTheSameAlone(const std::vector<Function>& functions, const Columns& columns,
                        const std::string& what) {
  for (const Function& f : functions) {
    const std::size_t each = f.alone(Data(Vector{1.0, 2.0})).size();
    Vector found(each * columns.count());
    f.many(columns, found);
    for (std::size_t j = 0; j < columns.count(); ++j) {
      const Vector expected = f.alone(columns[j]);
      for (std::size_t i = 0; i < each; ++i) {
        const double here = found[i * columns.count() + j];
        ASSERT_TRUE(same(here, expected[i])) << f.name << what << ", column " << j << ", number "
                                             << i << ": " << here << " and " << expected[i];
      }
    }
  }
}

// As doubles, floats and integers; columns, some of them, rows, and from below.
void expectTheSameOfTable(const std::vector<Function>& functions, const Vector& table,
                          std::size_t rows, std::size_t width) {
  const std::vector<float> narrow(table.begin(), table.end());
  std::vector<std::int32_t> whole(table.size());
  std::transform(table.begin(), table.end(), whole.begin(),
                 [](double x) { return std::fabs(x) < 9 ? static_cast<int>(99 * x) : 0; });
  std::vector<std::int64_t> large(whole.begin(), whole.end());
  for (std::int64_t& x : large) {
    x *= std::int64_t{1} << 52;
  }
  const auto stride = static_cast<std::ptrdiff_t>(width);
  const std::string what = " of " + std::to_string(rows) + " x " + std::to_string(width);
  expectTheSameAlone(functions, {Data(table.data(), rows, stride), width}, what);
  expectTheSameAlone(functions, {Data(table.data(), rows, stride), width - width / 3},
                     what + " in part");
  expectTheSameAlone(functions, {Data(table.data(), rows, stride), (width + 1) / 2, 2},
                     what + ", every other one");
  expectTheSameAlone(functions, {Data(narrow.data(), rows, stride), width}, what + " of floats");
  expectTheSameAlone(functions, {Data(narrow.data(), width), rows, stride},
                     what + " of floats, along them");
  expectTheSameAlone(functions, {Data(whole.data(), rows, stride), width}, what + " of integers");
  expectTheSameAlone(functions, {Data(large.data(), width), rows, stride},
                     what + " of large integers, along them");
  expectTheSameAlone(functions, {Data(table.data(), width), rows, stride}, what + ", along them");
  if (rows > 0) {
    expectTheSameAlone(functions, {Data(table.data() + (rows - 1) * width, rows, -stride), width},
                       what + " from below");
  }
}

TEST(Columns, MomentsHaveTheBitsOfColumnsAlone) {
  for (const std::size_t width : {1, 8, 13, 150}) {
    for (std::size_t rows = 0; rows < 5000 && rows * width < 100000; rows = 2 * rows + 1) {
      for (const Missing missing : {Missing::propagate, Missing::omit}) {
        expectTheSameOfTable(moments(missing), hardTable(rows, width), rows, width);
      }
    }
  }
}

TEST(Columns, OrderStatisticsHaveTheBitsOfColumnsAlone) {
  for (const std::size_t width : {1, 8, 13, 150}) {
    for (std::size_t rows = 0; rows < 1100 && rows * width < 40000; rows = 2 * rows + 1) {
      Vector table = hardTable(rows, width);
      for (std::size_t i = 0; i < table.size(); ++i) {
        const std::size_t column = i % width;
        if (column == 9 && i % 5 == 0) {
          table[i] = (i % 2 == 0 ? 1.0 : -1.0) * std::numeric_limits<double>::infinity();
        } else if (column == 10) {
          table[i] = std::round(table[i]);  // zeros of both signs
        } else if (column == 11) {
          table[i] = std::nan("");
        } else if (column == 12) {
          table[i] = std::floor(std::fabs(table[i])) * (i % 3 == 0 ? -0.0 : -1.0);
        }
      }
      for (const Missing missing : {Missing::propagate, Missing::omit}) {
        expectTheSameOfTable(orders(missing), table, rows, width);
      }
    }
  }
}

// As numbers 0 to n - 1 of each column: the results of its elements, along columns and across.
template <typename T, typename Many, typename Alone>
void expectSameElements(const Columns& columns, Many many, Alone alone, const std::string& what) {
  const std::size_t n = columns.first().size();
  const std::size_t count = columns.count();
  std::vector<T> down(n * count), across(n * count), one(n);
  many(ColumnsOut<T>{down.data(), 1, static_cast<std::ptrdiff_t>(n)});
  many(ColumnsOut<T>{across.data(), static_cast<std::ptrdiff_t>(count), 1});
  for (std::size_t j = 0; j < count; ++j) {
    alone(columns[j], one);
    for (std::size_t i = 0; i < n; ++i) {
      const double expected = static_cast<double>(one[i]);
      ASSERT_TRUE(same(static_cast<double>(down[j * n + i]), expected) &&
                  same(static_cast<double>(across[i * count + j]), expected))
          << what << " of " << n << ", column " << j << ", element " << i << ": " << expected;
    }
  }
}

template <typename T>
void expectSameOrders(const Columns& columns) {
  const auto sorting = [&](const ColumnsOut<T>& out) { vexel::sort<T>(columns, out); };
  expectSameElements<T>(
      columns, sorting, [](Data x, auto& out) { vexel::sort<T>(x, std::span<T>(out)); }, "sort");
  expectSameElements<std::int64_t>(
      columns, [&](const ColumnsOut<std::int64_t>& out) { vexel::argsort(columns, out); },
      [](Data x, auto& out) { vexel::argsort(x, std::span<std::int64_t>(out)); }, "argsort");
  for (const vexel::RankMethod method :
       {vexel::RankMethod::average, vexel::RankMethod::min, vexel::RankMethod::max,
        vexel::RankMethod::dense, vexel::RankMethod::ordinal}) {
    expectSameElements<double>(
        columns, [&](const ColumnsOut<double>& out) { vexel::rank(columns, out, {method}); },
        [&](Data x, auto& out) { vexel::rank(x, std::span<double>(out), {method}); }, "rank");
  }
}

TEST(Columns, OrdersAreThoseOfColumnsAlone) {
  for (const std::size_t width : {1, 8, 13, 50}) {
    for (std::size_t rows = 0; rows < 600; rows = 3 * rows + 2) {
      Vector table = hardTable(rows, width);
      for (std::size_t i = 0; i < table.size(); i += 3) {
        table[i] = std::round(table[i]);
      }
      const auto stride = static_cast<std::ptrdiff_t>(width);
      const std::vector<float> narrow(table.begin(), table.end());
      std::vector<std::int64_t> large(table.size());
      std::transform(table.begin(), table.end(), large.begin(), [](double x) {
        return std::fabs(x) < 9 ? (std::int64_t{1} << 53) + static_cast<std::int64_t>(x) : 1;
      });
      const std::vector<std::int32_t> whole(large.begin(), large.end());
      expectSameOrders<double>({Data(table.data(), rows, stride), width});
      expectSameOrders<double>({Data(table.data(), width), rows, stride});
      expectSameOrders<float>({Data(narrow.data(), rows, stride), width});
      expectSameOrders<float>({Data(narrow.data(), width), rows, stride});
      expectSameOrders<std::int32_t>({Data(whole.data(), rows, stride), width});
      expectSameOrders<std::int64_t>({Data(large.data(), width), rows, stride});
    }
  }
}

TEST(Columns, RefuseWhatOneOfThemWouldRefuse) {
  const Vector table = {1.0, std::nan(""), 3.0, std::nan(""), 5.0, std::nan("")};
  const Columns columns(Data(table.data(), 3, 2), 2);
  Vector out(2);
  const std::int64_t fourth = 4;
  EXPECT_THROW(vexel::order_statistic(columns, {&fourth, 1}, out), std::domain_error);
  vexel::order_statistic({Data(table.data() + 1, 3, 2), 1}, {&fourth, 1}, std::span(out).first(1));
  EXPECT_TRUE(std::isnan(out[0]));
  EXPECT_THROW(vexel::median(columns, out, {.missing = Missing::raise}), std::invalid_argument);
  EXPECT_THROW(vexel::quantile(columns, {1.5}, out), std::domain_error);
  EXPECT_THROW(vexel::quantile(columns, {0.0}, out, {.missing = Missing::raise}),
               std::invalid_argument);
  EXPECT_THROW(vexel::quantile(columns, {0.0, 0.5}, out), std::length_error);
  Vector places(6);
  EXPECT_THROW(vexel::rank(columns, {places.data(), 1, 3}, {.missing = Missing::raise}),
               std::invalid_argument);
  vexel::sort<double>(columns, {places.data(), 1, 3}, {.missing = Missing::omit});
  EXPECT_THAT(places,
              testing::Pointwise(testing::NanSensitiveDoubleEq(), Vector{1, 3, 5, NAN, NAN, NAN}));
  EXPECT_THROW(vexel::mean(columns, std::span(out).first(1)), std::length_error);
  const Vector weights = {1.0, 2.0, 0.0};
  vexel::median(columns, out, {.weights = weights});
  EXPECT_EQ(out[0], vexel::median(columns[0], {.weights = weights}));
}

// Of columns that are long, or many.
TEST(Columns, LookAtTheWatch) {
  const Vector table(std::size_t{1} << 24);
  Vector out(table.size() / 8);
  for (const std::size_t length : {8, 256, 1 << 20}) {
    const Columns lanes(Data(table.data(), length), table.size() / length,
                        static_cast<std::ptrdiff_t>(length));
    for (const double q : {0.0, 0.5}) {
      int looks = 0;
      {
        const vexel::Watch watch([&](double) {
          ++looks;
          return true;
        });
        vexel::quantile(lanes, {q}, std::span(out).first(lanes.count()));
      }
      EXPECT_GE(looks, 4) << length << ", " << q;
    }
  }
}

}  // namespace

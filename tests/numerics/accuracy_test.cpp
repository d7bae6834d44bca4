// Probabilities and quantiles against the high-precision values of
// tests/reference/data/accuracy.txt: relative errors within 1e-14 max(1, k) and 1e-14 max(1, 1/k),
// k the condition number of the point.

#include <gtest/gtest.h>
#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr double kGoal = 1e-14;

struct Point {
  std::string line;
  std::string name;
  bool lower = true;
  std::vector<double> at;  // parameters
  double x = 0.0;
  double high = 0.0;  // the probability, in two parts
  double low = 0.0;
  double density = 0.0;

  Nag_TailProbability tail() const { return lower ? Nag_LowerTail : Nag_UpperTail; }
  double condition() const { return std::fabs(x * density / high); }
};

std::vector<Point> readPoints() {
  std::vector<Point> points;
  std::ifstream file(TEST_DATA_DIR "/accuracy.txt");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) {
      continue;
    }
    Point point;
    point.line = line;
    std::istringstream text(line);
    std::string tail;
    text >> point.name >> tail;
    point.lower = tail == "L";
    for (std::string number; text >> number;) {
      point.at.push_back(std::strtod(number.c_str(), nullptr));
    }
    const auto rest = point.at.end() - 4;
    point.x = rest[0];
    point.high = rest[1];
    point.low = rest[2];
    point.density = rest[3];
    point.at.erase(rest, point.at.end());
    points.push_back(point);
  }
  return points;
}

// A discrete function's tail.
template <typename Function>
double tailOf(const Point& point, Function function) {
  double le = 0.0;
  double gt = 0.0;
  double eq = 0.0;
  function(static_cast<int64_t>(point.x), &le, &gt, &eq);
  EXPECT_LT(std::fabs(eq / point.density - 1.0), 2 * kGoal) << point.line;
  return point.lower ? le : gt;
}

double probability(const Point& point, NagError* fail) {
  const std::vector<double>& p = point.at;
  const double x = point.x;
  const auto whole = [&](size_t i) { return static_cast<int64_t>(p[i]); };
  static const std::map<std::string, int> order{{"normal", 0},         {"student", 1},
                                                {"gamma", 2},          {"chi_square", 3},
                                                {"beta", 4},           {"f", 5},
                                                {"poisson", 6},        {"binomial", 7},
                                                {"noncentral_t", 8},   {"noncentral_chi_square", 9},
                                                {"noncentral_f", 10},  {"noncentral_beta", 11},
                                                {"hypergeometric", 12}};
  switch (order.at(point.name)) {
    case 0:
      return nag2_normal_probability(point.tail(), x, fail);
    case 1:
      return nag2_student_t_probability(point.tail(), x, p[0], fail);
    case 2:
      return nag2_gamma_probability(point.tail(), x, p[0], 1.0, fail);
    case 3:
      return nag2_chi_square_probability(point.tail(), x, p[0], fail);
    case 4:
      return nag2_beta_probability(x, p[0], p[1], 0.0, fail);
    case 5:
      return nag2_f_probability(point.tail(), x, p[0], p[1], fail);
    case 6:
      return tailOf(point, [&](auto k, auto... out) { nag2_poisson(p[0], k, out..., fail); });
    case 7:
      return tailOf(point,
                    [&](auto k, auto... out) { nag2_binomial(whole(0), p[1], k, out..., fail); });
    case 8:
      return nag2_noncentral_t_probability(x, p[0], p[1], 1e-14, 100, fail);
    case 9:
      return nag2_noncentral_chi_square_probability(x, p[0], p[1], 1e-14, 100, fail);
    case 10:
      return nag2_noncentral_f_probability(x, p[0], p[1], p[2], 1e-14, 100, fail);
    case 11:
      return nag2_noncentral_beta_probability(x, p[0], p[1], p[2], 1e-14, 100, fail);
    default:
      return tailOf(point, [&](auto k, auto... out) {
        nag2_hypergeometric(whole(0), whole(1), whole(2), k, out..., fail);
      });
  }
}

bool hasQuantile(const Point& point) {
  const bool symmetric = point.name == "normal" || point.name == "student";
  const bool central = point.name == "gamma" || point.name == "chi_square" ||
                       point.name == "beta" || point.name == "f";
  return symmetric || (central && point.lower);
}

double quantile(const Point& point, NagError* fail) {
  const std::vector<double>& p = point.at;
  const double u = point.high;
  return point.name == "normal"       ? nag2_normal_quantile(point.tail(), u, fail)
         : point.name == "student"    ? nag2_student_t_quantile(point.tail(), u, p[0], fail)
         : point.name == "gamma"      ? nag2_gamma_quantile(u, p[0], 1.0, 0.0, fail)
         : point.name == "chi_square" ? nag2_chi_square_quantile(u, p[0], fail)
         : point.name == "beta"       ? nag2_beta_quantile(u, p[0], p[1], 0.0, fail)
                                      : nag2_f_quantile(u, p[0], p[1], fail);
}

TEST(Accuracy, ProbabilitiesMeetTheGoal) {
  const std::vector<Point> points = readPoints();
  ASSERT_GT(points.size(), 1000u);
  for (const Point& point : points) {
    NagError fail{};
    const double error = std::fabs((probability(point, &fail) - point.high) - point.low);
    EXPECT_LE(error / point.high, kGoal * std::max(1.0, point.condition())) << point.line;
    EXPECT_EQ(fail.code, NAG2_OK) << point.line << ": " << fail.message;
  }
}

// The quantile of the high part lies low / density before x, to twice double precision.
TEST(Accuracy, QuantilesMeetTheGoal) {
  for (const Point& point : readPoints()) {
    if (!hasQuantile(point)) {
      continue;
    }
    NagError fail{};
    const double shift = (point.lower ? -point.low : point.low) / point.density;
    const double error = std::fabs((quantile(point, &fail) - point.x) - shift);
    EXPECT_LE(error / std::fabs(point.x), kGoal * std::max(1.0, 1.0 / point.condition()))
        << point.line;
    EXPECT_EQ(fail.code, NAG2_OK) << point.line << ": " << fail.message;
  }
}

}  // namespace

// Points at which libraries in wide use throw, give 0 or are wrong in the first digits.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "vexel/distributions.hpp"

namespace {

using namespace vexel;

template <typename L>
double call(const L& law, const std::string& method, double x) {
  return method == "cdf"      ? law.cdf(x)
         : method == "logcdf" ? law.logcdf(x)
         : method == "logsf"  ? law.logsf(x)
                              : law.quantile(x);
}

double value(const std::string& name, const std::string& method, const std::vector<double>& p,
             double x) {
  const auto whole = [&](std::size_t i) { return static_cast<std::int64_t>(p[i]); };
  return name == "Beta"                  ? call(Beta(p[0], p[1]), method, x)
         : name == "Gamma"               ? call(Gamma(p[0], p[1]), method, x)
         : name == "Normal"              ? call(Normal(p[0], p[1]), method, x)
         : name == "StudentT"            ? call(StudentT(p[0]), method, x)
         : name == "Poisson"             ? call(Poisson(p[0]), method, x)
         : name == "Binomial"            ? call(Binomial(whole(0), p[1]), method, x)
         : name == "NonCentralChiSquare" ? call(NonCentralChiSquare(p[0], p[1]), method, x)
         : name == "NonCentralStudentT"  ? call(NonCentralStudentT(p[0], p[1]), method, x)
                                         : NAN;
}

TEST(DistributionHardPoints, HaveTheirValues) {
  std::ifstream file(TEST_DATA_DIR "/hard_points.txt");
  int count = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with('#')) {
      continue;
    }
    std::istringstream words(line);
    std::string name;
    std::string method;
    words >> name >> method;
    std::vector<double> numbers;
    for (std::string word; words >> word;) {
      numbers.push_back(std::stod(word));
    }
    const double exact = numbers.back();
    numbers.pop_back();
    const double x = numbers.back();
    numbers.pop_back();
    // The conditions at these points are up to some hundreds.
    EXPECT_NEAR(value(name, method, numbers, x), exact, 2e-12 * std::fabs(exact)) << line;
    ++count;
  }
  EXPECT_GE(count, 11);
}

// The median within a spacing of the doubles and no sooner than it is reached, for every pair of
// whole parameters: where one library's inverse throws.
TEST(DistributionHardPoints, BetaMediansOfWholeParameters) {
  for (int a = 1; a <= 40; ++a) {
    for (int b = 1; b <= 40; ++b) {
      const Beta law(a, b);
      EXPECT_NEAR(law.cdf(law.quantile(0.5)), 0.5, 3e-15) << a << " " << b;
    }
  }
}

}  // namespace

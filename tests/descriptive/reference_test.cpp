// The descriptive statistics, smoothing and normality against the values of R.

#include <algorithm>
#include <fstream>
#include <sstream>

#include "kernel_test.hpp"

namespace {

class ReferenceTest : public KernelTest {
 protected:
  // Runs a file of statements, and of calls, each followed by a tab and its numbers.  The lines
  // "# relative X" and "# absolute X" say how near the numbers after them are to be; from the
  // start 16 epsilon, the rounding of sums of at most 40 terms, of numbers not below 1.
  void compare(const std::string& name, int atLeast) {
    double relative = 16 * std::numeric_limits<double>::epsilon();
    double absolute = relative;
    std::ifstream file(TEST_DATA_DIR "/" + name);
    int rows = 0;
    for (std::string line; std::getline(file, line);) {
      SCOPED_TRACE(line.substr(0, 200));
      if (line.starts_with('#')) {
        std::istringstream words(line.substr(1));
        std::string kind;
        double tolerance = 0.0;
        words >> kind >> tolerance;
        relative = kind == "relative" ? tolerance : 0.0;
        absolute = kind == "absolute" ? tolerance : 0.0;
        continue;
      }
      const auto tab = line.find('\t');
      const vexel::Value value = eval(line.substr(0, tab) + ":");
      if (tab == std::string::npos) {
        continue;
      }
      ++rows;
      const std::vector<double> got =
          value.isNumeric() ? std::vector<double>{number(value)} : numbers(value);
      std::istringstream expected(line.substr(tab + 1));
      std::size_t i = 0;
      for (double x = 0.0; expected >> x; ++i) {
        ASSERT_LT(i, got.size());
        EXPECT_NEAR(got[i], x, std::max(absolute, relative * std::fabs(x))) << "number " << i + 1;
      }
      EXPECT_EQ(i, got.size());
    }
    EXPECT_GE(rows, atLeast) << "the data file is not where it should be";
  }
};

// Written by tests/reference/r_values.R.
TEST_F(ReferenceTest, StatisticsAgreeWithThoseOfR) { compare("r_values.txt", 90); }

}  // namespace

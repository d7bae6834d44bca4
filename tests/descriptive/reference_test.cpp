// Every entry point of the descriptive statistics against exact arithmetic.

#include <fstream>
#include <sstream>

#include "kernel_test.hpp"

using DescriptiveReferenceTest = KernelTest;

TEST_F(DescriptiveReferenceTest, StatisticsAgreeWithExactArithmetic) {
  // Written by tests/reference/descriptive.py: a call, a tab, the numbers.  The tolerance is the
  // rounding of sums of at most 40 terms, cancellation apart.
  constexpr double kTolerance = 16 * std::numeric_limits<double>::epsilon();
  std::ifstream file(TEST_DATA_DIR "/descriptive.txt");
  int rows = 0;
  for (std::string line; std::getline(file, line); ++rows) {
    const auto tab = line.find('\t');
    ASSERT_NE(tab, std::string::npos);
    SCOPED_TRACE(line);
    const vexel::Value value = eval(line.substr(0, tab) + ":");
    const std::vector<double> got =
        value.isNumeric() ? std::vector<double>{number(value)} : numbers(value);
    std::istringstream expected(line.substr(tab + 1));
    std::size_t i = 0;
    for (double x = 0.0; expected >> x; ++i) {
      ASSERT_LT(i, got.size());
      EXPECT_NEAR(got[i], x, kTolerance * std::max(1.0, std::fabs(x)));
    }
    EXPECT_EQ(i, got.size());
  }
  EXPECT_GE(rows, 200) << "the data file is not where it should be";
}

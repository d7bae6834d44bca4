// The direction numbers that users start from: every polynomial is primitive, every integer fits,
// the dimensions have property A.

#include <gtest/gtest.h>

#include <bitset>
#include <cstdint>
#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Row {
  int degree;
  std::uint32_t code;
  std::vector<std::uint64_t> initial;
};

std::vector<Row> readRows() {
  std::ifstream file(std::string(SOURCE_DIR) + "/functions/sequences/direction_numbers.csv");
  std::vector<Row> rows;
  std::string line;
  std::getline(file, line);
  while (std::getline(file, line)) {
    std::vector<std::uint64_t> fields;
    std::istringstream cells(line);
    for (std::string cell; std::getline(cells, cell, ',') && !cell.empty();) {
      fields.push_back(std::stoull(cell));
    }
    rows.push_back({static_cast<int>(fields[1]),
                    static_cast<std::uint32_t>(fields[2]),
                    {fields.begin() + 3, fields.end()}});
  }
  return rows;
}

// The period of the shift register of the polynomial, found by running it.
std::uint32_t period(int degree, std::uint32_t polynomial) {
  std::uint32_t state = 1;
  std::uint32_t steps = 0;
  do {
    state <<= 1;
    state ^= (state >> degree & 1U) != 0 ? polynomial : 0;
    ++steps;
  } while (state != 1 && steps < 1U << degree);
  return steps;
}

}  // namespace

TEST(DirectionNumbers, PolynomialsArePrimitiveAndInitialIntegersOddAndSmall) {
  const std::vector<Row> rows = readRows();
  ASSERT_GE(rows.size(), 1000U);
  std::set<std::uint32_t> seen;
  for (std::size_t j = 1; j < rows.size(); ++j) {
    const auto& [degree, code, initial] = rows[j];
    const std::uint32_t polynomial = 1U << degree | code << 1 | 1U;
    EXPECT_EQ(period(degree, polynomial), (1U << degree) - 1) << "dimension " << j + 1;
    EXPECT_TRUE(seen.insert(polynomial).second) << "dimension " << j + 1;
    ASSERT_EQ(initial.size(), static_cast<std::size_t>(degree));
    for (int k = 0; k < degree; ++k) {
      EXPECT_EQ(initial[k] & 1U, 1U);
      EXPECT_LT(initial[k], std::uint64_t{2} << k);
    }
  }
}

// The first 2^d points of d dimensions hit each of the cube's 2^d orthants once (I. M. Sobol,
// Uniformly distributed sequences with an additional uniform property, 1976): the leading bits of
// the direction integers make a nonsingular matrix over GF(2), for every d.
TEST(DirectionNumbers, PointsHitEveryOrthantOfEveryDimension) {
  constexpr int kDimensions = 1111;
  const std::vector<Row> rows = readRows();
  ASSERT_GE(rows.size(), std::size_t{kDimensions});
  std::vector<std::bitset<kDimensions>> reduced;
  for (int j = 0; j < kDimensions; ++j) {
    const auto& [degree, code, initial] = rows[j];
    std::bitset<kDimensions> bits;
    for (int k = 0; k < kDimensions; ++k) {
      if (k < static_cast<int>(initial.size())) {
        bits[k] = (initial[k] >> k & 1U) != 0;
        continue;
      }
      bool bit = degree > 0 && bits[k - degree];
      for (int t = 1; t < degree; ++t) {
        bit ^= (code >> (t - 1) & 1U) != 0 && bits[k - degree + t];
      }
      bits[k] = bit;
    }
    for (int i = 0; i < j; ++i) {
      if (bits[i]) {
        bits ^= reduced[i];
      }
    }
    ASSERT_TRUE(bits[j]) << "dimension " << j + 1;
    reduced.push_back(bits);
  }
}

// Points to compute statistics of, and comparing what comes out.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

inline constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
using Vector = std::vector<double>;

// Positive multiples of 1/8 with ties, so that shifts and scales are exact.
inline Vector points(std::size_t n, unsigned seed) {
  std::mt19937_64 random(seed);
  Vector x(n);
  std::generate(x.begin(), x.end(), [&] { return static_cast<double>(random() % 400 + 1) / 8.0; });
  return x;
}

inline void expectNear(double value, double expected, double tolerance, const std::string& what) {
  if (std::isnan(expected) || std::isinf(expected)) {
    EXPECT_THAT(value, testing::NanSensitiveDoubleEq(expected)) << what;
  } else {
    EXPECT_LE(std::fabs(value - expected), tolerance * std::fabs(expected)) << what << " " << value;
  }
}

inline constexpr double kUlp = 0x1p-52;

// Real Fourier transforms against the defining sum in extended precision.

#include <gtest/gtest.h>
#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <numbers>
#include <random>
#include <vector>

namespace {

std::vector<double> normals(int m) {
  std::mt19937_64 random(static_cast<unsigned>(m));
  std::normal_distribution<double> draw;
  std::vector<double> x(static_cast<std::size_t>(m));
  for (double& v : x) {
    v = draw(random);
  }
  return x;
}

std::vector<double> definition(const std::vector<double>& x) {
  const std::size_t m = x.size();
  std::vector<double> z(m);
  for (std::size_t k = 0; 2 * k <= m; ++k) {
    long double re = 0.0L;
    long double im = 0.0L;
    for (std::size_t j = 0; j < m; ++j) {
      const long double angle = 2.0L * std::numbers::pi_v<long double> *
                                static_cast<long double>(j * k % m) / static_cast<long double>(m);
      re += x[j] * std::cos(angle);
      im -= x[j] * std::sin(angle);
    }
    const long double scale = 1.0L / std::sqrt(static_cast<long double>(m));
    z[k] = static_cast<double>(re * scale);
    if (k != 0 && 2 * k != m) {
      z[m - k] = static_cast<double>(im * scale);
    }
  }
  return z;
}

double largestDifference(const std::vector<double>& a, const std::vector<double>& b) {
  double largest = 0.0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    largest = std::max(largest, std::abs(a[i] - b[i]));
  }
  return largest;
}

void roundTrip(std::vector<double>& x) {
  const int m = static_cast<int>(x.size());
  std::vector<double> work(x.size());
  int ifail = -1;
  q64883(x.data(), &m, work.data(), &ifail);
  ASSERT_EQ(ifail, 0);
  q33150(x.data(), &m, &ifail);
  ASSERT_EQ(ifail, 0);
  q42899(x.data(), &m, work.data(), &ifail);
  ASSERT_EQ(ifail, 0);
}

TEST(Fourier, IsTheDefiningSumForEveryShortLength) {
  for (int m = 1; m <= 300; ++m) {
    std::vector<double> x = normals(m);
    const std::vector<double> wanted = definition(x);
    std::vector<double> work(x.size());
    int ifail = -1;
    q64883(x.data(), &m, work.data(), &ifail);
    EXPECT_EQ(ifail, 0);
    EXPECT_LT(largestDifference(x, wanted), 1e-14) << "length " << m;
  }
}

// Powers, products of small primes, primes and twice primes: all of them in about the same time.
TEST(Fourier, TransformConjugateTransformIsTheIdentity) {
  for (int m : {4096, 4095, 5040, 65536, 65537, 131074, 100003, 177147, 2 * 3 * 5 * 7 * 11 * 13}) {
    std::vector<double> x = normals(m);
    const std::vector<double> original = x;
    roundTrip(x);
    EXPECT_LT(largestDifference(x, original), 2e-14) << "length " << m;
  }
}

TEST(Fourier, AnEmptySequenceIsAFailure) {
  const int m = 0;
  double x = 1.0;
  int ifail = 0;
  q64883(&x, &m, &x, &ifail);
  EXPECT_NE(ifail, 0);
  q33150(&x, &m, &ifail);
  EXPECT_NE(ifail, 0);
  EXPECT_EQ(x, 1.0);
}

}  // namespace

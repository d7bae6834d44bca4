// Kernels give the same bits with every set of instructions, for every length and alignment.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <functional>
#include <random>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "kernels/filter.hpp"
#include "kernels/moving_sums.hpp"
#include "kernels/normal.hpp"
#include "kernels/vector/column_extremes.hpp"
#include "kernels/vector/column_order.hpp"
#include "kernels/vector/columns.hpp"
#include "kernels/vector/convolution.hpp"
#include "kernels/vector/power_columns.hpp"
#include "kernels/vector/powers.hpp"
#include "kernels/vector/presence.hpp"
#include "kernels/vector/row_copies.hpp"
#include "kernels/vector/selection.hpp"
#include "kernels/vector/sums.hpp"

#ifdef VEXEL_HAVE_HIGHWAY
#include <hwy/targets.h>
#endif

// The same sources compiled without the Highway library; plain_kernels.cpp has them.
namespace vexel::plain_kernels {
struct BracketCounts {
  std::int64_t belowLow, toLow, belowHigh, toHigh;
};
void sumInLanes(const double* x, std::size_t n, double* lanes);
bool sumInLanesExactly(const double* x, std::size_t n, double* lanes);
bool weightedSumsInLanes(const double* x, const double* w, std::size_t n, double* products,
                         double* weights);
void squaresInLanes(const double* x, const double* w, std::size_t n, double center, double* first,
                    double* second);
void addColumns(const double* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                std::size_t pitch, double* sums);
void meansOfLanes(const double* sums, std::size_t width, std::ptrdiff_t pitch, std::size_t n,
                  double* mean, std::uint8_t* sure);
bool foldFloats(const float* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                double* sums);
void addSquaresOfColumns(const double* x, std::ptrdiff_t stride, std::size_t n, std::size_t width,
                         std::size_t pitch, const double* center, double* sums);
void variancesOfSums(const double* sums, std::size_t width, std::size_t pitch, double n,
                     double divisor, bool root, double* out, std::uint8_t* sure);
void powersInLanes(const double* x, std::size_t n, double center, double* sums);
void productsInLanes(const double* x, const double* y, std::size_t n, double xCenter,
                     double yCenter, double* xSums, double* ySums, double* products);
void sumBetween(const double* x, std::size_t n, double low, double high, BracketCounts& counts,
                double* lanes);
std::size_t countAndCollect(const double* x, std::size_t n, double low, double high,
                            BracketCounts& counts, double* between);
void cellsOf(const double* x, std::size_t n, double base, double scale, std::int32_t cells,
             std::int32_t* to);
struct Exchange {
  std::uint16_t low, high;
};
struct StripFacts {
  double missing[8], negativeZeros[8];
};
enum class End : std::uint8_t { least, greatest };
void copyRows(const double* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
              std::size_t width, std::size_t pitch, double* to);
void copyRows(const float* x, std::ptrdiff_t stride, std::ptrdiff_t apart, std::size_t n,
              std::size_t width, std::size_t pitch, double* to);
void lookAtStrip(double* rows, std::size_t n, StripFacts& facts);
void exchangeInStrip(double* rows, std::span<const Exchange> exchanges);
void exchangeWithPlaces(double* rows, double* places, std::span<const Exchange> exchanges);
void extremesOfRows(End end, const double* x, std::ptrdiff_t stride, std::size_t n,
                    std::size_t width, double* extremes, std::uint8_t* missing);
void extremesOfRows(End end, const float* x, std::ptrdiff_t stride, std::size_t n,
                    std::size_t width, float* extremes, std::uint8_t* missing);
void extremesOfLanes(End end, const double* x, std::ptrdiff_t apart, std::size_t n,
                     std::size_t count, double* extremes, std::uint8_t* missing);
void extremesOfLanes(End end, const float* x, std::ptrdiff_t apart, std::size_t n,
                     std::size_t count, float* extremes, std::uint8_t* missing);
bool normalCdfs(const double* z, std::size_t n, double* out);
void normalQuantiles(const double* p, std::size_t n, double* out);
void filterStretch(const double* x, std::size_t n, std::span<const double> taps, double* out);
void convolve(const double* x, std::size_t n, const double* weights, std::size_t m, double* out);
bool movingSums(const double* x, std::size_t results, std::size_t window, bool means, double* out);
}  // namespace vexel::plain_kernels

namespace {

using Vector = std::vector<double>;

// Between 0 and 1, near the ends too.
Vector probabilities(const double* x, std::size_t n) {
  Vector p(x, x + n);
  for (double& v : p) {
    v = v < 0.0 ? 0.5 / (1.0 - v) : 1.0 - 0.5 / (1.0 + v);
    v = v < 1.0 ? v : 0.5;
  }
  return p;
}

// What the kernels for columns say of a block, cut into columns in several ways.
#define ORDERS(space)                                                                      \
  [](const double* x, const double*, std::size_t n) {                                      \
    Vector all;                                                                            \
    const std::size_t rows = std::min(n / 8, std::size_t{150});                            \
    Vector numbers(x, x + n);                                                              \
    for (std::size_t i = 0; i < n; i += 29) {                                              \
      numbers[i] = i % 2 == 0 ? -0.0 : std::nan("");                                       \
    }                                                                                      \
    const std::vector<float> narrow(numbers.begin(), numbers.end());                       \
    const auto gap = static_cast<std::ptrdiff_t>(rows);                                    \
    for (const std::size_t width : {1, 5, 8}) {                                            \
      Vector strip(8 * rows);                                                              \
      const auto keep = [&](auto* from, std::ptrdiff_t stride, std::ptrdiff_t apart) {     \
        space::copyRows(from, stride, apart, rows, width, 8, strip.data());                \
        all.insert(all.end(), strip.begin(), strip.end());                                 \
      };                                                                                   \
      keep(narrow.data(), 1, gap);                                                         \
      keep(narrow.data(), 8, 1);                                                           \
      keep(numbers.data(), 8, 1);                                                          \
      keep(numbers.data(), 1, gap);                                                        \
      space::StripFacts facts;                                                             \
      space::lookAtStrip(strip.data(), rows, facts);                                       \
      all.insert(all.end(), facts.missing, facts.missing + 8);                             \
      all.insert(all.end(), facts.negativeZeros, facts.negativeZeros + 8);                 \
      std::vector<space::Exchange> network;                                                \
      for (const auto& e : vexel::kernels::sortingNetwork(rows)) {                         \
        network.push_back({e.low, e.high});                                                \
      }                                                                                    \
      Vector some = strip, places(strip.size());                                           \
      for (std::size_t i = 0; i < some.size(); ++i) {                                      \
        some[i] = i % 3 == 0 ? -0.0 : std::round(some[i]);                                 \
        places[i] = static_cast<double>(i / 8);                                            \
      }                                                                                    \
      space::exchangeWithPlaces(some.data(), places.data(), network);                      \
      all.insert(all.end(), some.begin(), some.end());                                     \
      all.insert(all.end(), places.begin(), places.end());                                 \
      space::exchangeInStrip(strip.data(), network);                                       \
      all.insert(all.end(), strip.begin(), strip.end());                                   \
    }                                                                                      \
    const std::vector<float> finite(x, x + n);                                             \
    for (const std::size_t width : {3, 20, 37}) {                                          \
      Vector sums(width);                                                                  \
      const std::size_t some = std::min(n / width, std::size_t{64});                       \
      const auto pace = static_cast<std::ptrdiff_t>(width);                                \
      const bool exact = space::foldFloats(finite.data(), pace, some, width, sums.data()); \
      all.push_back(exact);                                                                \
      all.insert(all.end(), sums.begin(), exact ? sums.end() : sums.begin());              \
    }                                                                                      \
    for (const std::size_t width : {1, 5, 12, 40}) {                                       \
      for (const space::End end : {space::End::least, space::End::greatest}) {             \
        const auto keep = [&](auto find, auto* from, std::size_t pace, std::size_t size) { \
          std::vector<std::remove_cvref_t<decltype(*from)>> ends(width);                   \
          std::vector<std::uint8_t> missing(width);                                        \
          find(end, from, static_cast<std::ptrdiff_t>(pace), size, width, ends.data(),     \
               missing.data());                                                            \
          all.insert(all.end(), ends.begin(), ends.end());                                 \
          all.insert(all.end(), missing.begin(), missing.end());                           \
        };                                                                                 \
        const auto ofRows = [](auto... a) { space::extremesOfRows(a...); };                \
        const auto ofLanes = [](auto... a) { space::extremesOfLanes(a...); };              \
        keep(ofRows, numbers.data(), width, n / width);                                    \
        keep(ofRows, narrow.data(), width, n / width);                                     \
        keep(ofLanes, numbers.data(), n / width, n / width);                               \
        keep(ofLanes, narrow.data(), n / width, n / width);                                \
      }                                                                                    \
    }                                                                                      \
    return all;                                                                            \
  }

// Everything else that the kernels say of a block, one number after the other.
#define EVERYTHING(space)                                                                     \
  [](const double* x, const double* w, std::size_t n) {                                       \
    Vector all(13 * 32);                                                                      \
    double* const at = all.data();                                                            \
    space::sumInLanes(x, n, at);                                                              \
    at[32] = space::sumInLanesExactly(x, n, at + 64);                                         \
    at[33] = space::weightedSumsInLanes(x, w, n, at + 96, at + 128);                          \
    space::squaresInLanes(x, nullptr, n, 0.3, at + 160, at + 192);                            \
    space::squaresInLanes(x, w, n, 0.3, at + 224, at + 256);                                  \
    space::powersInLanes(x, n, 0.3, at + 288);                                                \
    space::productsInLanes(x, w, n, 0.3, 0.2, at + 352, at + 368, at + 384);                  \
    space::BracketCounts counts{};                                                            \
    Vector more(64 + 2 * n);                                                                  \
    space::sumBetween(x, n, -0.5, 0.75, counts, more.data());                                 \
    const std::size_t m = space::countAndCollect(x, n, -0.5, 0.75, counts, more.data() + 32); \
    more.resize(32 + m);                                                                      \
    more.push_back(static_cast<double>(m));                                                   \
    for (const std::int64_t c :                                                               \
         {counts.belowLow, counts.toLow, counts.belowHigh, counts.toHigh}) {                  \
      more.push_back(static_cast<double>(c));                                                 \
    }                                                                                         \
    std::vector<std::int32_t> cells(n);                                                       \
    space::cellsOf(x, n, -1.0, 100.0, 200, cells.data());                                     \
    more.insert(more.end(), cells.begin(), cells.end());                                      \
    all.insert(all.end(), more.begin(), more.end());                                          \
    for (const std::size_t width : {5, 12}) { /* with gaps between the rows, and without */   \
      for (const std::size_t stride : {width, width + 2}) {                                   \
        const std::size_t rows = n / stride;                                                  \
        const std::size_t pitch = stride == width ? width : 16;                               \
        Vector sums(33 * 16), means(16), spread(16), center(16, 0.3);                         \
        std::uint8_t sure[16] = {};                                                           \
        const auto gap = static_cast<std::ptrdiff_t>(stride);                                 \
        space::addColumns(x, gap, rows, width, pitch, sums.data());                           \
        space::meansOfLanes(sums.data(), width, static_cast<std::ptrdiff_t>(pitch), rows + 1, \
                            means.data(), sure);                                              \
        Vector squares(4 * 16);                                                               \
        space::addSquaresOfColumns(x, gap, rows, width, 16, center.data(), squares.data());   \
        std::uint8_t known[16] = {};                                                          \
        space::variancesOfSums(squares.data(), width, 16, static_cast<double>(rows + 1),      \
                               static_cast<double>(rows + 2), true, spread.data(), known);    \
        for (std::size_t j = 0; j < width; ++j) {                                             \
          all.push_back(sure[j]);                                                             \
          all.push_back(sure[j] != 0 ? means[j] : 0.0);                                       \
          all.push_back(known[j]);                                                            \
          all.push_back(known[j] != 0 ? spread[j] : 0.0);                                     \
        }                                                                                     \
      }                                                                                       \
    }                                                                                         \
    Vector normal(2 * n + 1);                                                                 \
    normal[2 * n] = space::normalCdfs(x, n, normal.data());                                   \
    const Vector p = probabilities(x, n);                                                     \
    space::normalQuantiles(p.data(), n, normal.data() + n);                                   \
    all.insert(all.end(), normal.begin(), normal.end());                                      \
    for (const std::size_t window : {7, 17}) {                                                \
      const std::size_t group = window < 16 ? 1 : 8 * window;                                 \
      if (n >= group + window) {                                                              \
        Vector out((n - window) / group * group + 1);                                         \
        out.back() = space::movingSums(x, out.size() - 1, window, true, out.data());          \
        all.insert(all.end(), out.begin(), out.end());                                        \
      }                                                                                       \
    }                                                                                         \
    for (const std::size_t taps : {5, 50}) {                                                  \
      if (n >= taps) {                                                                        \
        Vector out(n - taps + 1);                                                             \
        space::filterStretch(x + taps - 1, out.size(), {w, taps}, out.data());                \
        all.insert(all.end(), out.begin(), out.end());                                        \
        out.resize(out.size() / vexel::kernels::convolutionBlock *                            \
                   vexel::kernels::convolutionBlock);                                         \
        space::convolve(x + taps - 1, out.size(), w, taps, out.data());                       \
        all.insert(all.end(), out.begin(), out.end());                                        \
      }                                                                                       \
    }                                                                                         \
    return all;                                                                               \
  }

using Everything = std::function<Vector(const double* x, const double* w, std::size_t n)>;

// -0.0 and 0.0 of sums that are nothing count as one; so do NaNs.
void expectSameBits(const Vector& a, const Vector& b, const std::string& what) {
  ASSERT_EQ(a.size(), b.size()) << what;
  for (std::size_t i = 0; i < a.size(); ++i) {
    ASSERT_TRUE(std::bit_cast<std::uint64_t>(a[i]) == std::bit_cast<std::uint64_t>(b[i]) ||
                (a[i] == 0.0 && b[i] == 0.0) || (std::isnan(a[i]) && std::isnan(b[i])))
        << what << ", number " << i << ": " << a[i] << " and " << b[i];
  }
}

void compare(const Everything& one, const Everything& other, const std::string& what) {
  std::mt19937_64 random(1);
  std::normal_distribution<double> normal;
  for (const int spread : {0, 60, 300}) {
    for (std::size_t n = 0; n < 4000; n = n < 300 ? n + 1 + n / 20 : 2 * n) {
      Vector x(n + 3);
      Vector w(n + 3);
      for (std::size_t i = 0; i < x.size(); ++i) {
        const int exponent = spread == 0 ? 0 : static_cast<int>(random() % (2U * spread)) - spread;
        x[i] = std::ldexp(normal(random), exponent);
        w[i] = std::ldexp(std::fabs(normal(random)), exponent / 2);
      }
      for (std::size_t shift = 0; shift < 3; ++shift) {
        expectSameBits(one(&x[shift], &w[shift], n), other(&x[shift], &w[shift], n),
                       what + " of " + std::to_string(n));
      }
    }
  }
}

// f(name) with each set of instructions that the machine has.
template <typename F>
void onEveryTarget([[maybe_unused]] F f) {
#ifdef VEXEL_HAVE_HIGHWAY
  const std::int64_t supported = hwy::SupportedTargets();
  for (std::int64_t rest = supported; rest != 0; rest &= rest - 1) {
    const std::int64_t target = rest & -rest;
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(target);
    f(std::string(hwy::TargetName(target)));
  }
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
#endif
}

TEST(VectorKernels, HaveTheSameBitsOnEveryTarget) {
  const Everything chosen = EVERYTHING(vexel::kernels);
  const Everything plain = EVERYTHING(vexel::plain_kernels);
  compare(chosen, plain, "best and plain");
  onEveryTarget([&](const std::string& name) { compare(chosen, plain, name + " and plain"); });
}

TEST(VectorKernels, OrderColumnsAlikeOnEveryTarget) {
  const Everything chosen = ORDERS(vexel::kernels);
  const Everything plain = ORDERS(vexel::plain_kernels);
  compare(chosen, plain, "best and plain");
  onEveryTarget([&](const std::string& name) { compare(chosen, plain, name + " and plain"); });
}

// Those that add them up at all.
TEST(VectorKernels, AddPowersToTheSameColumnsOnEveryTarget) {
  std::mt19937_64 random(2);
  std::normal_distribution<double> normal;
  Vector x(1024);
  std::generate(x.begin(), x.end(), [&] { return normal(random); });
  x[5] = 0.0;
  x[7] = -0.0;
  const int unit = 2 - 52 - vexel::kernels::PowerColumns::span;
  for (int order = 1; order <= 4; ++order) {
    const auto columns = [&](bool* any) {
      vexel::kernels::PowerColumns sums;
      bool apart = false;
      *any = vexel::kernels::addPowerColumns(x.data(), x.size(), order, unit, sums, &apart) != 0;
      EXPECT_EQ(*any, apart);  // some are too small
      return sums;
    };
    bool wanted = false;
    const auto best = columns(&wanted);
    onEveryTarget([&](const std::string& name) {
      bool any = false;
      const auto sums = columns(&any);
      EXPECT_TRUE(!any || std::memcmp(&sums, &best, sizeof best) == 0) << name;
    });
  }
}

TEST(VectorKernels, GiveOneNormalValueAsTheyGiveMany) {
  Vector z;
  Vector p;
  for (double x = -7.99; x < 8.0; x += 0.0173) {
    z.push_back(x);
    p.push_back(std::ldexp(1.0 + std::fabs(x) / 8.0, -1 - static_cast<int>(8.0 * std::fabs(x))));
  }
  for (const double x : {-0.0, 0.0, 1e-300, 0x1p-6, std::nextafter(8.0, 0.0)}) {
    z.push_back(x);
    p.push_back(0.5);
  }
  Vector out(z.size());
  ASSERT_TRUE(vexel::kernels::normalCdfs(z.data(), z.size(), out.data()));
  Vector quantiles(p.size());
  vexel::kernels::normalQuantiles(p.data(), p.size(), quantiles.data());
  for (std::size_t i = 0; i < z.size(); ++i) {
    EXPECT_EQ(out[i], vexel::kernels::normalCdf(z[i])) << z[i];
    EXPECT_NEAR(out[i], 0.5 * std::erfc(-z[i] * std::sqrt(0.5)), 3e-14 * out[i]) << z[i];
    EXPECT_EQ(quantiles[i], vexel::kernels::normalQuantile(p[i])) << p[i];
  }
  for (const double bad : {8.0, -8.0, HUGE_VAL, std::nan("")}) {
    z[100] = bad;
    EXPECT_FALSE(vexel::kernels::normalCdfs(z.data(), z.size(), out.data()));
  }
}

TEST(VectorKernels, SeeWhatIsMissingAnywhere) {
  for (std::size_t n = 1; n < 70; ++n) {
    const Vector good(n, 1.0);
    EXPECT_TRUE(vexel::kernels::allPresent(good.data(), n));
    EXPECT_TRUE(vexel::kernels::allPresent(good.data(), good.data(), n));
    for (std::size_t i = 0; i < n; ++i) {
      for (const double bad : {std::nan(""), 0.0, -1.0, HUGE_VAL}) {
        Vector x = good;
        x[i] = bad;
        EXPECT_EQ(vexel::kernels::allPresent(x.data(), n), !std::isnan(bad));
        EXPECT_EQ(vexel::kernels::allPresent(x.data(), good.data(), n), !std::isnan(bad));
        EXPECT_FALSE(vexel::kernels::allPresent(good.data(), x.data(), n));
        if (!std::isnan(bad)) {
          const auto range = vexel::kernels::rangeOf(x.data(), n);
          EXPECT_EQ(range.min, std::min(bad, n > 1 ? 1.0 : bad));
          EXPECT_EQ(range.max, std::max(bad, n > 1 ? 1.0 : bad));
        }
      }
    }
  }
}

}  // namespace

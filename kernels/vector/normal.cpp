// The normal distribution function, eight numbers at a time: the rows of the table that they need
// become columns, and each lane has its own polynomial.  And its quantiles: the middle of all of
// them first, then those of the tails.  The first half of this file is compiled
// once for each set of instructions, in a namespace each; the second half picks among them at run
// time.  All give the same bits.
#include "kernels/normal.hpp"

#include <algorithm>
#include <cstdint>

#include "kernels/double_double.hpp"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/normal.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/transpose.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

using EightIntegers = std::int32_t __attribute__((vector_size(32)));

// Whether all are in the range.
inline __attribute__((always_inline)) bool cdfsOfEight(const double* z, const NormalTable& table,
                                                       double* out) {
  Eight x;
  __builtin_memcpy(&x, z, sizeof x);
  const Eight size = x < 0.0 ? -x : x;
  const auto within = size < NormalTable::range;
  const Eight t = within ? size : Eight{};
  const EightIntegers i = __builtin_convertvector(t * NormalTable::perUnit, EightIntegers);
  Eight c[8];
  for (int l = 0; l < 8; ++l) {
    __builtin_memcpy(&c[l], table[i[l]], sizeof(Eight));
  }
  transpose(c);
  const Eight middle = (__builtin_convertvector(i, Eight) + 0.5) * (1.0 / NormalTable::perUnit);
  const Eight h = t - middle;
  const Eight h2 = h * h;
  const Eight p = c[0] + h * ((c[1] + h * c[2]) +
                              h2 * ((c[3] + h * c[4]) + h2 * ((c[5] + h * c[6]) + h2 * c[7])));
  const Eight result = x < 0.0 ? p : 1.0 - p;
  __builtin_memcpy(out, &result, sizeof result);
  std::int64_t all = -1;
  for (int l = 0; l < 8; ++l) {
    all &= within[l];
  }
  return all != 0;
}

bool normalCdfsOf(const double* z, std::size_t n, const NormalTable& table, double* out) {
  bool all = true;
  std::size_t i = 0;
  for (; i + 8 <= n; i += 8) {
    all &= cdfsOfEight(z + i, table, out + i);
  }
  if (i < n) {
    double rest[8] = {};
    __builtin_memcpy(rest, z + i, (n - i) * sizeof(double));
    all &= cdfsOfEight(rest, table, rest);
    __builtin_memcpy(out + i, rest, (n - i) * sizeof(double));
  }
  return all;
}

// The rational functions of normal.hpp, operation by operation.
inline __attribute__((always_inline)) void polynomial(const double (&c)[8], const Eight& x,
                                                      Eight& result) {
  const Eight x2 = x * x;
  const Eight x4 = x2 * x2;
  result = ((c[0] + c[1] * x) + (c[2] + c[3] * x) * x2) +
           ((c[4] + c[5] * x) + (c[6] + c[7] * x) * x2) * x4;
}

inline __attribute__((always_inline)) void quotient(const NormalRational& f, const Eight& x,
                                                    Eight& result) {
  Eight above;
  Eight below;
  polynomial(f.numerator, x, above);
  polynomial(f.denominator, x, below);
  result = above / below;
}

// Both read and write whole eights.
void middlesOf(const double* p, std::size_t n, double* out) {
  for (std::size_t i = 0; i < n; i += 8) {
    Eight q;
    __builtin_memcpy(&q, p + i, sizeof q);
    q = q - 0.5;
    Eight ratio;
    quotient(normalMiddle, 0.180625 - q * q, ratio);
    q = q * ratio;
    __builtin_memcpy(out + i, &q, sizeof q);
  }
}

void tailsOf(double* r, std::size_t n) {
  for (std::size_t i = 0; i < n; i += 8) {
    Eight z;
    __builtin_memcpy(&z, r + i, sizeof z);
    quotient(normalTail, z - 1.6, z);
    __builtin_memcpy(r + i, &z, sizeof z);
  }
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vexel::kernels {

namespace {

// P(Z < -t - h) and the density at t + h in powers of h, which must be small.
class NormalSeries {
 public:
  static constexpr int terms = 20;

  NormalSeries(double t, DoubleDouble below, DoubleDouble density) {
    below_[0] = below;
    density_[0] = density;
    for (int n = 0; n + 1 < terms; ++n) {
      const DoubleDouble before = n == 0 ? DoubleDouble() : density_[n - 1];
      density_[n + 1] = -(DoubleDouble(t) * density_[n] + before) / DoubleDouble(n + 1.0);
      below_[n + 1] = -density_[n] / DoubleDouble(n + 1.0);
    }
  }
  DoubleDouble below(double h) const { return value(below_, h); }
  DoubleDouble density(double h) const { return value(density_, h); }

  // The best of degree 7 for |h| <= 2^-7.
  void polynomial(double* c) const {
    constexpr double h2 = 0x1p-14;
    const double eighth = below_[8].high * h2;
    const double ninth = below_[9].high * h2;
    const double change[] = {-eighth * h2 * h2 * h2 / 128.0,
                             -ninth * h2 * h2 * h2 * (9.0 / 256.0),
                             eighth * h2 * h2 * 0.25,
                             ninth * h2 * h2 * (120.0 / 256.0),
                             -eighth * h2 * 1.25,
                             -ninth * h2 * (432.0 / 256.0),
                             eighth * 2.0,
                             ninth * (576.0 / 256.0)};
    for (int n = 0; n < NormalTable::terms; ++n) {
      c[n] = (below_[n] + DoubleDouble(change[n])).high;
    }
  }

 private:
  static DoubleDouble value(const DoubleDouble* c, double h) {
    DoubleDouble sum = c[terms - 1];
    for (int n = terms - 1; n-- > 0;) {
      sum = sum * DoubleDouble(h) + c[n];
    }
    return sum;
  }

  DoubleDouble below_[terms];
  DoubleDouble density_[terms];
};

}  // namespace

// From the last interval on towards 0, where both functions grow and errors do not.
NormalTable::NormalTable() {
  DoubleDouble below(6.628260728425171e-16, 2.559980210935818e-32);  // at 511.5 / 64
  DoubleDouble density(5.377950448848648e-15, -1.0510020145939604e-31);
  for (int i = rows; i-- > 0;) {
    const NormalSeries series((i + 0.5) / perUnit, below, density);
    series.polynomial(row_[i]);
    below = series.below(-1.0 / perUnit);
    density = series.density(-1.0 / perUnit);
  }
}

HWY_EXPORT(normalCdfsOf);

bool normalCdfs(const double* z, std::size_t n, double* out) {
  return HWY_DYNAMIC_DISPATCH(normalCdfsOf)(z, n, normalTable(), out);
}

HWY_EXPORT(middlesOf);
HWY_EXPORT(tailsOf);

namespace {

constexpr std::size_t kChunk = 256;

// At most kChunk of them, the rest of the last eight filled with something.
void chunkOfQuantiles(const double* p, std::size_t n, double* out) {
  double z[kChunk];
  HWY_DYNAMIC_DISPATCH(middlesOf)(p, n, z);
  int where[kChunk];
  double r[kChunk + 8] = {};
  std::size_t tails = 0;
  for (std::size_t i = 0; i < n; ++i) {
    where[tails] = static_cast<int>(i);
    r[tails] = p[i] < 0.5 ? p[i] : 1.0 - p[i];
    tails += static_cast<std::size_t>(std::fabs(p[i] - 0.5) > 0.425);
  }
  for (std::size_t k = 0; k < tails; ++k) {
    r[k] = std::sqrt(-std::log(r[k]));
  }
  double beyond[kChunk + 8];
  std::copy(r, r + tails + 8, beyond);
  HWY_DYNAMIC_DISPATCH(tailsOf)(beyond, tails);
  for (std::size_t k = 0; k < tails; ++k) {
    const double size = r[k] <= 5.0 ? beyond[k] : normalFarTail(r[k] - 5.0);
    z[where[k]] = p[where[k]] < 0.5 ? -size : size;
  }
  std::copy(z, z + n, out);
}

}  // namespace

void normalQuantiles(const double* p, std::size_t n, double* out) {
  for (std::size_t i = 0; i < n; i += kChunk) {
    double chunk[kChunk] = {};
    const std::size_t size = std::min(kChunk, n - i);
    std::copy(p + i, p + i + size, chunk);
    chunkOfQuantiles(chunk, size, out + i);
  }
}

}  // namespace vexel::kernels
#endif

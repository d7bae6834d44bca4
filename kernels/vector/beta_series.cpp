// Eight series side by side, several times; one that has ended waits with a term of 0 for the
// others.
//
// The first half of this file is compiled once for each set of instructions, in a namespace each;
// the second half picks among them at run time.  All give the same bits.
#include "kernels/vector/beta_series.hpp"

#include <algorithm>
#include <limits>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/beta_series.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/transpose.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

using EightBits = long long __attribute__((vector_size(64)));

constexpr int kMostRounds = 200000;  // a guard
constexpr int kVectors = 3;
constexpr std::size_t kTogether = 8 * kVectors;

inline __attribute__((always_inline)) bool someBit(const EightBits& bits) {
  long long any = 0;
  for (int l = 0; l < 8; ++l) {
    any |= bits[l];
  }
  return any != 0;
}

// Vectors go by reference, since returning them is another matter on every target.
inline __attribute__((always_inline)) void sizeOf(const Eight& x, Eight& size) {
  constexpr long long withoutSign = std::numeric_limits<long long>::max();
  size = reinterpret_cast<Eight>(reinterpret_cast<EightBits>(x) & withoutSign);
}

// Where `which` is set, x becomes a.
inline __attribute__((always_inline)) void replace(const EightBits& which, const Eight& a,
                                                   Eight& x) {
  x = reinterpret_cast<Eight>((which & reinterpret_cast<EightBits>(a)) |
                              (~which & reinterpret_cast<EightBits>(x)));
}

void seriesOf(const double* from, double a, double n, double* out) {
  constexpr double least = 0.1 * std::numeric_limits<double>::epsilon();
  Eight x[kVectors];
  Eight sum[kVectors];
  Eight term[kVectors];
  __builtin_memcpy(x, from, sizeof x);
  for (int v = 0; v < kVectors; ++v) {
    sum[v] = term[v] = Eight{} + 1.0;
  }
  double k = 0.0;
  bool all = false;
  for (int round = 0; round < kMostRounds && !all; ++round) {
    const double first = (n + k) / (a + 1.0 + k);
    const double second = (n + k + 1.0) / (a + 2.0 + k);
    EightBits going = {};
    for (int v = 0; v < kVectors; ++v) {
      const Eight r1 = x[v] * first;
      const Eight r2 = r1 * (x[v] * second);
      sum[v] += term[v] * (r1 + r2);
      const Eight next = term[v] * r2;
      const EightBits counts = ~(next < least * sum[v]);
      term[v] = reinterpret_cast<Eight>(reinterpret_cast<EightBits>(next) & counts);
      going |= counts & reinterpret_cast<EightBits>(term[v]);
    }
    k += 2.0;
    all = !someBit(going);
  }
  for (int v = 0; v < kVectors && !all; ++v) {
    for (int l = 0; l < 8; ++l) {
      sum[v][l] = term[v][l] == 0 ? sum[v][l] : std::numeric_limits<double>::quiet_NaN();
    }
  }
  __builtin_memcpy(out, sum, sizeof sum);
}

// Eight continued fractions, convergent by convergent.
struct Convergents {
  Eight x;
  Eight e1;
  Eight slope;
  Eight top;
  Eight bottom;
  Eight lastTop;
  Eight lastBottom;
  Eight result;
  EightBits going;

  inline __attribute__((always_inline)) void begin(const double* at, const double* e, double a,
                                                   double inverse) {
    __builtin_memcpy(&x, at, sizeof x);
    __builtin_memcpy(&e1, e, sizeof e1);
    e1 += 1.0;
    slope = 2.0 - x;
    top = a * e1 * inverse;
    bottom = lastTop = Eight{} + 1.0;
    lastBottom = Eight{};
    result = Eight{} + std::numeric_limits<double>::quiet_NaN();
    going = ~EightBits{};
  }
  inline __attribute__((always_inline)) void step(double a, double b, double m, double last,
                                                  double inverse) {
    const double n = a + b;
    const Eight rest = m * (b - m) * (x * last);
    const Eight am = ((a + m - 1.0) * last) * ((n + m - 1.0) * x) * rest;
    const Eight bm = m + rest + (a + m) * (e1 + m * slope) * inverse;
    const Eight nextTop = bm * top + am * lastTop;
    const Eight nextBottom = bm * bottom + am * lastBottom;
    lastTop = top;
    lastBottom = bottom;
    top = nextTop;
    bottom = nextBottom;
  }
  inline __attribute__((always_inline)) void look() {
    constexpr double epsilon = std::numeric_limits<double>::epsilon();
    const Eight cross = top * lastBottom;
    Eight difference = cross - lastTop * bottom;
    Eight size;
    sizeOf(cross, size);
    sizeOf(difference, difference);
    const EightBits done = (difference <= epsilon * size) & going;
    if (someBit(done)) {
      replace(done, bottom / top, result);
      going &= ~done;
    }
    Eight bottomSize;
    sizeOf(top, size);
    sizeOf(bottom, bottomSize);
    replace(size < bottomSize, bottomSize, size);
    const EightBits large = (size > 1e100) & going;
    if (someBit(large)) {
      const Eight inverse = 1.0 / size;
      going &= ~(large & (inverse == 0.0));
      Eight scale = Eight{} + 1.0;
      replace(large, inverse, scale);
      top *= scale;
      bottom *= scale;
      lastTop *= scale;
      lastBottom *= scale;
    }
  }
};

void fractionsOf(const double* x, const double* e, double a, double b, double* out) {
  Convergents c[kVectors];
  double inverse = 1.0 / (a + 1.0);
  for (int v = 0; v < kVectors; ++v) {
    c[v].begin(x + 8 * v, e + 8 * v, a, inverse);
  }
  double m = 1.0;
  bool all = false;
  for (int round = 0; round < kMostRounds && !all; ++round) {
    for (int i = 0; i < 2; ++i, m += 1.0) {
      const double last = inverse;
      inverse = 1.0 / (a + 2.0 * m + 1.0);
      for (int v = 0; v < kVectors; ++v) {
        c[v].step(a, b, m, last, inverse);
      }
    }
    EightBits going = {};
    for (int v = 0; v < kVectors; ++v) {
      c[v].look();
      going |= c[v].going;
    }
    all = !someBit(going);
  }
  for (int v = 0; v < kVectors; ++v) {
    __builtin_memcpy(out + 8 * v, &c[v].result, sizeof(Eight));
  }
}

void betaFractionAt(const double* x, const double* e, std::size_t count, double a, double b,
                    double* out) {
  std::size_t i = 0;
  for (; i + kTogether <= count; i += kTogether) {
    fractionsOf(x + i, e + i, a, b, out + i);
  }
  if (i < count) {
    // The others do as the first one does.
    double xs[kTogether];
    double es[kTogether];
    double made[kTogether];
    std::fill(xs, xs + kTogether, x[i]);
    std::fill(es, es + kTogether, e[i]);
    std::copy(x + i, x + count, xs);
    std::copy(e + i, e + count, es);
    fractionsOf(xs, es, a, b, made);
    std::copy(made, made + (count - i), out + i);
  }
}

void betaSeriesAt(const double* x, std::size_t count, double a, double n, double* out) {
  std::size_t i = 0;
  for (; i + kTogether <= count; i += kTogether) {
    seriesOf(x + i, a, n, out + i);
  }
  if (i < count) {
    double rest[kTogether] = {};
    double sums[kTogether];
    std::copy(x + i, x + count, rest);
    seriesOf(rest, a, n, sums);
    std::copy(sums, sums + (count - i), out + i);
  }
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vexel::kernels {

HWY_EXPORT(betaSeriesAt);
HWY_EXPORT(betaFractionAt);

void betaSeriesAt(const double* x, std::size_t count, double a, double n, double* out) {
  HWY_DYNAMIC_DISPATCH(betaSeriesAt)(x, count, a, n, out);
}
void betaFractionAt(const double* x, const double* e, std::size_t count, double a, double b,
                    double* out) {
  HWY_DYNAMIC_DISPATCH(betaFractionAt)(x, e, count, a, b, out);
}

}  // namespace vexel::kernels
#endif

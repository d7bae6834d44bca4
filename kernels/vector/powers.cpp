#include "kernels/vector/powers.hpp"

#include <algorithm>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/powers.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/eight.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

// d + low = x - c exactly.
HWY_INLINE Register twoDifference(Register x, Register c, Register& low) {
  const Register d = sub(x, c);
  const Register fromC = sub(x, d);
  low = add(sub(x, add(d, fromC)), sub(fromC, c));
  return d;
}

struct Squares {
  EightSums first;
  EightSums second;

  HWY_INLINE Squares() {}
  HWY_INLINE void take(int part, Register x, Register center) {
    Register low;
    const Register d = twoDifference(x, center, low);
    const Register square = mul(d, d);
    const Register cross = mul(d, low);
    first.take(part, d, low);
    second.take(part, square, add(productError(d, d, square), add(cross, cross)));
  }
  HWY_INLINE void take(int part, Register x, Register w, Register center) {
    Register low;
    const Register d = twoDifference(x, center, low);
    const Register p = mul(w, d);
    const Register pLow = add(productError(w, d, p), mul(w, low));
    const Register square = mul(p, d);
    first.take(part, p, pLow);
    second.take(part, square, add(productError(p, d, square), add(mul(pLow, d), mul(p, low))));
  }
};

// Sixteen lanes; elements that are not there lie at the center.
void squaresInLanes(const double* x, const double* w, std::size_t n, double center, double* first,
                    double* second) {
  Squares a;
  Squares b;
  const Register c = broadcast(center);
  const std::size_t whole = n / 16 * 16;
  const auto takeAll = [&](const double* at, const double* weight) HWY_ATTR {
    for (int k = 0; k < kParts; ++k) {
      const int i = k * kLanes;
      if (w == nullptr) {
        a.take(k, read(at + i), c);
        b.take(k, read(at + 8 + i), c);
      } else {
        a.take(k, read(at + i), read(weight + i), c);
        b.take(k, read(at + 8 + i), read(weight + 8 + i), c);
      }
    }
  };
  for (std::size_t i = 0; i < whole; i += 16) {
    expect(x + i);
    if (w != nullptr) {
      expect(w + i);
    }
    takeAll(x + i, w + (w == nullptr ? 0 : i));
  }
  if (whole < n) {
    double xRest[16];
    double wRest[16] = {};
    std::fill(xRest, xRest + 16, center);
    std::copy(x + whole, x + n, xRest);
    if (w != nullptr) {
      std::copy(w + whole, w + n, wRest);
    }
    takeAll(xRest, wRest);
  }
  a.first.store(first);
  b.first.store(first + 16);
  a.second.store(second);
  b.second.store(second + 16);
}

HWY_INLINE Register sumOfEight(const Register* d) {
  return add(add(add(d[0], d[1]), add(d[2], d[3])), add(add(d[4], d[5]), add(d[6], d[7])));
}

// Eight rows of eight lanes.
constexpr std::size_t kRows = 64;

struct Powers {
  EightSums sum[4];

  HWY_INLINE Powers() {}
  HWY_INLINE void take(const double* x, Register center) {
    for (int k = 0; k < kParts; ++k) {
      Register d[8];
      Register power[8];
      Register cube[8];
      for (int row = 0; row < 8; ++row) {
        d[row] = sub(read(x + row * 8 + k * kLanes), center);
        power[row] = mul(d[row], d[row]);
        cube[row] = mul(power[row], d[row]);
      }
      sum[0].take(k, sumOfEight(d));
      sum[1].take(k, sumOfEight(power));
      sum[2].take(k, sumOfEight(cube));
      for (int row = 0; row < 8; ++row) {
        power[row] = mul(power[row], power[row]);
      }
      sum[3].take(k, sumOfEight(power));
    }
  }
};

void powersInLanes(const double* x, std::size_t n, double center, double* sums) {
  Powers powers;
  const Register c = broadcast(center);
  const std::size_t whole = n / kRows * kRows;
  for (std::size_t i = 0; i < whole; i += kRows) {
    for (std::size_t k = 0; k < kRows; k += 16) {
      expect(x + i + k);
    }
    powers.take(x + i, c);
  }
  if (whole < n) {
    double rest[kRows];
    std::fill(rest, rest + kRows, center);
    std::copy(x + whole, x + n, rest);
    powers.take(rest, c);
  }
  for (int k = 0; k < 4; ++k) {
    powers.sum[k].store(sums + 16 * k);
  }
}

struct Products {
  EightSums x;
  EightSums y;
  EightSums even;
  EightSums odd;

  HWY_INLINE Products() {}
  HWY_INLINE void take(const double* xs, const double* ys, Register xCenter, Register yCenter) {
    for (int k = 0; k < kParts; ++k) {
      Register d[8];
      Register e[8];
      for (int row = 0; row < 8; ++row) {
        d[row] = sub(read(xs + row * 8 + k * kLanes), xCenter);
        e[row] = sub(read(ys + row * 8 + k * kLanes), yCenter);
        const Register p = mul(d[row], e[row]);
        (row % 2 == 0 ? even : odd).take(k, p, productError(d[row], e[row], p));
      }
      x.take(k, sumOfEight(d));
      y.take(k, sumOfEight(e));
    }
  }
};

void productsInLanes(const double* x, const double* y, std::size_t n, double xCenter,
                     double yCenter, double* xSums, double* ySums, double* products) {
  Products sums;
  const Register cx = broadcast(xCenter);
  const Register cy = broadcast(yCenter);
  const std::size_t whole = n / kRows * kRows;
  for (std::size_t i = 0; i < whole; i += kRows) {
    for (std::size_t k = 0; k < kRows; k += 16) {
      expect(x + i + k);
      expect(y + i + k);
    }
    sums.take(x + i, y + i, cx, cy);
  }
  if (whole < n) {
    double xRest[kRows];
    double yRest[kRows];
    std::fill(xRest, xRest + kRows, xCenter);
    std::fill(yRest, yRest + kRows, yCenter);
    std::copy(x + whole, x + n, xRest);
    std::copy(y + whole, y + n, yRest);
    sums.take(xRest, yRest, cx, cy);
  }
  sums.x.store(xSums);
  sums.y.store(ySums);
  sums.even.store(products);
  sums.odd.store(products + 16);
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace vexel::kernels {

HWY_EXPORT(squaresInLanes);
HWY_EXPORT(powersInLanes);
HWY_EXPORT(productsInLanes);

void squaresInLanes(const double* x, const double* w, std::size_t n, double center, double* first,
                    double* second) {
  HWY_DYNAMIC_DISPATCH(squaresInLanes)(x, w, n, center, first, second);
}
void powersInLanes(const double* x, std::size_t n, double center, double* sums) {
  HWY_DYNAMIC_DISPATCH(powersInLanes)(x, n, center, sums);
}
void productsInLanes(const double* x, const double* y, std::size_t n, double xCenter,
                     double yCenter, double* xSums, double* ySums, double* products) {
  HWY_DYNAMIC_DISPATCH(productsInLanes)(x, y, n, xCenter, yCenter, xSums, ySums, products);
}

}  // namespace vexel::kernels

#endif

#include "kernels/vector/sums.hpp"

#include <algorithm>
#include <bit>
#include <cmath>

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "kernels/vector/sums.cpp"
#include "kernels/vector/each_target.hpp"
#include "kernels/vector/eight.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

// The halves of each sixteen go to sums of their own; zeros fill up the last.
template <typename Sums>
HWY_INLINE void takeAll(const double* x, std::size_t n, Sums& a, Sums& b) {
  const std::size_t whole = n / 16 * 16;
  for (std::size_t i = 0; i < whole; i += 16) {
    expect(x + i);
    for (int k = 0; k < kParts; ++k) {
      a.take(k, read(x + i + static_cast<std::size_t>(k) * kLanes));
      b.take(k, read(x + i + 8 + static_cast<std::size_t>(k) * kLanes));
    }
  }
  if (whole < n) {
    double rest[16] = {};
    std::copy(x + whole, x + n, rest);
    for (int k = 0; k < kParts; ++k) {
      a.take(k, read(rest + k * kLanes));
      b.take(k, read(rest + 8 + k * kLanes));
    }
  }
}

void sumInLanes(const double* x, std::size_t n, double* lanes) {
  EightSums a;
  EightSums b;
  takeAll(x, n, a, b);
  a.store(lanes);
  b.store(lanes + 16);
}

// A third level shows what the second one loses.
struct CheckedSums {
  EightSums sums;
  Register lost[kParts];

  HWY_INLINE CheckedSums() {
    for (int i = 0; i < kParts; ++i) {
      lost[i] = broadcast(0.0);
    }
  }
  HWY_INLINE void take(int part, Register x) {
    Register first;
    Register second;
    sums.sum[part] = twoSum(sums.sum[part], x, first);
    sums.error[part] = twoSum(sums.error[part], first, second);
    lost[part] = bitOr(lost[part], second);
  }
  HWY_INLINE bool exact() const {
    double all[8];
    for (int i = 0; i < kParts; ++i) {
      write(lost[i], all + i * kLanes);
    }
    bool none = true;
    for (const double z : all) {
      none &= z == 0.0;
    }
    return none;
  }
};

bool sumInLanesExactly(const double* x, std::size_t n, double* lanes) {
  CheckedSums a;
  CheckedSums b;
  takeAll(x, n, a, b);
  a.sums.store(lanes);
  b.sums.store(lanes + 16);
  return a.exact() && b.exact();
}

struct WeightedSums {
  EightSums products;
  EightSums weights;

  HWY_INLINE WeightedSums() {}
  HWY_INLINE void take(int part, Register x, Register w, Register& signs) {
    const Register p = mul(x, w);
    products.take(part, p, productError(x, w, p));
    weights.take(part, w);
    signs = bitOr(signs, w);
  }
};

bool weightedSumsInLanes(const double* x, const double* w, std::size_t n, double* products,
                         double* weights) {
  WeightedSums a;
  WeightedSums b;
  Register signs = broadcast(0.0);
  const std::size_t whole = n / 16 * 16;
  for (std::size_t i = 0; i < whole; i += 16) {
    expect(x + i);
    expect(w + i);
    for (int k = 0; k < kParts; ++k) {
      const std::size_t at = i + static_cast<std::size_t>(k) * kLanes;
      a.take(k, read(x + at), read(w + at), signs);
      b.take(k, read(x + at + 8), read(w + at + 8), signs);
    }
  }
  if (whole < n) {
    double xRest[16] = {};
    double wRest[16] = {};
    std::copy(x + whole, x + n, xRest);
    std::copy(w + whole, w + n, wRest);
    for (int k = 0; k < kParts; ++k) {
      const int at = k * kLanes;
      a.take(k, read(xRest + at), read(wRest + at), signs);
      b.take(k, read(xRest + at + 8), read(wRest + at + 8), signs);
    }
  }
  a.products.store(products);
  b.products.store(products + 16);
  a.weights.store(weights);
  b.weights.store(weights + 16);
  double all[kLanes];
  write(signs, all);
  bool negative = false;
  for (const double z : all) {
    negative |= std::signbit(z);
  }
  return negative;
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE

namespace vexel::kernels {

HWY_EXPORT(sumInLanes);
HWY_EXPORT(sumInLanesExactly);
HWY_EXPORT(weightedSumsInLanes);

void sumInLanes(const double* x, std::size_t n, double* lanes) {
  HWY_DYNAMIC_DISPATCH(sumInLanes)(x, n, lanes);
}
bool sumInLanesExactly(const double* x, std::size_t n, double* lanes) {
  return HWY_DYNAMIC_DISPATCH(sumInLanesExactly)(x, n, lanes);
}
bool weightedSumsInLanes(const double* x, const double* w, std::size_t n, double* products,
                         double* weights) {
  return HWY_DYNAMIC_DISPATCH(weightedSumsInLanes)(x, w, n, products, weights);
}

}  // namespace vexel::kernels

#endif

// Faure's points.
//
// A step changes one Gray digit, j, and adds row j of the generator matrices to digits 0 .. j of
// all coordinates.  Digits are kept with the coordinates running fastest, so that a step is a few
// passes over contiguous integers; the first digit alone changes in all but one of b steps.
// Coordinates are exact integers over b^m < 2^31, divided once.

#include "kernels/classic/faure_points.hpp"

#include <algorithm>
#include <cmath>

#include "kernels/classic/halton_points.hpp"
#include "kernels/watch.hpp"

namespace vexel::kernels::classic {
namespace {

// The smallest prime that is not below d >= 2.
int smallestPrimeFrom(int d) {
  if (d < 4) {
    return d;
  }
  int candidate = d | 1;
  while (!isPrime(candidate)) {
    candidate += 2;
  }
  return candidate;
}

// How many digits in base b an index may have, so that b to that power fits 31 bits.
int digitCount(int base) { return static_cast<int>(std::log(2147483647.0) / std::log(base)); }

}  // namespace

FaurePoints::FaurePoints(int d, int startExponent) {
  dimension_ = d;
  base_ = smallestPrimeFrom(d);
  const int m = digitCount(base_);
  digits_ = 0;
  if (startExponent >= m) {
    return;
  }
  digits_ = m;

  weights_.assign(static_cast<std::size_t>(m), 1);
  for (int j = m - 2; j >= 0; --j) {
    const auto at = static_cast<std::size_t>(j);
    weights_[at] = weights_[at + 1] * base_;
  }
  denominator_ = weights_[0] * base_;
  buildGenerators();

  for (int i = 0; i < startExponent; ++i) {
    start_ *= base_;
  }
  restart();
}

void FaurePoints::restart() {
  if (digits_ != 0) {
    moveTo(start_ - 1);
  }
}

// First cell of the generator entries that take Gray digit j to digit i of the coordinates.
std::size_t FaurePoints::generator(int j, int i) const {
  return static_cast<std::size_t>(j * (j + 1) / 2 + i) * static_cast<std::size_t>(dimension_);
}

// Entry (j, i) of coordinate k is binomial(j, i) k^(j - i) modulo b, with 0^0 = 1.
void FaurePoints::buildGenerators() {
  generators_.assign(generator(digits_, 0), 0);
  const std::int64_t b = base_;
  for (int j = 0; j < digits_; ++j) {
    for (int i = 0; i <= j; ++i) {
      std::int32_t* const entry = &generators_[generator(j, i)];
      if (i == j) {
        std::fill_n(entry, dimension_, 1);
        continue;
      }
      // Coordinate 1 has the plain binomials: Pascal's rule from the row above.
      const std::int64_t above = generators_[generator(j - 1, i) + 1];
      const std::int64_t left = i > 0 ? generators_[generator(j - 1, i - 1) + 1] : 0;
      entry[1] = static_cast<std::int32_t>((above + left) % b);
      // One more power of k than the entry of the same difference but one.
      for (int k = 2; k < dimension_; ++k) {
        std::int64_t power = entry[1];
        for (int e = 0; e < j - i; ++e) {
          power = power * k % b;
        }
        entry[k] = static_cast<std::int32_t>(power);
      }
    }
  }
}

// Sets the state that as many increments from 0 lead to.  Gray digit j is (c_j - c_(j+1)) mod b.
void FaurePoints::moveTo(std::int64_t target) {
  const auto d = static_cast<std::size_t>(dimension_);
  const auto m = static_cast<std::size_t>(digits_);
  counterDigits_.assign(m + 1, 0);
  for (int& digit : counterDigits_) {
    digit = static_cast<int>(target % base_);
    target /= base_;
  }
  exhausted_ = false;
  y_.assign(m * d, 0);
  x_.assign(d, 0);
  for (int j = 0; j < digits_; ++j) {
    const auto at = static_cast<std::size_t>(j);
    const int gray = (counterDigits_[at] - counterDigits_[at + 1] + base_) % base_;
    for (int i = 0; i <= j && gray != 0; ++i) {
      const std::int32_t* const c = &generators_[generator(j, i)];
      std::int32_t* const y = &y_[static_cast<std::size_t>(i) * d];
      for (std::size_t k = 0; k < d; ++k) {
        y[k] = static_cast<std::int32_t>((y[k] + std::int64_t{gray} * c[k]) % base_);
      }
    }
  }
  for (std::size_t i = 0; i < m; ++i) {
    for (std::size_t k = 0; k < d; ++k) {
      x_[k] += y_[i * d + k] * weights_[i];
    }
  }
}

std::int64_t FaurePoints::counter() const {
  std::int64_t value = 0;
  for (auto digit = counterDigits_.rbegin(); digit != counterDigits_.rend(); ++digit) {
    value = value * base_ + *digit;
  }
  return value;
}

// Counts one up; the last digit that changed, which is m when the index has run out of digits.
int FaurePoints::increment() {
  for (int j = 0;; ++j) {
    int& digit = counterDigits_[static_cast<std::size_t>(j)];
    digit = digit + 1 == base_ ? 0 : digit + 1;
    if (digit != 0 || j == digits_) {
      return j;
    }
  }
}

// Adds row j of the generators to the digits of all coordinates, modulo b, and keeps the
// numerators.
void FaurePoints::addGenerator(int j) {
  const auto d = static_cast<std::size_t>(dimension_);
  const std::int32_t b = base_;
  std::int32_t* const x = x_.data();
  for (int i = 0; i <= j; ++i) {
    const std::int32_t* const c = &generators_[generator(j, i)];
    std::int32_t* const y = &y_[static_cast<std::size_t>(i) * d];
    const std::int32_t weight = weights_[static_cast<std::size_t>(i)];
    for (std::size_t k = 0; k < d; ++k) {
      const std::int32_t sum = y[k] + c[k];  // below 2^30: the dimension bounds the base
      const std::int32_t digit = sum - (sum >= b ? b : 0);
      x[k] += (digit - y[k]) * weight;
      y[k] = digit;
    }
  }
}

bool FaurePoints::next(double* out, std::ptrdiff_t pointStride, std::ptrdiff_t coordStride,
                       int count) {
  constexpr int kPointsBetweenLooks = 1024;
  if (digits_ == 0 || exhausted_) {
    return false;
  }
  const double denominator = denominator_;
  for (int i = 0; i < count; ++i) {
    const int j = increment();
    if (j == digits_) {
      exhausted_ = true;
      return false;
    }
    addGenerator(j);
    double* const point = out + i * pointStride;
    if (coordStride == 1) {
      for (int k = 0; k < dimension_; ++k) {
        point[k] = x_[static_cast<std::size_t>(k)] / denominator;
      }
    } else {
      for (int k = 0; k < dimension_; ++k) {
        point[k * coordStride] = x_[static_cast<std::size_t>(k)] / denominator;
      }
    }
    if (i % kPointsBetweenLooks == kPointsBetweenLooks - 1) {
      poll(0);
    }
  }
  return true;
}

void FaurePoints::skip(std::int64_t n) {
  if (n < 1 || digits_ == 0 || exhausted_) {
    return;
  }
  const std::int64_t index = counter();
  if (n < denominator_ - index) {
    moveTo(index + n);
  } else {
    exhausted_ = true;
  }
}

}  // namespace vexel::kernels::classic

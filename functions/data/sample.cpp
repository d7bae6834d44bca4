#include "functions/data/sample.hpp"

#include <cmath>
#include <stdexcept>
#include <string>
#include <type_traits>

#include "functions/data/refusals.hpp"
#include "functions/data/totals.hpp"
#include "kernels/exact_sum.hpp"
#include "kernels/vector/row_copies.hpp"

namespace vexel {

namespace {

template <typename T>
void convert(const void* data, std::ptrdiff_t begin, std::ptrdiff_t stride, std::size_t n,
             double* to) {
  const T* const from = static_cast<const T*>(data) + begin * stride;
  if constexpr (std::is_same_v<T, float>) {
    if (stride == 1) {
      kernels::copyRows(from, 0, 1, 1, n, n, to);  // one row
      return;
    }
  }
  if (stride == 1) {
    for (std::size_t i = 0; i < n; ++i) {
      to[i] = static_cast<double>(from[i]);
    }
    return;
  }
  for (std::size_t i = 0; i < n; ++i) {
    to[i] = static_cast<double>(from[static_cast<std::ptrdiff_t>(i) * stride]);
  }
}

}  // namespace

const double* asDoubles(Data x, std::size_t begin, std::size_t n, double* buffer) {
  if (x.dense()) {
    return static_cast<const double*>(x.data()) + begin;
  }
  const auto from = static_cast<std::ptrdiff_t>(begin);
  switch (x.element()) {
    case Element::float32:
      convert<float>(x.data(), from, x.stride(), n, buffer);
      break;
    case Element::int32:
      convert<std::int32_t>(x.data(), from, x.stride(), n, buffer);
      break;
    case Element::int64:
      convert<std::int64_t>(x.data(), from, x.stride(), n, buffer);
      break;
    default:
      convert<double>(x.data(), from, x.stride(), n, buffer);
  }
  return buffer;
}

Sample::Sample(const char* function, Data x, Data weights, Missing missing)
    : function_(function), x_(x), weights_(weights), missing_(missing) {
  if (weighted() && weights.size() != x.size()) {
    throw std::length_error(std::string(function) + ": weights must have as many elements as the " +
                            "data, " + std::to_string(x.size()) + ", got " +
                            std::to_string(weights.size()));
  }
}

void Sample::scaleToOne() {
  scale(0, 0);
  double largestX = 0.0;
  double largestW = 0.0;
  present([&](const double* x, const double* w, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      const double size = std::fabs(x[i]);
      largestX = size > largestX && std::isfinite(size) ? size : largestX;
    }
    if (w != nullptr) {
      largestW = std::max(largestW, kernels::rangeOf(w, n).max);
    }
  });
  scale(exponentOf(largestX), exponentOf(largestW));
}

void Sample::scale(int xExponent, int wExponent) {
  xExponent_ = std::clamp(xExponent, -1022, 1022);
  wExponent_ = std::clamp(wExponent, -1022, 1022);
  xFactor_ = std::ldexp(1.0, -xExponent_);
  wFactor_ = std::ldexp(1.0, -wExponent_);
}

namespace {

// sum / count, rounded; 0 of nothing.
double rounded(const kernels::ExactSum& sum, double count) {
  int exponent = 0;
  const double fraction = std::frexp(count, &exponent);
  return count == 0.0 ? 0.0 : sum.scaled() / kernels::Scaled{fraction, exponent};
}

}  // namespace

double Sample::roughMean() const {
  constexpr std::size_t points = 1024;
  kernels::ExactSum sum;
  double count = 0.0;
  const std::size_t step = std::max(std::size_t{1}, size() / points);
  if (!weighted() && size() >= kernels::sumLanes) {
    // All at once, unless something is not finite.
    double some[2 * points];
    const double* from = some;
    std::size_t n = 0;
    if (step == 1) {
      n = size();
      from = this->points(0, n, some);
    }
    for (std::size_t i = 0; i < size() && step > 1; i += step) {
      some[n++] = point(i);
    }
    double lanes[kernels::sumLanes];
    kernels::sumInLanes(from, n, lanes);
    if (addLanes(sum, lanes)) {
      return rounded(sum, static_cast<double>(n));
    }
  }
  for (std::size_t i = 0; i < size(); i += step) {
    const double x = point(i);
    if (std::isfinite(x) && weight(i) > 0.0) {
      sum.add(x);
      ++count;
    }
  }
  return rounded(sum, count);
}

const double* Sample::scaled(const double* from, std::size_t n, double factor, double* buffer) {
  for (std::size_t i = 0; i < n; ++i) {
    buffer[i] = from[i] * factor;
  }
  return buffer;
}

std::size_t Sample::keep(const double* x, const double* w, std::size_t n, std::size_t begin,
                         Buffers& to, Presence& found) const {
  std::size_t i = 0;
  for (; i < n && to.filled < block; ++i) {
    const double weight = w == nullptr ? 1.0 : w[i];
    if (weight < 0.0 || std::isinf(weight)) {
      refuseWeight(function_, begin + i, weight);
    }
    if (std::isnan(weight) || (std::isnan(x[i]) && weight > 0.0)) {
      if (missing_ == Missing::raise) {
        refuseMissing(function_, begin + i);
      }
      ++found.missing;
      continue;
    }
    found.pairs += !std::isnan(x[i]);
    if (weight > 0.0) {
      to.presentX[to.filled] = x[i];
      to.presentW[to.filled] = weight;
      ++to.filled;
      ++found.points;
    }
  }
  return i;
}

bool Sample::undefined(const Presence& found) const {
  if (found.missing > 0 && missing_ == Missing::propagate) {
    return true;
  }
  if (found.points == 0 && found.pairs > 0) {
    throw std::invalid_argument(std::string(function_) +
                                ": the total of the weights must be positive, it is 0");
  }
  return found.points == 0;
}

}  // namespace vexel

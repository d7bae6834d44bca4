// Data as typed, contiguous elements for the functions' loops.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "functions/data/refusals.hpp"
#include "functions/data/text.hpp"
#include "kernels/watch.hpp"
#include "vexel/data.hpp"

namespace vexel {

// f(std::span<const T>) with the elements of x; those with a stride are copied first.
template <typename F>
decltype(auto) onElements(Data x, F&& f) {
  const auto with = [&]<typename T>(const T* p) -> decltype(auto) {
    if (x.stride() == 1 || x.size() < 2) {
      return f(std::span<const T>(p, x.size()));
    }
    std::vector<T> copy(x.size());
    for (std::size_t i = 0; i < copy.size(); ++i) {
      copy[i] = p[static_cast<std::ptrdiff_t>(i) * x.stride()];
    }
    return f(std::span<const T>(copy));
  };
  switch (x.element()) {
    case Element::float32:
      return with(static_cast<const float*>(x.data()));
    case Element::int32:
      return with(static_cast<const std::int32_t*>(x.data()));
    case Element::int64:
      return with(static_cast<const std::int64_t*>(x.data()));
    default:
      return with(static_cast<const double*>(x.data()));
  }
}

// The elements of a Data as doubles, copied only where they are not contiguous doubles already.
class Doubles {
 public:
  explicit Doubles(Data x) {
    if (x.dense()) {
      view_ = x.doubles();
      return;
    }
    copy_.resize(x.size());
    for (std::size_t i = 0; i < x.size(); ++i) {
      copy_[i] = x[i];
    }
    view_ = copy_;
  }
  Doubles(const Doubles&) = delete;
  Doubles& operator=(const Doubles&) = delete;

  std::span<const double> span() const { return view_; }
  const double* data() const { return view_.data(); }
  std::size_t size() const { return view_.size(); }
  bool empty() const { return view_.empty(); }
  double operator[](std::size_t i) const { return view_[i]; }
  auto begin() const { return view_.begin(); }
  auto end() const { return view_.end(); }

 private:
  std::vector<double> copy_;
  std::span<const double> view_;
};

// A copy made under the watch.
template <typename T>
std::vector<T> copyOf(std::span<const T> x) {
  std::vector<T> copy;
  copy.reserve(x.size());
  kernels::inStretches(x.size(), [&](std::size_t begin, std::size_t end) {
    copy.insert(copy.end(), x.data() + begin, x.data() + end);
  });
  return copy;
}

template <typename T>
constexpr bool isMissing(T x) {
  if constexpr (std::is_floating_point_v<T>) {
    return x != x;
  } else {
    return false;
  }
}

// The message of an error about a parameter: what is allowed, and what came.
inline std::string mustBe(const char* parameter, const char* allowed, const std::string& came) {
  return std::string(parameter) + " must be " + allowed + ", got " + came;
}

[[noreturn]] inline void throwMissing(const char* function,
                                      const char* parameter = "x or weights") {
  throw std::invalid_argument(std::string(function) + ": missing values (NaN) in " + parameter);
}

inline void requireNoneMissing(const char* function, const Data& x, const Data& weights = {}) {
  for (std::size_t i = 0; i < x.size(); ++i) {
    const double w = weights.given() ? weights[i] : 1.0;
    if (w != 0.0 && (std::isnan(x[i]) || std::isnan(w))) {
      refuseMissing(function, i);
    }
  }
}

inline void requireSize(const char* parameter, std::size_t size, std::size_t wanted) {
  if (size != wanted) {
    throw std::length_error(mustBe(
        parameter, ("of " + std::to_string(wanted) + " elements").c_str(), std::to_string(size)));
  }
}

// Weights are non-negative and finite, one for each element; NaN makes its pair missing.
inline void requireWeights(Data weights, std::size_t n) {
  if (!weights.given()) {
    return;
  }
  requireSize("weights", weights.size(), n);
  for (std::size_t i = 0; i < n; ++i) {
    const double w = weights[i];
    if (w < 0 || std::isinf(w)) {
      refuseWeight(nullptr, i, w);
    }
  }
}

// Where there are pairs, but all of weight 0, there is nothing to go by.
inline void requireSomeWeight(const char* function, Data x, Data weights) {
  bool pairs = false;
  for (std::size_t i = 0; weights.given() && i < weights.size(); ++i) {
    if (weights[i] > 0) {
      return;
    }
    pairs |= weights[i] == 0 && !isMissing(x[i]);
  }
  if (pairs) {
    throw std::invalid_argument(std::string(function) +
                                ": the total of the weights must be positive, it is 0");
  }
}

// T is what a function's result has elements of: those of the data, or doubles.
template <typename T>
void requireElement(Data x) {
  if (!std::is_same_v<T, double> &&
      Data(static_cast<const T*>(nullptr), 0).element() != x.element()) {
    throw std::invalid_argument("the result's elements are neither the data's nor doubles");
  }
}

}  // namespace vexel

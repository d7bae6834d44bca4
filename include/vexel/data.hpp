// Data: how the functions take numbers, and the options that many of them share.
//
//   vexel::mean(x)                                  a vector, array or span of double, float,
//                                                   std::int32_t or std::int64_t
//   vexel::mean(vexel::Data(p, n, 3))               every third element from p
//   vexel::mean(x, {.weights = w, .missing = vexel::Missing::omit})
//
// A Data neither owns nor copies: what it views must outlive the call.  Missing values are NaN.
#pragma once

#if __cplusplus < 202002L
#error "the vexel headers need C++20 (-std=c++20)"
#endif

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <type_traits>
#include <vector>

namespace vexel {

enum class Element : std::uint8_t { float64, float32, int32, int64 };

template <typename T>
concept DataElement =
    std::is_same_v<T, double> || std::is_same_v<T, float> || std::is_same_v<T, std::int32_t> ||
    std::is_same_v<T, std::int64_t> || std::is_same_v<T, long long>;

class Data {
 public:
  // Nothing given: what an option such as `weights` is when a call leaves it out.
  constexpr Data() = default;

  // size elements, the i-th at data[i * stride]; a stride may be negative.
  template <DataElement T>
  constexpr Data(const T* data, std::size_t size, std::ptrdiff_t stride = 1)
      : data_(data), size_(size), stride_(stride), element_(elementOf<T>()), given_(true) {}

  template <DataElement T, typename Allocator>
  constexpr Data(const std::vector<T, Allocator>& x) : Data(x.data(), x.size()) {}
  template <DataElement T, std::size_t N>
  constexpr Data(const std::array<T, N>& x) : Data(x.data(), N) {}
  template <DataElement T, std::size_t N>
  constexpr Data(const T (&x)[N]) : Data(static_cast<const T*>(x), N) {}
  template <typename T, std::size_t N>
  requires DataElement<std::remove_const_t<T>>
  constexpr Data(std::span<T, N> x)
      : Data(static_cast<const std::remove_const_t<T>*>(x.data()), x.size()) {}
  // A braced list lives to the end of the full expression, so to the end of the call.
  constexpr Data(std::initializer_list<double> x) : Data(x.begin(), x.size()) {}

  constexpr bool given() const { return given_; }
  constexpr Element element() const { return element_; }
  constexpr const void* data() const { return data_; }
  constexpr std::size_t size() const { return size_; }
  constexpr bool empty() const { return size_ == 0; }
  constexpr std::ptrdiff_t stride() const { return stride_; }  // in elements

  // The element as a double, rounded to nearest where it is a large integer.
  double operator[](std::size_t i) const {
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) * stride_;
    switch (element_) {
      case Element::float32:
        return static_cast<const float*>(data_)[at];
      case Element::int32:
        return static_cast<const std::int32_t*>(data_)[at];
      case Element::int64:
        return static_cast<double>(static_cast<const std::int64_t*>(data_)[at]);
      default:
        return static_cast<const double*>(data_)[at];
    }
  }

  // True where the elements are doubles one after the other, which is what kernels like best.
  constexpr bool dense() const {
    return element_ == Element::float64 && (stride_ == 1 || size_ < 2);
  }
  std::span<const double> doubles() const { return {static_cast<const double*>(data_), size_}; }

 private:
  template <typename T>
  static constexpr Element elementOf() {
    if constexpr (std::is_same_v<T, double>) {
      return Element::float64;
    } else if constexpr (std::is_same_v<T, float>) {
      return Element::float32;
    } else if constexpr (std::is_same_v<T, std::int32_t>) {
      return Element::int32;
    } else {
      return Element::int64;
    }
  }

  const void* data_ = nullptr;
  std::size_t size_ = 0;
  std::ptrdiff_t stride_ = 1;
  Element element_ = Element::float64;
  bool given_ = false;
};

// What a function does with missing values (NaN; a pair is missing when its value or weight is):
// a missing result, the result without them, or std::invalid_argument.
enum class Missing : std::uint8_t { propagate, omit, raise };

// Statistics by name, for moving(), bootstrap() and the like.
enum class Statistic : std::uint8_t {
  mean,
  median,
  std,
  var,
  min,
  max,
  sum,
  skewness,
  kurtosis,
  iqr
};

}  // namespace vexel

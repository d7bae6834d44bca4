// The lanes of an array along an axis, one after the other.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <span>
#include <vector>
#include <vexel/columns.hpp>

#include "arrays.hpp"

namespace vexel::python {

// The lanes of an array along an axis, in C order of the other axes.
class Lanes {
 public:
  Lanes(const Input& x, int axis) : x_(x), axis_(axis) {
    for (int i = 0; i < x.dimensions(); ++i) {
      if (i != axis) {
        const auto n = x.shape()[static_cast<std::size_t>(i)];
        rest_.push_back(n);
        strides_.push_back(x.byteStride(i));
        count_ *= static_cast<std::size_t>(n);
      }
    }
  }

  std::size_t count() const { return count_; }
  std::span<const py::ssize_t> rest() const { return rest_; }
  Data operator[](std::size_t lane) const { return x_.lane(axis_, offset(lane)); }
  const Input& input() const { return x_; }
  std::size_t length() const {
    return static_cast<std::size_t>(x_.shape()[static_cast<std::size_t>(axis_)]);
  }
  std::ptrdiff_t offset(std::size_t lane) const { return offset(lane, strides_); }
  // Bytes from an element of a lane to the next one, and from a lane to the next one as far as the
  // last of the other axes goes; 0 where there is none.
  std::ptrdiff_t step() const { return x_.byteStride(axis_); }
  std::ptrdiff_t neighbour() const { return strides_.empty() ? 0 : strides_.back(); }
  // How many lanes, counted from the first and from every multiple of that number, lie at one
  // distance from each other.
  std::size_t together() const { return together(strides_); }
  // In an array of the same shape and these strides of the other axes.
  std::size_t together(const std::vector<py::ssize_t>& strides) const {
    std::size_t n = rest_.empty() ? 1 : static_cast<std::size_t>(rest_.back());
    for (std::size_t i = rest_.size(); i-- > 1;) {
      if (strides[i - 1] != strides.back() * static_cast<std::ptrdiff_t>(n)) {
        break;
      }
      n *= static_cast<std::size_t>(rest_[i - 1]);
    }
    return n;
  }
  // Some lanes from this one on.
  Columns columns(std::size_t lane, std::size_t count) const {
    const auto width = static_cast<std::ptrdiff_t>(elementSize(x_.element()));
    return {(*this)[lane], count, neighbour() / width};
  }
  // How many lanes from this one on lie so.
  std::size_t run(std::size_t lane) const {
    const auto n = static_cast<std::size_t>(rest_.back());
    return n - lane % n;
  }

  // Where the lane begins in an array of the same shape and these strides of the other axes.
  std::ptrdiff_t offset(std::size_t lane, const std::vector<py::ssize_t>& strides) const {
    std::ptrdiff_t at = 0;
    for (std::size_t i = rest_.size(); i-- > 0;) {
      const auto n = static_cast<std::size_t>(rest_[i]);
      at += static_cast<std::ptrdiff_t>(lane % n) * strides[i];
      lane /= n;
    }
    return at;
  }

 private:
  const Input& x_;
  int axis_;
  std::vector<py::ssize_t> rest_;
  std::vector<py::ssize_t> strides_;
  std::size_t count_ = 1;
};

// The lanes in their order, for reading.  Where they lie across memory, some neighbours at a time
// are copied side by side, so that what memory delivers together is used together.
class LaneReader {
 public:
  explicit LaneReader(const Lanes& lanes)
      : lanes_(lanes), width_(elementSize(lanes.input().element())) {
    const auto bytes = lanes.length() * width_;
    const bool across =
        lanes.neighbour() != 0 && std::abs(lanes.neighbour()) < std::abs(lanes.step());
    if (across && lanes.length() >= 8 && lanes.count() * bytes >= 8192) {
      // Sixteen while the nearer caches hold them.
      const std::size_t most = bytes <= nearBytes ? 16 : 8;
      together_ = std::min({most, mostBytes / bytes, lanes.count()});
    }
  }

  Data operator[](std::size_t lane) {
    if (together_ < 2) {
      return lanes_[lane];
    }
    if (lane < first_ || lane >= first_ + held_) {
      width_ == 8 ? copy<std::uint64_t>(lane) : copy<std::uint32_t>(lane);
    }
    return lanes_.input().dense(copies_.data() + (lane - first_) * pitch(), lanes_.length());
  }

 private:
  static constexpr std::size_t mostBytes = std::size_t{1} << 26;
  static constexpr std::size_t nearBytes = std::size_t{1} << 15;
  // From a copy to the next one: a little more than its size, for caches that mix up addresses
  // whose low bits are equal.
  std::size_t pitch() const { return (lanes_.length() * width_ + 64 + 63) / 64 * 64; }

  template <typename T>
  void copy(std::size_t lane) {
    copies_.resize(together_ * pitch());
    first_ = lane;
    held_ = std::min(together_, lanes_.run(lane));
    const char* from = lanes_.input().bytes() + lanes_.offset(lane);
    const std::ptrdiff_t step = lanes_.step();
    const std::ptrdiff_t next = lanes_.neighbour();
    const std::size_t far = pitch() / sizeof(T);
    auto* const to = reinterpret_cast<T*>(copies_.data());
    std::size_t i = 0;
    if (next == sizeof(T)) {
      // Two rows and two columns at a time.
      for (; i + 2 <= lanes_.length(); i += 2, from += 2 * step) {
        __builtin_prefetch(from + 16 * step);
        for (std::size_t k = 0; k + 2 <= held_; k += 2) {
          using Two [[gnu::vector_size(2 * sizeof(T)), gnu::may_alias, gnu::aligned(sizeof(T))]] =
              T;
          const Two upper = *reinterpret_cast<const Two*>(from + k * sizeof(T));
          const Two lower = *reinterpret_cast<const Two*>(from + step + k * sizeof(T));
          *reinterpret_cast<Two*>(to + k * far + i) = __builtin_shufflevector(upper, lower, 0, 2);
          *reinterpret_cast<Two*>(to + (k + 1) * far + i) =
              __builtin_shufflevector(upper, lower, 1, 3);
        }
        if (held_ % 2 != 0) {
          const std::size_t k = held_ - 1;
          std::memcpy(to + k * far + i, from + k * sizeof(T), sizeof(T));
          std::memcpy(to + k * far + i + 1, from + step + k * sizeof(T), sizeof(T));
        }
      }
    }
    for (; i < lanes_.length(); ++i, from += step) {
      const char* at = from;
      for (std::size_t k = 0; k < held_; ++k, at += next) {
        std::memcpy(to + k * far + i, at, sizeof(T));
      }
    }
  }

  const Lanes& lanes_;
  std::size_t width_;
  std::size_t together_ = 1;
  std::size_t first_ = 0;
  std::size_t held_ = 0;
  std::vector<char> copies_;
};

}  // namespace vexel::python

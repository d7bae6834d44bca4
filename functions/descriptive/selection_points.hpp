// Where selection takes its points from: a sample, or numbers in memory.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "functions/data/sample.hpp"
#include "numerics/sorting/radix_sort.hpp"
#include "numerics/sorting/sort_keys.hpp"
#include "numerics/sorting/vector_sort.hpp"

namespace vexel {

struct Point {
  double x;
  double w;
};

inline void sortPoints(std::vector<Point>& points, bool weighted) {
  if (weighted || !nag2::vectorSortServes(points.size())) {
    std::vector<Point> scratch(points.size());
    nag2::radixSort(points.data(), scratch.data(), points.size(), false,
                    [](const Point& p) { return nag2::ascendingKey(p.x); });
    return;
  }
  std::vector<std::uint64_t> keys(points.size());
  std::transform(points.begin(), points.end(), keys.begin(),
                 [](const Point& p) { return nag2::ascendingKey(p.x); });
  nag2::vectorSort(keys.data(), keys.size(), false);
  std::transform(keys.begin(), keys.end(), points.begin(), [](std::uint64_t key) {
    return Point{nag2::fromAscendingKey<double>(key), 1.0};
  });
}

// The points of a sample as targets see them: in blocks, as distances where that is asked for.
class SamplePoints {
 public:
  SamplePoints(const Sample& sample, std::optional<double> about)
      : sample_(sample), about_(about) {}

  bool weighted() const { return sample_.weighted(); }
  std::size_t size() const { return sample_.size(); }

  template <typename Use>
  void read(Use use) const {
    std::vector<double> distances(about_ ? Sample::block : 0);
    const auto useDistances = [&](const double* x, const double* w, std::size_t n) {
      for (std::size_t i = 0; i < n; ++i) {
        distances[i] = distanceOf(x[i]);
      }
      use(distances.data(), w, n);
    };
    found_ = about_ ? sample_.present(useDistances, 1, 2) : sample_.present(use, 1, 2);
  }
  const Sample::Presence& found() const { return found_; }

  Point at(std::size_t i) const {
    const double x = sample_.point(i);
    return {about_ ? distanceOf(x) : x, sample_.weight(i)};
  }

 private:
  // Infinite points have infinite medians in their midst.
  double distanceOf(double x) const { return x == *about_ ? 0.0 : std::fabs(x - *about_); }

  const Sample& sample_;
  std::optional<double> about_;
  mutable Sample::Presence found_;
};

// Numbers in memory.
class PlainPoints {
 public:
  explicit PlainPoints(std::span<const double> all) : all_(all) {}

  bool weighted() const { return false; }
  std::size_t size() const { return all_.size(); }
  template <typename Use>
  void read(Use use) const {
    for (std::size_t i = 0; i < all_.size(); i += Sample::block) {
      use(&all_[i], nullptr, std::min(Sample::block, all_.size() - i));
    }
  }
  Point at(std::size_t i) const { return {all_[i], 1.0}; }

 private:
  std::span<const double> all_;
};

// About count points, one from each of as many stretches, at places that follow no period; sorted.
template <typename Points>
std::vector<Point> somePoints(const Points& points, std::size_t count) {
  std::vector<Point> some;
  some.reserve(count + 1);
  std::uint32_t state = 1;
  const std::size_t stretch = points.size() / count;
  for (std::size_t begin = 0; begin + stretch <= points.size(); begin += stretch) {
    state = state * 1664525U + 1013904223U;  // D. E. Knuth and H. W. Lewis's generator
    const Point p = points.at(begin + (state >> 8U) % stretch);
    if (p.x == p.x && p.w > 0.0) {
      some.push_back(p);
    }
  }
  sortPoints(some, points.weighted());
  return some;
}

}  // namespace vexel

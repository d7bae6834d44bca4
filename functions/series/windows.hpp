// The windows of a series, stretch by stretch: what each element of a stretch is once edges,
// missing values and weights have been looked at, and what a window holds.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "kernels/watch.hpp"
#include "vexel/series.hpp"

namespace vexel {

// Infinities are present, and sums count them apart.
enum class Kind : std::uint8_t { finite, plusInfinity, minusInfinity, absent, missing };

struct WindowPlan {
  std::size_t size;
  std::size_t window;  // cut down to what can hold something
  std::size_t left;    // elements before that of the result
  std::size_t right;
  std::size_t beyondLeft;  // results nearer to an end than this are NaN (Edges::nan)
  std::size_t beyondRight;
  MovingOptions options;

  WindowPlan(std::size_t n, std::size_t window, const MovingOptions& options);

  std::size_t stretch() const;  // results of a stretch
  // The end of the stretch that begins at a result.
  std::size_t stretchEnd(std::size_t first) const;
  // Whether the windows of first .. last-1 lie in the series.
  bool holdsWindows(std::size_t first, std::size_t last) const;
  bool leavesSeries(std::size_t i) const {
    return options.edges == Edges::nan && (i < beyondLeft || size - 1 - i < beyondRight);
  }
};

// Results first .. last-1 and the elements that their windows hold: window j is the elements j ..
// j+window-1.
class Stretch {
 public:
  Stretch(const Stretch&) = delete;
  Stretch& operator=(const Stretch&) = delete;
  Stretch(const WindowPlan& plan, std::span<const double> x, std::size_t first, std::size_t last);

  std::size_t results() const { return results_; }
  std::size_t window() const { return window_; }
  std::span<const double> values() const { return view_; }         // NaN where nothing is
  const std::vector<double>& weights() const { return weights_; }  // empty where there are none
  // All finite, no weights.
  bool plain() const { return plain_; }
  Kind kind(std::size_t i) const { return plain_ ? Kind::finite : kinds_[i]; }
  double weight(std::size_t i) const { return weights_.empty() ? 1 : weights_[i]; }

 private:
  void classify(const WindowPlan& plan, std::size_t i, double value, double weight);

  std::size_t results_;
  std::size_t window_;
  std::span<const double> view_;
  std::vector<double> values_;  // unless the series itself will do
  std::vector<double> weights_;
  std::vector<Kind> kinds_;
  bool plain_ = true;
};

// How many elements of each kind the window holds.
class WindowCounts {
 public:
  explicit WindowCounts(const Stretch& stretch) : stretch_(stretch) {
    for (std::size_t i = 0; i < stretch.window(); ++i) {
      count(i, 1);
    }
  }
  void slide() {
    count(at_, -1);
    count(at_ + stretch_.window(), 1);
    ++at_;
  }
  std::int64_t present() const { return of(Kind::finite) + infinities(); }
  std::int64_t infinities() const { return of(Kind::plusInfinity) + of(Kind::minusInfinity); }
  std::int64_t missing() const { return of(Kind::missing); }
  // The sum of the infinities: one of them, or NaN.
  double infiniteSum() const;
  // Whether the window has a result.
  bool answers(std::size_t minCount) const {
    return missing() == 0 && present() >= static_cast<std::int64_t>(minCount);
  }

 private:
  std::int64_t of(Kind k) const { return counts_[static_cast<std::size_t>(k)]; }
  void count(std::size_t i, std::int64_t by) {
    counts_[static_cast<std::size_t>(stretch_.kind(i))] += by;
  }

  const Stretch& stretch_;
  std::size_t at_ = 0;
  std::int64_t counts_[5] = {};
};

// One statistic over the windows of a stretch.
void movingSums(const Stretch& stretch, bool means, std::size_t minCount, double* out);
void movingVariances(const Stretch& stretch, bool roots, std::size_t minCount, double* out);
void movingExtremes(const Stretch& stretch, bool largest, std::size_t minCount, double* out);
void movingQuantiles(const Stretch& stretch, double q, std::size_t minCount, double* out);
// Before window j, where every window is looked through on its own: polls every few thousand
// elements.
inline void pollWindow(const Stretch& stretch, std::size_t j) {
  if (j % (1 + 4096 / stretch.window()) == 0) {
    kernels::poll();
  }
}
// f(values, weights) of what is present, in order; weights is empty where there are none.
using PresentStatistic =
    std::function<double(std::span<const double> values, std::span<const double> weights)>;
void movingDirect(const Stretch& stretch, const PresentStatistic& f, std::size_t minCount,
                  double* out);

}  // namespace vexel

// Positions and ranks in sorted order, from the numerical library's words of key and position.
#include <limits>

#include "functions/data/elements.hpp"
#include "kernels/watch.hpp"
#include "numerics/sorting/rank_words.hpp"
#include "vexel/ordering.hpp"

namespace vexel {

namespace {

// How many elements are not missing; those come first in sorted order.
template <typename T>
std::size_t presentIn(const char* function, std::span<const T> x, Missing missing) {
  std::size_t gone = 0;
  kernels::forEach(x.size(),
                   [&](std::size_t i) { gone += static_cast<std::size_t>(isMissing(x[i])); });
  if (missing == Missing::raise && gone > 0) {
    requireNoneMissing(function, Data(x));
  }
  return x.size() - gone;
}

}  // namespace

std::size_t argsort(Data x, std::span<std::int64_t> out, const SortOptions& options) {
  requireSize("out", out.size(), x.size());
  return onElements(x, [&]<typename T>(std::span<const T> elements) {
    const std::size_t present = presentIn("argsort", elements, options.missing);
    nag2::visitSortedAnywhere(
        elements.data(), elements.size(), false,
        [to = out.data()](std::size_t first, nag2::TiedPositions tied)
            __attribute__((always_inline)) {
              for (std::size_t i = 0; i < tied.size(); ++i) {
                to[first + i] = static_cast<std::int64_t>(tied[i]);
              }
            },
        [](std::size_t) {});
    return options.missing == Missing::omit ? present : x.size();
  });
}

std::vector<std::int64_t> argsort(Data x, const SortOptions& options) {
  std::vector<std::int64_t> out(x.size());
  out.resize(argsort(x, out, options));
  return out;
}

namespace {

// The ranks of the tied elements that follow `before` smaller ones, the group-th run of them.
// Inlined, since an argument on the stack would wait for all the scattered stores before it.
template <typename Set>
[[gnu::always_inline]] inline void rankTied(RankMethod method, double before, double group,
                                            nag2::TiedPositions tied, Set set) {
  const auto size = static_cast<double>(tied.size());
  double rank = before + (size + 1) / 2;
  switch (method) {
    case RankMethod::ordinal:
      for (std::size_t i = 0; i < tied.size(); ++i) {
        set(tied[i], before + 1 + static_cast<double>(i));
      }
      return;
    case RankMethod::min:
      rank = before + 1;
      break;
    case RankMethod::max:
      rank = before + size;
      break;
    case RankMethod::dense:
      rank = group;
      break;
    case RankMethod::average:
      break;
  }
  for (std::size_t i = 0; i < tied.size(); ++i) {
    set(tied[i], rank);
  }
}

}  // namespace

void rank(Data x, std::span<double> out, const RankOptions& options) {
  requireSize("out", out.size(), x.size());
  onElements(x, [&]<typename T>(std::span<const T> elements) {
    const std::size_t present = presentIn("rank", elements, options.missing);
    double group = 0;
    const auto visit = [&, to = out.data() ](std::size_t first, nag2::TiedPositions tied)
        __attribute__((always_inline)) {
      if (first < present) {
        if (options.method == RankMethod::dense) {
          ++group;
        }
        rankTied(options.method, static_cast<double>(first), group, tied,
                 [to](std::size_t i, double r) { to[i] = r; });
      } else {
        for (std::size_t i = 0; i < tied.size(); ++i) {
          to[tied[i]] = std::numeric_limits<double>::quiet_NaN();
        }
      }
    };
    if (options.method == RankMethod::dense) {
      nag2::visitSorted(elements.data(), elements.size(), false, visit);
    } else {
      nag2::visitSortedAnywhere(
          elements.data(), elements.size(), false, visit,
          [to = out.data()](std::size_t i) { __builtin_prefetch(to + i, 1); });
    }
  });
}

std::vector<double> rank(Data x, const RankOptions& options) {
  std::vector<double> out(x.size());
  rank(x, out, options);
  return out;
}

}  // namespace vexel

// Correlations by rank: Spearman's and Kendall's.

#include "functions/descriptive/correlation.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>
#include <vector>

#include "kernels/double_double.hpp"
#include "numerics/sorting/radix_sort.hpp"
#include "numerics/sorting/rank_words.hpp"
#include "numerics/sorting/sort_keys.hpp"

namespace vexel {

namespace {

using kernels::DoubleDouble;

// The present pairs of two columns; false when the result is NaN.
struct Pairs {
  std::vector<double> x;
  std::vector<double> y;
  std::vector<double> w;  // none without weights

  bool gather(const Rows& rows, std::size_t i, std::size_t j) {
    const Rows two = rows.only({i, j});
    x.reserve(rows.size());
    y.reserve(rows.size());
    w.reserve(rows.weighted() ? rows.size() : 0);
    const auto found =
        two.present([&](const double* const* c, const double* weight, std::size_t n) {
          x.insert(x.end(), c[0], c[0] + n);
          y.insert(y.end(), c[1], c[1] + n);
          if (weight != nullptr) {
            w.insert(w.end(), weight, weight + n);
          }
        });
    return !two.undefined(found);
  }
};

struct Place {
  std::uint64_t key;
  std::size_t index;
};

std::vector<Place> inOrder(const std::vector<double>& x) {
  std::vector<Place> places(x.size());
  std::vector<Place> scratch(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    places[i] = {nag2::ascendingKey(x[i]), i};
  }
  nag2::radixSort(places.data(), scratch.data(), x.size(), false,
                  [](const Place& p) { return p.key; });
  return places;
}

// Average ranks of points that count once each.
std::vector<double> ranksOf(const std::vector<double>& x) {
  std::vector<double> ranks(x.size());
  nag2::visitSortedAnywhere(
      x.data(), x.size(), false,
      [to = ranks.data()](std::size_t first, nag2::TiedPositions tied) {
        const double rank = static_cast<double>(first) + (static_cast<double>(tied.size()) + 1) / 2;
        for (std::size_t i = 0; i < tied.size(); ++i) {
          to[tied[i]] = rank;
        }
      },
      [to = ranks.data()](std::size_t i) { __builtin_prefetch(to + i, 1); });
  return ranks;
}

// The same of a point of weight w as if it were there w times.
std::vector<double> ranksOf(const std::vector<double>& x, const std::vector<double>& w) {
  const std::vector<Place> places = inOrder(x);
  std::vector<double> ranks(x.size());
  DoubleDouble before = 0.0;
  for (std::size_t i = 0; i < places.size();) {
    DoubleDouble group = 0.0;
    std::size_t end = i;
    for (; end < places.size() && places[end].key == places[i].key; ++end) {
      group = group + DoubleDouble(w[places[end].index]);
    }
    if (end / kernels::pollInterval != i / kernels::pollInterval) {
      kernels::poll();
    }
    const double rank = (before + (group + DoubleDouble(1.0)) * DoubleDouble(0.5)).high;
    for (; i < end; ++i) {
      ranks[places[i].index] = rank;
    }
    before = before + group;
  }
  return ranks;
}

struct Ranked {
  std::uint64_t x;
  std::uint64_t y;
  double w;
};

// The sum of squares of the weights of groups: runs for which same(a, b) of neighbours holds.
template <typename Same>
DoubleDouble squaredGroups(const std::vector<Ranked>& all, Same same) {
  DoubleDouble sum = 0.0;
  for (std::size_t i = 0; i < all.size();) {
    DoubleDouble group = 0.0;
    const std::size_t first = i;
    for (; i < all.size() && same(all[first], all[i]); ++i) {
      group = group + DoubleDouble(all[i].w);
    }
    sum = sum + group * group;
  }
  return sum;
}

// Merges two runs sorted by y; the weight of pairs that change places is returned.
DoubleDouble merge(const Ranked* left, const Ranked* middle, const Ranked* end, Ranked* to) {
  DoubleDouble changed = 0.0;
  double remaining = 0.0;
  for (const Ranked* p = left; p < middle; ++p) {
    remaining += p->w;
  }
  const Ranked* right = middle;
  while (left < middle && right < end) {
    if (right->y < left->y) {
      changed = changed + DoubleDouble::productOf(remaining, right->w);
      *to++ = *right++;
    } else {
      remaining -= left->w;
      *to++ = *left++;
    }
  }
  std::copy(right, end, std::copy(left, middle, to));
  return changed;
}

// The weight of pairs in the wrong order of y; all is sorted by y afterwards.
DoubleDouble sortCounting(std::vector<Ranked>& all) {
  std::vector<Ranked> scratch(all.size());
  DoubleDouble changed = 0.0;
  const std::size_t n = all.size();
  const auto passes = static_cast<double>(std::bit_width(n));
  for (std::size_t width = 1; width < n; width *= 2) {
    for (std::size_t i = 0; i < n; i += 2 * width) {
      if (i % kernels::pollInterval == 0) {
        const auto pass = static_cast<double>(std::bit_width(width) - 1);
        kernels::poll((pass + static_cast<double>(i) / static_cast<double>(n)) / passes);
      }
      const std::size_t middle = std::min(i + width, n);
      const std::size_t end = std::min(i + 2 * width, n);
      changed = changed + merge(&all[i], all.data() + middle, all.data() + end, &scratch[i]);
    }
    all.swap(scratch);
  }
  return changed;
}

// Merges two runs of one length from both ends at a time, neither of which then waits for the
// other; how many pairs change places.
std::uint64_t mergeCounting(const std::uint32_t* from, std::size_t length, std::uint32_t* to) {
  const std::uint32_t* left = from;
  const std::uint32_t* right = from + length;
  const std::uint32_t* lastLeft = right - 1;
  const std::uint32_t* lastRight = right + length - 1;
  const std::uint32_t* const middle = right;
  std::uint32_t* front = to;
  std::uint32_t* back = to + 2 * length - 1;
  std::uint64_t changed = 0;
  for (std::size_t i = 0; i < length; ++i) {
    const bool takeRight = *right < *left;
    *front++ = takeRight ? *right : *left;
    changed += takeRight ? static_cast<std::uint64_t>(middle - left) : 0;
    right += takeRight;
    left += !takeRight;
    const bool takeLeft = *lastRight < *lastLeft;
    *back-- = takeLeft ? *lastLeft : *lastRight;
    changed += takeLeft ? static_cast<std::uint64_t>(lastRight - middle + 1) : 0;
    lastLeft -= takeLeft;
    lastRight -= !takeLeft;
  }
  // Pairs of which both ends have counted one side.
  return changed -
         static_cast<std::uint64_t>(right - middle) * static_cast<std::uint64_t>(middle - left);
}

// The same of runs of any lengths.
std::uint64_t mergeCounting(const std::uint32_t* left, const std::uint32_t* middle,
                            const std::uint32_t* end, std::uint32_t* to) {
  std::uint64_t changed = 0;
  const std::uint32_t* right = middle;
  while (left < middle && right < end) {
    if (*right < *left) {
      changed += static_cast<std::uint64_t>(middle - left);
      *to++ = *right++;
    } else {
      *to++ = *left++;
    }
  }
  std::copy(right, end, std::copy(left, middle, to));
  return changed;
}

// The number of pairs in the wrong order; all is sorted afterwards.
std::uint64_t sortCounting(std::vector<std::uint32_t>& all) {
  constexpr std::size_t run = 8;
  const std::size_t n = all.size();
  std::uint64_t changed = 0;
  for (std::size_t begin = 0; begin < n; begin += run) {
    if (begin % kernels::pollInterval == 0) {
      kernels::poll(0);
    }
    for (std::size_t j = begin + 1; j < std::min(begin + run, n); ++j) {
      const std::uint32_t moving = all[j];
      std::size_t i = j;
      for (; i > begin && moving < all[i - 1]; --i) {
        all[i] = all[i - 1];
      }
      all[i] = moving;
      changed += j - i;
    }
  }
  std::vector<std::uint32_t> scratch(n);
  const auto passes = static_cast<double>(std::bit_width(n));
  for (std::size_t width = run; width < n; width *= 2) {
    std::size_t polled = 0;
    for (std::size_t i = 0; i < n; i += 2 * width) {
      const std::size_t end = std::min(i + 2 * width, n);
      if (end - polled >= kernels::pollInterval) {
        polled = i;
        const auto pass = static_cast<double>(std::bit_width(width) - 1);
        kernels::poll((pass + static_cast<double>(i) / static_cast<double>(n)) / passes);
      }
      changed += end - i == 2 * width ? mergeCounting(&all[i], width, &scratch[i])
                                      : mergeCounting(&all[i], all.data() + std::min(i + width, n),
                                                      all.data() + end, &scratch[i]);
    }
    all.swap(scratch);
  }
  return changed;
}

// Weights of pairs, twice each: of tied ones, by x, by y and by both, and of those in the wrong
// order, once.
struct PairWeights {
  DoubleDouble total;
  DoubleDouble tiedX;
  DoubleDouble tiedY;
  DoubleDouble tiedBoth;
  DoubleDouble discordant;
};

// A number below 2^63, exactly.
DoubleDouble exactly(std::uint64_t x) {
  const auto high = static_cast<double>(x);
  return {high,
          static_cast<double>(static_cast<std::int64_t>(x - static_cast<std::uint64_t>(high)))};
}

// Points that count once each: of fewer than 2^31.
PairWeights countPairs(const std::vector<double>& x, const std::vector<double>& y) {
  const std::size_t n = x.size();
  std::uint64_t tiedX = 0;
  std::uint64_t tiedY = 0;
  std::uint64_t tiedBoth = 0;
  const auto square = [](std::size_t k) { return static_cast<std::uint64_t>(k) * k; };
  std::vector<std::uint32_t> rank(n);
  nag2::visitSorted(y.data(), n, false, [&](std::size_t first, nag2::TiedPositions tied) {
    tiedY += square(tied.size());
    for (std::size_t i = 0; i < tied.size(); ++i) {
      rank[tied[i]] = static_cast<std::uint32_t>(first);
    }
  });
  std::vector<std::uint32_t> inOrder(n);
  nag2::visitSorted(x.data(), n, false, [&](std::size_t first, nag2::TiedPositions tied) {
    tiedX += square(tied.size());
    std::uint32_t* const group = inOrder.data() + first;
    for (std::size_t i = 0; i < tied.size(); ++i) {
      group[i] = rank[tied[i]];
    }
    std::sort(group, group + tied.size());
    for (std::size_t i = 0; i < tied.size();) {
      std::size_t end = i + 1;
      while (end < tied.size() && group[end] == group[i]) {
        ++end;
      }
      tiedBoth += square(end - i);
      i = end;
    }
  });
  const std::uint64_t discordant = sortCounting(inOrder);
  return {static_cast<double>(n), exactly(tiedX), exactly(tiedY), exactly(tiedBoth),
          exactly(discordant)};
}

PairWeights weighPairs(const Pairs& pairs) {
  PairWeights found;
  std::vector<Ranked> all(pairs.x.size());
  for (std::size_t k = 0; k < all.size(); ++k) {
    const double w = pairs.w.empty() ? 1.0 : pairs.w[k];
    all[k] = {nag2::ascendingKey(pairs.x[k]), nag2::ascendingKey(pairs.y[k]), w};
    found.total = found.total + DoubleDouble(w);
  }
  std::vector<Ranked> scratch(all.size());
  nag2::radixSort(all.data(), scratch.data(), all.size(), false,
                  [](const Ranked& r) { return r.y; });
  nag2::radixSort(all.data(), scratch.data(), all.size(), false,
                  [](const Ranked& r) { return r.x; });
  const auto sameX = [](const Ranked& a, const Ranked& b) { return a.x == b.x; };
  const auto sameY = [](const Ranked& a, const Ranked& b) { return a.y == b.y; };
  found.tiedX = squaredGroups(all, sameX);
  found.tiedBoth = squaredGroups(
      all, [&](const Ranked& a, const Ranked& b) { return sameX(a, b) && sameY(a, b); });
  found.discordant = sortCounting(all);
  found.tiedY = squaredGroups(all, sameY);
  return found;
}

}  // namespace

double spearman(const Rows& rows, std::size_t i, std::size_t j) {
  Pairs pairs;
  if (!pairs.gather(rows, i, j)) {
    return kNaN;
  }
  const bool weighted = rows.weighted();
  const std::vector<double> x = weighted ? ranksOf(pairs.x, pairs.w) : ranksOf(pairs.x);
  const std::vector<double> y = weighted ? ranksOf(pairs.y, pairs.w) : ranksOf(pairs.y);
  const Data columns[] = {x, y};
  Rows ranks(rows.function(), columns, rows.weighted() ? Data(pairs.w) : Data(),
             Missing::propagate);
  return pearsonOf(comoments(ranks, true), 0, 1);
}

// tau-b by counting exchanges (W. R. Knight, A computer method for calculating Kendall's tau with
// ungrouped data, 1966).  Twice the weight of pairs that are not tied is W^2 less the squared
// weights of the groups of ties, for repeated points as well.
double kendall(const Rows& rows, std::size_t i, std::size_t j) {
  Pairs pairs;
  if (!pairs.gather(rows, i, j)) {
    return kNaN;
  }
  constexpr std::size_t mostCounted = std::size_t{1} << 31;
  const bool counted = !rows.weighted() && pairs.x.size() < mostCounted;
  const PairWeights w = counted ? countPairs(pairs.x, pairs.y) : weighPairs(pairs);
  const DoubleDouble square = w.total * w.total;
  const DoubleDouble untiedX = square - w.tiedX;
  const DoubleDouble untiedY = square - w.tiedY;
  if (!(untiedX.high > 0.0) || !(untiedY.high > 0.0)) {
    return kNaN;
  }
  const DoubleDouble difference =
      untiedX - w.tiedY + w.tiedBoth - DoubleDouble(4.0) * w.discordant;  // twice P - Q
  return std::clamp((difference / (sqrt(untiedX) * sqrt(untiedY))).high, -1.0, 1.0);
}

CompleteRows::CompleteRows(const Rows& rows) : function_(rows.function()), columns_(rows.width()) {
  const auto found = rows.present([&](const double* const* c, const double* w, std::size_t n) {
    for (std::size_t j = 0; j < columns_.size(); ++j) {
      columns_[j].insert(columns_[j].end(), c[j], c[j] + n);
    }
    if (w != nullptr) {
      weights_.insert(weights_.end(), w, w + n);
    }
  });
  if (rows.undefined(found)) {
    columns_.assign(rows.width(), {});
    weights_.clear();
  }
}

Rows CompleteRows::rows() const {
  const std::vector<Data> columns(columns_.begin(), columns_.end());
  return {function_, columns, weights_.empty() ? Data() : Data(weights_), Missing::propagate};
}

}  // namespace vexel

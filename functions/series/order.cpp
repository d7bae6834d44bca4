// Moving extremes and quantiles.
//
// Extremes: blocks as for the sums.  Quantiles of few elements: a network sorts eight windows at
// once.  Of many: the elements of a stretch are ranked once; a window is a set of bits, one for
// each rank, and a mark in it goes from one set bit to the next as the window moves on.
#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

#include "functions/descriptive/quantiles.hpp"
#include "functions/series/windows.hpp"
#include "kernels/sorting/network.hpp"
#include "kernels/vector/column_order.hpp"
#include "numerics/sorting/rank_words.hpp"

namespace vexel {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

template <bool kLargest>
void extremes(const Stretch& s, std::size_t minCount, double* out) {
  constexpr double none =
      kLargest ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
  const auto further = [](double a, double b) {
    return kLargest ? (b > a ? b : a) : (b < a ? b : a);
  };
  const std::size_t w = s.window();
  const double* const x = s.values().data();
  WindowCounts counts(s);
  std::vector<double> ends(w);
  for (std::size_t block = 0; block < s.results(); block += w) {
    double end = none;
    for (std::size_t i = w; i-- > 0;) {
      ends[i] = end = further(end, x[block + i]);
    }
    double beginning = none;
    const std::size_t stop = std::min(w, s.results() - block);
    for (std::size_t i = 0; i < stop; ++i) {
      if (block + i > 0 && !s.plain()) {
        counts.slide();
      }
      const bool some = counts.answers(minCount) && counts.present() > 0;
      out[block + i] = some ? further(ends[i], beginning) : kNan;
      if (i + 1 < stop) {
        beginning = further(beginning, x[block + w + i]);
      }
    }
  }
}

// A set of ranks with a mark that knows how many members lie below it.
class MarkedSet {
 public:
  explicit MarkedSet(std::size_t ranks) : words_(ranks / 64 + 1) {}

  void insert(std::uint32_t rank) {
    words_[rank / 64] |= bit(rank);
    below_ += static_cast<std::int64_t>(rank < mark_);
  }
  void remove(std::uint32_t rank) {
    words_[rank / 64] &= ~bit(rank);
    below_ -= static_cast<std::int64_t>(rank < mark_);
  }
  // The k-th smallest member, k from 0; there are more than k.
  std::uint32_t select(std::int64_t k) {
    while (below_ > k) {
      mark_ = previous(mark_);
      --below_;
    }
    mark_ = from(mark_);
    while (below_ < k) {
      mark_ = from(mark_ + 1);
      ++below_;
    }
    return mark_;
  }
  // The first member at rank or above; there is one.
  std::uint32_t from(std::uint32_t rank) const {
    std::size_t i = rank / 64;
    std::uint64_t word = words_[i] & (~std::uint64_t{0} << rank % 64);
    while (word == 0) {
      word = words_[++i];
    }
    return static_cast<std::uint32_t>(64 * i + static_cast<std::size_t>(std::countr_zero(word)));
  }

 private:
  static std::uint64_t bit(std::uint32_t rank) { return std::uint64_t{1} << rank % 64; }
  std::uint32_t previous(std::uint32_t rank) const {
    std::size_t i = rank / 64;
    std::uint64_t word = words_[i] & (bit(rank) - 1);
    while (word == 0) {
      word = words_[--i];
    }
    return static_cast<std::uint32_t>(64 * i + 63 -
                                      static_cast<std::size_t>(std::countl_zero(word)));
  }

  std::vector<std::uint64_t> words_;
  std::uint32_t mark_ = 0;
  std::int64_t below_ = 0;
};

// The elements of a stretch in sorted order.
struct Ranked {
  std::vector<std::uint32_t> ranks;
  std::vector<double> sorted;
  explicit Ranked(std::span<const double> x) : ranks(x.size()), sorted(x.size()) {
    nag2::visitSorted(x.data(), x.size(), false, [&](std::size_t first, nag2::TiedPositions tied) {
      for (std::size_t i = 0; i < tied.size(); ++i) {
        ranks[tied[i]] = static_cast<std::uint32_t>(first + i);
        sorted[first + i] = x[tied[i]];
      }
    });
  }
};

// The order statistics, from 0, that a quantile of count elements lies between.
struct Neighbours {
  std::int64_t low;
  double fraction;
  Neighbours(double q, std::int64_t count) {
    const Place place = placeOf(q, static_cast<double>(count), QuantileMethod::linear);
    low = place.low.weight >= static_cast<double>(count)
              ? count - 1
              : static_cast<std::int64_t>(place.low.weight) - 1;
    fraction = place.fraction;
  }
};

// The longest windows that networks sort in less time than a mark takes.
constexpr std::size_t kFew = 20;

// Whether every window holds all of its elements, few of them, and no -0.0, which networks take for
// 0.0.
bool networksServe(const Stretch& s, std::size_t minCount) {
  return s.plain() && s.window() <= kFew && s.window() >= minCount &&
         s.results() >= kernels::stripWidth &&
         std::none_of(s.values().begin(), s.values().end(),
                      [](double x) { return x == 0 && std::signbit(x); });
}

// A strip of results between two finite ones each.
void betweenEach(const double* low, const double* high, double fraction, double* out) {
  bool usual = fraction == 0.5;
  for (std::size_t lane = 0; lane < kernels::stripWidth; ++lane) {
    const double sum = low[lane] + high[lane];
    out[lane] = 0.5 * sum;  // what between() gives where nothing overflows or vanishes
    usual &= (std::fabs(sum) > 0x1p-1000) & (std::fabs(sum) < 0x1p1000);
  }
  for (std::size_t lane = 0; !usual && lane < kernels::stripWidth; ++lane) {
    out[lane] = between(low[lane], high[lane], fraction);
  }
}

// Eight windows at a time, a lane each.
void quantilesByNetwork(const Stretch& s, double q, double* out) {
  constexpr std::size_t width = kernels::stripWidth;
  const std::size_t w = s.window();
  const Neighbours place(q, static_cast<std::int64_t>(w));
  const auto low = static_cast<std::size_t>(place.low);
  const bool two = place.fraction > 0;
  const std::size_t ranks[] = {low, low + 1};
  const auto network = kernels::sortingNetwork(w, std::span(ranks).first(two ? 2 : 1));
  alignas(64) double rows[kFew * width];
  for (std::size_t begin = 0; begin < s.results(); begin += width) {
    const std::size_t at = std::min(begin, s.results() - width);
    for (std::size_t i = 0; i < w; ++i) {
      std::copy_n(&s.values()[at + i], width, rows + width * i);
    }
    kernels::exchangeInStrip(rows, network);
    const double* const lower = rows + width * low;
    if (two) {
      betweenEach(lower, lower + width, place.fraction, out + at);
    } else {
      std::copy_n(lower, width, out + at);
    }
  }
}

// With weights: the members of the window in their order, until the weight is reached.
double weightedQuantile(const Stretch& s, std::size_t j, double q,
                        std::vector<std::pair<double, double>>& members) {
  members.clear();
  double total = 0;
  for (std::size_t i = j; i < j + s.window(); ++i) {
    if (s.kind(i) < Kind::absent) {
      members.emplace_back(s.values()[i], s.weights()[i]);
    }
  }
  std::sort(members.begin(), members.end());
  for (const auto& [x, w] : members) {
    total += w;
  }
  const Place place = placeOf(q, total, QuantileMethod::linear);
  const auto statistic = [&](Target target) {
    double sum = 0;
    for (const auto& [x, w] : members) {
      sum += w;
      if (sum >= target.weight) {
        return x;
      }
    }
    return members.back().first;
  };
  return between(statistic(place.low), statistic(place.high), place.fraction);
}

}  // namespace

void movingExtremes(const Stretch& s, bool largest, std::size_t minCount, double* out) {
  largest ? extremes<true>(s, minCount, out) : extremes<false>(s, minCount, out);
}

void movingQuantiles(const Stretch& s, double q, std::size_t minCount, double* out) {
  if (networksServe(s, minCount)) {
    return quantilesByNetwork(s, q, out);
  }
  WindowCounts counts(s);
  const bool weighted = !s.weights().empty();
  const Ranked ranked(s.values());
  MarkedSet window(ranked.ranks.size());
  std::vector<std::pair<double, double>> members;
  const auto member = [&](std::size_t i) { return s.kind(i) < Kind::absent; };
  for (std::size_t i = 0; i + 1 < s.window(); ++i) {
    if (member(i)) {
      window.insert(ranked.ranks[i]);
    }
  }
  Neighbours place(q, static_cast<std::int64_t>(s.window()));
  for (std::size_t j = 0; j < s.results(); ++j) {
    if (j > 0 && !s.plain()) {
      counts.slide();
    }
    const std::size_t newest = j + s.window() - 1;
    if (member(newest)) {
      window.insert(ranked.ranks[newest]);
    }
    out[j] = kNan;
    if (counts.answers(minCount) && counts.present() > 0) {
      if (weighted) {
        pollWindow(s, j);
        out[j] = weightedQuantile(s, j, q, members);
      } else {
        if (!s.plain()) {
          place = Neighbours(q, counts.present());
        }
        const std::uint32_t at = window.select(place.low);
        out[j] = ranked.sorted[at];
        if (place.fraction > 0) {
          out[j] = between(out[j], ranked.sorted[window.from(at + 1)], place.fraction);
        }
      }
    }
    if (member(j)) {
      window.remove(ranked.ranks[j]);
    }
  }
}

}  // namespace vexel

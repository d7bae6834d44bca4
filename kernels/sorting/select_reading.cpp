// Selection by bracketing: a sample of the array says between which two values a rank lies, nearly
// for sure; one pass counts what is below them and collects what is between, a few per cent, and
// there the rank is selected (R. W. Floyd and R. L. Rivest, 1975, Expected time bounds for
// selection, CACM 18, 165-172).

#include "kernels/sorting/select_reading.hpp"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <span>
#include <vector>

#include "kernels/lookout.hpp"
#include "kernels/sorting/sorting.hpp"

namespace vexel::kernels {

namespace {

constexpr int kSmallestSize = 20000;  // below, copying costs no more
constexpr std::size_t kMostBrackets = 4;
constexpr double kWidestShare = 0.25;  // of the array between the two values
constexpr int kChunk = 1024;           // elements that every bracket sees before the next ones
constexpr int kBlock = 32;             // elements that are counted together
// Standard deviations of a rank in the sample, to either side: one call in 10^4 misses.
constexpr double kMargin = 4.0;

using Doubles __attribute__((vector_size(16))) = double;
using Longs __attribute__((vector_size(16))) = long long;

long long sum(Longs x) { return x[0] + x[1]; }

// Two values, at places first and last of the sorted sample, and what the array has below, at and
// between them.  Ties with the two are counted, not collected: data with few distinct values fit
// too.
class Bracket {
 public:
  int first;
  int last;
  std::span<const int> ranks;

  // Without a place in the sample an end stays infinite.
  void start(const std::vector<double>& sample, int n) {
    const auto size = static_cast<int>(sample.size());
    low_ = first >= 0 ? sample[static_cast<std::size_t>(first)] : low_;
    high_ = last < size ? sample[static_cast<std::size_t>(last)] : high_;
    high_ = std::isnan(high_) ? std::numeric_limits<double>::infinity() : high_;
    const double expected = static_cast<double>(last - first) / size * n;
    between_.resize(static_cast<std::size_t>(2.0 * expected) + kChunk);
  }

  // Looks at n <= kChunk elements more.  False when there is no room for what they may hold.
  bool read(const double* x, int n) {
    if (collected_ + static_cast<std::size_t>(n) > between_.size()) {
      return false;
    }
    int i = 0;
    for (; i <= n - kBlock; i += kBlock) {
      if (count(x + i)) {
        collect(x + i, kBlock);
      }
    }
    for (int k = i; k < n; ++k) {
      belowLow_ += x[k] < low_;
      toLow_ += x[k] <= low_;
      toHigh_ += x[k] <= high_;
    }
    collect(x + i, n - i);
    return true;
  }

  // Puts the values of the ranks into values; false when some lies outside.
  bool finish(double* values) {
    const auto inside = static_cast<std::int64_t>(collected_);
    if (ranks.front() < belowLow_ || ranks.back() >= toHigh_) {
      return false;
    }
    std::vector<int> places;
    for (const int rank : ranks) {
      if (rank >= toLow_ && rank < toLow_ + inside) {
        places.push_back(static_cast<int>(rank - toLow_));
      }
    }
    selectRanks(between_.data(), static_cast<int>(inside), places.data(),
                static_cast<int>(places.size()));
    for (const int rank : ranks) {
      *values++ = rank < toLow_            ? low_
                  : rank < toLow_ + inside ? between_[static_cast<std::size_t>(rank - toLow_)]
                                           : high_;
    }
    return true;
  }

 private:
  // Counts a block; true when some of it lies between the values.
  bool count(const double* block) {
    const Doubles low = {low_, low_};
    const Doubles high = {high_, high_};
    Longs belowLow = {};
    Longs toLow = {};
    Longs belowHigh = {};
    Longs toHigh = {};
    for (int k = 0; k < kBlock; k += 2) {
      Doubles v;
      std::memcpy(&v, block + k, sizeof v);
      belowLow -= v < low;  // true is -1
      toLow -= v <= low;
      belowHigh -= v < high;
      toHigh -= v <= high;
    }
    belowLow_ += sum(belowLow);
    toLow_ += sum(toLow);
    toHigh_ += sum(toHigh);
    return sum(belowHigh - toLow) > 0;
  }

  void collect(const double* x, int n) {
    const double low = low_;
    const double high = high_;
    double* to = between_.data() + collected_;
    for (int k = 0; k < n; ++k) {
      const double v = x[k];
      *to = v;
      to += (v > low) & (v < high);
    }
    collected_ = static_cast<std::size_t>(to - between_.data());
  }

  double low_ = -std::numeric_limits<double>::infinity();
  double high_ = std::numeric_limits<double>::infinity();
  std::int64_t belowLow_ = 0;
  std::int64_t toLow_ = 0;
  std::int64_t toHigh_ = 0;
  std::vector<double> between_;
  std::size_t collected_ = 0;
};

// n^(2/3) elements, one from each of as many stretches, at places that follow no period.
std::vector<double> sampleOf(const double* x, int n) {
  const int size = static_cast<int>(std::pow(n, 2.0 / 3.0));
  std::vector<double> sample(static_cast<std::size_t>(size));
  std::uint32_t state = 1;
  for (int i = 0; i < size; ++i) {
    const std::int64_t begin = std::int64_t{i} * n / size;
    const std::int64_t end = (std::int64_t{i} + 1) * n / size;
    state = state * 1664525U + 1013904223U;  // Knuth and Lewis's generator
    sample[static_cast<std::size_t>(i)] = x[begin + (state >> 8U) % (end - begin)];
  }
  return sample;
}

// The brackets of all ranks; those that overlap become one.
std::vector<Bracket> bracketsOf(std::span<const int> ranks, int n, std::size_t sampleSize) {
  const auto size = static_cast<double>(sampleSize);
  std::vector<Bracket> brackets;
  for (std::size_t j = 0; j < ranks.size(); ++j) {
    const double p = (ranks[j] + 0.5) / n;
    const double margin = kMargin * std::sqrt(p * (1.0 - p) * size) + 1.0;
    const int first = static_cast<int>(std::floor(p * size - margin));
    const int last = static_cast<int>(std::ceil(p * size + margin));
    if (!brackets.empty() && first <= brackets.back().last) {
      Bracket& previous = brackets.back();
      previous.last = last;
      previous.ranks = {previous.ranks.data(), previous.ranks.size() + 1};
    } else {
      brackets.emplace_back();
      brackets.back().first = first;
      brackets.back().last = last;
      brackets.back().ranks = ranks.subspan(j, 1);
    }
  }
  return brackets;
}

bool worthReading(const std::vector<Bracket>& brackets, std::size_t sampleSize) {
  return brackets.size() <= kMostBrackets &&
         std::all_of(brackets.begin(), brackets.end(), [=](const Bracket& b) {
           return b.last - b.first < kWidestShare * static_cast<double>(sampleSize);
         });
}

// Puts the ends of all brackets at their places in the sample.
void placeEnds(const std::vector<Bracket>& brackets, std::vector<double>& sample) {
  const int size = static_cast<int>(sample.size());
  std::vector<int> places;
  for (const Bracket& b : brackets) {
    for (const int place : {b.first, b.last}) {
      if (place >= 0 && place < size) {
        places.push_back(place);
      }
    }
  }
  selectRanks(sample.data(), size, places.data(), static_cast<int>(places.size()));
}

}  // namespace

bool selectReading(const double* x, int n, const int* ranks, int m, double* values) {
  if (n < kSmallestSize) {
    return false;
  }
  std::vector<double> sample = sampleOf(x, n);
  std::vector<Bracket> brackets =
      bracketsOf({ranks, static_cast<std::size_t>(m)}, n, sample.size());
  if (!worthReading(brackets, sample.size())) {
    return false;
  }
  placeEnds(brackets, sample);
  for (Bracket& b : brackets) {
    b.start(sample, n);
  }
  Lookout lookout;
  for (std::ptrdiff_t i = 0; i < n; i += kChunk) {
    lookout.done(kChunk);
    const int size = static_cast<int>(std::min<std::ptrdiff_t>(kChunk, n - i));
    for (Bracket& b : brackets) {
      if (!b.read(x + i, size)) {
        return false;
      }
    }
  }
  for (Bracket& b : brackets) {
    if (!b.finish(values)) {
      return false;
    }
    values += b.ranks.size();
  }
  return true;
}

}  // namespace vexel::kernels

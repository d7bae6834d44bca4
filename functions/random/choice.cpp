// Urns, choices, permutations and shuffles.
#include <algorithm>
#include <bit>
#include <cmath>
#include <stdexcept>
#include <string>

#include "functions/data/refusals.hpp"
#include "functions/data/sized.hpp"
#include "kernels/watch.hpp"
#include "vexel/random.hpp"

namespace vexel {

namespace {

// The weights divided by their total, which is added up in twice the working precision.
std::vector<double> probabilities(const Data& weights) {
  std::vector<double> p(weights.size());
  double largest = 0;
  kernels::forEach(p.size(), [&](std::size_t i) {
    p[i] = weights[i];
    if (!(p[i] >= 0) || std::isinf(p[i])) {
      refuseWeight(nullptr, i, p[i]);
    }
    largest = std::max(largest, p[i]);
  });
  if (largest == 0) {
    throw std::invalid_argument(p.empty() ? "weights must not be empty"
                                          : "weights must not all be 0");
  }
  double sum = 0;
  double lost = 0;
  for (double& x : p) {
    x /= largest;
    const double next = sum + x;
    const double part = next - sum;
    lost += (sum - (next - part)) + (x - part);
    sum = next;
  }
  for (double& x : p) {
    x /= sum + lost;
  }
  return p;
}

// Above this many cells the 64 bits of one draw are too few for index and threshold.
constexpr std::size_t oneDrawCells = 65536;

// How many elements of work beyond the caches lie between two polls.
constexpr std::size_t slowPolling = std::size_t{1} << 16;

__extension__ using Wide = unsigned __int128;

}  // namespace

// A. J. Walker's aliases (1977) by the linear construction of M. D. Vose, A linear algorithm for
// generating random numbers with a given distribution, IEEE Transactions on Software Engineering
// 17(9), 1991.
Urn::Urn(Data weights) {
  std::vector<double> p = probabilities(weights);
  const std::size_t n = p.size();
  cells_.resize(n);
  std::vector<std::size_t> small;
  std::vector<std::size_t> large;
  kernels::forEach(n, [&](std::size_t i) {
    p[i] *= static_cast<double>(n);
    (p[i] < 1 ? small : large).push_back(i);
  });
  for (std::size_t done = 1; !small.empty() && !large.empty(); ++done) {
    if (done % slowPolling == 0) {
      kernels::poll();
    }
    const std::size_t i = small.back();
    const std::size_t other = large.back();
    small.pop_back();
    cells_[i] = {static_cast<std::uint64_t>(p[i] * 0x1p64), other};
    p[other] -= 1 - p[i];
    if (p[other] < 1) {
      large.pop_back();
      small.push_back(other);
    }
  }
  // What rounding left over is full.
  for (const std::size_t i : small) {
    cells_[i] = {0, i};
  }
  for (const std::size_t i : large) {
    cells_[i] = {0, i};
  }
}

std::int64_t Urn::sample(Random& rng) const {
  const auto product = static_cast<Wide>(rng.bits()) * cells_.size();
  const auto index = static_cast<std::uint64_t>(product >> 64);
  const std::uint64_t rest =
      cells_.size() <= oneDrawCells ? static_cast<std::uint64_t>(product) : rng.bits();
  const Cell& cell = cells_[index];
  // Without a branch: nobody could foretell it.
  const std::uint64_t other = 0 - static_cast<std::uint64_t>(rest >= cell.threshold);
  return static_cast<std::int64_t>(index ^ ((index ^ cell.alias) & other));
}

void Urn::sample(std::span<std::int64_t> out, Random& rng) const {
  constexpr std::size_t piece = std::size_t{kernels::pollInterval};
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (i % piece == 0) {
      kernels::poll(static_cast<double>(i) / static_cast<double>(out.size()));
    }
    out[i] = sample(rng);
  }
}

std::vector<std::int64_t> Urn::sample(std::size_t n, Random& rng) const {
  auto out = sized<std::int64_t>("Urn", "n", n);
  sample(out, rng);
  return out;
}

namespace {

// Where the places of a shuffle are that have moved: an open table, of which nothing is to be taken
// down again.
class Moved {
 public:
  explicit Moved(std::size_t most)
      : mask_(std::bit_ceil(most + most / 2 + 8) - 1), entries_(mask_ + 1, Entry{none, 0}) {}

  // What is at the place: itself at first.
  std::uint64_t at(std::uint64_t place) const {
    const Entry& entry = entries_[find(place)];
    return entry.place == none ? place : entry.value;
  }
  // Puts a value there; gives what was there.
  std::uint64_t exchange(std::uint64_t place, std::uint64_t value) {
    Entry& entry = entries_[find(place)];
    const std::uint64_t before = entry.place == none ? place : entry.value;
    entry = {place, value};
    return before;
  }

 private:
  static constexpr std::uint64_t none = ~std::uint64_t{0};
  struct Entry {
    std::uint64_t place;
    std::uint64_t value;
  };
  std::size_t find(std::uint64_t place) const {
    std::size_t i = static_cast<std::size_t>((place * 0x9E3779B97F4A7C15U) >> 20U) & mask_;
    while (entries_[i].place != place && entries_[i].place != none) {
      i = (i + 1) & mask_;
    }
    return i;
  }

  std::size_t mask_;
  std::vector<Entry> entries_;
};

// The first n places of a shuffle from the front.  Of many places only the moved ones are kept.
std::vector<std::int64_t> withoutReplacement(std::size_t size, std::size_t n, Random& rng) {
  if (n < size / 16) {
    auto chosen = sized<std::int64_t>("choice", "n", n);
    Moved moved(n);
    for (std::uint64_t i = 0; i < n; ++i) {
      if (i % slowPolling == 0) {
        kernels::poll(static_cast<double>(i) / static_cast<double>(n));
      }
      const std::uint64_t j = i + rng.below(size - i);
      const std::uint64_t first = moved.at(i);
      chosen[i] = static_cast<std::int64_t>(moved.exchange(j, first));
    }
    return chosen;
  }
  auto all = sized<std::int64_t>("choice", "size", size);
  kernels::forEach(size, [&](std::size_t i) { all[i] = static_cast<std::int64_t>(i); });
  for (std::size_t i = 0; i < n; ++i) {
    if (i % slowPolling == 0) {
      kernels::poll(static_cast<double>(i) / static_cast<double>(n));
    }
    std::swap(all[i], all[i + rng.below(size - i)]);
  }
  all.resize(n);
  return all;
}

// Successive draws with probabilities proportional to the weights that are left are the order of
// exponential arrival times with the weights as rates: P. S. Efraimidis and P. G. Spirakis,
// Weighted random sampling with a reservoir, Information Processing Letters 97(5), 2006.
std::vector<std::int64_t> weightedWithoutReplacement(const Data& weights, std::size_t n,
                                                     Random& rng) {
  struct Arrival {
    double time;
    std::int64_t index;
    bool operator<(const Arrival& other) const {
      return time < other.time || (time == other.time && index < other.index);
    }
  };
  const std::vector<double> p = probabilities(weights);
  std::vector<Arrival> arrivals;
  for (std::size_t i = 0; i < p.size(); ++i) {
    if (i % slowPolling == 0) {
      kernels::poll();
    }
    if (p[i] > 0) {
      arrivals.push_back({rng.exponential() / p[i], static_cast<std::int64_t>(i)});
    }
  }
  if (n > arrivals.size()) {
    throw std::invalid_argument("choice: n must be at most " + std::to_string(arrivals.size()) +
                                ", the elements of positive weight, got " + std::to_string(n));
  }
  // The sort cannot be divided, but its comparisons may throw.
  std::size_t compared = 0;
  std::partial_sort(arrivals.begin(), arrivals.begin() + static_cast<std::ptrdiff_t>(n),
                    arrivals.end(), [&](const Arrival& a, const Arrival& b) {
                      if (++compared % (16 * slowPolling) == 0) {
                        kernels::poll();
                      }
                      return a < b;
                    });
  std::vector<std::int64_t> chosen(n);
  std::transform(arrivals.begin(), arrivals.begin() + static_cast<std::ptrdiff_t>(n),
                 chosen.begin(), [](const Arrival& a) { return a.index; });
  return chosen;
}

// Fisher and Yates, the places of a group of swaps asked for ahead of them: in a large array most
// of the time would go by waiting for them.
template <typename T>
void shuffleAhead(std::span<T> x, Random& rng) {
  constexpr std::size_t group = 32;
  std::uint64_t places[group];
  std::size_t left = x.size();
  while (left > 1) {
    const std::size_t count = std::min(group, left - 1);
    for (std::size_t k = 0; k < count; ++k) {
      places[k] = rng.below(left - k);
      __builtin_prefetch(&x[places[k]], 1);
    }
    for (std::size_t k = 0; k < count; ++k) {
      std::swap(x[left - 1 - k], x[places[k]]);
    }
    left -= count;
    if (left % (std::size_t{1} << 18) < count) {
      kernels::poll(1.0 - static_cast<double>(left) / static_cast<double>(x.size()));
    }
  }
}

}  // namespace

std::vector<std::int64_t> choice(std::size_t size, std::size_t n, Random& rng,
                                 const ChoiceOptions& options) {
  if (options.weights.given() && options.weights.size() != size) {
    throw std::invalid_argument("choice: weights must be " + std::to_string(size) + ", got " +
                                std::to_string(options.weights.size()));
  }
  if (!options.replace) {
    if (n > size) {
      throw std::invalid_argument("choice: n must be at most " + std::to_string(size) +
                                  " without replacement, got " + std::to_string(n));
    }
    return options.weights.given() ? weightedWithoutReplacement(options.weights, n, rng)
                                   : withoutReplacement(size, n, rng);
  }
  if (n == 0) {
    return {};
  }
  if (size == 0) {
    throw std::invalid_argument("choice: there must be something to choose from");
  }
  if (options.weights.given()) {
    return Urn(options.weights).sample(n, rng);
  }
  return rng.integers(0, static_cast<std::int64_t>(size), n);
}

std::vector<double> choice(Data x, std::size_t n, Random& rng, const ChoiceOptions& options) {
  const std::vector<std::int64_t> indices = choice(x.size(), n, rng, options);
  auto chosen = sized<double>("choice", "n", n);
  for (std::size_t i = 0; i < n; ++i) {
    if (i % slowPolling == 0) {
      kernels::poll();
    }
    chosen[i] = x[static_cast<std::size_t>(indices[i])];
  }
  return chosen;
}

std::vector<std::int64_t> permutation(std::size_t n, Random& rng) {
  auto order = sized<std::int64_t>("permutation", "n", n);
  kernels::forEach(n, [&](std::size_t i) { order[i] = static_cast<std::int64_t>(i); });
  shuffle(std::span(order), rng);
  return order;
}

void shuffle(std::span<double> x, Random& rng) { shuffleAhead(x, rng); }
void shuffle(std::span<float> x, Random& rng) { shuffleAhead(x, rng); }
void shuffle(std::span<std::int32_t> x, Random& rng) { shuffleAhead(x, rng); }
void shuffle(std::span<std::int64_t> x, Random& rng) { shuffleAhead(x, rng); }

}  // namespace vexel

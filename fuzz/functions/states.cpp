// States, random numbers, sequences and roots.

#include <algorithm>
#include <stdexcept>
#include <vexel/sequences.hpp>
#include <vexel/statistics.hpp>

#include "choices.hpp"

namespace fuzz {
namespace {

namespace vx = vexel;
using Bytes = std::vector<std::uint8_t>;

// Changes the content of a state's bytes and sets right what would be refused at once: size and
// checksum.
void mutate(Choices& choices, Bytes& bytes) {
  constexpr std::size_t kHead = 20;
  constexpr std::size_t kChecksum = 8;
  bytes.resize(bytes.size() - kChecksum);
  for (std::size_t n = 1 + choices.below(4); n > 0; --n) {
    const std::size_t content = bytes.size() - kHead;
    const std::size_t at =
        kHead + (content == 0 ? 0 : choices.below(std::min<std::size_t>(content, 60000)));
    const auto place = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    switch (choices.below(6)) {
      case 0:
        bytes.insert(place, choices.byte());
        break;
      case 1:
        if (content > 0) {
          bytes.erase(place);
        }
        break;
      case 2:
        bytes.resize(at);
        break;
      case 3:
      case 4:
        if (at + 8 <= bytes.size()) {
          const double x = choices.number();
          const std::int64_t k = choices.whole();
          std::memcpy(&*place, choices.flag() ? static_cast<const void*>(&x) : &k, 8);
        }
        break;
      default:
        if (content > 0) {
          *place = choices.byte();
        }
    }
  }
  const std::uint64_t size = bytes.size() - kHead;
  std::memcpy(bytes.data() + 12, &size, sizeof size);
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const std::uint8_t b : bytes) {
    hash = (hash ^ b) * 0x100000001B3U;
  }
  const auto* const raw = reinterpret_cast<const std::uint8_t*>(&hash);
  bytes.insert(bytes.end(), raw, raw + kChecksum);
}

// Everything that can be asked of a state.
void ask(const vx::Sums& s) {
  expect(same(s.sum(), s.sum()) && s.count() >= 0, "sums"), s.mean(), s.weight();
}
void ask(const vx::Moments& s) {
  expect(!(s.var() < 0) && !(s.std() < 0) && s.count() >= 0 && s.missing() >= 0, "moments", s.var(),
         s.std(), static_cast<double>(s.count()));
  s.mean(), s.skewness(), s.kurtosis(), s.moment(s.order()), s.weight();
}
void ask(const vx::Extremes& s) { expect(!(s.min() > s.max()), "extremes"); }
void ask(const vx::Covariance& s) {
  const auto c = s.cov();
  const auto r = s.corr();
  expect(c.size == s.variables() && r.size == s.variables(), "covariance's size");
  for (const double x : r.values) {
    expect(atMost(std::abs(x), 1, 1e-12), "correlation in [-1, 1]");
  }
  s.mean(), s.weight();
}
void ask(const vx::Tally& s) {
  const auto values = s.values();
  expect(values.size() == s.counts().size(), "tally's sizes");
  expect(std::adjacent_find(values.begin(), values.end(), std::greater_equal<>()) == values.end(),
         "tally ascends");
}
void ask(const vx::Histogram& s) {
  expect(s.counts().size() + 1 == s.edges().size(), "histogram's sizes");
}
void ask(const vx::DensityGrid& s) {
  if (s.x().size() < 100'000) {
    s.density(1.0), s.density(1e-3, vx::DensityKernel::biweight);
  }
  s.weight();
}
void ask(const vx::Ranks& s) {
  s.weight(), s.pass(), s.missing();
  if (s.done()) {
    s.result();
  }
}

template <typename S>
void update(Choices& choices, S& state) {
  const Elements x(choices, 64);
  const Elements weights(choices, x.size(), choices.flag());
  if constexpr (std::is_same_v<S, vx::Covariance>) {
    const std::vector<vx::Data> columns(std::min<std::size_t>(state.variables(), 50), x);
    state.update(columns, weights);
  } else {
    state.update(x, weights);
  }
}

template <typename S>
void check(Choices& choices, S state) {
  const S empty = state;
  do {
    switch (choices.below(4)) {
      case 0: {
        S other = empty;
        update(choices, other);
        state.merge(other);
        break;
      }
      case 1: {
        const Bytes bytes = state.to_bytes();
        expect(S::from_bytes(bytes).to_bytes() == bytes, "bytes there and back");
        break;
      }
      case 2: {
        Bytes bytes = state.to_bytes();
        mutate(choices, bytes);
        S read = empty;
        try {
          read = S::from_bytes(bytes);
        } catch (const std::invalid_argument&) {
          break;
        }
        ask(read);
        expect(S::from_bytes(read.to_bytes()).to_bytes() == read.to_bytes(),
               "bytes there and back");
        state = read;
        break;
      }
      default:
        update(choices, state);
        if constexpr (std::is_same_v<S, vx::Ranks>) {
          state.next_pass();
        }
    }
    ask(state);
  } while (!choices.empty() && choices.below(4) != 0);
}

void checkRandomBytes(Choices& choices, const vx::Random& rng) {
  std::vector<std::byte> bytes = rng.to_bytes();
  expect(vx::Random::from_bytes(bytes).to_bytes() == bytes, "bytes there and back");
  bytes[choices.below(bytes.size())] = static_cast<std::byte>(choices.byte());
  vx::Random read = vx::Random::from_bytes(bytes);
  for (int i = 0; i < 200; ++i) {
    read.uniform();
  }
}

template <typename S>
void checkSequence(Choices& choices, S sequence) {
  do {
    switch (choices.below(3)) {
      case 0:
        sequence.skip(choices.flag() ? choices.below(1000)
                                     : static_cast<std::uint64_t>(choices.whole()));
        break;
      case 1: {
        const std::size_t n = choices.below(20);
        const std::uint64_t index = sequence.index();
        for (const double x : sequence.points(n)) {
          expect(x >= 0 && x <= 1, "points in [0, 1]");
        }
        expect(sequence.index() == index + n && sequence.index() <= sequence.limit(),
               "sequence's index");
        break;
      }
      default:
        sequence.reset();
    }
  } while (!choices.empty() && choices.below(4) != 0);
}

}  // namespace

void callState(Choices& choices) {
  const vx::Missing missing = choices.missing();
  switch (choices.below(8)) {
    case 0:
      return check(choices, vx::Sums(missing));
    case 1:
      return check(choices, vx::Moments(static_cast<int>(choices.below(12)) - 1, missing));
    case 2:
      return check(choices, vx::Extremes(missing));
    case 3:
      return check(choices, vx::Covariance(choices.below(5), missing));
    case 4:
      return check(choices, vx::Tally(missing));
    case 5:
      return check(choices, vx::Histogram(Elements(choices, 12), missing));
    case 6:
      return check(choices, vx::DensityGrid({choices.number(), choices.number()},
                                            choices.below(100), missing));
    default:
      return check(choices,
                   vx::Ranks(Elements(choices, 8), choices.one<vx::QuantileMethod>(9), missing));
  }
}

void callChance(Choices& choices) {
  vx::Random rng(choices.byte(), static_cast<std::uint64_t>(choices.whole()));
  switch (choices.below(7)) {
    case 0:
      return checkRandomBytes(choices, rng);
    case 1: {
      const std::int64_t low = choices.whole();
      const std::int64_t high = choices.whole();
      for (const std::int64_t k : rng.integers(low, high, 10)) {
        expect(k >= low && k <= high, "integers in their range");
      }
      return;
    }
    case 2: {
      const Elements weights(choices, 64);
      const vx::Urn urn(weights);
      for (const std::int64_t k : urn.sample(20, rng)) {
        expect(k >= 0 && k < static_cast<std::int64_t>(weights.size()), "urn's indices");
        expect(weights.view()[static_cast<std::size_t>(k)] > 0, "urn draws what has weight");
      }
      return;
    }
    case 3: {
      const std::size_t size =
          choices.flag() ? choices.below(100) : static_cast<std::size_t>(choices.whole());
      const std::size_t n = choices.below(50);
      const Elements weights(choices, std::min<std::size_t>(size, 100), choices.flag());
      for (const std::int64_t k :
           vx::choice(size, n, rng, {.weights = weights, .replace = choices.flag()})) {
        expect(static_cast<std::size_t>(k) < size, "choice's indices");
      }
      return;
    }
    case 4: {
      auto p = vx::permutation(choices.below(300), rng);
      std::sort(p.begin(), p.end());
      for (std::size_t i = 0; i < p.size(); ++i) {
        expect(p[i] == static_cast<std::int64_t>(i), "permutation");
      }
      return;
    }
    default: {
      const Elements x(choices, 40);
      const auto b = vx::bootstrap(x, choices.one<vx::Statistic>(10), rng,
                                   {.replicates = choices.below(60),
                                    .confidence = choices.probability(),
                                    .method = choices.one<vx::BootstrapMethod>(3),
                                    .missing = choices.missing()});
      expect(!(b.interval.low > b.interval.high), "bootstrap's interval", b.interval.low,
             b.interval.high, b.estimate);
    }
  }
}

void callSequence(Choices& choices) {
  vx::Random rng(1);
  const std::size_t dimension = choices.count(12);
  const auto scramble = choices.one<vx::Scramble>(3);
  const auto start = choices.flag() ? static_cast<std::uint64_t>(choices.whole()) : 0;
  const vx::SequenceOptions options{scramble, choices.flag() ? &rng : nullptr, {}, start};
  switch (choices.below(4)) {
    case 0:
      return checkSequence(choices, vx::Halton(dimension, options));
    case 1:
      return checkSequence(choices, vx::Faure(dimension, options));
    case 2:
      return checkSequence(choices,
                           vx::Sobol(dimension, {.scramble = scramble,
                                                 .seed = choices.byte(),
                                                 .start = start,
                                                 .bits = static_cast<int>(choices.below(66))}));
    default: {
      std::vector<vx::SobolDimension> own(choices.below(5));
      for (vx::SobolDimension& d : own) {
        d.degree = static_cast<int>(choices.below(40)) - 1;
        d.coefficients = choices.byte();
        d.integers.resize(choices.below(8));
        for (std::uint64_t& k : d.integers) {
          k = static_cast<std::uint64_t>(choices.whole());
        }
      }
      return checkSequence(choices,
                           vx::Sobol(choices.below(6), {.start = start, .dimensions = own}));
    }
  }
}

void callRoot(Choices& choices) {
  const double a = choices.number();
  const double b = choices.number();
  const std::size_t kind = choices.below(5);
  const auto f = [=](double t) {
    switch (kind) {
      case 0:
        return std::expm1(t / (std::abs(a) + 1)) - b;
      case 1:
        return 1 / (t - a);
      case 2:
        return std::copysign(1.0, t - a);
      case 3:
        return (t - a) * (t - a) * (t - a);
      default:
        return a * t + b;
    }
  };
  const double low = choices.number();
  const double high = choices.number();
  if (choices.flag()) {
    const std::int64_t from = choices.whole();
    const std::int64_t to = choices.whole();
    const std::int64_t k = vx::find_integer(f, from, to, {.target = choices.number()});
    expect(k >= std::min(from, to) && k <= std::max(from, to), "integer in its range");
    return;
  }
  vx::RootOptions options{.target = choices.ordinary(),
                          .tolerance = choices.probability(),
                          .max_iterations = static_cast<int>(choices.below(300)) - 1};
  if (choices.flag()) {
    options.derivative = [=](double) { return a; };
  }
  const vx::Root r = vx::find_root(f, {low, high}, options);
  expect(r.converged && (std::isinf(low) || std::isinf(high) ||
                         (r.root >= std::min(low, high) && r.root <= std::max(low, high))),
         "root in its bracket");
}

}  // namespace fuzz

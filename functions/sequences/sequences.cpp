// Quasi-random sequences: what the three share, and each one's points.
#include "vexel/sequences.hpp"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

#include "functions/sequences/sobol_directions.hpp"
#include "kernels/sequences/faure.hpp"
#include "kernels/sequences/halton.hpp"
#include "kernels/sequences/scramble.hpp"
#include "kernels/sequences/sobol.hpp"
#include "kernels/variates/lanes.hpp"
#include "kernels/watch.hpp"
#include "vexel/random.hpp"

namespace vexel {

using kernels::PointLayout;

struct SequenceBody {
  virtual ~SequenceBody() = default;
  virtual std::unique_ptr<SequenceBody> clone() const = 0;
  // The points themselves, and one scrambled coordinate of one of them.
  virtual void plain(std::uint64_t first, std::size_t n, const PointLayout& at) const = 0;
  virtual void scrambled(std::uint64_t first, std::size_t n, std::size_t j, double* out,
                         std::ptrdiff_t stride) const = 0;

  std::size_t dimension = 0;
  std::uint64_t limit = std::uint64_t{1} << 62;
  std::uint64_t start = 0;
  std::uint64_t index = 0;
  Scramble scramble = Scramble::none;
  std::vector<std::uint64_t> keys;

  void points(std::uint64_t first, std::size_t n, const PointLayout& at) const {
    if (scramble == Scramble::none) {
      plain(first, n, at);
      return;
    }
    for (std::size_t j = 0; j < dimension; ++j) {
      scrambled(first, n, j, at.out + static_cast<std::ptrdiff_t>(j) * at.coordinate, at.point);
    }
  }
  void requirePoints(std::uint64_t from, std::uint64_t n) const {
    if (from > limit || n > limit - from) {
      throw std::length_error("a quasi-random sequence of " + std::to_string(limit) +
                              " points has none beyond its last: asked for " + std::to_string(n) +
                              " from index " + std::to_string(from));
    }
  }
};

namespace {

// Points between two looks at the watch.
constexpr std::size_t kCoordinatesAtOnce = std::size_t{1} << 18;
// So many go through memory near by, kCoordinatesNear at a time, past the caches.
constexpr std::size_t kTooManyForCaches = std::size_t{1} << 19;
constexpr std::size_t kCoordinatesNear = std::size_t{1} << 15;

void requireDimension(const char* sequence, std::size_t dimension, std::size_t largest) {
  if (dimension < 1 || dimension > largest) {
    throw std::invalid_argument(std::string(sequence) + ": dimension must be 1 to " +
                                std::to_string(largest) + ", got " + std::to_string(dimension));
  }
}

template <typename Options>
std::unique_ptr<SequenceBody> begin(std::unique_ptr<SequenceBody> body, std::size_t dimension,
                                    const Options& options) {
  body->dimension = dimension;
  body->requirePoints(options.start, 0);
  body->start = options.start;
  body->index = options.start;
  body->scramble = options.scramble;
  if (options.scramble != Scramble::none) {
    std::optional<Random> own;
    Random* rng = options.rng;
    if (rng == nullptr) {
      own = options.seed ? Random(*options.seed) : Random();
      rng = &*own;
    }
    body->keys.resize(dimension);
    rng->bits(body->keys);
  }
  return body;
}

}  // namespace

// --- the frame -----------------------------------------------------------------------------------

PointSequence::PointSequence(std::unique_ptr<SequenceBody> body) : body_(std::move(body)) {}
PointSequence::PointSequence(const PointSequence& other) : body_(other.body_->clone()) {}
PointSequence::PointSequence(PointSequence&& other) noexcept = default;
PointSequence& PointSequence::operator=(PointSequence other) noexcept {
  std::swap(body_, other.body_);
  return *this;
}
PointSequence::~PointSequence() = default;

std::size_t PointSequence::dimension() const { return body_->dimension; }
std::uint64_t PointSequence::index() const { return body_->index; }
std::uint64_t PointSequence::limit() const { return body_->limit; }
Scramble PointSequence::scramble() const { return body_->scramble; }
const std::vector<std::uint64_t>& PointSequence::keys() const { return body_->keys; }

void PointSequence::write(std::uint64_t index, std::size_t n, double* out, std::ptrdiff_t point,
                          std::ptrdiff_t coordinate) const {
  body_->requirePoints(index, n);
  const std::size_t d = body_->dimension;
  const bool far =
      coordinate == 1 && point == static_cast<std::ptrdiff_t>(d) && n >= kTooManyForCaches / d;
  const std::size_t block =
      std::max<std::size_t>(64, (far ? kCoordinatesNear : kCoordinatesAtOnce) / d);
  std::vector<double> near(far ? block * d : 0);
  for (std::size_t done = 0, polled = 0; done < n;) {
    const std::size_t length = std::min(n - done, block);
    double* const to = out + static_cast<std::ptrdiff_t>(done) * point;
    body_->points(index + done, length, {far ? near.data() : to, point, coordinate});
    if (far) {
      kernels::copyPastCachesAnywhere(near.data(), to, length * d);
    }
    done += length;
    if (done == n || (done - polled) * d >= kCoordinatesAtOnce) {
      kernels::poll(static_cast<double>(done) / static_cast<double>(n));
      polled = done;
    }
  }
  if (far) {
    kernels::finishCopies();
  }
}

void PointSequence::points(std::size_t n, std::span<double> out, PointOrder order) {
  const std::size_t d = body_->dimension;
  if (out.size() / d != n || out.size() % d != 0) {
    throw std::invalid_argument("out must have room for " + std::to_string(n) + " points of " +
                                std::to_string(d) + " coordinates, got " +
                                std::to_string(out.size()) + " elements");
  }
  const bool rows = order == PointOrder::row;
  write(body_->index, n, out.data(), rows ? static_cast<std::ptrdiff_t>(d) : 1,
        rows ? 1 : static_cast<std::ptrdiff_t>(n));
  body_->index += n;
}

std::vector<double> PointSequence::points(std::size_t n) {
  body_->requirePoints(body_->index, n);
  if (n > std::numeric_limits<std::size_t>::max() / sizeof(double) / body_->dimension) {
    throw std::length_error("points: " + std::to_string(n) + " points do not fit into memory");
  }
  std::vector<double> out(n * body_->dimension);
  points(n, out);
  return out;
}

void PointSequence::skip(std::uint64_t n) {
  body_->requirePoints(body_->index, n);
  body_->index += n;
}

void PointSequence::reset() { body_->index = body_->start; }

// --- Sobol ---------------------------------------------------------------------------------------

namespace {

constexpr int kHighestDegree = 30;

void checkDirections(std::span<const SobolDimension> dimensions, std::size_t needed) {
  const auto refuse = [](std::size_t j, const std::string& text) {
    throw std::invalid_argument("Sobol: dimensions[" + std::to_string(j) + "] " + text);
  };
  if (dimensions.size() < needed) {
    throw std::invalid_argument("Sobol: directions are given for " +
                                std::to_string(dimensions.size()) + " dimensions, needed are " +
                                std::to_string(needed));
  }
  for (std::size_t j = 0; j < needed; ++j) {
    const SobolDimension& d = dimensions[j];
    if (d.degree < 0 || d.degree > kHighestDegree) {
      refuse(j, "must have a degree of 0 to " + std::to_string(kHighestDegree) + ", got " +
                    std::to_string(d.degree));
    }
    if (d.integers.size() < static_cast<std::size_t>(d.degree)) {
      refuse(j, "must have as many integers as its degree, " + std::to_string(d.degree) + ", got " +
                    std::to_string(d.integers.size()));
    }
    for (std::size_t k = 0; k < static_cast<std::size_t>(d.degree); ++k) {
      if (d.integers[k] % 2 == 0 || d.integers[k] >> (k + 1) != 0) {
        refuse(j, "must have odd integers m_k < 2^k, got m_" + std::to_string(k + 1) + " = " +
                      std::to_string(d.integers[k]));
      }
    }
  }
}

struct SobolBody final : SequenceBody {
  SobolBody(std::size_t d, int bits) : numbers(d, bits) { limit = std::uint64_t{1} << bits; }
  std::unique_ptr<SequenceBody> clone() const override {
    return std::make_unique<SobolBody>(*this);
  }
  void plain(std::uint64_t first, std::size_t n, const PointLayout& at) const override {
    numbers.write(first, n, at);
  }
  void scrambled(std::uint64_t first, std::size_t n, std::size_t j, double* out,
                 std::ptrdiff_t stride) const override {
    constexpr int unused = 64 - kernels::coordinateBits;
    const std::uint64_t key = keys[j];
    std::uint64_t x = numbers.numerator(first, j);
    for (std::size_t i = 0; i < n; ++i) {
      const std::uint64_t image = scramble == Scramble::owen
                                      ? kernels::scrambleBits(x, kernels::coordinateBits, key)
                                      : x ^ key >> unused;
      out[static_cast<std::ptrdiff_t>(i) * stride] = kernels::SobolNumbers::toUnit(image);
      x ^= numbers.change(first + i + 1, j);
    }
  }

  kernels::SobolNumbers numbers;
};

struct HaltonBody final : SequenceBody {
  explicit HaltonBody(std::size_t d) {
    constexpr std::size_t cells = std::size_t{1} << 17;  // of all tables together
    constexpr std::size_t most = 1024;
    for (const std::uint32_t prime : kernels::firstPrimes(d)) {
      inverses.emplace_back(prime, std::min(most, cells / d));
    }
  }
  std::unique_ptr<SequenceBody> clone() const override {
    return std::make_unique<HaltonBody>(*this);
  }
  void plain(std::uint64_t first, std::size_t n, const PointLayout& at) const override {
    constexpr std::size_t block = 512;  // of ten coordinates stays in the cache
    for (std::size_t done = 0; done < n; done += block) {
      for (std::size_t j = 0; j < dimension; ++j) {
        inverses[j].write(first + done, std::min(n - done, block),
                          at.out + static_cast<std::ptrdiff_t>(done) * at.point +
                              static_cast<std::ptrdiff_t>(j) * at.coordinate,
                          at.point);
      }
    }
  }
  void scrambled(std::uint64_t first, std::size_t n, std::size_t j, double* out,
                 std::ptrdiff_t stride) const override {
    for (std::size_t i = 0; i < n; ++i) {
      out[static_cast<std::ptrdiff_t>(i) * stride] = scramble == Scramble::owen
                                                         ? inverses[j].scrambled(first + i, keys[j])
                                                         : inverses[j].shifted(first + i, keys[j]);
    }
  }

  std::vector<kernels::RadicalInverse> inverses;
};

struct FaureBody final : SequenceBody {
  explicit FaureBody(std::size_t d) : matrices(d) {}
  std::unique_ptr<SequenceBody> clone() const override {
    return std::make_unique<FaureBody>(*this);
  }
  void plain(std::uint64_t first, std::size_t n, const PointLayout& at) const override {
    matrices.write(first, n, at);
  }
  void scrambled(std::uint64_t first, std::size_t n, std::size_t j, double* out,
                 std::ptrdiff_t stride) const override {
    std::vector<std::uint32_t> digits;
    for (std::size_t i = 0; i < n; ++i) {
      matrices.digits(first + i, j, digits);
      out[static_cast<std::ptrdiff_t>(i) * stride] = scramble == Scramble::owen
                                                         ? matrices.scrambled(digits, keys[j])
                                                         : matrices.shifted(digits, keys[j]);
    }
  }

  kernels::FaureMatrices matrices;
};

}  // namespace

Sobol::Sobol(std::size_t dimension, const SobolOptions& options) : PointSequence(nullptr) {
  const bool own = options.dimensions.data() != nullptr;
  requireDimension("Sobol", dimension, own ? 100'000 : maxDimension);
  if (options.bits < 1 || options.bits > 62) {
    throw std::invalid_argument("Sobol: bits must be 1 to 62, got " + std::to_string(options.bits));
  }
  auto body = std::make_unique<SobolBody>(dimension, options.bits);
  if (own) {
    checkDirections(options.dimensions, dimension);
  }
  for (std::size_t j = 0; j < dimension; ++j) {
    if (own) {
      const SobolDimension& d = options.dimensions[j];
      body->numbers.setDimension(j, d.degree, d.coefficients, d.integers);
    } else {
      const SobolDirections& d = sobolDirections[j];
      const std::vector<std::uint64_t> initial(std::begin(d.initial), std::end(d.initial));
      body->numbers.setDimension(j, d.degree, d.coefficients, initial);
    }
  }
  body_ = begin(std::move(body), dimension, options);
}

Halton::Halton(std::size_t dimension, const SequenceOptions& options) : PointSequence(nullptr) {
  requireDimension("Halton", dimension, maxDimension);
  body_ = begin(std::make_unique<HaltonBody>(dimension), dimension, options);
}

Faure::Faure(std::size_t dimension, const SequenceOptions& options) : PointSequence(nullptr) {
  requireDimension("Faure", dimension, maxDimension);
  body_ = begin(std::make_unique<FaureBody>(dimension), dimension, options);
}

}  // namespace vexel

// Random: the buffered stream of the eight lanes, arrays of draws, and its state as bytes.
#include "vexel/random.hpp"

#include <algorithm>
#include <cstring>
#include <random>
#include <stdexcept>
#include <string>

#include "functions/data/pieces.hpp"
#include "functions/data/sized.hpp"
#include "kernels/variates/lanes.hpp"
#include "kernels/variates/ziggurat.hpp"

namespace vexel {

namespace {

std::uint64_t systemSeed() {
  std::random_device device;
  const std::uint64_t high = device();
  return high << 32 | device();
}

// The bytes of a state: a mark and version, then words, all with the lowest byte first.
constexpr char mark[4] = {'V', 'X', 'R', 1};
constexpr std::size_t stateBytes = 8 + 8 * (2 + 4 * kernels::laneCount);

void putWord(std::byte*& at, std::uint64_t word, int bytes) {
  for (int i = 0; i < bytes; ++i) {
    *at++ = static_cast<std::byte>(word >> (8 * i) & 0xFF);
  }
}

std::uint64_t getWord(const std::byte*& at, int bytes) {
  std::uint64_t word = 0;
  for (int i = 0; i < bytes; ++i) {
    word |= static_cast<std::uint64_t>(*at++) << (8 * i);
  }
  return word;
}

}  // namespace

Random::Random() : Random(systemSeed()) {}

Random::Random(std::uint64_t seed, std::uint64_t block) : seed_(seed), block_(block) {
  kernels::seedLanes(lanes_, seed, block);
}

Random::Random(const RandomState& state) : seed_(state.seed), block_(state.block) {
  if (state.position >= kernels::laneCount) {
    throw std::invalid_argument("position must be 0 to 7, got " + std::to_string(state.position));
  }
  for (std::size_t l = 0; l < kernels::laneCount; ++l) {
    std::uint64_t any = 0;
    for (std::size_t w = 0; w < 4; ++w) {
      lanes_[w][l] = state.lanes[l][w];
      any |= state.lanes[l][w];
    }
    if (any == 0) {
      throw std::invalid_argument("lane " + std::to_string(l) +
                                  " must not be four zeros: it would give nothing else");
    }
  }
  if (state.position != 0) {
    refill();
    next_ = state.position;
  }
}

void Random::refill() {
  static_assert(bufferSize % kernels::laneCount == 0);
  std::memcpy(before_, lanes_, sizeof lanes_);
  kernels::drawBits(lanes_, buffer_, bufferSize / kernels::laneCount);
  next_ = 0;
}

RandomState Random::state() const {
  RandomState state{.seed = seed_, .block = block_};
  kernels::Lanes lanes;
  if (next_ == bufferSize) {
    std::memcpy(lanes, lanes_, sizeof lanes);
  } else {
    std::memcpy(lanes, before_, sizeof lanes);
    std::uint64_t given[bufferSize];
    kernels::drawBits(lanes, given, next_ / kernels::laneCount);
    state.position = next_ % kernels::laneCount;
  }
  for (std::size_t l = 0; l < kernels::laneCount; ++l) {
    for (std::size_t w = 0; w < 4; ++w) {
      state.lanes[l][w] = lanes[w][l];
    }
  }
  return state;
}

void Random::jump() {
  ++block_;
  if (next_ == bufferSize) {
    kernels::jumpToNextBlock(lanes_);
    return;
  }
  const std::uint32_t next = next_;
  std::memcpy(lanes_, before_, sizeof lanes_);
  kernels::jumpToNextBlock(lanes_);
  refill();
  next_ = next;
}

std::vector<std::byte> Random::to_bytes() const {
  const RandomState now = state();
  std::vector<std::byte> bytes(stateBytes);
  std::memcpy(bytes.data(), mark, sizeof mark);
  std::byte* at = bytes.data() + sizeof mark;
  putWord(at, now.position, 4);
  putWord(at, now.seed, 8);
  putWord(at, now.block, 8);
  for (const auto& lane : now.lanes) {
    for (const std::uint64_t word : lane) {
      putWord(at, word, 8);
    }
  }
  return bytes;
}

Random Random::from_bytes(std::span<const std::byte> bytes) {
  if (bytes.size() != stateBytes) {
    throw std::invalid_argument("bytes of a Random must be " + std::to_string(stateBytes) +
                                ", got " + std::to_string(bytes.size()));
  }
  if (std::memcmp(bytes.data(), mark, sizeof mark) != 0) {
    throw std::invalid_argument("bytes are not those of a Random of version 1");
  }
  const std::byte* at = bytes.data() + sizeof mark;
  RandomState state;
  state.position = static_cast<std::uint32_t>(getWord(at, 4));
  state.seed = getWord(at, 8);
  state.block = getWord(at, 8);
  for (auto& lane : state.lanes) {
    for (std::uint64_t& word : lane) {
      word = getWord(at, 8);
    }
  }
  return Random(state);
}

namespace {

// What is left of the buffer goes first, whole rounds straight into out, the rest through the
// buffer.
template <typename T, typename Map, typename Rounds>
void fillWords(std::span<T> out, std::size_t buffered, Map map, Rounds rounds) {
  std::size_t i = 0;
  const std::size_t first = std::min(buffered, out.size());
  for (; i < first; ++i) {
    out[i] = map();
  }
  const std::size_t whole = (out.size() - i) / kernels::laneCount;
  rounds(out.data() + i, whole);
  for (i += whole * kernels::laneCount; i < out.size(); ++i) {
    out[i] = map();
  }
}

}  // namespace

void Random::bits(std::span<std::uint64_t> out) {
  inPieces(out, [this](std::span<std::uint64_t> piece) {
    fillWords(
        piece, bufferSize - next_, [this] { return bits(); },
        [this](std::uint64_t* at, std::size_t rounds) { kernels::drawBits(lanes_, at, rounds); });
  });
}

void Random::uniform(std::span<double> out) {
  inPieces(out, [this](std::span<double> piece) {
    fillWords(
        piece, bufferSize - next_, [this] { return uniform(); },
        [this](double* at, std::size_t rounds) { kernels::drawUniforms(lanes_, at, rounds); });
  });
}

namespace {

// The number of integers low <= k < high.
std::uint64_t sizeOf(std::int64_t low, std::int64_t high) {
  if (!(low < high)) {
    throw std::invalid_argument("low must be below high, got " + std::to_string(low) + " and " +
                                std::to_string(high));
  }
  return static_cast<std::uint64_t>(high) - static_cast<std::uint64_t>(low);
}

}  // namespace

std::int64_t Random::integers(std::int64_t low, std::int64_t high) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(low) + below(sizeOf(low, high)));
}

void Random::integers(std::int64_t low, std::int64_t high, std::span<std::int64_t> out) {
  const std::uint64_t size = sizeOf(low, high);
  inPieces(out, [=, this](std::span<std::int64_t> piece) {
    for (std::int64_t& k : piece) {
      k = static_cast<std::int64_t>(static_cast<std::uint64_t>(low) + below(size));
    }
  });
}

// The draws that vector instructions can answer go in runs, the rare others one by one.
template <typename Accept, typename One>
void Random::ziggurat(std::span<double> out, Accept accept, One one) {
  inPieces(out, [=, this](std::span<double> piece) {
    for (std::size_t i = 0; i < piece.size(); ++i) {
      if (next_ == bufferSize) {
        refill();
      }
      const std::size_t ahead = std::min<std::size_t>(bufferSize - next_, piece.size() - i);
      const std::size_t run = accept(buffer_ + next_, piece.data() + i, ahead);
      next_ += static_cast<std::uint32_t>(run);
      i += run;
      if (i < piece.size()) {
        piece[i] = one(*this);
      }
    }
  });
}

double Random::normal() { return kernels::normalVariate(*this); }

void Random::normal(std::span<double> out) {
  ziggurat(out, kernels::acceptNormals,
           [](Random& source) { return kernels::normalVariate(source); });
}

double Random::exponential() { return kernels::exponentialVariate(*this); }

void Random::exponential(std::span<double> out) {
  ziggurat(out, kernels::acceptExponentials,
           [](Random& source) { return kernels::exponentialVariate(source); });
}

std::vector<double> Random::uniform(std::size_t n) {
  auto out = sized<double>("uniform", "n", n);
  uniform(out);
  return out;
}

std::vector<double> Random::normal(std::size_t n) {
  auto out = sized<double>("normal", "n", n);
  normal(out);
  return out;
}

std::vector<double> Random::exponential(std::size_t n) {
  auto out = sized<double>("exponential", "n", n);
  exponential(out);
  return out;
}

std::vector<std::int64_t> Random::integers(std::int64_t low, std::int64_t high, std::size_t n) {
  auto out = sized<std::int64_t>("integers", "n", n);
  integers(low, high, out);
  return out;
}

}  // namespace vexel

// Seeding and scripting of the random stream.

#include "values/random_stream.hpp"

#include <deque>

namespace vexel {

struct RandomStream::Script {
  std::deque<std::int32_t> integers;
  std::deque<double> doubles;
};

RandomStream::RandomStream() { seed(0); }
RandomStream::~RandomStream() = default;

// SplitMix64 (G. Steele, D. Lea and C. Flood, Fast splittable pseudorandom number generators,
// OOPSLA 2014): four successive outputs make the state.
void RandomStream::seed(std::uint64_t seed) noexcept {
  seed_ = seed;
  ++seedings_;
  for (std::uint64_t& word : s_) {
    seed += 0x9E3779B97F4A7C15U;
    std::uint64_t z = seed;
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBU;
    word = z ^ (z >> 31);
  }
}

void RandomStream::script(std::span<const std::int32_t> integers, std::span<const double> doubles) {
  script_ = std::make_unique<Script>();
  script_->integers.assign(integers.begin(), integers.end());
  script_->doubles.assign(doubles.begin(), doubles.end());
}

void RandomStream::unscript() noexcept { script_.reset(); }

std::int32_t RandomStream::unusualInteger(State& state) {
  lookAtInterrupt();
  if (script_ == nullptr) {
    return nextInteger(state);
  }
  if (script_->integers.empty()) {
    raise(state, "no scripted random integers left");
  }
  const std::int32_t value = script_->integers.front();
  script_->integers.pop_front();
  ++draws_;
  return value;
}

double RandomStream::unusualDouble(State& state) {
  lookAtInterrupt();
  if (script_ == nullptr) {
    return nextDouble(state);
  }
  if (script_->doubles.empty()) {
    raise(state, "no scripted random doubles left");
  }
  const double value = script_->doubles.front();
  script_->doubles.pop_front();
  ++draws_;
  return value;
}

}  // namespace vexel

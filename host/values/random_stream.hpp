// The host's uniform random stream.
//
// xoshiro256++ (D. Blackman and S. Vigna, Scrambled linear pseudorandom number generators, ACM
// Trans. Math. Softw. 47, 2021), its state filled by SplitMix64 from a 64-bit seed.  Every draw
// takes exactly one 64-bit output: an integer its high half, a double its high 52 bits centred in
// their cell, so that 0 and 1 never occur.  Draws can be scripted for tests.
#pragma once

#include <bit>
#include <cstdint>
#include <memory>

#include "values/errors.hpp"

namespace vexel {

class RandomStream {
 public:
  // Draws given beforehand, integers and doubles each from their own queue.
  struct Script;

  RandomStream();
  ~RandomStream();

  void seed(std::uint64_t seed) noexcept;
  std::uint64_t lastSeed() const noexcept { return seed_; }
  std::uint64_t seedings() const noexcept { return seedings_; }
  void script(std::span<const std::int32_t> integers, std::span<const double> doubles);
  void unscript() noexcept;
  std::uint64_t drawsTaken() const noexcept { return draws_; }

  std::int32_t nextInteger(State& state) {
    if (isUnusual()) [[unlikely]] {
      return unusualInteger(state);
    }
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(next() >> 32));
  }

  double nextDouble(State& state) {
    if (isUnusual()) [[unlikely]] {
      return unusualDouble(state);
    }
    return toUnit(next());
  }

 private:
  // One branch on both conditions: draws are the inner loop of every sample.
  bool isUnusual() const noexcept {
    return (static_cast<int>(script_ != nullptr) | static_cast<int>(interruptRequested != 0)) != 0;
  }

  std::uint64_t next() noexcept {
    ++draws_;
    const std::uint64_t result = std::rotl(s_[0] + s_[3], 23) + s_[0];
    const std::uint64_t t = s_[1] << 17;
    s_[2] ^= s_[0];
    s_[3] ^= s_[1];
    s_[1] ^= s_[2];
    s_[0] ^= s_[3];
    s_[2] ^= t;
    s_[3] = std::rotl(s_[3], 45);
    return result;
  }

  static double toUnit(std::uint64_t r) noexcept {
    return (static_cast<double>(r >> 12) + 0.5) * 0x1p-52;
  }

  std::int32_t unusualInteger(State& state);
  double unusualDouble(State& state);

  std::uint64_t s_[4] = {};
  std::uint64_t draws_ = 0;
  std::uint64_t seed_ = 0;
  std::uint64_t seedings_ = 0;  // how often it was seeded
  std::unique_ptr<Script> script_;
};

}  // namespace vexel

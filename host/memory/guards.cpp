// Guard bytes, poison and the quarantine.

#include "memory/guards.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace vexel {

namespace {

constexpr unsigned char kGuard = 0xA5;
constexpr unsigned char kPoison = 0xDB;

bool allAre(const void* p, std::size_t bytes, unsigned char value) {
  const auto* first = static_cast<const unsigned char*>(p);
  return std::all_of(first, first + bytes, [value](unsigned char c) { return c == value; });
}

}  // namespace

void setGuard(void* p, std::size_t bytes) noexcept { std::memset(p, kGuard, bytes); }

bool isGuardIntact(const void* p, std::size_t bytes) noexcept { return allAre(p, bytes, kGuard); }

void poison(void* p, std::size_t bytes) noexcept { std::memset(p, kPoison, bytes); }

bool isPoisonIntact(const void* p, std::size_t bytes) noexcept { return allAre(p, bytes, kPoison); }

void reportDamage(const char* what) noexcept {
  std::fprintf(stderr, "vexel: %s\n", what);
  std::abort();
}

Quarantine::~Quarantine() {
  for (Block& block : blocks_) {
    release(block);
  }
}

void Quarantine::hold(void* memory, std::size_t bytes) noexcept {
  constexpr std::size_t kLargest = std::size_t{1} << 20;
  poison(memory, bytes);
  if (bytes > kLargest) {
    std::free(memory);
    return;
  }
  release(blocks_[oldest_]);
  blocks_[oldest_] = {memory, bytes};
  oldest_ = (oldest_ + 1) % blocks_.size();
}

void Quarantine::release(Block& block) noexcept {
  if (!isPoisonIntact(block.memory, block.bytes)) {
    reportDamage("memory was written after it was given back");
  }
  std::free(block.memory);
  block = {};
}

}  // namespace vexel

// Guard bytes round the memory that the host hands out, and a quarantine for what it takes back.
//
// Guards are always there; they are looked at in the collector's stress mode and by its check, so
// that a write past the end of a block is found near the place where it happened.
#pragma once

#include <array>
#include <cstddef>

namespace vexel {

// Keeps the alignment of the memory behind it.
inline constexpr std::size_t kGuardBytes = 16;

void setGuard(void* p, std::size_t bytes = kGuardBytes) noexcept;
bool isGuardIntact(const void* p, std::size_t bytes = kGuardBytes) noexcept;

// Memory that was given back is filled with a pattern that is no handle and no usual number.
void poison(void* p, std::size_t bytes) noexcept;
bool isPoisonIntact(const void* p, std::size_t bytes) noexcept;

// Ends the process with a message: memory is damaged and nothing can be relied on.
[[noreturn]] void reportDamage(const char* what) noexcept;

// Blocks of malloc that are poisoned and held for a while before they are free, so that a late read
// finds poison and a late write is noticed.
class Quarantine {
 public:
  Quarantine() = default;
  ~Quarantine();
  Quarantine(const Quarantine&) = delete;
  Quarantine& operator=(const Quarantine&) = delete;

  void hold(void* memory, std::size_t bytes) noexcept;

 private:
  struct Block {
    void* memory = nullptr;
    std::size_t bytes = 0;
  };
  static void release(Block& block) noexcept;

  std::array<Block, 64> blocks_;
  std::size_t oldest_ = 0;
};

}  // namespace vexel

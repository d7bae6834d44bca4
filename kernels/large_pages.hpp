// Large blocks of memory in large pages.
#pragma once

#include <cstddef>
#include <cstdint>

#if __has_include(<sys/mman.h>)
#include <sys/mman.h>
#endif

namespace vexel::kernels {

// Asks for pages of 2 MiB where the system has them to give: most of the time that a block's first
// writing takes is page faults.  A hint: nothing depends on it.
inline void useLargePages([[maybe_unused]] void* block, [[maybe_unused]] std::size_t bytes) {
#ifdef MADV_HUGEPAGE
  constexpr std::uintptr_t page = std::uintptr_t{1} << 21;
  const auto begin = reinterpret_cast<std::uintptr_t>(block);
  const std::uintptr_t first = (begin + page - 1) & ~(page - 1);
  const std::uintptr_t last = (begin + bytes) & ~(page - 1);
  if (bytes >= 2 * page && last > first) {
    madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
  }
#endif
}

}  // namespace vexel::kernels

// Positions drawn with replacement, several from one draw.
//
// N. Brackett-Rozinsky and D. Lemire, Batched ranged random integer generation, Software: Practice
// and Experience 55(1), 2025: the upper halves of successive products are independent positions as
// long as the last lower half is not among the few that come up once too often.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vexel::kernels {

class Positions {
 public:
  static constexpr std::size_t mostAtOnce = 6;

  explicit Positions(std::uint64_t size) : size_(size) {
    // As many as leave less than one draw in 500 to be drawn again.
    constexpr std::uint64_t room = std::uint64_t{1} << 55;
    for (std::uint64_t all = size; at_once_ < mostAtOnce; all *= size) {
      ++at_once_;
      all_[at_once_] = all;
      if (all > room / size) {
        break;
      }
    }
  }

  std::size_t atOnce() const { return at_once_; }

  // The next `count` positions, at most atOnce().
  template <typename Source>
  void draw(Source& source, std::uint64_t* out, std::size_t count) const {
    __extension__ using Wide = unsigned __int128;
    const std::uint64_t all = all_[count];
    for (;;) {
      std::uint64_t rest = source.bits();
      for (std::size_t i = 0; i < count; ++i) {
        const auto product = static_cast<Wide>(rest) * size_;
        out[i] = static_cast<std::uint64_t>(product >> 64);
        rest = static_cast<std::uint64_t>(product);
      }
      if (rest >= all || rest >= (0 - all) % all) [[likely]] {
        return;
      }
    }
  }

  // visit(position, place in the draw) for each of n positions.
  template <typename Source, typename Visit>
  void visit(Source& source, std::size_t n, Visit visit) const {
    switch (at_once_) {
      case 1:
        return visitBy<1>(source, n, visit);
      case 2:
        return visitBy<2>(source, n, visit);
      case 3:
        return visitBy<3>(source, n, visit);
      case 4:
        return visitBy<4>(source, n, visit);
      case 5:
        return visitBy<5>(source, n, visit);
      default:
        return visitBy<6>(source, n, visit);
    }
  }

 private:
  template <std::size_t count, typename Source, typename Visit>
  void visitBy(Source& source, std::size_t n, Visit visit) const {
    std::uint64_t positions[count];
    std::size_t i = 0;
    for (; i + count <= n; i += count) {
      draw(source, positions, count);
      for (std::size_t k = 0; k < count; ++k) {
        visit(positions[k], k);
      }
    }
    if (i < n) {
      draw(source, positions, n - i);
      for (std::size_t k = 0; k < n - i; ++k) {
        visit(positions[k], k);
      }
    }
  }

  std::uint64_t size_;
  std::size_t at_once_ = 0;
  std::uint64_t all_[mostAtOnce + 1] = {};  // [k]: size^k
};

}  // namespace vexel::kernels

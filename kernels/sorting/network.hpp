// Sorting networks: comparisons that sort any n elements, or put some ranks at their places.
//
// K. E. Batcher, Sorting networks and their applications, 1968, for any n as in D. E. Knuth, The
// Art of Computer Programming 3, section 5.2.2, algorithm M.  Of 10 elements 31 comparisons, of 100
// 1,077, of 1000 23,499.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vexel::kernels {

// After it the element at low is not above the one at high; low < high.
struct Exchange {
  std::uint16_t low;
  std::uint16_t high;
};

// n <= 65536.  With ranks, those from 0 that are wanted: without the exchanges that none of them
// depends on.
inline std::vector<Exchange> sortingNetwork(std::size_t n) {
  std::vector<Exchange> network;
  std::size_t top = 1;
  while (2 * top < n) {
    top *= 2;
  }
  for (std::size_t p = n < 2 ? 0 : top; p > 0; p /= 2) {
    std::size_t remainder = 0;
    std::size_t distance = p;
    for (std::size_t q = top;; q /= 2) {
      for (std::size_t i = 0; i + distance < n; ++i) {
        if ((i & p) == remainder) {
          network.push_back(
              {static_cast<std::uint16_t>(i), static_cast<std::uint16_t>(i + distance)});
        }
      }
      if (q == p) {
        break;
      }
      distance = q - p;
      remainder = p;
    }
  }
  return network;
}

inline std::vector<Exchange> sortingNetwork(std::size_t n, std::span<const std::size_t> ranks) {
  const std::vector<Exchange> whole = sortingNetwork(n);
  std::vector<bool> wanted(n);
  for (const std::size_t rank : ranks) {
    wanted[rank] = true;
  }
  std::vector<Exchange> network(whole.size());
  auto first = network.end();
  for (auto e = whole.rbegin(); e != whole.rend(); ++e) {
    if (wanted[e->low] || wanted[e->high]) {
      wanted[e->low] = wanted[e->high] = true;
      *--first = *e;
    }
  }
  network.erase(network.begin(), first);
  return network;
}

}  // namespace vexel::kernels

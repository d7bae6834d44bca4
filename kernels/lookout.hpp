// Polling once in some 10^7 operations, whatever the size of the steps.
#pragma once

#include <cstdint>

#include "kernels/watch.hpp"

namespace vexel::kernels {

class Lookout {
 public:
  void done(std::int64_t operations) {
    constexpr std::int64_t kBetweenLooks = 10000000;
    work_ += operations;
    if (work_ >= kBetweenLooks) {
      work_ = 0;
      poll();
    }
  }

 private:
  std::int64_t work_ = 0;
};

}  // namespace vexel::kernels

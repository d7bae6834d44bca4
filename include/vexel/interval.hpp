// A pair of ends.
#pragma once

namespace vexel {

struct Interval {
  double low;
  double high;

  bool operator==(const Interval&) const = default;
};

}  // namespace vexel

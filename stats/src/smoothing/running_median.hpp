// The median of a sliding window of fixed size, NaN last.
#pragma once

#include <vector>

// Two heaps that meet at the median, a max-heap of the lower half below a min-heap of the upper one
// (after Haerdle and Steiger, Optimal Median Smoothing, Applied Statistics 44, 1995, AS 296).
// Replacing a value costs O(log w).
class RunningMedian {
 public:
  // Starts with values[0..w-1] in slots 0..w-1, w >= 1.
  RunningMedian(const double* values, int w);

  // Puts another value into a slot.
  void replace(int slot, double value);

  // What sorting the window would give: its middle value, or (u + v) 0.5 of the middle two.
  double median() const;

 private:
  struct Node {
    double value;
    int slot;
  };

  // Places are counted from the heap's root; the lower heap lies first in nodes_.
  template <bool kLower>
  Node& node(int place);
  template <bool kLower>
  void settle(int place);
  void put(Node& at, Node node);

  int lowerSize_;
  int upperSize_;
  std::vector<Node> nodes_;
  std::vector<int> where_;  // the index in nodes_ of each slot's node
};

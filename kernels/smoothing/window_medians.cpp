// The median of a sliding window by two heaps.

#include "kernels/smoothing/window_medians.hpp"

#include <algorithm>
#include <utility>

#include "kernels/sorting/sorting.hpp"

namespace vexel::kernels {

namespace {

// Whether a belongs nearer to the root than b: greater values in the lower heap, smaller ones in
// the upper heap.
template <bool kLower>
bool nearerRoot(double a, double b) {
  return kLower ? follows(a, b) : follows(b, a);
}

}  // namespace

RunningMedian::RunningMedian(const double* values, int w)
    : lowerSize_(w - w / 2),
      upperSize_(w / 2),
      nodes_(static_cast<std::size_t>(w)),
      where_(static_cast<std::size_t>(w)) {
  for (int slot = 0; slot < w; ++slot) {
    nodes_[static_cast<std::size_t>(slot)] = {values[slot], slot};
  }
  std::sort(nodes_.begin(), nodes_.end(),
            [](const Node& a, const Node& b) { return follows(b.value, a.value); });
  std::reverse(nodes_.begin(), nodes_.begin() + lowerSize_);  // sorted runs are heaps
  for (Node& n : nodes_) {
    put(n, n);
  }
}

template <bool kLower>
RunningMedian::Node& RunningMedian::node(int place) {
  return nodes_[static_cast<std::size_t>(kLower ? place : lowerSize_ + place)];
}

void RunningMedian::put(Node& at, Node node) {
  at = node;
  where_[static_cast<std::size_t>(node.slot)] = static_cast<int>(&at - nodes_.data());
}

// Moves the node at place up or down until its heap is one again.
template <bool kLower>
void RunningMedian::settle(int place) {
  const int size = kLower ? lowerSize_ : upperSize_;
  const Node moving = node<kLower>(place);
  while (place > 0 && nearerRoot<kLower>(moving.value, node<kLower>((place - 1) / 2).value)) {
    put(node<kLower>(place), node<kLower>((place - 1) / 2));
    place = (place - 1) / 2;
  }
  for (int child = 2 * place + 1; child < size; child = 2 * place + 1) {
    child += child + 1 < size &&
             nearerRoot<kLower>(node<kLower>(child + 1).value, node<kLower>(child).value);
    if (!nearerRoot<kLower>(node<kLower>(child).value, moving.value)) {
      break;
    }
    put(node<kLower>(place), node<kLower>(child));
    place = child;
  }
  put(node<kLower>(place), moving);
}

void RunningMedian::replace(int slot, double value) {
  const int at = where_[static_cast<std::size_t>(slot)];
  nodes_[static_cast<std::size_t>(at)].value = value;
  if (at < lowerSize_) {
    settle<true>(at);
  } else {
    settle<false>(at - lowerSize_);
  }
  if (upperSize_ > 0 && follows(node<true>(0).value, node<false>(0).value)) {
    std::swap(node<true>(0), node<false>(0));
    settle<true>(0);
    settle<false>(0);
  }
}

double RunningMedian::median() const {
  const double u = nodes_.front().value;
  if (lowerSize_ != upperSize_) {
    return u;
  }
  return (u + nodes_[static_cast<std::size_t>(lowerSize_)].value) * 0.5;
}

}  // namespace vexel::kernels

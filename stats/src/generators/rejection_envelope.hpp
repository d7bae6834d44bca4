// The elements of a piecewise linear envelope and the array that holds them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

// One element of the support, [x0, x1], split at xm into a left and a right half.
//
//             upper bound   end tangents, or chords where the density is convex
//        ___/\___           lower bound   the other two lines
//     x0    xm    x1        areas of the upper bound: A1 rectangle and A2 triangle on the left,
//                           A3 and A4 on the right, each including those before it
struct STATS_RejectionEnvelopeElement_HW {
  double x0, x1;
  double xm;      // where the end tangents meet, or the middle
  double y0, y1;  // the density at the ends
  double ym;      // and at xm
  double d0, d1;  // its slopes at the ends
  double sL, sR;  // chord slopes left and right of xm
  double A1, A2, A3, A4;
  std::uint8_t leftRising;    // the upper bound at xm exceeds y0
  std::uint8_t rightRising;   // y1 exceeds the upper bound at xm
  std::uint8_t tangentUpper;  // the tangent at x0 lies above the left chord
};

// A growable array of elements.  A copy shares the elements.
class STATS_RejectionEnvelope_HW {
 public:
  using Element = STATS_RejectionEnvelopeElement_HW;
  using Pointer = std::shared_ptr<Element>;

  explicit STATS_RejectionEnvelope_HW(std::uint32_t capacity = 0) { elements_.reserve(capacity); }

  std::uint32_t size() const { return static_cast<std::uint32_t>(elements_.size()); }
  std::uint32_t curCapacity() const { return static_cast<std::uint32_t>(elements_.capacity()); }
  Element& elementAt(std::uint32_t i) const { return *elements_[i]; }

  void addElement(Pointer e) {
    ensureExtraCapacity(1);
    elements_.push_back(std::move(e));
  }
  void removeAllElements() { elements_.clear(); }

  // Makes room for k more elements, a quarter more than now at least.
  void ensureExtraCapacity(std::uint32_t k) {
    const std::size_t needed = elements_.size() + k;
    if (needed >= elements_.capacity()) {
      elements_.reserve(std::max(needed, elements_.size() + elements_.size() / 4));
    }
  }

 private:
  std::vector<Pointer> elements_;
};

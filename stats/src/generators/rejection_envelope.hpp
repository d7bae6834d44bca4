// The elements of a piecewise linear envelope and the array that holds them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

// One element of the support, split into a left and a right half.
//
//             upper bound   end tangents, or chords where the density is convex
//        ___/\___           lower bound   the other two lines
//     x[0] x[1] x[2]        areas of the upper bound: A[0] rectangle and A[1] triangle on the left,
//                           A[2] and A[3] on the right, each including those before it
//
// What belongs to the halves stands in arrays, so that a half can be taken by its number: which one
// a variate falls into cannot be predicted.
struct STATS_RejectionEnvelopeElement_HW {
  double x[3];         // left end; where the end tangents meet, or the middle; right end
  double y[3];         // the density there
  double slope[2][2];  // of the tangents at the two ends; of the chords of the two halves
  double A[4];
  std::uint8_t rising[2];     // the upper bound rises: on the left half, on the right one
  std::uint8_t tangentUpper;  // the tangent at the left end lies above the left chord
};

// A growable array of elements.
class STATS_RejectionEnvelope_HW {
 public:
  using Element = STATS_RejectionEnvelopeElement_HW;

  explicit STATS_RejectionEnvelope_HW(std::uint32_t capacity = 0) { elements_.reserve(capacity); }

  std::uint32_t size() const { return static_cast<std::uint32_t>(elements_.size()); }
  Element& elementAt(std::uint32_t i) { return elements_[i]; }
  const Element& elementAt(std::uint32_t i) const { return elements_[i]; }

  void addElement(const Element& e) {
    ensureExtraCapacity(1);
    elements_.push_back(e);
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
  std::vector<Element> elements_;
};

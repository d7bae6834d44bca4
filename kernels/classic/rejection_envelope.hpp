// Variates of a density given as a callable with its derivative: adaptive rejection from a
// piecewise linear envelope (W. Gilks and P. Wild, Adaptive rejection sampling for Gibbs sampling,
// 1992, with bounds of the density itself instead of its logarithm).
//
// The envelope bounds densities that are concave or convex on each half element; where a density
// crosses its bounds the sample follows the lower of density and bound.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "kernels/classic/alias_urn.hpp"
#include "kernels/classic/uniforms.hpp"
#include "kernels/refusal.hpp"
#include "kernels/rootfinding/real_function.hpp"

namespace vexel::kernels::classic {

// One element of the support, split into a left and a right half.
//
//             upper bound   end tangents, or chords where the density is convex
//        ___/\___           lower bound   the other two lines
//     x[0] x[1] x[2]        areas of the upper bound: A[0] rectangle and A[1] triangle on the left,
//                           A[2] and A[3] on the right, each including those before it
//
// What belongs to the halves stands in arrays, so that a half can be taken by its number: which one
// a variate falls into cannot be predicted.
struct EnvelopeElement {
  double x[3];         // left end; where the end tangents meet, or the middle; right end
  double y[3];         // the density there
  double slope[2][2];  // of the tangents at the two ends; of the chords of the two halves
  double A[4];
  std::uint8_t rising[2];     // the upper bound rises: on the left half, on the right one
  std::uint8_t tangentUpper;  // the tangent at the left end lies above the left chord

  // The upper and lower bound.  Which line is which is decided on the left half.
  double upper(double x) const;
  double lower(double x) const;

  // A point under the upper bound, from two or three uniforms.
  template <typename Uniforms>
  double draw(Uniforms& uniforms) const;
};

class RejectionEnvelope {
 public:
  // maximum: of elements.
  explicit RejectionEnvelope(int maximum = 0);

  // Builds the first elements, one for each pair of consecutive points, in their order.  False when
  // one of them cannot be built.
  //
  // h and its derivative h1 are evaluated at both ends of every pair, h, h1, h, h1, and h then
  // where the pair is split: shared ends are evaluated twice.
  bool reset(std::span<const double> points, RealFunction h, RealFunction h1);

  // One variate.  Splits the element it came from where its bounds are loose, until there are as
  // many elements as allowed.  Refused after 10^7 rejections in a row, after 10^4 where the points
  // make no hat.
  template <typename Uniforms>
  double next(Uniforms& uniforms, RealFunction h, RealFunction h1);

  std::span<const EnvelopeElement> elements() const { return elements_; }

 private:
  bool refine(std::size_t i, double x, double hx, double h1x, RealFunction h);
  void updateUrn();
  // After that many rejections in a row.
  static constexpr int kMostWithoutHat = 10000;
  static constexpr int kMost = 10000000;
  void endSearch(int rejected) const;

  int maximum_;
  std::vector<EnvelopeElement> elements_;
  std::vector<double> areas_;
  AliasUrn urn_;
};

namespace envelope_lines {

inline constexpr std::size_t tangents = 0;
inline constexpr std::size_t chords = 1;

// The line of the left half from its left end or of the right half from its right end.
inline double at(const EnvelopeElement& e, double x, std::size_t lines) {
  const std::size_t half = x >= e.x[1] ? 1 : 0;
  return e.y[2 * half] + (x - e.x[2 * half]) * e.slope[lines][half];
}

}  // namespace envelope_lines

inline double EnvelopeElement::upper(double at) const {
  return envelope_lines::at(*this, at,
                            tangentUpper ? envelope_lines::tangents : envelope_lines::chords);
}

inline double EnvelopeElement::lower(double at) const {
  return envelope_lines::at(*this, at,
                            tangentUpper ? envelope_lines::chords : envelope_lines::tangents);
}

template <typename Uniforms>
double EnvelopeElement::draw(Uniforms& uniforms) const {
  const double area = uniforms.unit() * A[3];
  double u = uniforms.unit();
  const bool left = static_cast<int>(A[0] >= area) | static_cast<int>(A[1] >= area);
  const std::size_t half = left ? 0 : 1;
  if (!(A[2 * half] >= area)) {
    const double v = uniforms.unit();  // in the triangle, which lies toward the higher side
    u = rising[half] ? std::max(u, v) : std::min(u, v);
  }
  return x[half] + (x[half + 1] - x[half]) * u;
}

template <typename Uniforms>
double RejectionEnvelope::next(Uniforms& uniforms, RealFunction h, RealFunction h1) {
  constexpr double kLoose = 0.9;  // a lower bound below this share of the density is worth a split
  if (urn_.cells().empty()) {
    throw Refusal("no weights to draw an index from");
  }
  for (int rejected = 0;; ++rejected) {
    if (rejected == kMostWithoutHat || rejected == kMost) [[unlikely]] {
      endSearch(rejected);
    }
    const auto i = static_cast<std::size_t>(urn_.next(uniforms));
    const EnvelopeElement& e = elements_[i];
    const double x = e.draw(uniforms);
    const double t = uniforms.unit() * e.upper(x);
    const double lower = e.lower(x);
    if (lower > t) {
      return x;
    }
    const double hx = h(x);
    if ((t > hx || lower < kLoose * hx) && std::ssize(elements_) < maximum_) {
      if (!refine(i, x, hx, h1(x), h)) {
        throw Refusal("could not evaluate PDF to floating point");
      }
      updateUrn();
    }
    if (hx > t) {
      return x;
    }
  }
}

}  // namespace vexel::kernels::classic

// Variates of a density that the host gives as a procedure, with its derivative: adaptive rejection
// from a piecewise linear envelope (W. Gilks and P. Wild, Adaptive rejection sampling for Gibbs
// sampling, 1992, with bounds of the density itself instead of its logarithm).
//
// The envelope bounds densities that are concave or convex on each half element; where a density
// crosses its bounds the sample follows the lower of density and bound.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "generators/alias_urn.hpp"
#include "generators/random_variate_generator.hpp"
#include "generators/rejection_envelope.hpp"
#include "kernel/conversions.hpp"

class STATS_EnvelopeGenerator_HW : public STATS_RandomVariateGenerator_HW {
 public:
  using Element = STATS_RejectionEnvelopeElement_HW;

  explicit STATS_EnvelopeGenerator_HW(VKernelVector kv) : STATS_RandomVariateGenerator_HW(kv) {}

  // setup: [density, derivative, base points, maximum number of elements, try hardware first].
  int initialize(VKernelVector kv, ALGEB setup) override;

  // One variate.  Splits the element it came from where its bounds are loose, until there are as
  // many elements as allowed.  Raises after 10^7 rejections in a row, after 10^4 where the base
  // points make no hat; interrupts are seen at every evaluation and draw.
  double next(VKernelVector kv) override;

  // Builds the first elements, one for each pair of consecutive base points (a list or an array, in
  // their order, unset ones left out).  0 when one of them cannot be built.
  int reset(VKernelVector kv, ALGEB basePoints);

  // Makes e the element on [x0, x1] from end values and slopes.  0, with e unchanged, when the
  // split point or the density there cannot be had.
  int UpdateEnvelopeElement(Element& e, double x0, double x1, double y0, double y1, double d0,
                            double d1);

  // Splits element i at x.  0 when either part cannot be built; the left one may then stand alone.
  int RefineEnvelope(int i, double x, double hx, double h1x);

  // A point under the element's upper bound.  Draws two or three uniforms.
  static double NextFromEnvelopeElement(const Element& e);

  // The upper and lower bound on an element.  Which line is which is decided on the left half.
  static double fU(const Element& e, double x);
  static double fL(const Element& e, double x);

  // Brings the urn up to date with the elements' areas.
  void UpdateDispatcher();

  const STATS_RejectionEnvelope_HW& envelope() const { return envelope_; }

 private:
  bool isHat() const;
  void endSearch(VKernelVector kv, int rejected) const;

  // A host procedure of one double with room for its argument.
  struct Callback {
    ALGEB proc = nullptr;
    int useEvalhf = 0;
    double operator()(double x) const;
  };

  int maxElements_ = 0;
  STATS_RejectionEnvelope_HW envelope_;
  STATS_AliasUrnGenerator_HW urn_;
  Callback h_;
  Callback h1_;
  std::vector<double> areas_;
};

// Variates of a density that the host gives as a procedure, with its derivative, from an envelope
// (kernels/classic/rejection_envelope.hpp).
#pragma once

#include "generators/random_variate_generator.hpp"
#include "kernel/conversions.hpp"
#include "kernels/classic/rejection_envelope.hpp"

class STATS_EnvelopeGenerator_HW : public STATS_RandomVariateGenerator_HW {
 public:
  using Envelope = vexel::kernels::classic::RejectionEnvelope;

  explicit STATS_EnvelopeGenerator_HW(VKernelVector kv) : STATS_RandomVariateGenerator_HW(kv) {}

  // setup: [density, derivative, base points, maximum number of elements, try hardware first].
  // Base points are a list or an array, in their order, unset ones left out.
  int initialize(VKernelVector kv, ALGEB setup) override;

  // Interrupts are seen at every evaluation and draw.
  double next(VKernelVector kv) override;

  const Envelope& envelope() const { return envelope_; }

 private:
  // A host procedure of one double; its values must be finite.
  struct Callback {
    ALGEB proc = nullptr;
    int useEvalhf = 0;
    double operator()(double x) const;
  };

  Envelope envelope_;
  Callback h_;
  Callback h1_;
};

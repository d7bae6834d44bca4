// The random sample driver: fills a host array from generators, alone or combined by a procedure.

#include <memory>
#include <vector>

#include "generators/default_generator.hpp"
#include "generators/envelope_generator.hpp"
#include "kernel/conversions.hpp"
#include "kernel/data_argument.hpp"
#include "kernel/entry_frame.hpp"

namespace {

using Generators = std::vector<std::unique_ptr<STATS_RandomVariateGenerator_HW>>;

// One generator for each description [kind, setup]; kind 1 is an envelope.
Generators makeGenerators(VKernelVector kv, ALGEB descriptions) {
  constexpr V_INT kEnvelope = 1;
  Generators generators;
  const V_INT count = VexelNumArgs(kv, descriptions);
  for (V_INT i = 1; i <= count; ++i) {
    const ALGEB description = VexelListSelect(kv, descriptions, i);
    if (VexelToV_INT(kv, VexelExpseqSelect(kv, description, 1)) == kEnvelope) {
      generators.push_back(std::make_unique<STATS_EnvelopeGenerator_HW>(kv));
    } else {
      generators.push_back(std::make_unique<STATS_DefaultGenerator_HW>(kv));
    }
    if (!generators.back()->initialize(kv, VexelExpseqSelect(kv, description, 2))) {
      VexelRaiseError1(kv, "unable to initialize random variate generator with parameters %1",
                       description);
    }
  }
  return generators;
}

// Fills out with combine applied to one variate of each generator, drawn in their order.
void fillCombined(VKernelVector kv, const Generators& generators, ALGEB combine, int useEvalhf,
                  double* out, V_INT n) {
  const std::size_t count = generators.size();
  std::vector<double> draws(count + 1);  // from 1, as the host counts
  STATS_VexelUtils_HW::VexelCallbackArgs call{combine, useEvalhf, static_cast<int>(count),
                                              draws.data()};
  for (V_INT j = 0; j < n; ++j) {
    for (std::size_t i = 0; i < count; ++i) {
      draws[i + 1] = generators[i]->next(kv);
    }
    out[j] = STATS_VexelUtils_HW::EvalfVexelProc(&call);
  }
}

}  // namespace

// (output, procedure or NULL, descriptions, try hardware first): output, filled.
//
// With a procedure every element is its value on one variate of each generator; with NULL the first
// generator alone fills the array, though all are set up.  No descriptions leave it as it is.
STATS_ENTRY(STATS_VexelRandomSample_HW) {
  const Arguments arg(kv, args, 4, "expected 4 arguments, received: %1");
  const ALGEB output = arg[1];
  const ALGEB combine = arg[2];
  const ALGEB descriptions = arg[3];
  if (!IsVexelList(kv, descriptions)) {
    VexelRaiseError1(kv, "expected: vexel list, received: %1", descriptions);
  }
  if (VexelNumArgs(kv, descriptions) == 0) {
    return output;
  }
  STATS_RequireFloatBlock_HW(kv, output, "output rtable has invalid storage type %1",
                             "output rtable has invalid data type %1");
  const V_INT n = RTableNumElements(kv, output);
  auto* out = static_cast<double*>(RTableDataBlock(kv, output));
  const Generators generators = makeGenerators(kv, descriptions);
  if (!IsVexelNULL(kv, combine)) {
    const int useEvalhf = arg.boolean(4);
    if (!IsVexelProcedure(kv, combine)) {
      VexelRaiseError1(kv, "expected: vexel procedure, received: %1", combine);
    }
    fillCombined(kv, generators, combine, useEvalhf, out, n);
    return output;
  }
  generators.front()->fill(kv, out, n);
  return output;
}

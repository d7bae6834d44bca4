// The entry point that draws a sample of indices.

#include "generators/alias_urn.hpp"

#include "kernel/conversions.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"

void STATS_AliasUrnGenerator_HW::raiseNoCells() {
  VexelRaiseError(STATS_VexelUtils_HW::gVKernelVector, "no weights to draw an index from");
}

// (sample length, weights): an integer[4] array of indices into the weights, counted from 0.
STATS_ENTRY(STATS_VexelAliasUrnSample_HW) {
  const Arguments arg(kv, args, 2, "expected 2 arguments, received: %1");
  if (!IsVexelInteger32(kv, arg[1])) {
    VexelRaiseError1(kv, "invalid sample length, expected positive integer, received: %1", arg[1]);
  }
  const std::int32_t length = arg.integer32(1);
  const STATS_VexelDataSample_HW weights(kv, arg[2]);
  if (weights.size() < 1) {
    VexelRaiseError1(kv, "expected at least one weight, received: %1", arg[2]);
  }
  STATS_AliasUrnGenerator_HW urn(weights.size(), weights.size(), weights.points());
  const ALGEB sample = STATS_CreateVector_HW(kv, RTABLE_INTEGER32, 1, length);
  auto* index = static_cast<std::int32_t*>(RTableDataBlock(kv, sample));
  for (std::int32_t k = 0; k < length; ++k) {
    index[k] = urn.Next();
  }
  return sample;
}

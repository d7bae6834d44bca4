// Whether a sample's own blocks may be reordered.

#include "kernel/sample_view.hpp"

#include <functional>

namespace {

bool isReadOnly(VKernelVector kv, ALGEB rtable) {
  RTableSettings settings;
  RTableGetSettings(kv, &settings, rtable);
  return settings.read_only != 0;
}

bool overlap(const double* a, const double* b, int n) {
  const std::less<const double*> before;
  return before(a, b + n) && before(b, a + n);
}

}  // namespace

SampleView SampleView::forReordering(VKernelVector kv, const STATS_VexelDataSample_HW& sample,
                                     ALGEB data, ALGEB weights, bool skipMissing,
                                     bool inPlaceAllowed) {
  const bool safe =
      !isReadOnly(kv, data) &&
      (!sample.weighted() ||
       (!isReadOnly(kv, weights) && !overlap(sample.points(), sample.weights(), sample.size())));
  return inPlaceAllowed && !skipMissing && safe ? inPlace(sample) : copied(kv, sample, skipMissing);
}

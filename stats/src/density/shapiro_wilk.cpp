// The Shapiro-Wilk test of normality, computed by the numerical library.

#include "density/shapiro_wilk.hpp"

#include <nag2/nag2.h>
#include <vexelc/vexelc.h>

#include "kernel/conversions.hpp"
#include "kernel/data_sample.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernel/nag_call.hpp"
#include "kernel/sample_view.hpp"

void STATS_ShapiroWilk_HW(VKernelVector kv, long n, double* x, double* W, double* p) {
  NagError fail = STATS_NagError_HW();
  q43352(x, static_cast<std::size_t>(n), Nag_Ascending, &fail);
  STATS_RaiseNagError_HW(kv, fail);
  double* coefficients = STATS_AllocDoubles_HW(kv, n);
  q32554(static_cast<int>(n), x, 1, coefficients, W, p, &fail);
  STATS_RaiseNagError_HW(kv, fail);
}

// STATS_VexelShapiroWilk_HW(data, weights, flag): the list [W, p], p the significance level.
//
// A dense float[8] array is left sorted: the points are sorted where they are, unless the host
// protects them.  Weights must fit the data and the flag must be a boolean, but neither has any
// effect.
STATS_ENTRY(STATS_VexelShapiroWilk_HW) {
  const Arguments arg(kv, args, 3, "VexelShapiroWilk expects 3 arguments, received: %1");
  const STATS_VexelDataSample_HW sample(kv, arg[1], arg[2]);
  (void)arg.boolean(3);
  RTableSettings settings;
  RTableGetSettings(kv, &settings, arg[1]);
  const SampleView view =
      settings.read_only != 0 ? SampleView::copied(kv, sample, false) : SampleView::inPlace(sample);
  double result[2] = {};
  STATS_ShapiroWilk_HW(kv, view.size, view.points, &result[0], &result[1]);
  return STATS_FloatList_HW(kv, result, 2);
}

// What several files of rows use.
#pragma once

#include <vexel/descriptive.hpp>
#include <vexel/kernel_density.hpp>
#include <vexel/ordering.hpp>

#include "builtins/functions/call.hpp"
#include "builtins/functions/objects.hpp"

namespace vexel {

// The parameter cut: a fraction, or one for each end.
Cut cutOf(Call& call);

// f of a number, or of all of a list or array.
ALGEB lawValues(Call& call, const LawObject& law, LawFunction f, const char* parameter);

// The parameters `statistic`, `method` of quantiles and `kernel`, by name.
Statistic statisticOf(Call& call);
QuantileMethod quantileMethodOf(Call& call);
DensityKernel densityKernelOf(Call& call);

}  // namespace vexel

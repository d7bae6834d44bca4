// Inversion of a distribution function that the host evaluates, and the two entry points on it.

#include "generators/inverse_distribution.hpp"

#include <cmath>
#include <memory>
#include <vector>

#include "distributions/random_sample.hpp"
#include "kernel/conversions.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/uniform_source.hpp"

namespace {

using Callback = STATS_ICDFGenerator_HW::VexelCallback;

struct Evaluation {
  const Callback* callback;
  double x;
};

// Bodies of the trapped evaluations; each leaves its result in a cell of its own.
void* trapEvalhf(void* evaluation) {
  static double cell;
  const auto* e = static_cast<const Evaluation*>(evaluation);
  const double args[] = {0.0, e->x};  // the host counts arguments from 1
  cell = EvalhfVexelProc(e->callback->kv, e->callback->proc, 1, args);
  return &cell;
}

void* trapEvalf(void* evaluation) {
  static double cell;
  const auto* e = static_cast<const Evaluation*>(evaluation);
  const VKernelVector kv = e->callback->kv;
  ALGEB r = EvalVexelProc(kv, e->callback->proc, 1, STATS_DoubleToVexelFloat_HW(kv, e->x));
  if (!IsVexelNumeric(kv, r)) {
    r = EvalVexelProcedure(kv, e->callback->evalfName, r);
  }
  cell = STATS_VexelFloatToDouble_HW(kv, r);
  return &cell;
}

bool trapped(void* (*body)(void*), Evaluation e, double* out) {
  V_BOOL failed = 0;
  const void* cell = VexelTrapError(e.callback->kv, body, &e, &failed);
  if (!failed) {
    *out = *static_cast<const double*>(cell);
  }
  return !failed;
}

// The checks of entry points that name the position and kind of a missing or wrong argument.
class ArgumentChecks {
 public:
  ArgumentChecks(VKernelVector kv, const Arguments& arg) : kv_(kv), arg_(arg) {}

  // Raises missing unless there are i arguments, then wrong unless test accepts argument tested;
  // wrong shows argument i.
  void require(V_INT i, const char* missing, V_BOOL (*test)(VKernelVector, ALGEB), V_INT tested,
               const char* wrong) const {
    if (arg_.count() < i) {
      VexelRaiseError(kv_, missing);
    }
    if (!test(kv_, arg_[tested])) {
      VexelRaiseError1(kv_, wrong, arg_[i]);
    }
  }
  void require(V_INT i, const char* missing, V_BOOL (*test)(VKernelVector, ALGEB),
               const char* wrong) const {
    require(i, missing, test, i, wrong);
  }

 private:
  VKernelVector kv_;
  const Arguments& arg_;
};

}  // namespace

STATS_ICDFGenerator_HW::STATS_ICDFGenerator_HW(VKernelVector kv, ALGEB cdf, ALGEB pdf, ALGEB lower,
                                               ALGEB upper, ALGEB tol, int useEvalhf)
    : evalfName_(kv, ToVexelName(kv, "evalf", 1)),
      lower_(STATS_VexelFloatToDouble_HW(kv, lower)),
      upper_(STATS_VexelFloatToDouble_HW(kv, upper)),
      tol_(STATS_VexelFloatToDouble_HW(kv, tol)),
      cdf_{kv, cdf, evalfName_.get(), useEvalhf},
      pdf_{kv, pdf, evalfName_.get(), useEvalhf},
      cdfLower_(EvalfVexelProc1(cdf_, lower_)),
      cdfUpper_(EvalfVexelProc1(cdf_, upper_)),
      cdfRange_(cdfUpper_ - cdfLower_) {}

double STATS_ICDFGenerator_HW::EvalfVexelProc1(const VexelCallback& callback, double x) {
  double value = 0.0;
  if (callback.useEvalhf && trapped(trapEvalhf, {&callback, x}, &value)) {
    return value;
  }
  if (trapped(trapEvalf, {&callback, x}, &value)) {
    return value;
  }
  const VKernelVector kv = callback.kv;
  VexelRaiseError1(kv, "%1 does not evaluate to float",
                   EvalVexelProc(kv, callback.proc, 1, STATS_DoubleToVexelFloat_HW(kv, x)));
}

double STATS_ICDFGenerator_HW::Quantile(const VexelCallback& cdf, const VexelCallback& pdf,
                                        double p, double lower, double upper, double tol) {
  constexpr int kPasses = 100;
  double xl = lower;
  double xh = upper;
  double x = (lower + upper) * 0.5;
  double dx = upper - lower;  // signed; a reversed interval starts with a negative step
  double dxOld = dx;
  double g = EvalfVexelProc1(cdf, x) - p;
  double d = EvalfVexelProc1(pdf, x);
  for (int pass = 0; pass < kPasses; ++pass) {
    const bool staysInside = ((x - xh) * d - g) * ((x - xl) * d - g) <= 0.0;
    const bool halvesStep = std::abs(2.0 * g) <= std::abs(dxOld * d);
    dxOld = dx;
    const bool newton = staysInside && halvesStep;
    dx = newton ? g / d : (xh - xl) * 0.5;
    const double next = newton ? x - dx : xl + dx;
    if (next == (newton ? x : xl)) {
      return next;
    }
    x = next;
    if (std::abs(dx) < tol) {
      return x;
    }
    g = EvalfVexelProc1(cdf, x) - p;
    d = EvalfVexelProc1(pdf, x);
    (g < 0.0 ? xl : xh) = x;
  }
  return x;
}

double STATS_ICDFGenerator_HW::Next() const {
  const double u = STATS_VexelRandomStream_HW::NextDouble();
  return Quantile(cdf_, pdf_, u * cdfRange_ + cdfLower_, lower_, upper_, tol_);
}

ALGEB STATS_InverseDistributionSample_HW(VKernelVector kv, std::int32_t n, ALGEB expression,
                                         ALGEB variables, ALGEB lower, ALGEB upper, ALGEB tol,
                                         int useEvalhf) {
  const V_INT count = VexelNumArgs(kv, variables);
  std::vector<std::unique_ptr<STATS_ICDFGenerator_HW>> generators;
  for (V_INT i = 1; i <= count; ++i) {
    const ALGEB variable = VexelListSelect(kv, variables, i);
    generators.push_back(std::make_unique<STATS_ICDFGenerator_HW>(
        kv, VexelExpseqSelect(kv, variable, 2), VexelExpseqSelect(kv, variable, 3), lower, upper,
        tol, useEvalhf));
  }
  const ALGEB draws = NewVexelExpressionSequence(kv, count);
  const ALGEB sample = STATS_CreateRandomSample_HW(kv, n, ToVexelNULL(kv));
  auto* value = static_cast<double*>(RTableDataBlock(kv, sample));
  for (std::int32_t k = 0; k < n; ++k) {
    for (V_INT i = 1; i <= count; ++i) {
      const double variate = generators[static_cast<std::size_t>(i - 1)]->Next();
      VexelExpseqAssign(kv, draws, i, STATS_DoubleToVexelFloat_HW(kv, variate));
    }
    value[k] = STATS_VexelFloatToDouble_HW(kv, EvalVexelProcedure(kv, expression, draws));
  }
  return sample;
}

// (n, distribution function, density, lower, upper, tolerance[, try hardware first]): n variates.
//
// The test of the third argument looks at the second again, so a density that is no procedure is
// noticed only when it is called.
STATS_ENTRY(STATS_VexelInverseDistributionSampleId_HW) {
  const Arguments arg(kv, args);
  const ArgumentChecks checks(kv, arg);
  checks.require(1, "expecting sample length as first argument", IsVexelInteger32,
                 "first argument (sample length) must be positive integer, received %1");
  checks.require(2, "expecting probability distribution as second argument", IsVexelProcedure,
                 "expecting vexel procedure as second argument, received %1");
  checks.require(3, "expecting probability density function as third argument", IsVexelProcedure, 2,
                 "expecting vexel procedure as third argument, received %1");
  checks.require(4, "expecting lower bound for the interval as fourth argument", IsVexelNumeric,
                 "expecting float as fourth argument, received %1");
  checks.require(5, "expecting upper bound for the interval as fifth argument", IsVexelNumeric,
                 "expecting float as fifth argument, received %1");
  checks.require(6, "expecting precision as sixth argument", IsVexelNumeric,
                 "expecting float as sixth argument, received %1");
  const std::int32_t n = arg.integer32(1);
  const int useEvalhf = arg.count() >= 7 && arg.boolean(7);

  const STATS_ICDFGenerator_HW generator(kv, arg[2], arg[3], arg[4], arg[5], arg[6], useEvalhf);
  const ALGEB sample = STATS_CreateRandomSample_HW(kv, n, ToVexelNULL(kv));
  auto* value = static_cast<double*>(RTableDataBlock(kv, sample));
  for (std::int32_t k = 0; k < n; ++k) {
    value[k] = generator.Next();
  }
  return sample;
}

// (n, expression, variables, ...): n values of an expression of several variables.
//
// The third argument is wanted as the list of variables and as the lower bound; nothing is both, so
// that every call ends in one of the messages, and hosts know them.
STATS_ENTRY(STATS_VexelInverseDistributionSample_HW) {
  const Arguments arg(kv, args);
  const ArgumentChecks checks(kv, arg);
  checks.require(1, "expecting sample length as first argument", IsVexelInteger32,
                 "first argument (sample length) must be positive integer, received %1");
  checks.require(2, "expecting expression involving random variables as second argument",
                 IsVexelProcedure, "expecting vexel procedure as second argument, received %1");
  checks.require(3, "expecting list of random variables as third argument", IsVexelList,
                 "expecting list of random variables as third argument, received %1");
  checks.require(3, "expecting list of random variables as third argument", IsVexelNumeric,
                 "expecting float as third argument, received %1");
  checks.require(4, "expecting upper bound for the interval as fourth argument", IsVexelNumeric,
                 "expecting float as fourth argument, received %1");
  checks.require(5, "expecting precision as fifth argument", IsVexelNumeric,
                 "expecting float as fifth argument, received %1");
  const std::int32_t n = arg.integer32(1);
  const int useEvalhf = arg.count() > 5 && arg.boolean(6);
  return STATS_InverseDistributionSample_HW(kv, n, arg[2], arg[3], arg[3], arg[4], arg[5],
                                            useEvalhf);
}

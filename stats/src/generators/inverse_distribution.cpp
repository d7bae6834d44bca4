// Inversion of a distribution function that the host evaluates, and the two entry points on it.

#include "generators/inverse_distribution.hpp"

#include <memory>
#include <vector>

#include "distributions/random_sample.hpp"
#include "kernel/conversions.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_procedure.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/rootfinding/inversion.hpp"

namespace {

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
    : lower_(STATS_VexelFloatToDouble_HW(kv, lower)),
      upper_(STATS_VexelFloatToDouble_HW(kv, upper)),
      tol_(STATS_VexelFloatToDouble_HW(kv, tol)),
      cdf_{kv, cdf, useEvalhf},
      pdf_{kv, pdf, useEvalhf},
      cdfLower_(EvalfVexelProc1(cdf_, lower_)),
      cdfUpper_(EvalfVexelProc1(cdf_, upper_)),
      cdfRange_(cdfUpper_ - cdfLower_) {}

double STATS_ICDFGenerator_HW::EvalfVexelProc1(const VexelCallback& callback, double x) {
  const VKernelVector kv = callback.kv;
  const ALGEB proc = callback.proc;
  const auto inHardware = [=] {
    const double args[] = {0.0, x};  // the host counts arguments from 1
    return EvalhfVexelProc(kv, proc, 1, args);
  };
  const auto inSoftware = [=] {
    return STATS_SoftwareValue_HW(kv, proc, STATS_DoubleToVexelFloat_HW(kv, x));
  };
  double value = 0.0;
  if (callback.useEvalhf && STATS_Trapped_HW(kv, inHardware, &value)) {
    return value;
  }
  if (STATS_Trapped_HW(kv, inSoftware, &value)) {
    return value;
  }
  VexelRaiseError1(kv, "%1 does not evaluate to float",
                   EvalVexelProc(kv, proc, 1, STATS_DoubleToVexelFloat_HW(kv, x)));
}

double STATS_ICDFGenerator_HW::Quantile(const VexelCallback& cdf, const VexelCallback& pdf,
                                        double p, double lower, double upper, double tol) {
  return vexel::kernels::invert([&](double x) { return EvalfVexelProc1(cdf, x); },
                                [&](double x) { return EvalfVexelProc1(pdf, x); }, p, lower, upper,
                                tol);
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

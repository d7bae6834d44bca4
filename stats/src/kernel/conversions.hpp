// Conversions between host objects and machine numbers, and calls of host procedures on doubles.
//
// Everything here needs STATS_StatsInitialize_HW to have run.  The evaluations are trapped: an
// error inside them leads to the next way of converting, and in the end to one message of the
// library's own.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

#include "kernels/saturate.hpp"

// Conversion of host values and evaluation of host procedures; static members only.
class STATS_VexelUtils_HW {
 public:
  // One call of a host procedure on doubles.
  struct VexelCallbackArgs {
    ALGEB proc;     // the procedure
    int useEvalhf;  // nonzero: try hardware evaluation first
    int numArgs;    // n
    double* args;   // args[1] .. args[n]; element 0 is not read
  };

  static void Initialize(VKernelVector kv);
  static void Terminate();

  // The double that x evaluates to: in hardware, else a host float directly, else by evalf.
  // Raises "unable to evaluate %1 to floating-point" for the rest.
  static double VexelDAGToDouble(ALGEB x);

  // The same; returns 1, or 0 with *out = 0.0 where the other form raises.
  static int VexelDAGToDouble(ALGEB x, double* out);

  // Raises the message of the strict conversion for x.
  [[noreturn]] static void ReportNonNumeric(ALGEB x);

  // The finite double that a->proc gives on a->args: in hardware if asked, else in software.
  // If neither gives a finite number, the procedure's own error passes, or an error names its
  // value.
  static double EvalfVexelProc(VexelCallbackArgs* a);

  // Bodies of the trapped evaluations; each keeps its result in a static cell of its own.
  static void* VexelEvalhfInternal(void* x);
  static void* VexelEvalfInternal(void* x);
  static void* TrapEvalhfVexelProc(void* callbackArgs);
  static void* TrapEvalfVexelProc(void* callbackArgs);

  static VKernelVector gVKernelVector;
  static ALGEB gVexelEvalfProc;  // the host name evalf, protected
};

// True for a host float, found without a host call from the handle and the object's type tag.
bool STATS_IsVexelFloat_HW(ALGEB x);

double STATS_VexelFloatToDouble_HW(VKernelVector kv, ALGEB x);
ALGEB STATS_DoubleToVexelFloat_HW(VKernelVector kv, double d);

// The host's undefined float as a double, a NaN.
double STATS_FloatUndefined_HW(VKernelVector kv);

// Truncation toward zero; NaN and values beyond 32 bits give -2147483648.
inline std::int32_t STATS_DoubleToInteger_HW(double d) { return vexel::kernels::toInteger(d); }

// 15, whatever the host's Digits.
inline int STATS_GetVexelDigits_HW() { return 15; }

// One array element as a double.  Codes 6 and 8 hold machine floats; any other code is taken as a
// host object, which must be a number ("expected vexel float, received %1").
double RTableDataToDouble(VKernelVector kv, RTableData element, int dataType);

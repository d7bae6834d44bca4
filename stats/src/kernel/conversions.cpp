// Conversions between host objects and machine numbers, and calls of host procedures on doubles.
//
// A trapped evaluation hands its double back through a static cell of its own, whose address is
// what the host's trap returns; the host never runs two of them at once.

#include "kernel/conversions.hpp"

#include <cmath>

#include "kernel/host_procedure.hpp"

VKernelVector STATS_VexelUtils_HW::gVKernelVector = nullptr;
ALGEB STATS_VexelUtils_HW::gVexelEvalfProc = nullptr;

namespace {

// The ways of converting, in order: in hardware, a host float directly, in software.
bool convert(VKernelVector kv, ALGEB x, double* out) {
  V_BOOL failed = 0;
  const void* cell = VexelTrapError(kv, STATS_VexelUtils_HW::VexelEvalhfInternal, x, &failed);
  if (!failed) {
    *out = *static_cast<const double*>(cell);
    return true;
  }
  if (STATS_IsVexelFloat_HW(x)) {
    *out = VexelToFloat64(kv, x);
    return true;
  }
  const auto value =
      static_cast<ALGEB>(VexelTrapError(kv, STATS_VexelUtils_HW::VexelEvalfInternal, x, &failed));
  if (failed || !IsVexelNumeric(kv, value)) {
    return false;
  }
  *out = VexelToFloat64(kv, value);
  return true;
}

// args[1..n] as a host sequence of floats.
ALGEB floatSequence(VKernelVector kv, const STATS_VexelUtils_HW::VexelCallbackArgs& call) {
  const ALGEB sequence = NewVexelExpressionSequence(kv, call.numArgs);
  for (int i = 1; i <= call.numArgs; ++i) {
    VexelExpseqAssign(kv, sequence, i, STATS_DoubleToVexelFloat_HW(kv, call.args[i]));
  }
  return sequence;
}

// Runs a trapped call of a procedure; true when it gave a finite number.
bool finiteValue(VKernelVector kv, void* (*trapped)(void*),
                 STATS_VexelUtils_HW::VexelCallbackArgs* call, double* out) {
  V_BOOL failed = 0;
  const void* cell = VexelTrapError(kv, trapped, call, &failed);
  if (failed) {
    return false;
  }
  *out = *static_cast<const double*>(cell);
  return std::isfinite(*out);
}

}  // namespace

void STATS_VexelUtils_HW::Initialize(VKernelVector kv) {
  gVKernelVector = kv;
  gVexelEvalfProc = ToVexelName(kv, "evalf", 1);
  VexelGcProtect(kv, gVexelEvalfProc);
}

void STATS_VexelUtils_HW::Terminate() {}

double STATS_VexelUtils_HW::VexelDAGToDouble(ALGEB x) {
  double value = 0.0;
  if (!convert(gVKernelVector, x, &value)) {
    ReportNonNumeric(x);
  }
  return value;
}

int STATS_VexelUtils_HW::VexelDAGToDouble(ALGEB x, double* out) {
  *out = 0.0;
  return convert(gVKernelVector, x, out) ? 1 : 0;
}

void STATS_VexelUtils_HW::ReportNonNumeric(ALGEB x) {
  VexelRaiseError1(gVKernelVector, "unable to evaluate %1 to floating-point", x);
}

double STATS_VexelUtils_HW::EvalfVexelProc(VexelCallbackArgs* a) {
  const VKernelVector kv = gVKernelVector;
  double value = 0.0;
  if (a->useEvalhf && finiteValue(kv, TrapEvalhfVexelProc, a, &value)) {
    return value;
  }
  if (finiteValue(kv, TrapEvalfVexelProc, a, &value)) {
    return value;
  }
  // Once more without a trap: an error of the procedure's own is what the user should see, and a
  // value that is no finite number is named.
  ReportNonNumeric(EvalVexelProcedure(kv, a->proc, floatSequence(kv, *a)));
}

void* STATS_VexelUtils_HW::VexelEvalhfInternal(void* x) {
  static double cell;
  cell = VexelEvalhf(gVKernelVector, static_cast<ALGEB>(x));
  return &cell;
}

void* STATS_VexelUtils_HW::VexelEvalfInternal(void* x) {
  const auto value = static_cast<ALGEB>(x);
  return STATS_IsVexelFloat_HW(value) ? value
                                      : EvalVexelProcedure(gVKernelVector, gVexelEvalfProc, value);
}

void* STATS_VexelUtils_HW::TrapEvalhfVexelProc(void* callbackArgs) {
  static double cell;
  const auto* call = static_cast<const VexelCallbackArgs*>(callbackArgs);
  cell = EvalhfVexelProc(gVKernelVector, call->proc, call->numArgs, call->args);
  return &cell;
}

void* STATS_VexelUtils_HW::TrapEvalfVexelProc(void* callbackArgs) {
  static double cell;
  const VKernelVector kv = gVKernelVector;
  const auto* call = static_cast<const VexelCallbackArgs*>(callbackArgs);
  cell = STATS_SoftwareValue_HW(kv, call->proc, floatSequence(kv, *call));
  return &cell;
}

double STATS_SoftwareValue_HW(VKernelVector kv, ALGEB proc, ALGEB args) {
  ALGEB value = EvalVexelProcedure(kv, proc, args);
  if (!IsVexelNumeric(kv, value)) {
    value = EvalVexelProcedure(kv, ToVexelName(kv, "evalf", 1), value);
  }
  return VexelToFloat64(kv, value);
}

bool STATS_IsVexelFloat_HW(ALGEB x) {
  const auto word = reinterpret_cast<std::uintptr_t>(x);
  if (x == nullptr || (word & 1U) != 0) {
    return false;
  }
  constexpr std::uintptr_t kFloat = std::uintptr_t{VEXEL_TAG_FLOAT} << 26;
  return (*reinterpret_cast<const std::uintptr_t*>(x) & VEXEL_HEADER_TAG_MASK) == kFloat;
}

double STATS_VexelFloatToDouble_HW(VKernelVector kv, ALGEB x) { return VexelToFloat64(kv, x); }

ALGEB STATS_DoubleToVexelFloat_HW(VKernelVector kv, double d) { return ToVexelFloat(kv, d); }

double STATS_FloatUndefined_HW(VKernelVector kv) {
  return VexelToFloat64(kv, EvalVexelStatement(kv, "Float(undefined):"));
}

double RTableDataToDouble(VKernelVector kv, RTableData element, int dataType) {
  switch (dataType) {
    case RTABLE_FLOAT32:
      return static_cast<double>(element.float32);
    case RTABLE_FLOAT64:
      return element.float64;
    default:
      if (!IsVexelNumeric(kv, element.dag)) {
        VexelRaiseError1(kv, "expected vexel float, received %1", element.dag);
      }
      return VexelToFloat64(kv, element.dag);
  }
}

// Callables of one double: the evaluation of a host procedure, and the one static instance.

#include "kernel/callback_adapters.hpp"

#include "kernel/conversions.hpp"
#include "kernel/host_procedure.hpp"

STATS_VexelProcAdapter_HW STATS_VexelStaticProcAdapter_HW::m_procInstance{nullptr, nullptr};

double STATS_VexelProcAdapter_HW::Call(double x) {
  return STATS_SoftwareValue_HW(kv_, proc_, STATS_DoubleToVexelFloat_HW(kv_, x));
}

namespace {

int scopes = 0;        // that are open
ALGEB held = nullptr;  // the adapter's procedure, protected while there are any

}  // namespace

STATS_StaticProcScope_HW::STATS_StaticProcScope_HW(VKernelVector kv, ALGEB proc) : kv_(kv) {
  VexelGcProtect(kv, proc);
  if (scopes++ > 0) {
    VexelGcAllow(kv, held);
  }
  held = proc;
  STATS_VexelStaticProcAdapter_HW::Reset(proc);
}

STATS_StaticProcScope_HW::~STATS_StaticProcScope_HW() {
  if (--scopes == 0) {
    VexelGcAllow(kv_, held);
  }
}

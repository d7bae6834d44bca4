// Start and stop of the library.
//
// Everything else relies on the first call of STATS_StatsInitialize_HW.  Stopping clears the flag
// only: the adapters and utilities keep their kernel vector, and the next start sets all of them
// again.

#include "kernel/callback_adapters.hpp"
#include "kernel/conversions.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/uniform_source.hpp"

namespace {

VKernelVector libraryKernel = nullptr;
bool initialised = false;

}  // namespace

STATS_EXPORT ALGEB STATS_StatsInitialize_HW(VKernelVector kv);
STATS_EXPORT ALGEB STATS_StatsTerminate_HW(VKernelVector kv);

// Starts the library for this host; without effect while it is started.  Returns true.
ALGEB STATS_StatsInitialize_HW(VKernelVector kv) {
  return STATS_RunEntry_HW(kv, [kv] {
    if (!initialised) {
      libraryKernel = kv;
      initialised = true;
      STATS_VexelStaticProcAdapter_HW::Initialize(libraryKernel);
      STATS_VexelRandomStream_HW::Initialize(libraryKernel);
      STATS_VexelUtils_HW::Initialize(libraryKernel);
    }
    return ToVexelBoolean(kv, 1);
  });
}

// Stops the library; it may be started again, for this or another host.  Returns true.
ALGEB STATS_StatsTerminate_HW(VKernelVector kv) {
  return STATS_RunEntry_HW(kv, [kv] {
    libraryKernel = nullptr;
    initialised = false;
    STATS_VexelRandomStream_HW::Terminate();
    STATS_VexelUtils_HW::Terminate();
    return ToVexelBoolean(kv, 1);
  });
}

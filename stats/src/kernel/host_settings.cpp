// What the user has set in the host.

#include "kernel/host_settings.hpp"

#include <algorithm>
#include <limits>

#include "kernel/conversions.hpp"

std::int32_t STATS_HostDigits_HW(VKernelVector kv) {
  return VexelToInteger32(kv, VexelEval(kv, ToVexelName(kv, "Digits", 1)));
}

double STATS_HostPi_HW(VKernelVector kv) {
  return STATS_VexelUtils_HW::VexelDAGToDouble(ToVexelName(kv, "Pi", 1));
}

int STATS_IterationLimit_HW(VKernelVector kv) {
  constexpr int kDefaultLimit = 100;
  const ALGEB name = ToVexelName(kv, "_EnvStatisticsIterations", 1);
  if (!IsVexelAssignedName(kv, name)) {
    return kDefaultLimit;
  }
  using Int = std::numeric_limits<int>;
  const V_INT limit = VexelToV_INT(kv, VexelEval(kv, name));
  return static_cast<int>(std::clamp(limit, V_INT{Int::min()}, V_INT{Int::max()}));
}

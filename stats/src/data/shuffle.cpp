// Shuffle: a permuted copy of an array, elements moved as bytes.

#include "data/shuffle.hpp"

#include <limits>

#include "kernel/data_argument.hpp"
#include "kernel/element_types.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/uniform_source.hpp"
#include "kernels/classic/shuffle.hpp"

void STATS_Shuffle_HW(VKernelVector /*kv*/, char* data, std::uint32_t n, std::uint32_t size) {
  STATS_VexelRandomStream_HW uniforms;
  vexel::kernels::classic::shuffle(uniforms, data, n, size);
}

// STATS_VexelShuffle_HW(data): a new dense array from 1 with the elements of a dense
// one-dimensional array in random order.
STATS_ENTRY(STATS_VexelShuffle_HW) {
  const Arguments arg(kv, args, 1, "VexelShuffle expects 1 argument, received: %1");
  const ALGEB data = arg[1];
  STATS_RequireVector_HW(kv, data, STATS_kInvalidVector_HW);
  const V_INT n = RTableNumElements(kv, data);
  if (n > std::numeric_limits<std::uint32_t>::max()) {
    VexelRaiseError1(kv, "too many elements to shuffle: %1", ToVexelInteger(kv, n));
  }
  RTableSettings settings = STATS_SettingsOf_HW(kv, data);
  const void* const block = RTableDataBlock(kv, data);  // raises for other than dense storage
  settings.storage = RTABLE_RECTANGULAR;
  const ALGEB result = STATS_CreateLike_HW(kv, settings, 1, n, block);
  STATS_Shuffle_HW(kv, static_cast<char*>(RTableDataBlock(kv, result)),
                   static_cast<std::uint32_t>(n),
                   static_cast<std::uint32_t>(STATS_RTableDataSize_HW(kv, settings.data_type)));
  return result;
}

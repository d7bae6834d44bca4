// A host procedure on every window of an array.

#include <cstring>
#include <limits>

#include "kernel/data_argument.hpp"
#include "kernel/element_types.hpp"
#include "kernel/entry_frame.hpp"

namespace {

// Copies count elements of data, from the start-th on, into window.
class WindowFiller {
 public:
  WindowFiller(VKernelVector kv, ALGEB data, ALGEB window, const RTableSettings& settings,
               V_INT size)
      : kv_(kv),
        data_(data),
        window_(window),
        lower_(RTableLowerBound(kv, data, 1)),
        size_(size),
        width_(static_cast<std::size_t>(STATS_RTableDataSize_HW(kv, settings.data_type))) {
    if (settings.storage == RTABLE_RECTANGULAR) {
      from_ = static_cast<const char*>(RTableDataBlock(kv, data));
      to_ = static_cast<char*>(RTableDataBlock(kv, window));
    }
  }

  void fill(V_INT start) const {
    if (to_ != nullptr) {
      std::memcpy(to_, from_ + static_cast<std::size_t>(start) * width_,
                  static_cast<std::size_t>(size_) * width_);
      return;
    }
    for (V_INT i = 0; i < size_; ++i) {
      const V_INT source = lower_ + start + i;
      const V_INT target = lower_ + i;
      RTableAssign(kv_, window_, &target, RTableSelect(kv_, data_, &source));
    }
  }

 private:
  VKernelVector kv_;
  ALGEB data_;
  ALGEB window_;
  V_INT lower_;
  V_INT size_;
  std::size_t width_;
  const char* from_ = nullptr;
  char* to_ = nullptr;
};

// n - size - lower + 2, or the greatest integer when that is no 64-bit one: no array is so large.
V_INT upperBound(V_INT n, V_INT size, V_INT lower) {
  V_INT upper = 0;
  return __builtin_sub_overflow(n - size + 2, lower, &upper) ? std::numeric_limits<V_INT>::max()
                                                             : upper;
}

ALGEB newArray(VKernelVector kv, RTableSettings settings, V_INT lower, V_INT upper) {
  settings.num_dimensions = 1;
  settings.read_only = 0;
  const V_INT bounds[] = {lower, upper};
  return RTableCreate(kv, &settings, nullptr, bounds);
}

// The window and then arguments 4 and on.
ALGEB procedureArguments(VKernelVector kv, const Arguments& arg, ALGEB window) {
  const ALGEB sequence = NewVexelExpressionSequence(kv, arg.count() - 2);
  VexelExpseqAssign(kv, sequence, 1, window);
  for (V_INT i = 4; i <= arg.count(); ++i) {
    VexelExpseqAssign(kv, sequence, i - 2, arg[i]);
  }
  return sequence;
}

}  // namespace

// STATS_VexelMoving_HW(data, window size, procedure, more arguments ...): the array of the
// procedure's values on (window, more arguments ...), one for each window.
//
// The window is one array of the data's type from the data's lower bound L, filled anew for each
// call.  The result runs from L to N - w - L + 2, which is one element for each window when L is 1;
// for another L values that find no place in it are dropped.
STATS_ENTRY(STATS_VexelMoving_HW) {
  const Arguments arg(kv, args);
  if (arg.count() < 3) {
    VexelRaiseError1(kv, "VexelMoving expects at least 3 arguments, received: %1", args);
  }
  const ALGEB data = arg[1];
  STATS_RequireVector_HW(kv, data, STATS_kInvalidVector_HW);
  const V_INT n = RTableNumElements(kv, data);
  const V_INT size = arg.integer(2);
  if (size < 1 || size > n) {
    VexelRaiseError2(kv,
                     "invalid size of the moving window, expected: integer between 1 and %1, "
                     "received: %2",
                     ToVexelInteger(kv, n), arg[2]);
  }

  RTableSettings settings;
  RTableGetSettings(kv, &settings, data);
  RTableSettings resultSettings = settings;
  resultSettings.data_type = RTABLE_DAG;
  resultSettings.storage = RTABLE_RECTANGULAR;
  const V_INT lower = RTableLowerBound(kv, data, 1);
  const ALGEB result = newArray(kv, resultSettings, lower, upperBound(n, size, lower));
  if (!STATS_IsElementType_HW(settings.data_type)) {
    return result;
  }
  const ALGEB window = newArray(kv, settings, lower, lower + (size - 1));
  const ALGEB procedureArgs = procedureArguments(kv, arg, window);
  const WindowFiller filler(kv, data, window, settings, size);

  auto* values = static_cast<ALGEB*>(RTableDataBlock(kv, result));
  const V_INT places = RTableNumElements(kv, result);
  for (V_INT s = 0; s <= n - size; ++s) {
    filler.fill(s);
    const ALGEB value = EvalVexelProcedure(kv, arg[3], procedureArgs);
    if (s < places) {
      values[s] = value;
    }
  }
  return result;
}

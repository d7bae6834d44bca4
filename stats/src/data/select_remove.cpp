// Splitting the elements of an array into two groups by a test: a host predicate, a range of
// values, numeric or not; and dropping NULL entries.
//
// Every test sees the elements in order, and each group keeps that order and the element type.

#include <cmath>
#include <cstddef>
#include <cstring>

#include "kernel/conversions.hpp"
#include "kernel/data_argument.hpp"
#include "kernel/element_types.hpp"
#include "kernel/entry_frame.hpp"
#include "kernels/watch.hpp"

namespace {

// Which groups the host wants: 1 those that pass, 2 those that fail, any other value both.
class Groups {
 public:
  explicit Groups(V_INT mode) : passing_(mode != 2), failing_(mode != 1) {}
  bool passing() const { return passing_; }
  bool failing() const { return failing_; }

  // The result for the groups as finished arrays; a group that is not wanted may be null.
  ALGEB pack(VKernelVector kv, ALGEB pass, ALGEB fail) const {
    if (passing_ && failing_) {
      return ToVexelExpressionSequence(kv, 2, pass, fail);
    }
    return passing_ ? pass : fail;
  }

 private:
  bool passing_;
  bool failing_;
};

// The two groups while they grow.
class Split {
 public:
  Split(VKernelVector kv, const STATS_ElementReader_HW& data, Groups groups)
      : kv_(kv),
        data_(data),
        groups_(groups),
        pass_(kv, data.dataType(), groups.passing() ? data.size() : 0),
        fail_(kv, data.dataType(), groups.failing() ? data.size() : 0) {}

  void add(const RTableData& element, bool passes) {
    if (passes ? groups_.passing() : groups_.failing()) {
      (passes ? pass_ : fail_).append(element, data_.elementSize());
    }
  }

  ALGEB result(V_INT lower) const {
    const auto array = [&](bool wanted, const STATS_ElementBuffer_HW& buffer) -> ALGEB {
      return wanted
                 ? STATS_CreateLike_HW(kv_, data_.settings(), lower, buffer.used(), buffer.data())
                 : nullptr;
    };
    const ALGEB pass = array(groups_.passing(), pass_);
    const ALGEB fail = array(groups_.failing(), fail_);
    return groups_.pack(kv_, pass, fail);
  }

 private:
  VKernelVector kv_;
  const STATS_ElementReader_HW& data_;
  Groups groups_;
  STATS_ElementBuffer_HW pass_;
  STATS_ElementBuffer_HW fail_;
};

// An array from the data's lower bound of the machine numbers of its block that are wanted, which
// are counted first.  No loop has a branch that depends on the numbers.
template <typename T, typename Test>
ALGEB keepWanted(VKernelVector kv, const STATS_ElementReader_HW& data, Test wanted) {
  const T* const x = reinterpret_cast<const T*>(data.block());
  V_INT count = 0;
  vexel::kernels::forEach(data.size(), [&](V_INT i) { count += wanted(x[i]) ? 1 : 0; });
  const ALGEB result = STATS_CreateLike_HW(kv, data.settings(), data.lower(), count);
  T* const out = static_cast<T*>(RTableDataBlock(kv, result));
  V_INT kept = 0;
  vexel::kernels::inStretches(data.size(), [&](V_INT i, V_INT end) {
    for (; i < end && kept < count; ++i) {
      out[kept] = x[i];
      kept += wanted(x[i]) ? 1 : 0;
    }
  });
  return result;
}

// The value of predicate(element, extras...) as a boolean.
bool STATS_SelectRemoveSatisfies_HW(VKernelVector kv, ALGEB predicate, ALGEB element, ALGEB extras,
                                    V_INT nExtras) {
  const ALGEB call = NewVexelExpressionSequence(kv, nExtras + 1);
  VexelExpseqAssign(kv, call, 1, element);
  for (V_INT i = 1; i <= nExtras; ++i) {
    VexelExpseqAssign(kv, call, i + 1, VexelExpseqSelect(kv, extras, i));
  }
  return VexelToV_BOOL(kv, EvalVexelProcedure(kv, predicate, call)) != 0;
}

// Closed below and open above, so that adjacent ranges never both take a value.
struct Range {
  double low;
  double high;
  bool operator()(double x) const { return low <= x && x < high; }
};

bool elementInRange(const RTableData& element, int dataType, Range range) {
  if (dataType == RTABLE_COMPLEX) {
    return element.complexf64.im == 0.0 && range(element.complexf64.re);
  }
  if (dataType == RTABLE_COMPLEX_DAG) {
    double re = 0.0;
    double im = 0.0;
    return STATS_VexelUtils_HW::VexelDAGToDouble(element.complexdag.im, &im) != 0 && im == 0.0 &&
           STATS_VexelUtils_HW::VexelDAGToDouble(element.complexdag.re, &re) != 0 && range(re);
  }
  bool passes = false;
  if (STATS_IsMachineRealType_HW(dataType)) {
    STATS_WithMachineType_HW(dataType, [&]<typename T>(T*) {
      T value;
      std::memcpy(&value, &element, sizeof value);
      passes = range(static_cast<double>(value));
    });
    return passes;
  }
  return range(STATS_VexelUtils_HW::VexelDAGToDouble(element.dag));
}

// Which values count as numbers.
struct NumericTest {
  VKernelVector kv;
  bool refuseInfinity;
  bool refuseNaN;

  bool value(double x) const {
    return !(refuseNaN && std::isnan(x)) && !(refuseInfinity && std::isinf(x));
  }
  bool object(ALGEB x) const {
    double number = 0.0;
    return STATS_VexelUtils_HW::VexelDAGToDouble(x, &number) != 0 && value(number);
  }
  bool element(const RTableData& x, int dataType) const {
    switch (dataType) {
      case RTABLE_FLOAT64:
        return value(x.float64);
      case RTABLE_FLOAT32:
        return value(static_cast<double>(x.float32));
      case RTABLE_COMPLEX:
        return x.complexf64.im == 0.0 && value(x.complexf64.re);
      case RTABLE_COMPLEX_DAG:
        return IsVexelUnnamedZero(kv, x.complexdag.im) != 0 && object(x.complexdag.re);
      default:
        return object(x.dag);
    }
  }
};

ALGEB copyOf(VKernelVector kv, const RTableSettings& settings, ALGEB data) {
  return RTableCopy(kv, &settings, data);
}

}  // namespace

// STATS_VexelSelectRemove_HW(data, predicate, mode, extras...): the elements for which
// predicate(element, extras...) is true (mode 1), false (mode 2), or both groups as a sequence.
//
// Each element reaches the predicate as a host object.  Results keep the data's type and lower
// bound.
STATS_ENTRY(STATS_VexelSelectRemove_HW) {
  const Arguments arg(kv, args);
  if (arg.count() < 3) {
    VexelRaiseError1(kv, "VexelSelectRemove expects at least 3 arguments", nullptr);
  }
  const ALGEB array = arg[1];
  const ALGEB predicate = arg[2];
  const Groups groups(arg.integer(3));
  if (IsVexelProcedure(kv, predicate) == 0) {
    VexelRaiseError1(kv,
                     "invalid selecting function, expected a procedure that always returns true or "
                     "false, received: %1",
                     predicate);
  }
  const V_INT nExtras = arg.count() - 3;
  const ALGEB extras = NewVexelExpressionSequence(kv, nExtras);
  for (V_INT i = 1; i <= nExtras; ++i) {
    VexelExpseqAssign(kv, extras, i, arg[i + 3]);
  }
  STATS_RequireVector_HW(kv, array, STATS_kInvalidVector_HW);

  const STATS_ElementReader_HW data(kv, array);
  Split split(kv, data, groups);
  for (V_INT i = 0; i < data.size(); ++i) {
    const RTableData element = data[i];
    const ALGEB object = STATS_ElementToHost_HW(kv, element, data.dataType());
    split.add(element, STATS_SelectRemoveSatisfies_HW(kv, predicate, object, extras, nExtras));
  }
  return split.result(data.lower());
}

// STATS_VexelSelectRemoveInRange_HW(data, low, high, mode): the elements with low <= value < high,
// the others, or both, by mode as above.
//
// A NaN is in no range.  A complex element is in range when it is real and its value is; its parts
// need not be numbers, while a host object must have a value.  Results keep the data's type and
// lower bound.
STATS_ENTRY(STATS_VexelSelectRemoveInRange_HW) {
  const Arguments arg(kv, args);
  if (arg.count() != 4) {
    VexelRaiseError1(kv, "VexelSelectRemoveInRange expects 4 arguments", nullptr);
  }
  const double low = arg.real(2);
  const double high = arg.real(3);
  const Range range{low, high};
  const Groups groups(arg.integer(4));
  STATS_RequireVector_HW(kv, arg[1], STATS_kInvalidVector_HW);

  const STATS_ElementReader_HW data(kv, arg[1]);
  if (STATS_IsMachineRealType_HW(data.dataType()) && data.block() != nullptr) {
    ALGEB pass = nullptr;
    ALGEB fail = nullptr;
    STATS_WithMachineType_HW(data.dataType(), [&]<typename T>(T*) {
      const auto inRange = [range](T value) {
        const auto x = static_cast<double>(value);
        return (range.low <= x) & (x < range.high);
      };
      if (groups.passing()) {
        pass = keepWanted<T>(kv, data, inRange);
      }
      if (groups.failing()) {
        fail = keepWanted<T>(kv, data, [=](T value) { return !inRange(value); });
      }
    });
    return groups.pack(kv, pass, fail);
  }
  Split split(kv, data, groups);
  vexel::kernels::forEach(data.size(), [&](V_INT i) {
    const RTableData element = data[i];
    split.add(element, elementInRange(element, data.dataType(), range));
  });
  return split.result(data.lower());
}

// STATS_VexelSelectRemoveNonNumeric_HW(data, infinity, nan, mode): the elements that are no
// numbers, those that are, or both, as arrays from 1.
//
// infinity and nan true make infinities and NaNs count as no numbers.  mode is a boolean: true asks
// for the first group, false for both.  Integer arrays are the odd case: all their elements come
// back in the first group and none in the second, as callers have come to expect.
STATS_ENTRY(STATS_VexelSelectRemoveNonNumeric_HW) {
  const Arguments arg(kv, args, 4, "VexelSelectRemoveNonNumeric expects 4 arguments, received: %1");
  const bool refuseInfinity = arg.boolean(2);
  const bool refuseNaN = arg.boolean(3);
  const Groups groups(VexelToV_BOOL(kv, arg[4]));
  STATS_RequireVector_HW(kv, arg[1], STATS_kInvalidVector_HW);

  const STATS_ElementReader_HW data(kv, arg[1]);
  if (data.dataType() >= RTABLE_INTEGER8 && data.dataType() <= RTABLE_INTEGER64) {
    const ALGEB all = groups.passing() ? copyOf(kv, data.settings(), arg[1]) : nullptr;
    const ALGEB none = groups.failing() ? STATS_CreateLike_HW(kv, data.settings(), 1, 0) : nullptr;
    return groups.pack(kv, all, none);
  }
  const NumericTest numeric{kv, refuseInfinity, refuseNaN};
  Split split(kv, data, groups);
  vexel::kernels::forEach(data.size(), [&](V_INT i) {
    const RTableData element = data[i];
    split.add(element, !numeric.element(element, data.dataType()));
  });
  return split.result(1);
}

// STATS_VexelRemoveNULL_HW(data): the entries of an array of host objects that are not NULL, as an
// array from 1; a copy with its own bounds of any other array.
STATS_ENTRY(STATS_VexelRemoveNULL_HW) {
  const Arguments arg(kv, args, 1, "VexelRemoveNULL expects 1 argument, received: %1");
  STATS_RequireVector_HW(kv, arg[1], STATS_kInvalidVector_HW);
  const STATS_ElementReader_HW data(kv, arg[1]);
  if (data.dataType() >= RTABLE_COMPLEX_DAG && data.dataType() <= RTABLE_FLOAT32) {
    return copyOf(kv, data.settings(), arg[1]);
  }
  Split split(kv, data, Groups(1));
  vexel::kernels::forEach(data.size(), [&](V_INT i) {
    const RTableData element = data[i];
    split.add(element, IsVexelNULL(kv, element.dag) == 0);
  });
  return split.result(1);
}

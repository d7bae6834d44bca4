// Making a kernel's state and telling the collector what it holds.

#include "values/kernel_state.hpp"

#include <limits>

#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

_VKernelVectorDesc::_VKernelVectorDesc() {
  using vexel::Tag;
  null = heap.allocate(Tag::sequence, 1);
  trueValue = heap.allocate(Tag::boolean, 2);
  vexel::words(trueValue)[1] = 1;
  falseValue = heap.allocate(Tag::boolean, 2);
  undefined = interned.real(std::numeric_limits<double>::quiet_NaN());
  infinity = interned.real(std::numeric_limits<double>::infinity());
  minusInfinity = interned.real(-std::numeric_limits<double>::infinity());
  digitsName = interned.name("Digits");
  vexel::setNameValue(*this, digitsName, vexel::immediate(15));
  piName = interned.name("Pi");
}

// Dispose functions of libraries run while the state is whole.
_VKernelVectorDesc::~_VKernelVectorDesc() { heap.clear(); }

void _VKernelVectorDesc::raiseNoMemory() { vexel::raiseNoMemory(*this); }

void _VKernelVectorDesc::markRoots(vexel::Marker& marker) {
  settled.expressions.clear();
  for (ALGEB x :
       {null, trueValue, falseValue, undefined, infinity, minusInfinity, digitsName, piName}) {
    marker.mark(x);
  }
  for (ALGEB x : error.arguments) {
    marker.mark(x);
  }
}

int _VKernelVectorDesc::digits() const {
  constexpr int kDefault = 15;
  ALGEB value = vexel::nameValue(digitsName);
  if (value == nullptr || !vexel::isImmediate(value)) {
    return kDefault;
  }
  const std::int64_t n = vexel::immediateValue(value);
  return n < 1 ? kDefault : n > vexel::kMaxDigits ? vexel::kMaxDigits : static_cast<int>(n);
}

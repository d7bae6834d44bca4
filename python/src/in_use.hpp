// Objects whose state changes while the interpreter's lock is released: another thread that comes
// to one of them meanwhile gets an error, not a broken state.
#pragma once

#include <pybind11/pybind11.h>

namespace vexel::python {

// RuntimeError where some call is using the object.
void requireUnused(const void* object);

// Marks an object as used, from before the lock is released until after it is had again.
class InUse {
 public:
  explicit InUse(const void* object);  // null marks nothing
  ~InUse();
  InUse(const InUse&) = delete;
  InUse& operator=(const InUse&) = delete;

 private:
  const void* object_;
};

// For the type_caster of a class with a state: every way to one of its objects asks first.
template <typename T>
struct UnusedCaster : pybind11::detail::type_caster_base<T> {
  bool load(pybind11::handle source, bool convert) {
    if (!pybind11::detail::type_caster_base<T>::load(source, convert)) {
      return false;
    }
    requireUnused(this->value);
    return true;
  }
};

}  // namespace vexel::python

// At the top of a file, outside of all namespaces.
#define VEXEL_USED_ALONE(Type) \
  template <>                  \
  struct pybind11::detail::type_caster<Type> : vexel::python::UnusedCaster<Type> {}

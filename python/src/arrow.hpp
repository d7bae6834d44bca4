// Columns that come through the Arrow PyCapsule interface.
#pragma once

#include <pybind11/numpy.h>

namespace vexel::python {

// The numbers of an object with `__arrow_c_stream__` or `__arrow_c_array__`: a view where it is one
// chunk of float64, float32, int32 or int64 without nulls; otherwise a float64 copy in which null
// is NaN.  A struct (a table) gives a matrix with a column for each field.
pybind11::array fromArrow(const pybind11::object& object);

}  // namespace vexel::python

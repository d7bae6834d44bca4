// The pieces of vexel._core, one file each.
#pragma once

#include <pybind11/pybind11.h>

namespace vexel::python {

void bindOrdering(pybind11::module_& m);
void bindSeries(pybind11::module_& m);
void bindLaws(pybind11::module_& m);
void bindStatistics(pybind11::module_& m);
void bindRandom(pybind11::module_& m);
void bindStates(pybind11::module_& m);
void bindSequences(pybind11::module_& m);

void bindDensities(pybind11::module_& m);

}  // namespace vexel::python

// vexel._core: the functions for Python.  The package's modules give them their signatures,
// documentation and types; here is what they call.
#include <pybind11/pybind11.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <vexel/interruption.hpp>

#include "arrays.hpp"
#include "bindings.hpp"
#include "module.hpp"

namespace vexel::python {

namespace {

// pybind11 before 2.12 reads the types of arrays as NumPy 1 lays them out in memory: with NumPy 2
// every size of an element would be wrong.
void requireNumpyOfPybind() {
#if PYBIND11_VERSION_HEX < 0x020C0000
  const auto version = py::module_::import("numpy").attr("__version__").cast<std::string>();
  if (!version.starts_with("1.")) {
    throw std::runtime_error(
        "this build of vexel serves NumPy 1, because pybind11 was older than 2.12; NumPy " +
        version + " is installed: build with a newer pybind11 (pip install . does)");
  }
#endif
}

// Where an object's __init__ has not run or has failed, pybind11 would give its methods memory that
// nobody has written.
void refuseUnmadeObjects(const py::module_& m) {
  for (const auto& [name, value] : py::cast<py::dict>(m.attr("__dict__"))) {
    if (PyType_Check(value.ptr()) != 0) {
      auto* const type = reinterpret_cast<PyTypeObject*>(value.ptr());
      if (auto* const info = py::detail::get_type_info(type)) {
        info->operator_new = [](std::size_t) -> void* {
          throw py::type_error("self must be an object whose __init__ has run");
        };
      }
    }
  }
}

int fill(PyObject* object) noexcept {
  try {
    auto m = py::reinterpret_borrow<py::module_>(object);
    requireNumpyOfPybind();
    py::options options;
    options.disable_function_signatures();
    py::register_exception_translator([](std::exception_ptr p) {
      try {
        if (p) {
          std::rethrow_exception(p);
        }
      } catch (const Interrupted&) {
        PyErr_SetNone(PyExc_KeyboardInterrupt);
      }
    });
    m.attr("__version__") = VEXEL_VERSION;
    bindArrays(m);
    bindOrdering(m);
    bindSeries(m);
    bindStatistics(m);
    bindRandom(m);
    bindLaws(m);
    bindDensities(m);
    bindSequences(m);
    bindStates(m);
    refuseUnmadeObjects(m);
    return 0;
  } catch (py::error_already_set& e) {
    e.restore();
  } catch (const std::exception& e) {
    PyErr_SetString(PyExc_ImportError, e.what());
  }
  return -1;
}

}  // namespace

}  // namespace vexel::python

VEXEL_PYTHON_MODULE(_core, vexel::python::fill)

// Values across the border between Python and the host.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>

#include <exception>
#include <memory>
#include <string>
#include <vexel/kernel.hpp>

#include "turn.hpp"

namespace vexel::python {

// The one host of the process.
class Host {
 public:
  static Host& instance();

  Kernel& kernel() { return kernel_; }

  // ---- with the interpreter lock and in turn
  Value toHost(py::handle object);
  py::object toPython(const Value& value);

  // A callable as a host procedure, under a name unless it is empty.
  Value procedure(py::handle callable, const std::string& name);

  // f() in the host, without the interpreter lock; what it raises as Python's exceptions.
  template <typename F>
  auto run(F f) {
    const InterruptWatch watch;
    try {
      const py::gil_scoped_release released;
      return f();
    } catch (const Error& e) {
      raise(e);
    } catch (const Interrupted&) {
      Kernel::clearInterrupt();
      if (PyErr_CheckSignals() == 0) {
        PyErr_SetNone(PyExc_KeyboardInterrupt);
      }
      throw py::error_already_set();
    }
  }
  std::string kindOf(const Value& value);

 private:
  Host() = default;
  [[noreturn]] void raise(const Error& e);
  Value callPython(const py::object& callable, std::span<const Value> arguments);
  Value fromArray(const py::array& array);
  py::object toArray(const Value& value);
  Value list(py::handle sequence);

  Kernel kernel_;
  // What a Python callable raised and the host is carrying, with the text that it has there.
  std::exception_ptr carried_;
  std::string carriedText_;
};

}  // namespace vexel::python

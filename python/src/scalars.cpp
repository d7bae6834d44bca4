#include "scalars.hpp"

#include <cmath>

#include "arrays.hpp"

namespace vexel::python {

std::string mustBe(const std::string& name, const std::string& allowed, const std::string& came) {
  return name + " must be " + allowed + ", got " + came;
}

void refuseKind(const char* name, const std::string& allowed, py::handle came) {
  throw py::type_error(mustBe(name, allowed, shortText(came)));
}

void refuseValue(const char* name, const std::string& allowed, py::handle came) {
  throw py::value_error(mustBe(name, allowed, shortText(came)));
}

namespace {

// The error that Python has set is dropped where it says that the kind or the size is wrong;
// another one, which the object's own code raised, stays.
enum class Fault { kind, size };

Fault takeFault() {
  if (PyErr_ExceptionMatches(PyExc_OverflowError) != 0) {
    PyErr_Clear();
    return Fault::size;
  }
  if (PyErr_ExceptionMatches(PyExc_TypeError) == 0 &&
      PyErr_ExceptionMatches(PyExc_ValueError) == 0) {
    throw py::error_already_set();
  }
  PyErr_Clear();
  return Fault::kind;
}

double readDouble(py::handle value, const char* name, const char* wanted) {
  const double result = PyFloat_AsDouble(value.ptr());
  if (result == -1.0 && PyErr_Occurred() != nullptr) {
    if (takeFault() == Fault::kind) {
      refuseKind(name, wanted, value);
    }
    refuseValue(name, "a magnitude below 1.8e308", value);
  }
  return result;
}

std::string boundText(std::int64_t bound) {
  constexpr auto last = std::numeric_limits<std::int64_t>::max();
  return bound == last ? "2^63 - 1" : bound == -last - 1 ? "-2^63" : std::to_string(bound);
}

// The whole number, or what is wrong with it.
std::int64_t readInteger(py::handle value, const char* name, const std::string& range) {
  if (PyIndex_Check(value.ptr()) == 0 || py::isinstance<py::array>(value)) {
    const double real = readDouble(value, name, "a whole number");
    if (real != std::floor(real) || std::isinf(real)) {
      refuseValue(name, "a whole number", value);
    }
    if (!(std::fabs(real) < 0x1p63)) {
      refuseValue(name, range, value);
    }
    return static_cast<std::int64_t>(real);
  }
  const auto whole = py::reinterpret_steal<py::object>(PyNumber_Index(value.ptr()));
  const std::int64_t result = whole ? PyLong_AsLongLong(whole.ptr()) : -1;
  if (result == -1 && PyErr_Occurred() != nullptr) {
    if (takeFault() == Fault::kind) {
      refuseKind(name, "a whole number", value);
    }
    refuseValue(name, range, value);
  }
  return result;
}

}  // namespace

double readNumber(py::handle value, const char* name) {
  return readDouble(value, name, "a number");
}

double readResult(py::handle value, const char* function) {
  if (PyFloat_CheckExact(value.ptr())) {
    return PyFloat_AS_DOUBLE(value.ptr());
  }
  return readDouble(value, function, "a function whose values are numbers");
}

std::int64_t readWhole(py::handle value, const char* name, std::int64_t low, std::int64_t high) {
  constexpr auto last = std::numeric_limits<std::int64_t>::max();
  const auto range = [=] {
    return low >= 0 && high == last ? "at least " + boundText(low)
                                    : boundText(low) + " to " + boundText(high);
  };
  const std::int64_t result = readInteger(value, name, range());
  if (result < low || result > high) {
    refuseValue(name, range(), value);
  }
  return result;
}

std::vector<std::int64_t> readWholes(py::handle values, const char* name) {
  Input given(values, name);
  const Data data = given.vector();
  std::vector<std::int64_t> result;
  for (std::size_t i = 0; i < data.size(); ++i) {
    const double value = data[i];
    if (value != std::floor(value) || !(std::fabs(value) < 0x1p53)) {
      refuseValue(name, "a list of whole numbers", py::float_(value));
    }
    result.push_back(static_cast<std::int64_t>(value));
  }
  return result;
}

std::string_view readBytes(py::handle value, const char* name) {
  if (!PyBytes_Check(value.ptr())) {
    refuseKind(name, "bytes", value);
  }
  return {PyBytes_AS_STRING(value.ptr()), static_cast<std::size_t>(PyBytes_GET_SIZE(value.ptr()))};
}

bool readFlag(py::handle value, const char* name) {
  PyObject* const p = value.ptr();
  if (p == Py_True || p == Py_False) {
    return p == Py_True;
  }
  const bool scalar = PyLong_Check(p) != 0 ||
                      py::str(py::type::of(value)).cast<std::string>() == "<class 'numpy.bool_'>";
  const int truth = scalar ? PyObject_IsTrue(p) : -1;
  if (truth < 0 || (PyLong_Check(p) != 0 && truth == 1 && PyLong_AsLong(p) != 1)) {
    PyErr_Clear();
    refuseKind(name, "True or False", value);
  }
  return truth == 1;
}

}  // namespace vexel::python

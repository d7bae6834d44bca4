#include "values.hpp"

#include <pybind11/stl.h>
#include <vexelc/vexelc.h>

#include <array>
#include <cstring>
#include <optional>

namespace vexel::python {

namespace {

py::object helper(const char* name) { return py::module_::import("vexel._kernel").attr(name); }

std::shared_ptr<void> keeping(py::handle object) {
  return {new py::object(py::reinterpret_borrow<py::object>(object)), [](void* p) {
            const py::gil_scoped_acquire lock;
            delete static_cast<py::object*>(p);
          }};
}

struct ElementType {
  char kind;  // NumPy's
  int size;
  int code;
};
constexpr ElementType elementTypes[] = {{'f', 8, RTABLE_FLOAT64},   {'i', 4, RTABLE_INTEGER32},
                                        {'i', 8, RTABLE_INTEGER64}, {'f', 4, RTABLE_FLOAT32},
                                        {'c', 16, RTABLE_COMPLEX},  {'i', 1, RTABLE_INTEGER8},
                                        {'i', 2, RTABLE_INTEGER16}};

std::optional<int> codeOf(const py::dtype& type) {
  for (const auto& e : elementTypes) {
    if (type.kind() == e.kind && type.itemsize() == e.size && type.attr("isnative").cast<bool>()) {
      return e.code;
    }
  }
  return std::nullopt;
}

py::dtype typeOf(int code) {
  for (const auto& e : elementTypes) {
    if (e.code == code) {
      return py::dtype(std::string(1, e.kind) + std::to_string(e.size));
    }
  }
  return py::dtype("O");
}

}  // namespace

Host& Host::instance() {
  static Host* host = new Host;  // lives as long as the process
  return *host;
}

// ---- from Python

Value Host::toHost(py::handle object) {
  PyObject* const p = object.ptr();
  if (object.is_none()) {
    return kernel_.null();
  }
  if (PyBool_Check(p)) {
    return kernel_.boolean(p == Py_True);
  }
  if (PyFloat_Check(p)) {
    return kernel_.real(PyFloat_AS_DOUBLE(p));
  }
  if (PyLong_Check(p)) {
    int overflow = 0;
    const long long value = PyLong_AsLongLongAndOverflow(p, &overflow);
    if (overflow == 0) {
      return kernel_.integer(value);
    }
    return kernel_.eval(py::str(object).cast<std::string>() + ";");
  }
  if (PyUnicode_Check(p)) {
    return kernel_.string(object.cast<std::string>());
  }
  if (py::isinstance<py::array>(object)) {
    return fromArray(py::reinterpret_borrow<py::array>(object));
  }
  if (PyList_Check(p) || PyTuple_CheckExact(p)) {
    return list(object);
  }
  if (py::isinstance<Held>(object)) {
    return object.cast<const Held&>().value();
  }
  const py::object made = helper("to_host")(object);
  if (py::isinstance<Held>(made)) {
    return made.cast<const Held&>().value();
  }
  return procedure(made, "");
}

Value Host::list(py::handle sequence) {
  std::vector<Value> elements;
  for (const py::handle item : sequence) {
    elements.push_back(toHost(item));
  }
  return kernel_.list(std::span<const Value>(elements));
}

// In place where the array is writable and in one piece of memory; otherwise a copy.
Value Host::fromArray(const py::array& given) {
  const auto code = codeOf(given.dtype());
  if (!code) {
    const py::object made = helper("array_to_host")(given);
    return made.cast<const Held&>().value();
  }
  py::array array = given;
  const bool row = (array.flags() & py::array::c_style) != 0;
  const bool column = (array.flags() & py::array::f_style) != 0;
  const bool inPlace = (row || column) && array.writeable();
  if (!row && !column) {
    array = py::array::ensure(array.attr("copy")());
  }
  std::vector<V_INT> bounds;
  for (py::ssize_t i = 0; i < array.ndim(); ++i) {
    bounds.push_back(1);
    bounds.push_back(array.shape(i));
  }
  const RTableSettings s{*code, RTABLE_RECTANGULAR,
                         column && !row ? RTABLE_COLUMN_MAJOR : RTABLE_ROW_MAJOR,
                         static_cast<std::int32_t>(array.ndim()), 0};
  if (inPlace) {
    return kernel_.wrap(s, array.mutable_data(), bounds, keeping(array));
  }
  return kernel_.array(s, array.data(), bounds);
}

// ---- to Python

std::string Host::kindOf(const Value& value) { return kernel_.call("typeof", value).text(); }

py::object Host::toPython(const Value& value) {
  if (value.isNull()) {
    return py::none();
  }
  if (value.isNumeric()) {
    if (IsVexelInteger32(kernel_.vector(), value.handle()) != 0) {
      return py::int_(VexelToInteger32(kernel_.vector(), value.handle()));
    }
    if (value.isInteger()) {
      const std::string digits = value.source();
      return py::reinterpret_steal<py::object>(PyLong_FromString(digits.c_str(), nullptr, 10));
    }
    if (kindOf(value) == "float") {
      const std::string text = value.source();
      // A software float of more digits than a double holds.
      return text.size() > 24 ? helper("wide_float")(text) : py::float_(value.number());
    }
  } else if (value.isArray()) {
    return toArray(value);
  } else if (value.isList()) {
    py::list result(value.size());
    for (std::size_t i = 0; i < value.size(); ++i) {
      result[i] = toPython(value[i]);
    }
    return result;
  }
  const std::string kind = kindOf(value);
  if (kind == "string") {
    return py::str(value.text());
  }
  if (kind == "boolean") {
    return py::bool_(value.boolean());
  }
  return helper("from_host")(std::make_shared<Held>(value), kind);
}

py::object Host::toArray(const Value& value) {
  RTableSettings s{};
  VKernelVector const kv = kernel_.vector();
  RTableGetSettings(kv, &s, value.handle());
  std::vector<py::ssize_t> shape;
  for (V_INT d = 1; d <= s.num_dimensions; ++d) {
    const V_INT n =
        RTableUpperBound(kv, value.handle(), d) - RTableLowerBound(kv, value.handle(), d) + 1;
    shape.push_back(n < 0 ? 0 : n);
  }
  const py::dtype type = typeOf(s.data_type);
  const bool dense = s.storage == RTABLE_RECTANGULAR && type.kind() != 'O';
  std::vector<py::ssize_t> strides(shape.size());
  py::ssize_t step = type.itemsize();
  for (std::size_t k = 0; k < shape.size(); ++k) {
    const std::size_t d = s.order == RTABLE_COLUMN_MAJOR ? k : shape.size() - 1 - k;
    strides[d] = step;
    step *= shape[d];
  }
  if (dense) {
    const py::object base = py::cast(std::make_shared<Held>(value));
    return py::array(type, shape, strides, RTableDataBlock(kv, value.handle()), base);
  }
  py::list elements;
  for (std::size_t i = 0; i < value.size(); ++i) {
    elements.append(toPython(value[i]));
  }
  return helper("array_from_elements")(elements, type, py::tuple(py::cast(shape)),
                                       s.order == RTABLE_COLUMN_MAJOR ? "F" : "C");
}

// ---- procedures

Value Host::callPython(const py::object& callable, std::span<const Value> arguments) {
  const py::gil_scoped_acquire lock;
  const Turn turn;  // the thread has it already
  try {
    py::tuple converted(arguments.size());
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      converted[i] = toPython(arguments[i]);
    }
    return toHost(callable(*converted));
  } catch (py::error_already_set& e) {
    carriedText_ = std::string("Python: ") + e.what();
    carriedText_ = carriedText_.substr(0, carriedText_.find('\n'));
    // Its text is no message with places for arguments.
    for (std::size_t at = 0; (at = carriedText_.find('%', at)) != std::string::npos;) {
      carriedText_.replace(at, 1, "percent");
    }
    carried_ = std::make_exception_ptr(e);
  }
  throw Error(carriedText_, carriedText_, {});
}

Value Host::procedure(py::handle callable, const std::string& name) {
  if (PyCallable_Check(callable.ptr()) == 0) {
    throw py::type_error("a value of type " + std::string(Py_TYPE(callable.ptr())->tp_name) +
                         " has no form in the host");
  }
  const auto kept = keeping(callable);
  return kernel_.function(name, [this, kept](Kernel&, std::span<const Value> arguments) {
    return callPython(*static_cast<py::object*>(kept.get()), arguments);
  });
}

void Host::raise(const Error& e) {
  if (carried_ && e.message() == carriedText_) {
    const std::exception_ptr carried = std::exchange(carried_, nullptr);
    std::rethrow_exception(carried);
  }
  py::list arguments;
  for (const Value& v : e.arguments()) {
    arguments.append(std::make_shared<Held>(v));
  }
  const py::object type = helper("KernelError");
  const py::object error = type(std::string(e.what()), e.message(), arguments);
  PyErr_SetObject(type.ptr(), error.ptr());
  throw py::error_already_set();
}

}  // namespace vexel::python

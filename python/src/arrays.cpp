#include "arrays.hpp"

#include <algorithm>
#include <cstring>
#include <limits>

#include "arrow.hpp"

namespace vexel::python {

namespace {

using py::detail::array_proxy;
using py::detail::npy_api;

PyObject* helperModule = nullptr;  // vexel._arrays, borrowed from sys.modules

// The four element types that are viewed in place.
std::optional<Element> elementOf(PyObject* array) {
  const auto* descriptor = reinterpret_cast<const PyObject*>(array_proxy(array)->descr);
  const auto* d = py::detail::array_descriptor_proxy(const_cast<PyObject*>(descriptor));
  if (d->byteorder == '>') {
    return std::nullopt;
  }
  switch (d->type_num) {
    case npy_api::NPY_DOUBLE_:
      return Element::float64;
    case npy_api::NPY_FLOAT_:
      return Element::float32;
    case npy_api::NPY_INT_:
      return Element::int32;
    case npy_api::NPY_LONG_:
    case npy_api::NPY_LONGLONG_:
      return sizeof(long) == 8 ? std::optional(Element::int64) : std::nullopt;
    default:
      return std::nullopt;
  }
}

// A Python float, int or None as a double; false for anything else.
bool readElement(PyObject* item, double& value) {
  if (PyFloat_CheckExact(item)) {
    value = PyFloat_AS_DOUBLE(item);
    return true;
  }
  if (PyLong_CheckExact(item)) {
    value = PyLong_AsDouble(item);
    if (value == -1.0 && PyErr_Occurred() != nullptr) {
      PyErr_Clear();
      return false;
    }
    return true;
  }
  if (item == Py_None) {
    value = std::numeric_limits<double>::quiet_NaN();
    return true;
  }
  return false;
}

}  // namespace

Input::Input(py::handle object, const char* name, bool mayBeNone) : name_(name) {
  PyObject* const p = object.ptr();
  if (p == Py_None) {
    if (!mayBeNone) {
      throw py::type_error(mustBe(name, "numbers", "None"));
    }
    return;
  }
  given_ = true;
  if (PyFloat_Check(p)) {
    readNumber(PyFloat_AS_DOUBLE(p));
    return;
  }
  const auto& api = npy_api::get();
  if (Py_TYPE(p) == api.PyArray_Type_ && readArray(p)) {
    return;
  }
  if (PyLong_CheckExact(p)) {
    if (double value = 0; readElement(p, value)) {
      readNumber(value);
      return;
    }
  }
  if ((PyList_CheckExact(p) || PyTuple_CheckExact(p)) && readSequence(p)) {
    return;
  }
  const py::object array = pythonHelper("convert")(object, name);
  if (!api.PyArray_Check_(array.ptr()) || !readArray(array.ptr())) {
    throw py::type_error(mustBe(name, "numbers", shortText(object)));
  }
}

void Input::readNumber(double value) {
  number_ = value;
  few_[0] = value;
  data_ = reinterpret_cast<const char*>(few_.data());
  size_ = 1;
}

bool Input::readSequence(PyObject* sequence) {
  const auto n = static_cast<std::size_t>(PySequence_Fast_GET_SIZE(sequence));
  PyObject** const items = PySequence_Fast_ITEMS(sequence);
  if (n > few_.size()) {
    many_.resize(n);
  }
  double* const to = n > few_.size() ? many_.data() : few_.data();
  for (std::size_t i = 0; i < n; ++i) {
    if (!readElement(items[i], to[i])) {
      return false;
    }
  }
  data_ = reinterpret_cast<const char*>(to);
  size_ = n;
  ownShape_ = static_cast<py::ssize_t>(n);
  ownStride_ = sizeof(double);
  shape_ = &ownShape_;
  strides_ = &ownStride_;
  dimensions_ = 1;
  return true;
}

bool Input::readArray(PyObject* array) {
  const auto* proxy = array_proxy(array);
  const auto element = elementOf(array);
  if (!element || (proxy->flags & npy_api::NPY_ARRAY_ALIGNED_) == 0) {
    return false;
  }
  const auto width = static_cast<py::ssize_t>(elementSize(*element));
  std::size_t size = 1;
  for (int i = 0; i < proxy->nd; ++i) {
    size *= static_cast<std::size_t>(proxy->dimensions[i]);
    if (proxy->strides[i] % width != 0) {
      return false;
    }
  }
  owner_ = py::reinterpret_borrow<py::object>(array);
  element_ = *element;
  data_ = proxy->data;
  dimensions_ = proxy->nd;
  shape_ = proxy->dimensions;
  strides_ = proxy->strides;
  size_ = size;
  if (dimensions_ == 0) {
    number_ = view(data_, 1, 1)[0];
  }
  return true;
}

Data Input::view(const void* first, std::size_t size, std::ptrdiff_t stride) const {
  switch (element_) {
    case Element::float32:
      return Data(static_cast<const float*>(first), size, stride);
    case Element::int32:
      return Data(static_cast<const std::int32_t*>(first), size, stride);
    case Element::int64:
      return Data(static_cast<const std::int64_t*>(first), size, stride);
    default:
      return Data(static_cast<const double*>(first), size, stride);
  }
}

Data Input::lane(int axis, std::ptrdiff_t offset) const {
  const auto width = static_cast<std::ptrdiff_t>(elementSize(element_));
  if (dimensions_ == 0) {
    return view(data_, 1, 1);
  }
  return view(data_ + offset, static_cast<std::size_t>(shape_[axis]), strides_[axis] / width);
}

Data Input::flat() {
  if (!given_) {
    return {};
  }
  if (dimensions_ <= 1) {
    return lane(0, 0);
  }
  // One stride leads through everything where each axis continues the one behind it.
  std::ptrdiff_t inner = 0;
  std::ptrdiff_t expected = 0;
  bool uniform = true;
  for (int i = dimensions_ - 1; i >= 0; --i) {
    if (shape_[i] == 1) {
      continue;
    }
    if (inner == 0) {
      inner = strides_[i];
    } else if (strides_[i] != expected) {
      uniform = false;
    }
    expected = strides_[i] * shape_[i];
  }
  const auto width = static_cast<std::ptrdiff_t>(elementSize(element_));
  if (uniform || size_ == 0) {
    return view(data_, size_, inner == 0 ? 1 : inner / width);
  }
  const py::object copy = pythonHelper("ravel")(owner_);
  owner_ = copy;
  if (!readArray(copy.ptr())) {
    throw py::type_error(std::string(name_) + " must be numbers");
  }
  return lane(0, 0);
}

namespace {

// The first byte of an array and the one behind its last.
std::pair<const char*, const char*> bounds(const char* data, std::span<const py::ssize_t> shape,
                                           const py::ssize_t* strides, std::size_t width) {
  const char* low = data;
  const char* high = data + width;
  for (std::size_t i = 0; i < shape.size(); ++i) {
    if (shape[i] == 0) {
      return {data, data};
    }
    const py::ssize_t reach = (shape[i] - 1) * strides[i];
    (reach < 0 ? low : high) += reach;
  }
  return {low, high};
}

}  // namespace

bool Input::overlaps(const py::array& array) const {
  if (data_ == nullptr) {
    return false;
  }
  const auto mine = bounds(data_, shape(), strides_, elementSize(element_));
  const auto its = bounds(static_cast<const char*>(array.data()),
                          {array.shape(), static_cast<std::size_t>(array.ndim())}, array.strides(),
                          static_cast<std::size_t>(array.itemsize()));
  return mine.first < its.second && its.first < mine.second;
}

py::object Input::array() const {
  if (owner_ || !given_) {
    return owner_ ? owner_ : py::none();
  }
  const std::span<const double> values(reinterpret_cast<const double*>(data_), size_);
  return dimensions_ == 0 ? toArray(values).attr("reshape")(py::tuple()) : toArray(values);
}

Data Input::vector() {
  if (dimensions_ > 1) {
    throw py::value_error(
        mustBe(name_, "of one dimension", "an array of shape " + shapeText(shape())));
  }
  return flat();
}

Doubles makeDoubles(std::span<const py::ssize_t> shape) {
  return Doubles(std::vector<py::ssize_t>(shape.begin(), shape.end()));
}

Doubles makeDoubles(std::size_t size) { return Doubles(static_cast<py::ssize_t>(size)); }

Doubles toArray(std::span<const double> values) {
  Doubles result = makeDoubles(values.size());
  std::copy(values.begin(), values.end(), result.mutable_data());
  return result;
}

namespace {

py::dtype typeOf(Element element) {
  switch (element) {
    case Element::float32:
      return py::dtype::of<float>();
    case Element::int32:
      return py::dtype::of<std::int32_t>();
    case Element::int64:
      return py::dtype::of<std::int64_t>();
    default:
      return py::dtype::of<double>();
  }
}

}  // namespace

py::array makeArray(Element element, std::span<const py::ssize_t> shape) {
  return py::array(typeOf(element), std::vector<py::ssize_t>(shape.begin(), shape.end()));
}

py::array outputArray(py::handle out, std::span<const py::ssize_t> shape, Element element) {
  if (out.is_none()) {
    return makeArray(element, shape);
  }
  if (!py::isinstance<py::array>(out)) {
    throw py::type_error(mustBe("out", "a NumPy array", shortText(out)));
  }
  auto array = py::reinterpret_borrow<py::array>(out);
  const py::dtype wanted = typeOf(element);
  if (elementOf(array.ptr()) != element || !array.writeable()) {
    throw py::value_error(
        mustBe("out", "a writable array of " + py::str(py::object(wanted)).cast<std::string>(),
               (array.writeable() ? "one of " : "a read-only one of ") +
                   py::str(py::object(array.dtype())).cast<std::string>()));
  }
  const std::span<const py::ssize_t> came(array.shape(), static_cast<std::size_t>(array.ndim()));
  if (!std::equal(came.begin(), came.end(), shape.begin(), shape.end())) {
    throw py::value_error(mustBe("out", "of shape " + shapeText(shape), shapeText(came)));
  }
  return array;
}

std::span<double> contiguousDoubles(py::array& array) {
  if ((array.flags() & py::array::c_style) == 0) {
    return {};
  }
  return {static_cast<double*>(array.mutable_data()), static_cast<std::size_t>(array.size())};
}

Interval readPair(py::handle pair, const char* name, bool open) {
  const Input ends(pair, name);
  if (ends.dimensions() != 1 || ends.size() != 2) {
    refuseValue(name, "a pair (low, high)", pair);
  }
  const auto end = [&](py::ssize_t i, double infinity) {
    const py::object given = pair[py::int_(i)];
    return open && given.is_none() ? infinity : ends.lane(0, 0)[static_cast<std::size_t>(i)];
  };
  constexpr double infinity = std::numeric_limits<double>::infinity();
  return {end(0, -infinity), end(1, infinity)};
}

std::string shapeText(std::span<const py::ssize_t> shape) {
  std::string text = "(";
  for (std::size_t i = 0; i < shape.size(); ++i) {
    text += (i > 0 ? ", " : "") + std::to_string(shape[i]);
  }
  return text + (shape.size() == 1 ? ",)" : ")");
}

std::string shortText(py::handle object) {
  PyObject* const p = object.ptr();
  const bool text = PyUnicode_Check(p) != 0 || PyBytes_Check(p) != 0;
  if (const Py_ssize_t n = text ? -1 : PyObject_Size(p); n >= 0) {
    return "a " + std::string(Py_TYPE(p)->tp_name) + " of length " + std::to_string(n);
  }
  PyErr_Clear();
  const std::string shown = py::repr(object).cast<std::string>();
  if (shown.size() <= 80) {
    return shown;
  }
  std::size_t end = 77;
  while ((static_cast<unsigned char>(shown[end]) & 0xC0U) == 0x80U) {  // within a character
    --end;
  }
  return shown.substr(0, end) + "...";
}

std::string_view textOf(py::handle object) {
  if (!PyUnicode_Check(object.ptr())) {
    return {};
  }
  Py_ssize_t size = 0;
  const char* const text = PyUnicode_AsUTF8AndSize(object.ptr(), &size);
  if (text == nullptr) {
    throw py::error_already_set();
  }
  return {text, static_cast<std::size_t>(size)};
}

void refuseChoice(const char* parameter, py::handle came, const std::string& allowed) {
  throw py::value_error(mustBe(parameter, allowed, shortText(came)));
}

Missing missingPolicy(py::handle object) { return choose<Missing>(object, "nan_policy"); }

py::object pythonHelper(const char* name) {
  if (helperModule == nullptr) {
    helperModule = py::module_::import("vexel._arrays").release().ptr();
  }
  return py::handle(helperModule).attr(name);
}

void bindArrays(py::module_& m) {
  m.def("checked_out", [](py::handle out, const std::vector<py::ssize_t>& shape) {
    return outputArray(out, shape);
  });
  m.def("short_text", &shortText);
  m.def("from_arrow", &fromArrow, "An object with __arrow_c_stream__ or __arrow_c_array__");
}

}  // namespace vexel::python

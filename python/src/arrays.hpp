// The array door: numbers of a Python object as `vexel::Data`, and NumPy arrays for results.
//
// float64, float32, int32 and int64 arrays are viewed where they are, strided too; lists and tuples
// of numbers are read here; everything else (other element types, masked arrays, pandas, Arrow,
// DLPack, buffers) becomes one of these in vexel/_arrays.py.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <array>
#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include <vexel/data.hpp>
#include <vexel/interval.hpp>
#include <vexel/names.hpp>

#include "scalars.hpp"

namespace vexel::python {

namespace py = pybind11;

// An object as an argument: its numbers, their shape and what keeps them alive.  Lives as long as
// the call; needs the interpreter lock to be made and dropped, not to be read.
class Input {
 public:
  // `name` is the parameter's, for errors.  None is "not given", which is for `optional` ones.
  static constexpr bool optional = true;
  Input(py::handle object, const char* name, bool mayBeNone = false);
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

  bool given() const { return given_; }
  bool isNumber() const { return dimensions_ == 0; }
  double number() const { return number_; }  // of one number
  int dimensions() const { return dimensions_; }
  std::span<const py::ssize_t> shape() const {
    return {shape_, static_cast<std::size_t>(dimensions_)};
  }
  std::size_t size() const { return size_; }
  const char* name() const { return name_; }
  Element element() const { return element_; }

  // All elements in C order; copied only where no single stride leads through them.
  Data flat();
  // The elements of a one-dimensional array (a single number counts); ValueError for more.
  Data vector();
  // Elements along `axis`, starting `offset` bytes behind the first.
  Data lane(int axis, std::ptrdiff_t offset) const;
  std::ptrdiff_t byteStride(int axis) const { return strides_[axis]; }
  const char* bytes() const { return data_; }
  // n elements of this one's type that lie one after the other elsewhere.
  Data dense(const char* first, std::size_t n) const { return view(first, n, 1); }
  // Whether memory of the array may be memory of this one.
  bool overlaps(const py::array& array) const;
  // The array itself, a list's as a new one; None where nothing was given.
  py::object array() const;

 private:
  void readNumber(double value);
  bool readSequence(PyObject* sequence);
  bool readArray(PyObject* array);
  Data view(const void* first, std::size_t size, std::ptrdiff_t stride) const;

  const char* name_;
  py::object owner_;
  std::array<double, 16> few_{};  // short lists
  std::vector<double> many_;      // long ones, and copies
  const char* data_ = nullptr;
  const py::ssize_t* shape_ = nullptr;
  const py::ssize_t* strides_ = nullptr;  // in bytes
  py::ssize_t ownShape_ = 0;
  py::ssize_t ownStride_ = 0;
  double number_ = 0;
  std::size_t size_ = 0;
  int dimensions_ = 0;
  Element element_ = Element::float64;
  bool given_ = false;
};

// The size of an element in bytes.
constexpr std::size_t elementSize(Element e) {
  return e == Element::float64 || e == Element::int64 ? 8 : 4;
}

// A new float64 array, C order, uninitialised.
using Doubles = py::array_t<double>;
Doubles makeDoubles(std::span<const py::ssize_t> shape);
Doubles makeDoubles(std::size_t size);
Doubles toArray(std::span<const double> values);
// An array over the vector's own memory.
template <typename T>
py::array_t<T> adopt(std::vector<T>&& values) {
  auto* owned = new std::vector<T>(std::move(values));
  const py::capsule base(owned, [](void* p) { delete static_cast<std::vector<T>*>(p); });
  return py::array_t<T>({static_cast<py::ssize_t>(owned->size())}, owned->data(), base);
}

// A new array of the element type, C order, uninitialised.
py::array makeArray(Element element, std::span<const py::ssize_t> shape);
// `out` checked against a shape and type: a writable array; a new array for None.
py::array outputArray(py::handle out, std::span<const py::ssize_t> shape,
                      Element element = Element::float64);
// The array's memory where it is C-contiguous, otherwise nothing.
std::span<double> contiguousDoubles(py::array& array);

// A pair (low, high).  Of `open` ones None is an end at infinity.
Interval readPair(py::handle pair, const char* name, bool open = false);

// "(2, 3)", for errors.
std::string shapeText(std::span<const py::ssize_t> shape);
// A short repr of an object, for errors.
std::string shortText(py::handle object);

// One of the names of an option's values.
[[noreturn]] void refuseChoice(const char* parameter, py::handle came, const std::string& allowed);
std::string_view textOf(py::handle object);  // empty for what is no string

// `more` names what else the parameter may be.
template <typename E>
E choose(py::handle object, const char* parameter, const char* more = "") {
  if (const std::optional<E> value = valueNamed<E>(textOf(object))) {
    return *value;
  }
  refuseChoice(parameter, object, namesListed<E>("\"", *more == 0 ? " or " : ", ") + more);
}

Missing missingPolicy(py::handle object);

// What vexel/_arrays.py provides, set once when the package is imported.
void bindArrays(py::module_& m);
py::object pythonHelper(const char* name);

}  // namespace vexel::python

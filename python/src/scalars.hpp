// Numbers, whole numbers and flags of Python as parameters.
//
// A function that is bound takes `Number<"ddof">` where it wants a double: the name stands in the
// error when something else comes.  pybind11's own conversions know no names and print arrays
// whole.
#pragma once

#include <pybind11/pybind11.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace vexel::python {

namespace py = pybind11;

// The readers: TypeError for another kind of thing, ValueError for a value that is not allowed.
double readNumber(py::handle value, const char* name);
// 2.0 is a whole number too.
std::int64_t readWhole(py::handle value, const char* name,
                       std::int64_t low = std::numeric_limits<std::int64_t>::min(),
                       std::int64_t high = std::numeric_limits<std::int64_t>::max());
// A list or array of them.
std::vector<std::int64_t> readWholes(py::handle values, const char* name);
bool readFlag(py::handle value, const char* name);
// Bytes, as they are written by to_bytes.
std::string_view readBytes(py::handle value, const char* name);
// What a caller's function returned.
double readResult(py::handle value, const char* function);
// An object of a class that is bound.
template <typename T>
T& readObject(py::handle value, const char* name, const char* allowed);

// The text of an error about a parameter.
std::string mustBe(const std::string& name, const std::string& allowed, const std::string& came);
[[noreturn]] void refuseKind(const char* name, const std::string& allowed, py::handle came);
[[noreturn]] void refuseValue(const char* name, const std::string& allowed, py::handle came);

template <typename T>
T& readObject(py::handle value, const char* name, const char* allowed) {
  if (!py::isinstance<T>(value)) {
    refuseKind(name, allowed, value);
  }
  return *value.cast<T*>();
}

// A parameter's name as a template argument.
template <std::size_t N>
struct Name {
  consteval Name(const char (&given)[N]) { std::copy_n(given, N, text); }
  char text[N]{};
};

template <typename T, Name name>
struct Parameter {
  T value;
  operator T() const { return value; }

  static T read(py::handle given) {
    if constexpr (std::is_same_v<T, double>) {
      return readNumber(given, name.text);
    } else if constexpr (std::is_same_v<T, bool>) {
      return readFlag(given, name.text);
    } else if constexpr (std::is_unsigned_v<T>) {
      return static_cast<T>(readWhole(given, name.text, 0));
    } else {
      return static_cast<T>(readWhole(given, name.text, std::numeric_limits<T>::min(),
                                      std::numeric_limits<T>::max()));
    }
  }
};

template <Name name>
using Number = Parameter<double, name>;
template <Name name>
using Flag = Parameter<bool, name>;
template <Name name>
using Whole = Parameter<std::int64_t, name>;
template <Name name>
using Count = Parameter<std::size_t, name>;  // from 0

}  // namespace vexel::python

namespace pybind11::detail {

template <typename T, vexel::python::Name parameter>
struct type_caster<vexel::python::Parameter<T, parameter>> {
  using Value = vexel::python::Parameter<T, parameter>;
  static constexpr auto name = const_name("parameter");
  template <typename>
  using cast_op_type = Value;
  operator Value() const { return value; }
  bool load(handle given, bool) {
    value.value = Value::read(given);
    return true;
  }
  Value value{};
};

}  // namespace pybind11::detail

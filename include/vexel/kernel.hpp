// The embedding API: a Vexel kernel inside a C++ program.
//
//   vexel::Kernel kernel;
//   kernel.loadLibrary("libstats_hw.so");
//   std::vector<double> x = {3, 1, 2};
//   vexel::Value mean =
//       kernel.call("STATS_VexelMean_HW", kernel.wrap(x), kernel.array({}), false, 0);
//   double m = mean.number();
//
// One kernel per process is in use at a time, by one thread at a time.  A Value is a rooted handle:
// it keeps its object alive and may be copied freely; one that outlives its kernel can only be
// dropped. Every function that can fail throws vexel::Error and leaves the kernel usable.
#pragma once

#if __cplusplus < 202002L
#error "vexel/kernel.hpp needs C++20 (-std=c++20)"
#endif

#include <vexelc/vexelc.h>

#include <array>
#include <concepts>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>
#include <vexel/arguments.hpp>
#include <vexel/interruption.hpp>

namespace vexel {

class Kernel;

// A rooted handle of a host object.
class Value {
 public:
  Value() = default;  // the host's NULL, of no kernel
  Value(Kernel& kernel, ALGEB handle);
  Value(const Value& other);
  Value(Value&& other) noexcept;
  Value& operator=(Value other) noexcept;
  ~Value();

  ALGEB handle() const { return handle_; }
  Kernel* kernel() const;  // nullptr for none, or when it is gone

  // What it is.
  bool isNull() const;
  bool isNumeric() const;
  bool isInteger() const;
  bool isArray() const;
  bool isList() const;

  // Conversions; throw Error for a value of another kind.
  double number() const;                // nearest double of a number
  std::int64_t integer() const;         // an integer that fits
  bool boolean() const;                 // true, false
  std::string text() const;             // printed form; a string without its quotes
  std::string source() const;           // printed form that reads back
  std::string json() const;             // one line of JSON
  std::vector<double> numbers() const;  // a list or array (dense or sparse) of numbers

  // Elements of a list, sequence or one-dimensional array, from 0.
  std::size_t size() const;
  Value operator[](std::size_t i) const;

  // The elements of a dense array, in the order of its memory, while the array is alive:
  // data<const float>() for an array of float[4].  Throws Error for an array of another type, and
  // for one that may not be written to unless T is const.
  template <typename T = double>
  std::span<T> data() const {
    using Number = std::remove_const_t<T>;
    static_assert(detail::Number<Number> && detail::elementCode<Number> >= 0,
                  "data: the element type is float, double or a signed integer");
    return {static_cast<T*>(block(detail::elementCode<Number>, std::is_const_v<T>)), size()};
  }

  // The same object (equal numbers, names and strings are the same object).
  friend bool operator==(const Value& a, const Value& b) { return a.handle_ == b.handle_; }

 private:
  void* block(int type, bool reading) const;

  Kernel* kernel_ = nullptr;
  ALGEB handle_ = nullptr;
  void* root_ = nullptr;
};

// A host error: what() is its text, filled, with long arguments shortened.
class VEXEL_API Error : public std::runtime_error {
 public:
  Error(std::string filled, std::string message, std::vector<Value> arguments);
  ~Error() override;
  const std::string& message() const { return message_; }  // with %1, %2 unfilled
  const std::vector<Value>& arguments() const { return arguments_; }

 private:
  std::string message_;
  std::vector<Value> arguments_;
};

class Kernel {
 public:
  Kernel();
  ~Kernel();
  Kernel(const Kernel&) = delete;
  Kernel& operator=(const Kernel&) = delete;

  VKernelVector vector();  // what a loaded library is called with

  // --- values ---
  Value null();
  Value boolean(bool b);
  Value integer(std::int64_t i);
  Value unsignedInteger(std::uint64_t i);
  Value real(double d);
  Value string(std::string_view text);
  Value name(std::string_view text);
  Value list(std::span<const Value> elements);
  Value list(std::span<const double> elements);
  Value list(std::initializer_list<double> elements) {
    return list(std::span<const double>(elements.begin(), elements.size()));
  }
  Value list(std::initializer_list<Value> elements) {
    return list(std::span<const Value>(elements.begin(), elements.size()));
  }
  Value sequence(std::span<const Value> elements);  // one element: the element itself
  Value range(const Value& lower, const Value& upper);

  // New dense arrays of the given element type (RTABLE_ codes), bounds 1..n, elements copied.
  Value array(std::span<const double> x);  // float[8]
  Value array(std::initializer_list<double> x);
  Value array(std::span<const std::int32_t> x);  // integer[4]
  Value array(const RTableSettings& s, const void* data, std::span<const V_INT> bounds);

  // An array over memory that the caller owns and keeps alive and in place as long as the kernel
  // can reach the array: a vector, span or array of double, float or signed integers.  Nothing is
  // copied; the library writes into the caller's memory where it works in place.  Memory of const
  // elements is read-only: entry points copy it first, and assignments to it are errors.
  template <typename Range>
  Value wrap(Range&& x) {
    return wrapMemory(x, {static_cast<V_INT>(std::size(x))}, RTABLE_COLUMN_MAJOR);
  }
  // The same of two dimensions, by default row after row; rows x columns elements.
  template <typename Range>
  Value wrap(Range&& x, V_INT rows, V_INT columns, int order = RTABLE_ROW_MAJOR) {
    return wrapMemory(x, {rows, columns}, order);
  }
  // The same for any dense array of a machine type; owner is dropped when the array is collected,
  // perhaps in the middle of a later call, and may be what keeps the memory.
  Value wrap(const RTableSettings& s, void* data, std::span<const V_INT> bounds,
             std::shared_ptr<void> owner);

  // A C++ function as a host procedure.  It may throw Error; other exceptions become host errors.
  // A function of one double is also a hardware function.
  Value function(std::string_view name, std::function<Value(Kernel&, std::span<const Value>)> f);
  Value function(std::string_view name, std::function<double(double)> f);

  // --- running ---
  // Runs statements of the language; the value of the last one.
  Value eval(std::string_view text);

  // Loads a library and initialises it.  Its exported entry points become callable by name.
  void loadLibrary(const std::string& path);
  std::vector<std::string> entryPoints() const;

  // Calls an entry point, built-in function or procedure by name, with up to 16 arguments of the
  // kinds that toValue takes, {} for an empty array and {1.5, 2.5} for one of two elements.
  template <typename... T>
  Value call(std::string_view name, const T&... arguments) {
    static_assert(sizeof...(T) <= 16, "call: up to 16 arguments");
    const std::array<Argument, sizeof...(T)> given = {Argument(arguments)...};
    return callArguments(name, given);
  }
  // The same where one of them is {...}.
  Value call(std::string_view name, const Argument& a1 = none(), const Argument& a2 = none(),
             const Argument& a3 = none(), const Argument& a4 = none(), const Argument& a5 = none(),
             const Argument& a6 = none(), const Argument& a7 = none(), const Argument& a8 = none(),
             const Argument& a9 = none(), const Argument& a10 = none(),
             const Argument& a11 = none(), const Argument& a12 = none(),
             const Argument& a13 = none(), const Argument& a14 = none(),
             const Argument& a15 = none(), const Argument& a16 = none());
  Value callValues(std::string_view name, std::span<const Value> args);
  Value apply(const Value& procedure, std::span<const Value> args);

  // --- host state ---
  void seed(std::uint64_t seed);
  // Scripted draws: the next draws come from these values in turn, integers and doubles each from
  // their own queue; an empty queue raises.  nullptr-like empty spans and unscript() end it.
  void scriptRandom(std::span<const std::int32_t> integers, std::span<const double> doubles);
  void unscriptRandom();
  std::uint64_t drawsTaken() const;  // draws of either kind since the kernel was made

  // Messages of VexelUserInfo at or below the channel's level; default: standard error.
  void onUserInfo(
      std::function<void(int level, const std::string& channel, const std::string& text)> f);
  void infoLevel(std::string_view channel, int level);

  // Sets the flag that evaluation and random draws look at; safe in a signal handler.
  static void interrupt() noexcept;
  // Forgets an interrupt that nothing has seen yet.
  static void clearInterrupt() noexcept;

  // --- collector ---
  void collect();
  void stress(bool on);             // collect at every allocation
  std::size_t liveObjects() const;  // after the last collection, plus what was made since
  // Lets the n-th host allocation from now (0: the next), and if lasting every later one, raise
  // "not enough memory"; -1: none.
  void failAllocation(std::int64_t n, bool lasting = false);

  // Values as they are; nullptr as NULL; bool, integers, enumerations, floating-point numbers,
  // texts; vectors, spans and arrays of numbers as an array of their element type (unsigned ones as
  // the signed type that holds them, or an error), of Values or texts as a list.
  template <typename T>
  Value toValue(const T& x);

  struct Impl;
  Impl& impl() { return *impl_; }

 private:
  static Argument none() { return Argument::Absent(); }
  // Up to the first that is absent.
  Value callArguments(std::string_view name, std::span<const Argument> arguments);
  Value wrapMemory(const void* data, std::size_t elements, int type, bool readOnly,
                   std::initializer_list<V_INT> extents, int order);
  template <typename Range>
  Value wrapMemory(Range& x, std::initializer_list<V_INT> extents, int order);
  Value unsignedArray(std::span<const std::uint64_t> x);

  std::unique_ptr<Impl> impl_;
};

template <typename Range>
Value Kernel::wrapMemory(Range& x, std::initializer_list<V_INT> extents, int order) {
  if constexpr (detail::Numbers<Range>) {
    using Item = detail::ElementOf<Range>;
    using Number = std::remove_cv_t<Item>;
    static_assert(detail::elementCode<Number> >= 0,
                  "wrap: the elements are of type float, double or a signed integer");
    return wrapMemory(std::data(x), std::size(x), detail::elementCode<Number>,
                      std::is_const_v<Item>, extents, order);
  } else {
    static_assert(detail::never<Range>, "wrap: a vector, span or array of numbers expected");
  }
}

template <typename T>
Value Kernel::toValue(const T& x) {
  if constexpr (std::same_as<T, Value>) {
    return x;
  } else if constexpr (std::same_as<T, bool>) {
    return boolean(x);
  } else if constexpr (std::is_null_pointer_v<T>) {
    return null();
  } else if constexpr (std::is_enum_v<T>) {
    return toValue(static_cast<std::underlying_type_t<T>>(x));
  } else if constexpr (std::is_integral_v<T> && std::is_unsigned_v<T>) {
    return unsignedInteger(x);
  } else if constexpr (std::is_integral_v<T>) {
    return integer(x);
  } else if constexpr (std::is_floating_point_v<T>) {
    return real(static_cast<double>(x));
  } else if constexpr (detail::Text<T>) {
    if constexpr (std::is_pointer_v<T>) {
      if (x == nullptr) {
        return null();
      }
    }
    return string(x);
  } else if constexpr (detail::Numbers<const T>) {
    using Number = std::remove_cv_t<detail::ElementOf<const T>>;
    if constexpr (detail::elementCode<Number> >= 0) {
      const RTableSettings s{detail::elementCode<Number>, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR,
                             1, 0};
      const V_INT bounds[] = {1, static_cast<V_INT>(std::size(x))};
      return array(s, std::size(x) == 0 ? nullptr : std::data(x), bounds);
    } else if constexpr (std::is_floating_point_v<Number>) {
      return array(std::vector<double>(std::data(x), std::data(x) + std::size(x)));
    } else {
      return unsignedArray(std::vector<std::uint64_t>(std::data(x), std::data(x) + std::size(x)));
    }
  } else if constexpr (detail::Contiguous<const T>) {
    using Item = std::remove_cv_t<detail::ElementOf<const T>>;
    static_assert(std::same_as<Item, Value> || detail::Text<Item>,
                  "a range whose elements are numbers, Values or texts expected");
    std::vector<Value> elements;
    for (std::size_t i = 0; i < std::size(x); ++i) {
      elements.push_back(toValue(std::data(x)[i]));
    }
    return list(std::span<const Value>(elements));
  } else {
    static_assert(detail::never<T>,
                  "an argument is a Value, bool, number, enumeration, text, nullptr, or a vector, "
                  "span or array of those");
  }
}

template <typename T>
Value Argument::convert(Kernel& kernel, const void* object) {
  return kernel.toValue(*static_cast<const T*>(object));
}
inline Value Argument::value(Kernel& kernel) const { return convert_(kernel, object_); }

}  // namespace vexel

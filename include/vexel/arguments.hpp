// What of C++ becomes a value of the host: the kinds that Kernel::toValue and call take.
#pragma once

#include <vexelc/vexelc.h>

#include <concepts>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <type_traits>

namespace vexel {

class Kernel;
class Value;

namespace detail {

template <typename T>
inline constexpr bool isCharacter =
    std::same_as<T, char> || std::same_as<T, wchar_t> || std::same_as<T, char8_t> ||
    std::same_as<T, char16_t> || std::same_as<T, char32_t>;

// A number: neither a truth value nor a character.
template <typename T>
concept Number = std::is_arithmetic_v<T> && !std::same_as<T, bool> && !isCharacter<T>;

// The element type of arrays of T, an RTABLE_ code; -1: there is none of exactly that type.
template <Number T>
inline constexpr int elementCode = std::same_as<T, double>  ? RTABLE_FLOAT64
                                   : std::same_as<T, float> ? RTABLE_FLOAT32
                                   : !std::is_integral_v<T> || std::is_unsigned_v<T> ? -1
                                   : sizeof(T) == 1 ? RTABLE_INTEGER8
                                   : sizeof(T) == 2 ? RTABLE_INTEGER16
                                   : sizeof(T) == 4 ? RTABLE_INTEGER32
                                   : sizeof(T) == 8 ? RTABLE_INTEGER64
                                                    : -1;

template <typename Range>
using ElementOf = std::remove_pointer_t<decltype(std::data(std::declval<Range&>()))>;

// A vector, span, array or the like: elements in a row in memory.
template <typename Range>
concept Contiguous = requires(Range& x) {
  {*std::data(x)};
  { std::size(x) } -> std::convertible_to<std::size_t>;
};
template <typename Range>
concept Numbers = Contiguous<Range> && Number<std::remove_cv_t<ElementOf<Range>>>;

template <typename T>
concept Text = std::convertible_to<const T&, std::string_view>;

template <typename>
inline constexpr bool never = false;

}  // namespace detail

// An argument of Kernel::call: refers to what it is made from, which must live as long as the call.
class Argument {
 public:
  // {} is an empty array of floats.
  Argument() : convert_(&emptyArray) {}
  template <typename T>
  requires(!std::same_as<T, Argument>) Argument(const T& x)  // NOLINT: implicit
      : convert_(&convert<T>), object_(&x), kind_(kindOf<T>) {}
  // {1.5, 2.5}: an array of floats; {value, value}: a list.
  Argument(const std::initializer_list<double>& x)  // NOLINT: implicit
      : convert_(&convert<std::initializer_list<double>>), object_(&x) {}
  Argument(const std::initializer_list<Value>& x)  // NOLINT: implicit
      : convert_(&convert<std::initializer_list<Value>>), object_(&x) {}

  // Stands behind the last argument.
  struct Absent {};
  Argument(Absent) : convert_(nullptr) {}
  bool isAbsent() const { return convert_ == nullptr; }

  Value value(Kernel& kernel) const;

 private:
  friend class Kernel;
  // Those that become handles without a Value of their own.
  enum class Kind { other, real, integer, truth, value };
  template <typename T>
  static constexpr Kind kindOf = std::same_as<T, double>  ? Kind::real
                                 : std::same_as<T, int>   ? Kind::integer
                                 : std::same_as<T, bool>  ? Kind::truth
                                 : std::same_as<T, Value> ? Kind::value
                                                          : Kind::other;

  static Value emptyArray(Kernel& kernel, const void*);
  template <typename T>
  static Value convert(Kernel& kernel, const void* object);

  Value (*convert_)(Kernel& kernel, const void* object);
  const void* object_ = nullptr;
  Kind kind_ = Kind::other;
};

}  // namespace vexel

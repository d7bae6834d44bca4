// Machine numbers as unsigned keys in the order of the sorting routines: numbers ascending, -0.0
// equal to 0.0, every NaN equal to one another and above every number.  A descending order is the
// ascending order of the complemented keys, which keeps stability.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <type_traits>

namespace nag2 {

template <std::size_t Size>
struct UnsignedOfSize;
template <>
struct UnsignedOfSize<1> {
  using type = std::uint8_t;
};
template <>
struct UnsignedOfSize<2> {
  using type = std::uint16_t;
};
template <>
struct UnsignedOfSize<4> {
  using type = std::uint32_t;
};
template <>
struct UnsignedOfSize<8> {
  using type = std::uint64_t;
};

template <typename T>
using KeyOf = typename UnsignedOfSize<sizeof(T)>::type;

template <typename Key>
inline constexpr Key kSignBit = static_cast<Key>(Key{1} << (8 * sizeof(Key) - 1));

// Integers: move the sign bit's weight to the bottom of the range.
template <std::signed_integral T>
constexpr KeyOf<T> ascendingKey(T x) {
  return static_cast<KeyOf<T>>(static_cast<KeyOf<T>>(x) ^ kSignBit<KeyOf<T>>);
}
template <std::signed_integral T>
constexpr T fromAscendingKey(KeyOf<T> key) {
  return static_cast<T>(static_cast<KeyOf<T>>(key ^ kSignBit<KeyOf<T>>));
}

// Floats: x + 0 turns -0.0 into 0.0; then negative numbers have all bits complemented and the
// others the sign bit set (the usual order-preserving map of sign-magnitude bits).
template <std::floating_point T>
constexpr KeyOf<T> ascendingKey(T x) {
  using Key = KeyOf<T>;
  if (x != x) {  // NOLINT(misc-redundant-expression): a NaN
    return static_cast<Key>(~Key{0});
  }
  const Key bits = std::bit_cast<Key>(x + T{0});
  const Key negative = static_cast<Key>(Key{0} - (bits >> (8 * sizeof(Key) - 1)));
  return bits ^ (negative | kSignBit<Key>);
}
// The number of a key that is no NaN's; a zero is positive.
template <std::floating_point T>
constexpr T fromAscendingKey(KeyOf<T> key) {
  using Key = KeyOf<T>;
  const Key positive = static_cast<Key>(Key{0} - (key >> (8 * sizeof(Key) - 1)));
  return std::bit_cast<T>(static_cast<Key>(key ^ (static_cast<Key>(~positive) | kSignBit<Key>)));
}

template <typename T>
using SignedOf = std::make_signed_t<KeyOf<T>>;

// The bits of a float as a signed integer of the same order (-0.0 just below 0.0, NaNs at the ends
// by their signs), and back: a negative integer has all bits but the sign complemented.
template <std::signed_integral Integer>
constexpr Integer mirrorNegative(Integer bits) {
  using Key = std::make_unsigned_t<Integer>;
  const Key negative = static_cast<Key>(Key{0} - (static_cast<Key>(bits) >> (8 * sizeof(Key) - 1)));
  return static_cast<Integer>(static_cast<Key>(bits) ^ static_cast<Key>(negative >> 1));
}

}  // namespace nag2

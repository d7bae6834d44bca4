// The source of uniforms that the classic variates draw from.
//
// A source has integer(), uniform over all 32-bit integers, and unit(), a number of the unit
// interval.  The order in which a variate draws, and from which of the two, is part of what it is:
// stored samples depend on it.
#pragma once

#include <cmath>
#include <cstdint>

namespace vexel::kernels::classic {

// A number of the unit interval; the ends may be among its values.
class Unit {
 public:
  explicit constexpr Unit(double u) : u_(u) {}
  constexpr operator double() const { return u_; }

 private:
  double u_;
};

// Its logarithm; minus infinity, which every variate below can stand, should 0 come.
inline double logarithm(Unit u) { return std::log(static_cast<double>(u)); }

// Whole numbers 0 .. last from the top bits of an integer, drawn again while they are beyond.
//
// The width decides which draws are used, and with it every stored sample.
template <typename Uniforms>
std::uint32_t indexUpTo(Uniforms& uniforms, std::uint32_t last, int shift) {
  std::uint32_t i;
  do {
    i = static_cast<std::uint32_t>(uniforms.integer()) >> shift;
  } while (i > last);
  return i;
}

}  // namespace vexel::kernels::classic

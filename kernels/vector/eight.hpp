// Eight doubles side by side: one wide register, some narrow ones, or eight numbers.
//
// What the folder's sums run in, so that they have the same bits on every machine.  Loops over the
// parts are unrolled; part i of a register with m lanes holds the elements i m to i m + m - 1.

#if defined(VEXEL_KERNELS_VECTOR_EIGHT) == defined(HWY_TARGET_TOGGLE)
#ifdef VEXEL_KERNELS_VECTOR_EIGHT
#undef VEXEL_KERNELS_VECTOR_EIGHT
#else
#define VEXEL_KERNELS_VECTOR_EIGHT
#endif

#include <bit>
#include <cstddef>
#include <cstdint>

#include "kernels/exact_product.hpp"

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {

#ifdef VEXEL_HAVE_HIGHWAY
namespace hn = hwy::HWY_NAMESPACE;
using Tag = hn::CappedTag<double, 8>;
using Register = hn::Vec<Tag>;
inline constexpr int kLanes = static_cast<int>(hn::MaxLanes(Tag()));
#else
using Register = double;
inline constexpr int kLanes = 1;
#endif
inline constexpr int kParts = 8 / kLanes;

struct Eight {
  Register part[kParts];
};

#ifdef VEXEL_HAVE_HIGHWAY

HWY_INLINE Register add(Register a, Register b) { return hn::Add(a, b); }
HWY_INLINE Register sub(Register a, Register b) { return hn::Sub(a, b); }
HWY_INLINE Register mul(Register a, Register b) { return hn::Mul(a, b); }
HWY_INLINE Register div(Register a, Register b) { return hn::Div(a, b); }
HWY_INLINE Register squareRoot(Register a) { return hn::Sqrt(a); }
HWY_INLINE Register absolute(Register a) { return hn::Abs(a); }
HWY_INLINE Register bitOr(Register a, Register b) { return hn::Or(a, b); }
HWY_INLINE Register broadcast(double a) { return hn::Set(Tag(), a); }
HWY_INLINE Register read(const double* p) { return hn::LoadU(Tag(), p); }
HWY_INLINE void write(Register a, double* p) { hn::StoreU(a, Tag(), p); }

// a b - p, exactly, of p = a b rounded.
HWY_INLINE Register productError(Register a, Register b, Register p) {
#if HWY_NATIVE_FMA
  return hn::MulSub(a, b, p);
#else
  HWY_ALIGN double x[kLanes];
  HWY_ALIGN double y[kLanes];
  HWY_ALIGN double z[kLanes];
  write(a, x);
  write(b, y);
  write(p, z);
  for (int i = 0; i < kLanes; ++i) {
    z[i] = exactProductError(x[i], y[i], z[i]);
  }
  return read(z);
#endif
}

#else

inline double add(double a, double b) { return a + b; }
inline double sub(double a, double b) { return a - b; }
inline double mul(double a, double b) { return a * b; }
inline double div(double a, double b) { return a / b; }
inline double squareRoot(double a) { return __builtin_sqrt(a); }
inline double absolute(double a) { return __builtin_fabs(a); }
inline double bitOr(double a, double b) {
  return std::bit_cast<double>(std::bit_cast<std::uint64_t>(a) | std::bit_cast<std::uint64_t>(b));
}
inline double broadcast(double a) { return a; }
inline double read(const double* p) { return *p; }
inline void write(double a, double* p) { *p = a; }
inline double productError(double a, double b, double p) { return exactProductError(a, b, p); }

#endif

// Asks for the next sixteen elements of a block that will be read soon: memory is slow to notice
// how far a block goes.  There may be nothing.
HWY_INLINE void expect(const double* x) {
  constexpr std::size_t ahead = 512;
  __builtin_prefetch(x + ahead);
  __builtin_prefetch(x + ahead + 8);
}

// The sum rounded, and what the rounding left, exactly (D. E. Knuth, The Art of Computer
// Programming 2, section 4.2.2).
HWY_INLINE Register twoSum(Register a, Register b, Register& error) {
  const Register s = add(a, b);
  const Register fromB = sub(s, a);
  error = add(sub(a, sub(s, fromB)), sub(b, fromB));
  return s;
}

// A sum in eight lanes and its rounding errors, themselves summed (T. Ogita, S. M. Rump and
// S. Oishi, Accurate sum and dot product, 2005).
struct EightSums {
  Register sum[kParts];
  Register error[kParts];

  HWY_INLINE EightSums() {
    for (int i = 0; i < kParts; ++i) {
      sum[i] = error[i] = broadcast(0.0);
    }
  }
  HWY_INLINE void take(int part, Register x) {
    Register e;
    sum[part] = twoSum(sum[part], x, e);
    error[part] = add(error[part], e);
  }
  // x + low, where low is small beside x.
  HWY_INLINE void take(int part, Register x, Register low) {
    Register e;
    sum[part] = twoSum(sum[part], x, e);
    error[part] = add(error[part], add(e, low));
  }
  HWY_INLINE void store(double* lanes) const {
    for (int i = 0; i < kParts; ++i) {
      write(sum[i], lanes + i * kLanes);
      write(error[i], lanes + 8 + i * kLanes);
    }
  }
};

}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif

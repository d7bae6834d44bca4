// How a kernel is compiled once for each set of vector instructions and chosen at run time.
//
// A source of this folder looks like this (NAME is its own path):
//
//   #undef HWY_TARGET_INCLUDE
//   #define HWY_TARGET_INCLUDE "kernels/vector/NAME.cpp"
//   #include "kernels/vector/each_target.hpp"
//   #include "kernels/vector/eight.hpp"      // after it; and any other per-target header
//
//   HWY_BEFORE_NAMESPACE();
//   namespace vexel::kernels::HWY_NAMESPACE {
//   namespace {
//   void thing(const double* x, std::size_t n) { ... }    // see below
//   }
//   }
//   HWY_AFTER_NAMESPACE();
//
//   #if HWY_ONCE
//   namespace vexel::kernels {
//   HWY_EXPORT(thing);
//   void thing(const double* x, std::size_t n) { HWY_DYNAMIC_DISPATCH(thing)(x, n); }
//   }
//   #endif
//
// and NAME.hpp declares vexel::kernels::thing.  The target holds for functions that are written out
// between the two macros: a lambda needs HWY_ATTR behind its parameters, a struct of registers an
// explicit constructor.  An algorithm of the standard library that is given a lambda is compiled
// for the base target, and GCC 12 leaves the upper halves of the registers in use behind such a
// call, which makes whatever runs next without AVX ten times as slow: loops are written out.
//
// The rule of the folder: every target gives the same bits.  So the number of lanes that a sum runs
// in is fixed (eight.hpp has eight, whatever the registers hold), elements go to lanes by their
// index, not by their address, nothing is contracted to a fused multiply-add but where the result
// is exact, and what cannot round - comparing, counting, moving, integers - may be done in any way.
// tests/kernels/targets_test.cpp runs every target that the machine has, and the one without vector
// instructions.
//
// Without the Highway library the file is compiled once, in the namespace N_PLAIN;
// VEXEL_HAVE_HIGHWAY tells the two apart.  This header has no include guard: Highway includes the
// source again and again.

#ifdef VEXEL_HAVE_HIGHWAY

#ifndef HWY_DISABLED_TARGETS
// The steps between plain code and AVX2 and those above AVX3 gain nothing here; vectors whose size
// is not known when compiling do not fit eight.hpp.
#define HWY_DISABLED_TARGETS \
  (HWY_SSSE3 | HWY_SSE4 | HWY_AVX3_DL | HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
#endif
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#else

#ifndef VEXEL_PLAIN_TARGET
#define VEXEL_PLAIN_TARGET
#undef HWY_NAMESPACE
#define HWY_NAMESPACE N_PLAIN
#define HWY_BEFORE_NAMESPACE() static_assert(true, "")
#define HWY_AFTER_NAMESPACE() static_assert(true, "")
#define HWY_ONCE 1
#define HWY_INLINE inline
#define HWY_ATTR
#define HWY_EXPORT(function) static_assert(true, "")
#define HWY_DYNAMIC_DISPATCH(function) HWY_NAMESPACE::function
#endif

#endif

// Faure stream.

#include "lds/FaureQRStream.hpp"

#include <cassert>

#include "kernel/interrupt.hpp"

namespace {

vexel::kernels::classic::FaurePoints pointsOf(int d, int startExponent) {
  assert(d >= 2);
  return {d, startExponent};
}

}  // namespace

FaureQRStream::FaureQRStream(VKernelVector /*kv*/, int dimension, int startExponent)
    : points_(pointsOf(dimension, startExponent)) {
  dimension_ = dimension;
}

int FaureQRStream::reset(VKernelVector /*kv*/) {
  points_.restart();
  return 1;
}

int FaureQRStream::next(VKernelVector kv, double* out, int pointStride, int coordStride,
                        int count) {
  const STATS_InterruptWatch_HW watch(kv);
  return points_.next(out, pointStride, coordStride, count) ? 1 : 0;
}

int FaureQRStream::skip(VKernelVector /*kv*/, V_INT n) {
  points_.skip(n);
  return 1;
}

const char* FaureQRStream::getType(VKernelVector /*kv*/) const { return "Faure"; }

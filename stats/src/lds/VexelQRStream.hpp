// The face of all quasi-random point streams.
#pragma once

#include <vexelc/vexelc.h>

// A stream of points of the unit cube of some dimension.  Owned by the host object that carries it
// (VexelQRStreamManager.hpp).  Operations that return an int return 1 for success.
class VexelQRStream {
 public:
  VexelQRStream() = default;
  VexelQRStream(const VexelQRStream&) = delete;
  VexelQRStream& operator=(const VexelQRStream&) = delete;
  virtual ~VexelQRStream() = default;

  // Marks the host objects that the stream holds; runs inside a collection.
  virtual void GcMark(VKernelVector /*kv*/) {}

  // Back to the start.
  virtual int reset(VKernelVector /*kv*/) { return 1; }

  // Writes count points: coordinate j of point i goes to out[i * pointStride + j * coordStride].
  // A count below 1 writes nothing.  0: the stream ran out; points before that are written.
  virtual int next(VKernelVector kv, double* out, int pointStride, int coordStride, int count) = 0;

  // Moves on by k points without computing them.
  virtual int skip(VKernelVector kv, V_INT k) = 0;

  virtual const char* getType(VKernelVector kv) const = 0;

  // How the stream was made, as a host sequence; by default dimension and type.
  virtual ALGEB getOptions(VKernelVector kv) const {
    return ToVexelExpressionSequence(kv, 2, ToVexelInteger(kv, dimension_),
                                     ToVexelName(kv, getType(kv), 1));
  }

  int getDimension(VKernelVector /*kv*/) const { return dimension_; }

 protected:
  int dimension_ = 0;
};

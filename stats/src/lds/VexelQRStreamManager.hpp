// Streams as host objects: making a handle from a stream and finding the stream of a handle.
#pragma once

#include <vexelc/vexelc.h>

#include <memory>

#include "lds/VexelQRStream.hpp"

// Static members only.  A handle is a host pointer object; the collector marks and disposes of the
// stream through it.  The handle resolved last is kept, so that a loop which draws from one stream
// pays no type checks.
class STATS_VexelQRStreamManager_HW {
 public:
  // Records the kernel vector for the collector's hooks, which are given none.
  static void Initialize(VKernelVector kv) { gVKernelVector = kv; }
  static void Terminate() {}

  // A handle that owns the stream, protected from collection until it is terminated.
  static ALGEB ToVexelQRStream(VKernelVector kv, std::unique_ptr<VexelQRStream> stream);

  // Raises "expected VexelPointer containing quasi-random number generator, received %1".
  static VexelQRStream* VexelToQRStream(VKernelVector kv, ALGEB handle);

  // Lets the collector have the handle.  It resolves until then.
  static void Release(VKernelVector kv, ALGEB handle);

 private:
  static void GcMark(ALGEB handle);
  static void GcDispose(ALGEB handle);

  static VKernelVector gVKernelVector;
  static ALGEB gCurrentQRStreamPointer;  // null: nothing is kept
  static VexelQRStream* gCurrentQRStream;
};

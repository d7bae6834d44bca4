// What a kernel works on: the sample's own blocks, or a copy of them in host memory.
#pragma once

#include "kernel/data_sample.hpp"
#include "kernel/host_arrays.hpp"

struct SampleView {
  double* points;
  double* weights;  // null for an unweighted sample
  int size;

  // The arrays themselves: writing changes the host's arrays.
  static SampleView inPlace(const STATS_VexelDataSample_HW& sample) {
    return {sample.points(), sample.weights(), sample.size()};
  }

  // Scratch copies, without the pairs that hold a missing value when skipMissing is set.
  static SampleView copied(VKernelVector kv, const STATS_VexelDataSample_HW& sample,
                           bool skipMissing) {
    const int n = sample.size();
    SampleView view{STATS_AllocDoubles_HW(kv, n),
                    sample.weighted() ? STATS_AllocDoubles_HW(kv, n) : nullptr, n};
    view.size = STATS_CopyData_HW(sample, view.points, view.weights, skipMissing ? 1 : 0);
    return view;
  }

  // For kernels that only read: a copy where there is something to drop, else the arrays.
  static SampleView forReading(VKernelVector kv, const STATS_VexelDataSample_HW& sample,
                               bool skipMissing) {
    return skipMissing ? copied(kv, sample, true) : inPlace(sample);
  }

  // For kernels that reorder: the arrays when the caller gives them away, else a copy.  Arrays that
  // the host protects, or that share memory with each other, are copied all the same.
  static SampleView forReordering(VKernelVector kv, const STATS_VexelDataSample_HW& sample,
                                  ALGEB data, ALGEB weights, bool skipMissing, bool inPlaceAllowed);
};

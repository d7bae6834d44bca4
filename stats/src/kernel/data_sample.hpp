// Host arrays seen as doubles: a vector of points, and a sample of points with optional weights.
// Missing values are NaN throughout.
#pragma once

#include <vexelc/vexelc.h>

#include <memory>

// One host array as a contiguous block of doubles: its own block if it is a dense array of 64-bit
// floats (writing through data() then changes the array), otherwise a converted copy.
//
// The copy stays protected from the host's collector after the vector is gone, as hosts expect;
// arrays of other types than float[8] therefore cost memory with every call.
class STATS_Vector_HW {
 public:
  STATS_Vector_HW(VKernelVector kv, ALGEB rtable);
  STATS_Vector_HW(const STATS_Vector_HW&) = delete;
  STATS_Vector_HW& operator=(const STATS_Vector_HW&) = delete;

  // Views another array.  Raises "invalid data sample, expected: rtable, received %1".
  static void SetData(VKernelVector kv, STATS_Vector_HW* vector, ALGEB rtable);

  // Elements along the first dimension, at least 0.
  int size() const;
  double* data() const { return data_; }
  ALGEB rtable() const { return rtable_; }

 private:
  static void ConvertData(VKernelVector kv, STATS_Vector_HW* vector);
  static void* VexelConvertData(void* vector);

  ALGEB rtable_ = nullptr;
  ALGEB converted_ = nullptr;
  double* data_ = nullptr;
  VKernelVector kv_ = nullptr;
};

// Points with optional weights.  When there are weights there are as many as points.
class STATS_VexelDataSample_HW {
 public:
  STATS_VexelDataSample_HW(VKernelVector kv, ALGEB data);

  // An empty weights array makes the sample unweighted.  Raises when the sizes differ.
  STATS_VexelDataSample_HW(VKernelVector kv, ALGEB data, ALGEB weights);
  STATS_VexelDataSample_HW(const STATS_VexelDataSample_HW&) = delete;
  STATS_VexelDataSample_HW& operator=(const STATS_VexelDataSample_HW&) = delete;

  double* points() const { return points_->data(); }
  double* weights() const { return weights_ ? weights_->data() : nullptr; }
  bool weighted() const { return weights_ != nullptr; }
  int size() const { return points_->size(); }

 private:
  std::unique_ptr<STATS_Vector_HW> points_;
  std::unique_ptr<STATS_Vector_HW> weights_;
};

// Copies n values, or those that are not NaN when skipMissing is nonzero; returns how many.
int STATS_CopySimpleData_HW(const double* src, double* dst, int n, int skipMissing);

// Copies n pairs, or those without a NaN; returns how many are kept.  Destinations need room for n.
int STATS_CopyWeightedData_HW(const double* points, const double* weights, double* dstPoints,
                              double* dstWeights, int n, int skipMissing);

// Copies all points, weights ignored.
int STATS_CopyData_HW(const STATS_VexelDataSample_HW& sample, double* dst);

// Copies points, and weights when there are any (dstWeights is untouched otherwise).
int STATS_CopyData_HW(const STATS_VexelDataSample_HW& sample, double* dstPoints, double* dstWeights,
                      int skipMissing);

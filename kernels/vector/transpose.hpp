// Eight doubles at once, whatever the width of the machine's vectors: the compiler splits them
// where it must, so that lanes, and with them roundings, are the same everywhere.
//
// Included after Highway's headers, once for each set of instructions; hence the guard.
#if defined(VEXEL_KERNELS_VECTOR_TRANSPOSE) == defined(HWY_TARGET_TOGGLE)
#ifdef VEXEL_KERNELS_VECTOR_TRANSPOSE
#undef VEXEL_KERNELS_VECTOR_TRANSPOSE
#else
#define VEXEL_KERNELS_VECTOR_TRANSPOSE
#endif

HWY_BEFORE_NAMESPACE();
namespace vexel::kernels::HWY_NAMESPACE {
namespace {

using Eight = double __attribute__((vector_size(64)));

// Rows become columns.
inline __attribute__((always_inline)) void transpose(Eight* v) {
  Eight pairs[8];
  for (int i = 0; i < 8; i += 2) {
    pairs[i] = __builtin_shufflevector(v[i], v[i + 1], 0, 8, 2, 10, 4, 12, 6, 14);
    pairs[i + 1] = __builtin_shufflevector(v[i], v[i + 1], 1, 9, 3, 11, 5, 13, 7, 15);
  }
  Eight fours[8];
  for (int i = 0; i < 8; i += 4) {
    for (int j = 0; j < 2; ++j) {
      const Eight a = pairs[i + j];
      const Eight b = pairs[i + j + 2];
      fours[i + j] = __builtin_shufflevector(a, b, 0, 1, 8, 9, 4, 5, 12, 13);
      fours[i + j + 2] = __builtin_shufflevector(a, b, 2, 3, 10, 11, 6, 7, 14, 15);
    }
  }
  for (int j = 0; j < 4; ++j) {
    const Eight a = fours[j];
    const Eight b = fours[j + 4];
    v[j] = __builtin_shufflevector(a, b, 0, 1, 2, 3, 8, 9, 10, 11);
    v[j + 4] = __builtin_shufflevector(a, b, 4, 5, 6, 7, 12, 13, 14, 15);
  }
}

// sum += x, and what that loses to error.
inline __attribute__((always_inline)) void accumulate(Eight& sum, Eight& error, const Eight& x) {
  const Eight next = sum + x;
  const Eight part = next - sum;
  error += (sum - (next - part)) + (x - part);
  sum = next;
}

}  // namespace
}  // namespace vexel::kernels::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif

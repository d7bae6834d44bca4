// Selection that carries raw array elements along with their numeric keys.
#pragma once

namespace vexel::kernels {

// Rearranges keys and the n raw elements that belong to them so that position k (from 0, clamped to
// the array) holds the k-th smallest key, with no greater key before it and no smaller one after;
// NaNs are greater than every number.  n < 1 does nothing.
void splitByKey(double* keys, char* elements, int n, int k, int elementSize);

}  // namespace vexel::kernels

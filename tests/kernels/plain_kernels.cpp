// The vector kernels once more, without vector instructions, in a namespace of their own.
#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <vector>

#undef VEXEL_HAVE_HIGHWAY
#define kernels plain_kernels
#include "kernels/vector/binning.cpp"
#include "kernels/vector/column_extremes.cpp"
#include "kernels/vector/column_order.cpp"
#include "kernels/vector/columns.cpp"
#include "kernels/vector/convolution.cpp"
#include "kernels/vector/filter.cpp"
#include "kernels/vector/moving_sums.cpp"
#include "kernels/vector/normal.cpp"
#include "kernels/vector/powers.cpp"
#include "kernels/vector/row_copies.cpp"
#include "kernels/vector/selection.cpp"
#include "kernels/vector/sums.cpp"

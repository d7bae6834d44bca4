// The series and the continued fraction of the incomplete beta function at many places.
#pragma once

#include <cstddef>

namespace vexel::kernels {

// 1 + n / (a + 1) x + n (n + 1) / ((a + 1) (a + 2)) x^2 + ... at each x[i] in [0, 1), added up
// until terms no longer count: the very operations, and so the bits, of nag2::betaSeries.
void betaSeriesAt(const double* x, std::size_t count, double a, double n, double* out);

// nag2::betaFraction(a, b, x[i], e[i]), likewise.
void betaFractionAt(const double* x, const double* e, std::size_t count, double a, double b,
                    double* out);

}  // namespace vexel::kernels

// Moments and mean absolute deviation about a given origin, and the mean of a function.
//
// Sums run from the first value to the last; an empty sample gives 0/0.  w is null for an
// unweighted sample.
#pragma once

namespace vexel::kernels {

// result[j] = sum w (x - origin)^orders[j] / W for each of the m orders; nothing when m < 1.  The
// power is the general one, for whole orders too.
void moment(double* result, const double* x, const double* w, int n, const int* orders, int m,
            double origin);
void simpleMoment(double* result, const double* x, int n, const int* orders, int m, double origin);
void weightedMoment(double* result, const double* x, const double* w, int n, const int* orders,
                    int m, double origin);

// sum w |x - origin| / W
double absoluteDeviation(const double* x, const double* w, int n, double origin);
double simpleAbsoluteDeviation(const double* x, int n, double origin);
double weightedAbsoluteDeviation(const double* x, const double* w, int n, double origin);

// sum w f(x) / W; f is called once for each value, first to last.
double expectedValue(double (*f)(double), const double* x, const double* w, int n);
double simpleExpectedValue(double (*f)(double), const double* x, int n);
double weightedExpectedValue(double (*f)(double), const double* x, const double* w, int n);

}  // namespace vexel::kernels

// Moments and mean absolute deviation about a given origin, and the mean of a function.
//
// Sums run from the first value to the last; an empty sample gives 0/0.  w is null for an
// unweighted sample.
#pragma once

// result[j] = sum w (x - origin)^orders[j] / W for each of the m orders; nothing when m < 1.  The
// power is the general one, for whole orders too.
void STATS_Moment_HW(double* result, const double* x, const double* w, int n, const int* orders,
                     int m, double origin);
void STATS_SimpleMoment_HW(double* result, const double* x, int n, const int* orders, int m,
                           double origin);
void STATS_WeightedMoment_HW(double* result, const double* x, const double* w, int n,
                             const int* orders, int m, double origin);

// sum w |x - origin| / W
double STATS_AbsoluteDeviation_HW(const double* x, const double* w, int n, double origin);
double STATS_SimpleAbsoluteDeviation_HW(const double* x, int n, double origin);
double STATS_WeightedAbsoluteDeviation_HW(const double* x, const double* w, int n, double origin);

// sum w f(x) / W; f is called once for each value, first to last.
double STATS_ExpectedValue_HW(double (*f)(double), const double* x, const double* w, int n);
double STATS_SimpleExpectedValue_HW(double (*f)(double), const double* x, int n);
double STATS_WeightedExpectedValue_HW(double (*f)(double), const double* x, const double* w, int n);

/*
 * The numerical library's interface: distribution functions, ranking, sorting, summaries, Fourier
 * transforms and the Shapiro-Wilk test.
 *
 * A caller links against these names; the default implementation is libnag2.  Some entry names are
 * opaque (q and five digits); hosts and libraries already import them so.
 *
 * Every function takes plain C data, keeps no state between calls (the watch aside), writes only
 * where its comment says, and may be called again with other arguments at once.  Functions that
 * take a comparison callback, and all that look while a watch is set, let a C++ exception of the
 * callback pass through and leak nothing.  No other function throws.
 *
 * Failures go to the failure record: code 0 is success.  On failure the code and a message are set,
 * results are NaN (or untouched where there are several), and the handler, unless NULL, is called
 * with them; if print is nonzero the message also goes to standard error.  A caller clears the
 * record (all zero) before the call; NULL for the record itself is allowed and drops the report.
 */
#ifndef NAG2_NAG2_H
#define NAG2_NAG2_H

#include <stddef.h>
#include <stdint.h>

#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif
#if defined(__cplusplus)
extern "C" {
#endif

/* ---- failure record ---- */

#define NAG2_MESSAGE_LENGTH 512 /* characters, the terminating zero included */

typedef struct NagError {
  int code;                          /* 0: no failure */
  int print;                         /* nonzero: also print the message */
  char message[NAG2_MESSAGE_LENGTH]; /* what went wrong, for users */
  void (*handler)(const char *message, int code, const char *function); /* may be NULL */
} NagError;

/* Failure codes. */
enum {
  NAG2_OK = 0,
  NAG2_NEGATIVE_WEIGHT = 5,     /* q15220: a weight is negative */
  NAG2_TOO_FEW_ELEMENTS = 11,   /* q51748: fewer than five; q32554: fewer than three */
  NAG2_ZERO_TOTAL_WEIGHT = 415, /* q15220: the total weight is not positive */
  NAG2_TOO_FEW_CASES = 416,     /* q15220: fewer than two elements of non-zero weight */
  NAG2_NO_MEMORY = 73,
  NAG2_TOO_MANY_ELEMENTS = 12, /* a count beyond what the routine is for */
  NAG2_ZERO_RANGE = 13,        /* q32554: all elements are equal */
  NAG2_NOT_SORTED = 14,        /* q32554: the elements are not in ascending order */
  NAG2_DOMAIN = 70,            /* an argument outside its domain; the message names it */
  NAG2_NO_CONVERGENCE = 267,   /* tolerance not reached within the iteration limit */
  NAG2_BAD_ORDER = 71          /* an order code other than the two below */
};

/* Order codes of sorting and ranking. */
enum { Nag_Ascending = 1597, Nag_Descending = 1598 };

/* Which tail a probability belongs to. */
typedef enum Nag_TailProbability {
  Nag_LowerTail = 1329,     /* P(X <= x) */
  Nag_UpperTail = 1330,     /* P(X >= x) */
  Nag_TwoTailSignif = 1331, /* P(|X| >= |x|), symmetric distributions */
  Nag_TwoTailConfid = 1332  /* P(|X| <= |x|), symmetric distributions */
} Nag_TailProbability;

/* ---- watching ---- */

/*
 * What is to be called while long work goes on: look(data, done), several times a second, on the
 * thread that waits for the result; done is the share of the work that is done, or a NaN where that
 * is not known.  An exception that look throws ends the work: what was to be written is left in no
 * particular state.
 */
typedef struct Nag2Watch {
  void (*look)(void *data, double done); /* NULL: nobody looks */
  void *data;
} Nag2Watch;

/*
 * Sets the watch over this thread's calls and returns the one before, for the caller to set again.
 * Sorting, ranking, summaries, transforms and the non-central distributions look; other functions
 * are done too soon.  A library without this function serves as well: its work is then not ended
 * before it is done.
 */
Nag2Watch nag2_watch(Nag2Watch watch);

/* ---- continuous distributions ---- */

/*
 * Probabilities return P in [0, 1]; quantiles return the x at which the lower tail is p, 0 <= p <=
 * 1, an end of the support for p = 0 and p = 1.  tail selects the tail that is returned or given.
 * The chi-square, F, gamma and beta families know the first two tails only.  A NaN argument, a
 * parameter outside its domain, or p outside [0, 1] is NAG2_DOMAIN.  x outside the support is no
 * failure: the probability is 0 or 1.
 */
double nag2_normal_probability(Nag_TailProbability tail, double x, NagError *fail);
double nag2_normal_quantile(Nag_TailProbability tail, double p, NagError *fail);

/* Student t with nu > 0 degrees of freedom, not necessarily whole. */
double nag2_student_t_probability(Nag_TailProbability tail, double x, double nu, NagError *fail);
double nag2_student_t_quantile(Nag_TailProbability tail, double p, double nu, NagError *fail);

/* Chi-square with nu > 0 degrees of freedom. */
double nag2_chi_square_probability(Nag_TailProbability tail, double x, double nu, NagError *fail);
double nag2_chi_square_quantile(double p, double nu, NagError *fail);

/* F with nu1 > 0 and nu2 > 0 degrees of freedom. */
double nag2_f_probability(Nag_TailProbability tail, double x, double nu1, double nu2,
                          NagError *fail);
double nag2_f_quantile(double p, double nu1, double nu2, NagError *fail);

/* Gamma with shape > 0 and scale > 0.  tolerance: relative accuracy asked of the quantile; 0 or
 * less asks for the best. */
double nag2_gamma_probability(Nag_TailProbability tail, double x, double shape, double scale,
                              NagError *fail);
double nag2_gamma_quantile(double p, double shape, double scale, double tolerance, NagError *fail);

/* Beta with parameters a > 0 and b > 0; lower tail.  tolerance as above. */
double nag2_beta_probability(double x, double a, double b, double tolerance, NagError *fail);
double nag2_beta_quantile(double p, double a, double b, double tolerance, NagError *fail);

/* ---- non-central distributions, lower tails ---- */

/*
 * tolerance >= 0 is the relative size of what may be left out of the sum (values below machine
 * precision mean machine precision).  max_iter limits the steps: one step is 16 terms of the
 * Poisson mixture on either side of its largest term, or for the t law 16 nodes of its integral,
 * the last halving of the nodes' distance carried through.  100 steps are enough for a
 * noncentrality of 10^4 (chi-square, F, beta).  What has not reached the tolerance within the limit
 * is NAG2_NO_CONVERGENCE.
 */
double nag2_noncentral_t_probability(double x, double nu, double delta, double tolerance,
                                     int max_iter, NagError *fail);
double nag2_noncentral_chi_square_probability(double x, double nu, double delta, double tolerance,
                                              int max_iter, NagError *fail);
double nag2_noncentral_f_probability(double x, double nu1, double nu2, double delta,
                                     double tolerance, int max_iter, NagError *fail);
/* The beta variate is X/(X+Y), X noncentral chi-square (2 a, delta), Y chi-square (2 b). */
double nag2_noncentral_beta_probability(double x, double a, double b, double delta,
                                        double tolerance, int max_iter, NagError *fail);

/* ---- discrete distributions ---- */

/*
 * Each writes *le = P(X <= k), *gt = P(X > k), *eq = P(X = k).  k below the support gives 0, 1, 0
 * and k above it 1, 0, 0.
 */
/* lambda >= 0. */
void nag2_poisson(double lambda, int64_t k, double *le, double *gt, double *eq, NagError *fail);
/* n >= 0 trials, success probability 0 <= p <= 1. */
void nag2_binomial(int64_t n, double p, int64_t k, double *le, double *gt, double *eq,
                   NagError *fail);
/* k marked among l drawn from a population n with m marked; 0 <= l <= n, 0 <= m <= n.  A tail of
 * more than 10^8 terms is NAG2_NO_CONVERGENCE. */
void nag2_hypergeometric(int64_t n, int64_t l, int64_t m, int64_t k, double *le, double *gt,
                         double *eq, NagError *fail);

/* ---- sorting and ranking ---- */

/* Sorts x[0..n-1] in place; NaNs go last in ascending order, first in descending order.  Without
 * memory for it, or ended by the watch, x is left in no particular state. */
void q43352(double *x, size_t n, int order, NagError *fail);

/*
 * Stable ranks of n elements, the i-th at (const char *)data + i * stride: ranks[i] is the 0-based
 * position of element i in the given order.  compare(a, b) is below 0, 0 or above 0 as a sorts
 * before, with or after b; a pair that compares above 0 both ways counts as equal.  n must be below
 * 2^31.  compare may throw.
 */
void q70723(const void *data, size_t n, ptrdiff_t stride,
            int (*compare)(const char *a, const char *b), int order, uint32_t *ranks,
            NagError *fail);

/* Element kinds of nag2_rank_typed and nag2_sort_typed (signed integers and floats). */
enum {
  NAG2_INT8 = 2,
  NAG2_INT16 = 3,
  NAG2_INT32 = 4,
  NAG2_INT64 = 5,
  NAG2_FLOAT64 = 6,
  NAG2_FLOAT32 = 8
};

/* The same ranks for n contiguous numbers of a machine type, without a callback; NaNs sort after
 * every number and are equal to one another. */
void nag2_rank_typed(const void *data, size_t n, int kind, int order, uint32_t *ranks,
                     NagError *fail);

/* The n numbers in sorted order, written to out (which may not overlap data): element for element
 * what placing by nag2_rank_typed's ranks gives, bits included (signed zeros keep their input
 * order, and so do NaNs). */
void nag2_sort_typed(const void *data, size_t n, int kind, int order, void *out, NagError *fail);

/* ---- summaries ---- */

/* Minimum, lower hinge, median, upper hinge, maximum of x[0..n-1] into out[0..4]; hinges are the
 * medians of the lower and upper halves, the median counted in both when n is odd. */
void q51748(int n, const double *x, double *out, NagError *fail);

/*
 * Summary of x with weights w (NULL: all 1).  *n_valid is the number of elements of non-zero
 * weight. With W = sum w, m = sum w x / W, divisor D = n - 1 (unweighted) or W - sum w^2 / W
 * (weighted): sd = sqrt(sum w (x - m)^2 / D), skewness = (sum w (x - m)^3 / D) / sd^3, excess
 * kurtosis = (sum w (x - m)^4 / D) / sd^4 - 3.  Where nothing
 * fails, a NaN anywhere makes *minimum NaN.
 */
void q15220(int n, const double *x, const double *w, int *n_valid, double *mean, double *sd,
            double *skewness, double *kurtosis, double *minimum, double *maximum,
            double *total_weight, NagError *fail);

/* ---- Fourier transforms: *ifail is set to 0 or a nonzero code ---- */

/*
 * Real discrete Fourier transform of x[0..*m-1] in place, scaled by 1/sqrt(*m):
 * z_k = m^(-1/2) sum_j x_j exp(-2 pi i j k / m).  Hermitian storage: x[k] = Re z_k for
 * 0 <= k <= m/2, x[m-k] = Im z_k for 0 < k < m/2.  work has room for *m doubles.  Any length.
 */
void q64883(double *x, const int *m, double *work, int *ifail);

/* Conjugates a Hermitian sequence in place: negates x[m/2+1 .. m-1]. */
void q33150(double *x, const int *m, int *ifail);

/* The inverse of q64883 when applied to the conjugate: takes Hermitian storage to m real values,
 * with the same scaling, so that q64883, q33150, q42899 together are the identity. */
void q42899(double *x, const int *m, double *work, int *ifail);

/* ---- Shapiro-Wilk ---- */

/*
 * W and its significance level for x[0..n-1] in ascending order, 3 <= n <= 5000 (Royston 1995,
 * Applied Statistics 44, algorithm R94).  compute_coefficients nonzero: a (room for n) is filled
 * with the coefficients first, zero: a holds them from an earlier call with the same n.
 */
void q32554(int n, const double *x, int compute_coefficients, double *a, double *w, double *p,
            NagError *fail);

#if defined(__cplusplus)
} /* extern "C" */
#endif
#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#endif /* NAG2_NAG2_H */

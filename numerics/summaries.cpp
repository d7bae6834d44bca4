// Five-point and moment summaries of a sample.

#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>
#include <vector>

#include "failure.hpp"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// Minimum, hinges, median and maximum of n >= 5 numbers by selection; x is permuted.  Each half has
// h = (n + 1) / 2 elements, the median among them when n is odd.
void fivePoints(std::vector<double>& x, double* out) {
  const auto n = static_cast<std::ptrdiff_t>(x.size());
  const auto begin = x.begin();
  const std::ptrdiff_t h = (n + 1) / 2;
  const std::ptrdiff_t middle = n / 2;
  const auto below = [begin](std::ptrdiff_t i) { return *std::max_element(begin, begin + i); };

  std::nth_element(begin, begin + middle, x.end());
  out[2] = n % 2 != 0 ? begin[middle] : std::midpoint(below(middle), begin[middle]);

  const std::ptrdiff_t lower = h / 2;
  std::nth_element(begin, begin + lower, begin + middle);
  out[1] = h % 2 != 0 ? begin[lower] : std::midpoint(below(lower), begin[lower]);
  out[0] = *std::min_element(begin, begin + lower + 1);

  const std::ptrdiff_t upper = n - h + (h - 1) / 2;
  std::nth_element(begin + middle + 1, begin + upper, x.end());
  out[3] = h % 2 != 0 ? begin[upper]
                      : std::midpoint(begin[upper], *std::min_element(begin + upper + 1, x.end()));
  out[4] = *std::max_element(begin + upper, x.end());
}

// Sums over the elements of a sample, each with its weight (1 when there are none).
class WeightedSample {
 public:
  WeightedSample(const double* x, const double* w, int n) : x_(x), w_(w), n_(n) {}

  template <typename Term>
  double sum(Term term) const {
    double total = 0.0;
    for (int i = 0; i < n_; ++i) {
      const double w = weight(i);
      if (w != 0.0) {
        total += term(x_[i], w);
      }
    }
    return total;
  }

  // The binary exponent of the greatest deviation from m; 0 when that is none or infinite.
  int scaleAbout(double m) const {
    constexpr int kSmallest = -1022;  // below, the inverse of the scale is no double
    double greatest = 0.0;
    for (int i = 0; i < n_; ++i) {
      greatest = weight(i) != 0.0 ? std::max(greatest, std::fabs(x_[i] - m)) : greatest;
    }
    return greatest > 0.0 && std::isfinite(greatest) ? std::max(std::ilogb(greatest), kSmallest)
                                                     : 0;
  }

  double weight(int i) const { return w_ != nullptr ? w_[i] : 1.0; }
  double point(int i) const { return x_[i]; }
  bool weighted() const { return w_ != nullptr; }
  int size() const { return n_; }

 private:
  const double* x_;
  const double* w_;
  int n_;
};

struct Moments {
  double mean, sd, skewness, kurtosis;
};

// The second pass over the deviations from the first mean also corrects that mean's rounding; the
// third takes the deviations in a unit, a power of two, in which the greatest one's powers neither
// overflow nor underflow.
Moments moments(const WeightedSample& sample, double total) {
  double mean = sample.sum([](double x, double w) { return w * x; }) / total;
  if (std::isfinite(mean)) {
    mean += sample.sum([mean](double x, double w) { return w * (x - mean); }) / total;
  }

  const double divisor = sample.weighted()
                             ? total - sample.sum([](double, double w) { return w * w; }) / total
                             : static_cast<double>(sample.size() - 1);
  const int exponent = sample.scaleAbout(mean);
  const double scale = std::ldexp(1.0, -exponent);
  double second = 0.0;
  double third = 0.0;
  double fourth = 0.0;
  for (int i = 0; i < sample.size(); ++i) {
    if (const double w = sample.weight(i); w != 0.0) {
      const double d = (sample.point(i) - mean) * scale;
      second += w * d * d;
      third += w * d * d * d;
      fourth += w * d * d * d * d;
    }
  }
  const double sd = std::sqrt(second / divisor);
  return {mean, std::ldexp(sd, exponent), third / divisor / (sd * sd * sd),
          fourth / divisor / (sd * sd * sd * sd) - 3.0};
}

}  // namespace

// A NaN anywhere makes all five points NaN: none of them is then defined.
extern "C" void q51748(int n, const double* x, double* out, NagError* fail) {
  if (n < 5) {
    nag2::setFailure(fail, NAG2_TOO_FEW_ELEMENTS, "q51748",
                     "a five-point summary needs at least five elements");
    return;
  }
  try {
    std::vector<double> copy(x, x + n);
    if (std::any_of(copy.begin(), copy.end(), [](double v) { return std::isnan(v); })) {
      std::fill(out, out + 5, kNaN);
      return;
    }
    fivePoints(copy, out);
  } catch (const std::bad_alloc&) {
    nag2::setFailure(fail, NAG2_NO_MEMORY, "q51748",
                     "there is not enough memory for a five-point summary");
  }
}

extern "C" void q15220(int n, const double* x, const double* w, int* n_valid, double* mean,
                       double* sd, double* skewness, double* kurtosis, double* minimum,
                       double* maximum, double* total_weight, NagError* fail) {
  constexpr const char* kName = "q15220";
  const WeightedSample sample(x, w, n);
  bool missing = false;
  int valid = 0;
  double smallest = std::numeric_limits<double>::infinity();
  double largest = -smallest;
  for (int i = 0; i < n; ++i) {
    const double weight = sample.weight(i);
    if (weight < 0.0) {
      nag2::setFailure(fail, NAG2_NEGATIVE_WEIGHT, kName, "a weight is negative");
      return;
    }
    missing |= std::isnan(x[i]) || std::isnan(weight);
    if (weight != 0.0) {
      ++valid;
      smallest = std::min(smallest, x[i]);
      largest = std::max(largest, x[i]);
    }
  }
  *n_valid = valid;
  if (missing) {
    *mean = *sd = *skewness = *kurtosis = *minimum = *maximum = *total_weight = kNaN;
    return;
  }
  const double total = sample.sum([](double, double weight) { return weight; });
  if (sample.weighted() && !(total > 0.0)) {
    nag2::setFailure(fail, NAG2_ZERO_TOTAL_WEIGHT, kName, "the total weight is not positive");
    return;
  }
  if (valid < 2) {
    nag2::setFailure(fail, NAG2_TOO_FEW_CASES, kName,
                     "a summary needs at least two elements of non-zero weight");
    return;
  }
  const Moments m = moments(sample, total);
  *mean = m.mean;
  *sd = m.sd;
  *skewness = m.skewness;
  *kurtosis = m.kurtosis;
  *minimum = smallest;
  *maximum = largest;
  *total_weight = total;
}

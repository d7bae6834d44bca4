// Five-point and moment summaries of a sample.

#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>
#include <vector>

#include "kernels/lookout.hpp"
#include "kernels/watch.hpp"
#include "numerics/interface/failure.hpp"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

// std::nth_element, polling.
void placeNth(std::vector<double>::iterator begin, std::vector<double>::iterator nth,
              std::vector<double>::iterator end) {
  vexel::kernels::Lookout lookout;
  std::nth_element(begin, nth, end, [&](double a, double b) {
    lookout.done(1);
    return a < b;
  });
}

// Minimum, hinges, median and maximum of n >= 5 numbers by selection; x is permuted.  Each half has
// h = (n + 1) / 2 elements, the median among them when n is odd.
void fivePoints(std::vector<double>& x, double* out) {
  const auto n = static_cast<std::ptrdiff_t>(x.size());
  const auto begin = x.begin();
  const std::ptrdiff_t h = (n + 1) / 2;
  const std::ptrdiff_t middle = n / 2;
  const auto below = [begin](std::ptrdiff_t i) { return *std::max_element(begin, begin + i); };

  placeNth(begin, begin + middle, x.end());
  out[2] = n % 2 != 0 ? begin[middle] : std::midpoint(below(middle), begin[middle]);

  const std::ptrdiff_t lower = h / 2;
  placeNth(begin, begin + lower, begin + middle);
  out[1] = h % 2 != 0 ? begin[lower] : std::midpoint(below(lower), begin[lower]);
  out[0] = *std::min_element(begin, begin + lower + 1);

  const std::ptrdiff_t upper = n - h + (h - 1) / 2;
  placeNth(begin + middle + 1, begin + upper, x.end());
  out[3] = h % 2 != 0 ? begin[upper]
                      : std::midpoint(begin[upper], *std::min_element(begin + upper + 1, x.end()));
  out[4] = *std::max_element(begin + upper, x.end());
}

enum class Weights { none, positive, anyKind };

// A sample with weights, or with weight 1 everywhere.  Elements of weight 0 take no part, even
// where they are infinite; a sample without them is spared the test.
//
// Sums run in eight lanes, by position modulo 8: that is as exact as one sum and many times as
// fast.
template <Weights kWeights>
class Sample {
 public:
  Sample(const double* x, const double* w, int n) : x_(x), w_(w), n_(n) {}

  // What there is to say before anything is summed.
  struct Survey {
    bool negativeWeight;
    bool missingWeight, missingValue;
    int valid;
    double smallest, largest;
    double largestWeight;
  };
  Survey survey() const {
    Survey found{false, false, false, 0, 0.0, 0.0, 0.0};
    double smallest[kLanes];
    double largest[kLanes];
    double largestWeight[kLanes] = {};
    std::fill_n(smallest, kLanes, std::numeric_limits<double>::infinity());
    std::fill_n(largest, kLanes, -std::numeric_limits<double>::infinity());
    forEach([&](int lane, double x, double w) {
      found.negativeWeight |= w < 0.0;
      found.missingWeight |= w != w;
      found.missingValue |= x != x;
      found.valid += w != 0.0;
      largestWeight[lane] = w > largestWeight[lane] ? w : largestWeight[lane];
      const bool less = (w != 0.0) & (x < smallest[lane]);
      smallest[lane] = less ? x : smallest[lane];
      const bool more = (w != 0.0) & (x > largest[lane]);
      largest[lane] = more ? x : largest[lane];
    });
    found.smallest = *std::min_element(smallest, smallest + kLanes);
    found.largest = *std::max_element(largest, largest + kLanes);
    found.largestWeight = *std::max_element(largestWeight, largestWeight + kLanes);
    return found;
  }

  template <typename Term>
  double sum(Term term) const {
    double total[kLanes] = {};
    forEach([&](int lane, double x, double w) {
      if (kWeights != Weights::anyKind || w != 0.0) {
        total[lane] += term(x, w);
      }
    });
    return addLanes(total);
  }

  double total() const {
    return kWeighted ? sum([](double, double w) { return w; }) : static_cast<double>(n_);
  }
  // What central moments are divided by, W - sum w^2 / W taken as sum w (W - w) / W: only the
  // largest weight can be near the total W, and there the others are summed, so that no digits are
  // lost where it outweighs them all.
  double divisor(double total, double largestWeight) const {
    if (!kWeighted) {
      return static_cast<double>(n_ - 1);
    }
    double others[kLanes] = {};
    double terms[kLanes] = {};
    int ties = 0;
    forEach([&](int lane, double, double w) {
      const bool below = w < largestWeight;
      others[lane] += below ? w : 0.0;
      terms[lane] += below ? w / total * (total - w) : 0.0;
      ties += w == largestWeight;
    });
    return addLanes(terms) +
           ties * largestWeight / total * (addLanes(others) + (ties - 1) * largestWeight);
  }

 private:
  static constexpr int kLanes = 8;
  static constexpr bool kWeighted = kWeights != Weights::none;

  static double addLanes(const double* lane) {
    return ((lane[0] + lane[1]) + (lane[2] + lane[3])) +
           ((lane[4] + lane[5]) + (lane[6] + lane[7]));
  }

  template <typename Visit>
  void forEach(Visit visit) const {
    vexel::kernels::poll();
    int i = 0;
    vexel::kernels::forEach(n_ / kLanes, [&](int) {
      for (int lane = 0; lane < kLanes; ++lane) {
        visit(lane, x_[i + lane], kWeighted ? w_[i + lane] : 1.0);
      }
      i += kLanes;
    });
    for (int lane = 0; i + lane < n_; ++lane) {
      visit(lane, x_[i + lane], kWeighted ? w_[i + lane] : 1.0);
    }
  }

  const double* x_;
  const double* w_;
  int n_;
};

struct Moments {
  double mean, sd, skewness, kurtosis;
};

// The binary exponent of a deviation, 0 for none and for an infinite one.
int scaleOf(double deviation) {
  constexpr int kSmallest = -1022;  // below, the inverse of the scale is no double
  return deviation > 0.0 && std::isfinite(deviation) ? std::max(std::ilogb(deviation), kSmallest)
                                                     : 0;
}

// The second pass over the deviations from the first mean also corrects that mean's rounding; the
// others take the deviations in a unit, a power of two, in which the greatest one's powers neither
// overflow nor underflow.
template <Weights kWeights>
Moments moments(const Sample<kWeights>& sample, double total, double smallest, double largest,
                double largestWeight) {
  double mean = sample.sum([](double x, double w) { return w * x; }) / total;
  if (std::isfinite(mean)) {
    mean += sample.sum([mean](double x, double w) { return w * (x - mean); }) / total;
  }
  const int exponent = scaleOf(std::max(mean - smallest, largest - mean));
  const double unit = std::ldexp(1.0, -exponent);
  const auto deviation = [=](double x) { return (x - mean) * unit; };
  const double second = sample.sum([=](double x, double w) {
    const double d = deviation(x);
    return w * d * d;
  });
  const double third = sample.sum([=](double x, double w) {
    const double d = deviation(x);
    return w * d * d * d;
  });
  const double fourth = sample.sum([=](double x, double w) {
    const double d = deviation(x);
    return w * d * d * d * d;
  });
  const double divisor = sample.divisor(total, largestWeight);
  const double sd = std::sqrt(second / divisor);
  return {mean, std::ldexp(sd, exponent), third / divisor / (sd * sd * sd),
          fourth / divisor / (sd * sd * sd * sd) - 3.0};
}

// All of a summary, or a failure code with its message.
struct Summary {
  int code = NAG2_OK;
  const char* message = nullptr;
  int valid = 0;
  Moments moments{kNaN, kNaN, kNaN, kNaN};
  double smallest = kNaN, largest = kNaN, total = kNaN;
};

template <Weights kWeights>
void summarize(const Sample<kWeights>& sample, double largestWeight, bool missingValue,
               Summary& result) {
  const double total = sample.total();
  if (!(total > 0.0) && kWeights != Weights::none) {
    result.code = NAG2_ZERO_TOTAL_WEIGHT;
    result.message = "the total weight is not positive";
    return;
  }
  if (result.valid < 2) {
    result.code = NAG2_TOO_FEW_CASES;
    result.message = "a summary needs at least two elements of non-zero weight";
    return;
  }
  if (missingValue) {
    result.smallest = kNaN;
    result.largest = kNaN;
    return;
  }
  result.moments = moments(sample, total, result.smallest, result.largest, largestWeight);
  result.total = total;
}

template <Weights kWeights>
Summary summaryOf(const double* x, const double* w, int n) {
  const Sample<kWeights> sample(x, w, n);
  const auto survey = sample.survey();
  Summary result;
  result.valid = survey.valid;
  if (survey.negativeWeight) {
    result.code = NAG2_NEGATIVE_WEIGHT;
    result.message = "a weight is negative";
    return result;
  }
  if (survey.missingWeight) {
    return result;
  }
  result.smallest = survey.smallest;
  result.largest = survey.largest;
  if (kWeights == Weights::anyKind && survey.valid == n) {
    summarize(Sample<Weights::positive>(x, w, n), survey.largestWeight, survey.missingValue,
              result);
  } else {
    summarize(sample, survey.largestWeight, survey.missingValue, result);
  }
  return result;
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
    vexel::kernels::poll();
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
  const Summary s =
      w != nullptr ? summaryOf<Weights::anyKind>(x, w, n) : summaryOf<Weights::none>(x, w, n);
  if (s.code != NAG2_OK) {
    nag2::setFailure(fail, s.code, "q15220", s.message);
    return;
  }
  *n_valid = s.valid;
  *mean = s.moments.mean;
  *sd = s.moments.sd;
  *skewness = s.moments.skewness;
  *kurtosis = s.moments.kurtosis;
  *minimum = s.smallest;
  *maximum = s.largest;
  *total_weight = s.total;
}

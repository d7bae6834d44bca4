// Autocorrelation: products for few lags, Fourier transforms for many.
#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>

#include "functions/data/elements.hpp"
#include "functions/data/totals.hpp"
#include "kernels/double_double.hpp"
#include "kernels/exact_sum.hpp"
#include "kernels/running_sum.hpp"
#include "kernels/watch.hpp"
#include "vexel/series.hpp"

namespace vexel {

namespace {

// Deviations from the mean in units of their largest, 0 for missing ones.
std::vector<double> deviations(Data x, Missing missing, bool& broken) {
  std::vector<double> d(x.size());
  double size = 0;
  std::size_t present = 0;
  kernels::forEach(d.size(), [&](std::size_t i) {
    d[i] = x[i];
    if (isMissing(d[i])) {
      if (missing == Missing::raise) {
        refuseMissing("autocorrelation", i);
      }
      broken |= missing == Missing::propagate;
    } else {
      size = std::max(size, std::abs(d[i]));
      ++present;
    }
  });
  broken |= present == 0 || std::isinf(size);
  if (broken) {
    return d;
  }
  int exponent = 0;
  std::frexp(size, &exponent);
  kernels::RunningSum sum;
  kernels::forEach(d.size(), [&](std::size_t i) {
    d[i] = std::ldexp(d[i], -exponent);
    sum.add(isMissing(d[i]) ? 0 : d[i]);
  });
  // The mean in two parts: its rounding may be large against the deviations.
  const auto count = static_cast<double>(present);
  const double mean = sum.value() / count;
  sum.addProduct(-mean, count);
  const double rest = sum.value() / count;
  kernels::forEach(d.size(), [&](std::size_t i) {
    const auto deviation = kernels::DoubleDouble::sumOf(d[i], -mean);
    d[i] = isMissing(d[i]) ? 0 : deviation.high + (deviation.low - rest);
  });
  return d;
}

double product(std::span<const double> d, std::size_t lag) {
  kernels::ExactSum sum;
  const std::size_t n = d.size() - std::min(lag, d.size());
  for (std::size_t i = 0; i < n; i += kernels::sumBlock) {
    if (i % kernels::pollInterval == 0) {
      kernels::poll();
    }
    addProducts(sum, d.data() + i, d.data() + i + lag, std::min(kernels::sumBlock, n - i));
  }
  return sum.rounded();
}

// The real transforms of one length, a power of two: of z, in the order of Hermitian sequences.
class Transform {
 public:
  explicit Transform(std::size_t length) : length_(static_cast<int>(length)), work_(length) {}

  void forward(std::vector<double>& z) { run(q64883, z); }
  void backward(std::vector<double>& z) { run(q42899, z); }

 private:
  void run(void (*transform)(double*, const int*, double*, int*), std::vector<double>& z) {
    int fail = 0;
    transform(z.data(), &length_, work_.data(), &fail);
    if (fail != 0) {
      throw std::bad_alloc();
    }
  }

  int length_;
  std::vector<double> work_;
};

// Adds the spectrum of sum_i a[i] b[i + k]; the backward transform has the sign of the forward one.
void addSpectrum(const std::vector<double>& a, const std::vector<double>& b,
                 std::vector<double>& sum) {
  const std::size_t length = a.size();
  const std::size_t half = length / 2;
  sum[0] += a[0] * b[0];
  sum[half] += a[half] * b[half];
  for (std::size_t k = 1; k < half; ++k) {
    sum[k] += a[k] * b[k] + a[length - k] * b[length - k];
    sum[length - k] += a[length - k] * b[k] - a[k] * b[length - k];
  }
}

std::size_t powerOfTwoFrom(std::size_t n) {
  std::size_t power = 1;
  while (power < n) {
    power *= 2;
  }
  return power;
}

// c[0 .. last] n by transforms: each stretch of the series against itself and the next last values,
// whose spectra are added up; one stretch where last is not small against the length.
std::vector<double> productsByTransform(std::span<const double> d, std::size_t last) {
  constexpr std::size_t near = std::size_t{1} << 14;  // what the nearest caches hold
  const std::size_t whole = powerOfTwoFrom(d.size() + last + 1);
  const std::size_t length = std::min(whole, std::max(near, powerOfTwoFrom(4 * (last + 1))));
  if (length > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw std::length_error("x: too long for all lags at once");
  }
  const std::size_t stretch = length == whole ? d.size() : length - last;
  Transform transform(length);
  std::vector<double> own(length);
  std::vector<double> next(length);
  std::vector<double> sum(length);
  for (std::size_t begin = 0; begin < d.size(); begin += stretch) {
    kernels::poll(static_cast<double>(begin) / static_cast<double>(d.size()));
    const auto fill = [&](std::vector<double>& z, std::size_t n) {
      const auto from = d.subspan(begin, std::min(n, d.size() - begin));
      std::fill(std::copy(from.begin(), from.end(), z.begin()), z.end(), 0.0);
      transform.forward(z);
    };
    fill(own, stretch);
    const bool alone = begin + stretch >= d.size();
    if (!alone) {
      fill(next, length);
    }
    addSpectrum(own, alone ? own : next, sum);
  }
  transform.backward(sum);
  sum.resize(last + 1);
  for (double& v : sum) {
    v *= std::sqrt(static_cast<double>(length));
  }
  return sum;
}

}  // namespace

std::vector<double> autocorrelation(Data x, std::span<const std::size_t> lags,
                                    const AutocorrelationOptions& options) {
  constexpr std::size_t transformPays = 64;  // lags
  bool broken = false;
  const std::vector<double> d = deviations(x, options.missing, broken);
  std::vector<double> r(lags.size(), std::numeric_limits<double>::quiet_NaN());
  if (broken || lags.empty()) {
    return r;
  }
  const double variance = product(d, 0);
  const bool byTransform = lags.size() > transformPays;
  std::vector<double> all;
  if (byTransform) {
    const std::size_t last = std::min(d.size() - 1, *std::max_element(lags.begin(), lags.end()));
    all = productsByTransform(d, last);
  }
  for (std::size_t i = 0; i < lags.size(); ++i) {
    kernels::poll(static_cast<double>(i) / static_cast<double>(lags.size()));
    const std::size_t lag = lags[i];
    const double c = lag >= d.size() ? 0 : byTransform ? all[lag] : product(d, lag);
    r[i] = lag == 0 ? variance / variance : c / variance;
  }
  return r;
}

std::vector<double> autocorrelation(Data x, std::size_t last,
                                    const AutocorrelationOptions& options) {
  if (last >= x.size() && x.size() > 0) {
    throw std::invalid_argument(
        mustBe("lags", "less than the number of elements", std::to_string(last)));
  }
  std::vector<std::size_t> lags(last + 1);
  std::iota(lags.begin(), lags.end(), std::size_t{0});
  return autocorrelation(x, lags, options);
}

}  // namespace vexel

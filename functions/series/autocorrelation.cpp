// Autocorrelation: products for few lags, Fourier transforms for many.
#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <new>
#include <numeric>

#include "functions/data/elements.hpp"
#include "kernels/double_double.hpp"
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
  kernels::RunningSum sum;
  kernels::forEach(d.size() - std::min(lag, d.size()),
                   [&](std::size_t i) { sum.addProduct(d[i], d[i + lag]); });
  return sum.value();
}

// c[0 .. last] n by the transform of the padded deviations: |z|^2 transformed back.
std::vector<double> productsByTransform(std::span<const double> d, std::size_t last) {
  std::size_t length = 1;
  while (length < d.size() + last + 1) {
    length *= 2;
  }
  if (length > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    throw std::length_error("x: too long for all lags at once");
  }
  std::vector<double> z(length);
  std::copy(d.begin(), d.end(), z.begin());
  std::vector<double> work(length);
  const auto m = static_cast<int>(length);
  int fail = 0;
  q64883(z.data(), &m, work.data(), &fail);
  const std::size_t half = length / 2;
  z[0] *= z[0];
  z[half] *= z[half];
  for (std::size_t k = 1; k < half; ++k) {
    z[k] = z[k] * z[k] + z[length - k] * z[length - k];
    z[length - k] = 0;
  }
  if (fail == 0) {
    q42899(z.data(), &m, work.data(), &fail);
  }
  if (fail != 0) {
    throw std::bad_alloc();
  }
  z.resize(last + 1);
  for (double& v : z) {
    v *= std::sqrt(static_cast<double>(length));
  }
  return z;
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

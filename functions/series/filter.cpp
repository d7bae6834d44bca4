// Linear filters, with every sum in twice the working precision.
#include "kernels/filter.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

#include "functions/data/elements.hpp"
#include "kernels/watch.hpp"
#include "vexel/series.hpp"

namespace vexel {

namespace {

constexpr std::size_t kStretch = std::size_t{1} << 16;

// The series with as many elements before it as the taps reach back, oldest first.
std::vector<double> withPast(std::span<const double> x, Data initial, std::size_t reach) {
  std::vector<double> all(reach + x.size());
  for (std::size_t k = 0; k < initial.size(); ++k) {
    all[reach - 1 - k] = initial[k];
  }
  std::copy(x.begin(), x.end(), all.begin() + static_cast<std::ptrdiff_t>(reach));
  return all;
}

}  // namespace

void filter(Data x, Data taps, std::span<double> out, const FilterOptions& options) {
  requireSize("out", out.size(), x.size());
  if (taps.empty()) {
    throw std::invalid_argument(mustBe("taps", "at least one", "none"));
  }
  const std::size_t reach = options.recursive ? taps.size() : taps.size() - 1;
  if (options.initial.size() > reach) {
    throw std::length_error(mustBe("initial",
                                   ("at most " + std::to_string(reach) + " values").c_str(),
                                   std::to_string(options.initial.size())));
  }
  const Doubles series(x);
  const Doubles factors(taps);
  if (options.recursive) {
    // Earlier results stand where the series will be overwritten by later ones.
    std::vector<double> all = withPast(series.span(), options.initial, reach);
    for (std::size_t i = 0; i < out.size(); ++i) {
      if (i % kStretch == 0) {
        kernels::poll(static_cast<double>(i) / static_cast<double>(out.size()));
      }
      double* const at = all.data() + reach + i;
      out[i] = *at = kernels::recursiveStep(*at, factors.span(), at - 1);
    }
    return;
  }
  for (std::size_t first = 0; first < out.size(); first += kStretch) {
    kernels::poll(static_cast<double>(first) / static_cast<double>(out.size()));
    const std::size_t size = std::min(kStretch, out.size() - first);
    if (first < reach) {
      const std::size_t known = std::min(out.size(), first + size);
      const std::vector<double> all = withPast(series.span().first(known), options.initial, reach);
      kernels::filterStretch(all.data() + reach + first, size, factors.span(), out.data() + first);
    } else {
      kernels::filterStretch(series.data() + first, size, factors.span(), out.data() + first);
    }
  }
}

std::vector<double> filter(Data x, Data taps, const FilterOptions& options) {
  std::vector<double> out(x.size());
  filter(x, taps, out, options);
  return out;
}

}  // namespace vexel

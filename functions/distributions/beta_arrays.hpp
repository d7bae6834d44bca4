// Tails of laws that come from the beta law's, for arrays.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>

#include "kernels/vector/beta_series.hpp"
#include "numerics/laws/beta_law.hpp"

namespace vexel::detail {

// So few are left to single calls.
inline constexpr std::size_t fewSeries = 4;

// nag2::betaSeries at each x.
inline void betaSeriesOf(std::span<const double> x, double a, double n, double* out) {
  if (x.size() >= fewSeries) {
    kernels::betaSeriesAt(x.data(), x.size(), a, n, out);
    return;
  }
  for (std::size_t i = 0; i < x.size(); ++i) {
    out[i] = nag2::betaSeries(a, n, x[i]);
  }
}

// nag2::betaFraction at each x.
inline void betaFractionOf(std::span<const double> x, const double* excess, double a, double b,
                           double* out) {
  if (x.size() >= fewSeries) {
    kernels::betaFractionAt(x.data(), excess, x.size(), a, b, out);
    return;
  }
  for (std::size_t i = 0; i < x.size(); ++i) {
    out[i] = nag2::betaFraction(a, b, x[i], excess[i]);
  }
}

// The numbers of a chunk that have the same series, or fraction.
template <std::size_t chunk>
struct BetaTogether {
  std::array<std::size_t, chunk> index;
  std::array<nag2::BetaLaw::Parts, chunk> parts;
  std::array<double, chunk> argument;
  std::array<double, chunk> excess;
  std::array<double, chunk> value;
  std::size_t size = 0;

  void add(std::size_t i, const nag2::BetaLaw::Parts& some) {
    index[size] = i;
    parts[size] = some;
    argument[size] = some.argument;
    excess[size++] = some.excess;
  }
  void compute(double a, double b, bool series) {
    if (series) {
      betaSeriesOf({argument.data(), size}, a, a + b, value.data());
    } else {
      betaFractionOf({argument.data(), size}, excess.data(), a, b, value.data());
    }
  }
};

// The tails at x, the same bits as one by one: partsAt(x, parts) as the laws have it, plain(x)
// where that is false.  out may be x.
template <typename PartsAt, typename Plain>
void betaTails(const nag2::BetaLaw& law, std::span<const double> x, std::span<double> out,
               nag2::Tail which, PartsAt partsAt, Plain plain) {
  constexpr std::size_t chunk = 256;
  std::array<BetaTogether<chunk>, 4> groups;  // by side of the mean, fraction or series
  for (std::size_t from = 0; from < x.size(); from += chunk) {
    for (auto& group : groups) {
      group.size = 0;
    }
    for (std::size_t i = from; i < std::min(from + chunk, x.size()); ++i) {
      nag2::BetaLaw::Parts parts{};
      if (partsAt(x[i], parts)) {
        groups[2 * static_cast<std::size_t>(parts.above) + static_cast<std::size_t>(parts.series)]
            .add(i, parts);
      } else {
        out[i] = plain(x[i]);
      }
    }
    for (std::size_t g = 0; g < groups.size(); ++g) {
      auto& group = groups[g];
      group.compute(g < 2 ? law.a() : law.b(), g < 2 ? law.b() : law.a(), g % 2 != 0);
      for (std::size_t k = 0; k < group.size; ++k) {
        out[group.index[k]] = law.tailFrom(group.parts[k], group.value[k], which);
      }
    }
  }
}

}  // namespace vexel::detail

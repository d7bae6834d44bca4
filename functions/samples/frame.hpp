// How a law's variates are drawn, one or many.
//
// detail::Variates<L> holds what a law's sampler computes once; its operator() gives the next
// variate of a Random.  Where it has fill(span, rng), or tabulate() for what pays from some hundred
// variates on, arrays use them; the values are the same.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "functions/data/pieces.hpp"
#include "vexel/distributions/law.hpp"
#include "vexel/random.hpp"

namespace vexel {

namespace detail {

inline constexpr std::size_t worthTables = 300;

}  // namespace detail

template <typename L>
double Law<L>::sample(Random& rng) const {
  return detail::Variates<L>(self())(rng);
}

template <typename L>
void Law<L>::sample(std::span<double> out, Random& rng) const {
  detail::Variates<L> variates(self());
  if constexpr (requires { variates.tabulate(); }) {
    if (out.size() >= detail::worthTables) {
      variates.tabulate();
    }
  }
  inPieces(out, [&](std::span<double> piece) {
    if constexpr (requires { variates.fill(piece, rng); }) {
      variates.fill(piece, rng);
    } else {
      for (double& x : piece) {
        x = variates(rng);
      }
    }
  });
}

template <typename L>
std::vector<double> Law<L>::sample(std::size_t n, Random& rng) const {
  std::vector<double> out(n);
  sample(out, rng);
  return out;
}

#define VEXEL_SAMPLES(L)                                                    \
  template VEXEL_API double Law<L>::sample(Random&) const;                  \
  template VEXEL_API void Law<L>::sample(std::span<double>, Random&) const; \
  template VEXEL_API std::vector<double> Law<L>::sample(std::size_t, Random&) const;

}  // namespace vexel

// Maximum likelihood in a few parameters.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <stdexcept>
#include <string>
#include <vector>

#include "functions/distributions/observations.hpp"
#include "kernels/watch.hpp"

namespace vexel::detail {

// A function near a point: the Hessian's upper triangle by rows.
template <std::size_t N>
struct Local {
  double value = 0.0;
  std::array<double, N> gradient{};
  std::array<double, N*(N + 1) / 2> hessian{};
};

// Mean over the data of log densities and their derivatives; f(x, gradient, hessian) gives the
// value.
template <std::size_t N, typename F>
void addUp(const Observations& data, Local<N>& local, F f) {
  Sum value;
  std::array<Sum, N> gradient;
  std::array<Sum, N*(N + 1) / 2> hessian;
  std::array<double, N> g{};
  std::array<double, N*(N + 1) / 2> h{};
  for (std::size_t i = 0; i < data.x.size(); ++i) {
    const double w = data.w[i] / data.total;
    value.addProduct(w, f(data.x[i], g, h));
    for (std::size_t k = 0; k < g.size(); ++k) {
      gradient[k].addProduct(w, g[k]);
    }
    for (std::size_t k = 0; k < h.size(); ++k) {
      hessian[k].addProduct(w, h[k]);
    }
  }
  local.value = value.value();
  for (std::size_t k = 0; k < g.size(); ++k) {
    local.gradient[k] = gradient[k].value();
  }
  for (std::size_t k = 0; k < h.size(); ++k) {
    local.hessian[k] = hessian[k].value();
  }
}

// The step d with (-H + damping D) d = gradient, D the diagonal's size; false where the matrix is
// not positive definite.  Cholesky's decomposition.
template <std::size_t N>
bool newtonStep(const Local<N>& local, double damping, std::array<double, N>* step) {
  double a[N][N] = {};
  std::size_t at = 0;
  for (std::size_t i = 0; i < N; ++i) {
    for (std::size_t j = i; j < N; ++j, ++at) {
      a[j][i] = -local.hessian[at];
    }
    a[i][i] += damping * (std::fabs(a[i][i]) + 1e-8);
  }
  std::array<double, N> y{};
  for (std::size_t i = 0; i < N; ++i) {
    for (std::size_t j = 0; j <= i; ++j) {
      double sum = a[i][j];
      for (std::size_t k = 0; k < j; ++k) {
        sum -= a[i][k] * a[j][k];
      }
      if (i == j) {
        if (!(sum > 0.0)) {
          return false;
        }
        a[i][i] = std::sqrt(sum);
      } else {
        a[i][j] = sum / a[j][j];
      }
    }
    double sum = local.gradient[i];
    for (std::size_t k = 0; k < i; ++k) {
      sum -= a[i][k] * y[k];
    }
    y[i] = sum / a[i][i];
  }
  for (std::size_t i = N; i-- > 0;) {
    double sum = y[i];
    for (std::size_t k = i + 1; k < N; ++k) {
      sum -= a[k][i] * (*step)[k];
    }
    (*step)[i] = sum / a[i][i];
  }
  return true;
}

// The maximum of f by Newton's steps, damped until they climb (D. W. Marquardt, 1963).
// std::domain_error where a parameter runs away: there is no maximum.
template <std::size_t N, typename F>
std::array<double, N> maximize(const char* law, F f, std::array<double, N> at) {
  Local<N> here = f(at);
  double damping = 1e-3;
  for (int i = 0; i < 500; ++i) {
    kernels::poll(0.0);
    std::array<double, N> step{};
    bool climbed = false;
    double size = 0.0;
    while (!climbed && damping < 1e12) {
      if (newtonStep(here, damping, &step)) {
        std::array<double, N> next = at;
        size = 0.0;
        for (std::size_t k = 0; k < N; ++k) {
          next[k] += step[k];
          size = std::fmax(size, std::fabs(step[k]) / (1.0 + std::fabs(at[k])));
        }
        const Local<N> there = f(next);
        // At the top, rounding hides what a step gains.
        if (there.value >= here.value || (size < 1e-7 && std::isfinite(there.value))) {
          climbed = true;
          at = next;
          here = there;
          break;
        }
        if (size < 1e-15) {
          return at;
        }
      }
      damping = damping < 1e-10 ? 1e-6 : damping * 10.0;
    }
    damping *= 0.05;
    if (!climbed || (size < 1e-13 && damping < 1e-3)) {
      return at;
    }
    if (std::any_of(at.begin(), at.end(), [](double v) { return !(std::fabs(v) < 60.0); })) {
      break;
    }
  }
  refuseNoMaximum(law);
}

// The root of an increasing function in [low, high], whose value and slope f gives as a pair, by
// Newton's steps kept in the bracket.
template <typename F>
double increasingRoot(F f, double low, double high, double start) {
  double x = start;
  for (int i = 0; i < 300; ++i) {
    kernels::poll(0.0);
    const auto [value, slope] = f(x);
    const double step = value / slope;
    if (value == 0.0 || std::fabs(step) <= 2e-16 * std::fabs(x)) {
      return x;
    }
    (value > 0.0 ? high : low) = x;
    x -= step;
    if (!(x > low && x < high)) {
      x = low > 0.0 && high > 4.0 * low ? std::sqrt(low * high) : 0.5 * (low + high);
      if (!(x > low && x < high)) {
        return x;
      }
    }
  }
  return x;
}

// Where a function of one variable with one maximum between low and high has it, to half the
// digits, by golden sections.
template <typename F>
double goldenMaximum(F f, double low, double high) {
  constexpr double golden = 0.61803398874989484820;
  double left = high - golden * (high - low);
  double right = low + golden * (high - low);
  double atLeft = f(left);
  double atRight = f(right);
  while (high - low > 1e-9 * (1.0 + std::fabs(low))) {
    kernels::poll(0.0);
    if (atLeft > atRight) {
      high = right;
      right = left;
      atRight = atLeft;
      left = high - golden * (high - low);
      atLeft = f(left);
    } else {
      low = left;
      left = right;
      atLeft = atRight;
      right = low + golden * (high - low);
      atRight = f(right);
    }
  }
  return 0.5 * (low + high);
}

}  // namespace vexel::detail

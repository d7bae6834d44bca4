// Running sums, products and extremes.
#include <algorithm>
#include <cmath>
#include <limits>

#include "functions/data/elements.hpp"
#include "kernels/running_sum.hpp"
#include "kernels/variates/lanes.hpp"
#include "kernels/watch.hpp"
#include "vexel/ordering.hpp"

namespace vexel {

namespace {

// A product in twice the working precision, its exponent apart so that it may leave the range of
// doubles and come back.  From a zero, infinity or NaN on it is what plain products make of it.
class RunningProduct {
 public:
  void add(double x) {
    if (isSpecial_ || x == 0 || !std::isfinite(x)) {
      special_ = (isSpecial_ ? special_ : std::copysign(1.0, high_)) * x;
      isSpecial_ = true;
      return;
    }
    int exponent = 0;
    const double m = std::frexp(x, &exponent);
    const double product = high_ * m;
    const double rest = std::fma(high_, m, -product) + low_ * m;
    high_ = std::frexp(product + rest, &exponentStep_);
    low_ = std::ldexp(rest - (product + rest - product), -exponentStep_);
    exponent_ += exponent + exponentStep_;
  }
  double value() const {
    constexpr std::int64_t beyond = 4000;  // where every product is 0 or infinite
    return isSpecial_
               ? special_
               : std::ldexp(high_ + low_, static_cast<int>(std::clamp(exponent_, -beyond, beyond)));
  }

 private:
  double high_ = 1;
  double low_ = 0;
  int exponentStep_ = 0;
  std::int64_t exponent_ = 0;
  double special_ = 1;
  bool isSpecial_ = false;
};

struct RunningMin {
  double least = std::numeric_limits<double>::quiet_NaN();
  void add(double x) { least = x > least ? least : x; }
  double value() const { return least; }
};
struct RunningMax {
  double most = std::numeric_limits<double>::quiet_NaN();
  void add(double x) { most = x < most ? most : x; }
  double value() const { return most; }
};

// out[i] = the state's value after add(i), which tells whether element i was missing.
template <typename Value, typename Add>
void run(std::span<double> out, Missing missing, Value value, Add add) {
  bool broken = false;
  for (std::size_t i = 0; i < out.size(); ++i) {
    if (i % kernels::pollInterval == 0) {
      kernels::poll(static_cast<double>(i) / static_cast<double>(out.size()));
    }
    if (add(i)) {
      if (missing == Missing::raise) {
        refuseMissing("cumulative", i);
      }
      broken |= missing == Missing::propagate;
    }
    out[i] = broken ? std::numeric_limits<double>::quiet_NaN() : value();
  }
}

void sums(std::span<const double> x, std::span<double> out, Missing missing) {
  constexpr std::size_t chunk = kernels::RunningSum::chunk;
  constexpr std::size_t tooManyForCaches = std::size_t{1} << 20;
  constexpr std::size_t worthAChunk = 128;  // of what is left, with zeros behind it
  const bool far = out.size() >= tooManyForCaches;
  alignas(64) double near[chunk];
  kernels::RunningSum sum;
  std::size_t i = 0;
  if (missing == Missing::propagate) {
    for (; i + chunk <= x.size(); i += chunk) {
      if (i % kernels::pollInterval == 0) {
        kernels::poll(static_cast<double>(i) / static_cast<double>(out.size()));
      }
      sum.addChunk(&x[i], far ? near : &out[i]);
      if (far) {
        kernels::copyPastCachesAnywhere(near, &out[i], chunk);
      }
    }
    if (far) {
      kernels::finishCopies();
    }
    if (x.size() - i >= worthAChunk) {
      double last[chunk] = {};
      std::copy(x.begin() + static_cast<std::ptrdiff_t>(i), x.end(), last);
      sum.addChunk(last, near);
      std::copy_n(near, x.size() - i, &out[i]);
      i = x.size();
    }
  }
  run(
      out.subspan(i), missing, [&] { return sum.value(); },
      [&](std::size_t j) {
        const double v = x[i + j];
        if (isMissing(v)) {
          if (missing == Missing::propagate) {
            sum.add(v);
          }
          return true;
        }
        sum.add(v);
        return false;
      });
}

// What a kind makes of weights: sum of w x, product of x^w, extremes of what is there.
template <typename State>
void addWeighted(State& state, double w, double x) {
  if constexpr (std::is_same_v<State, kernels::RunningSum>) {
    state.addProduct(w, x);
  } else if constexpr (std::is_same_v<State, RunningProduct>) {
    state.add(w == 1 ? x : std::pow(x, w));
  } else {
    state.add(x);
  }
}

template <typename State>
void general(std::span<const double> x, Data weights, std::span<double> out, Missing missing) {
  State state;
  run(
      out, missing, [&] { return state.value(); },
      [&](std::size_t i) {
        const double w = weights.given() ? weights[i] : 1;
        if (w == 0) {
          return false;
        }
        if (isMissing(x[i]) || isMissing(w)) {
          return true;
        }
        addWeighted(state, w, x[i]);
        return false;
      });
}

}  // namespace

void cumulative(Data x, std::span<double> out, const CumulativeOptions& options) {
  requireSize("out", out.size(), x.size());
  requireWeights(options.weights, x.size());
  const Doubles points(x);
  switch (options.kind) {
    case Cumulative::sum:
      if (options.weights.given()) {
        return general<kernels::RunningSum>(points.span(), options.weights, out, options.missing);
      }
      return sums(points.span(), out, options.missing);
    case Cumulative::product:
      return general<RunningProduct>(points.span(), options.weights, out, options.missing);
    case Cumulative::min:
      return general<RunningMin>(points.span(), options.weights, out, options.missing);
    case Cumulative::max:
      return general<RunningMax>(points.span(), options.weights, out, options.missing);
  }
}

std::vector<double> cumulative(Data x, const CumulativeOptions& options) {
  std::vector<double> out(x.size());
  cumulative(x, out, options);
  return out;
}

}  // namespace vexel

// Moving sums, means and variances without drift.
//
// The series is cut into blocks as long as the window: each window is the end of one block and the
// beginning of the next one, so it is the sum of a sum from the left and one from the right that
// hold nothing else (M. van Herk, 1992, A fast algorithm for local minimum and maximum filters, for
// sums).  Nothing is ever subtracted: what has left a window has left no trace.
#include <algorithm>
#include <cmath>
#include <limits>

#include "functions/series/windows.hpp"
#include "kernels/binning.hpp"
#include "kernels/exact_product.hpp"
#include "kernels/exact_totals.hpp"
#include "kernels/running_sum.hpp"

namespace vexel {

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// A sum in twice the working precision.
struct Pair {
  double high = 0;
  double low = 0;

  void add(double x, double rest = 0) {
    const auto [sum, error] = kernels::twoSum(high, x);
    const double lower = low + (error + rest);
    high = sum + lower;
    low = lower - (high - sum);
  }
  void addProduct(double a, double b) {
    const double product = a * b;
    add(product, kernels::exactProductError(a, b, product));
  }
  void add(const Pair& other) { add(other.high, other.low); }
  double value() const { return high + low; }
};

Pair product(const Pair& a, const Pair& b) {
  Pair p;
  p.addProduct(a.high, b.high);
  p.add(a.high * b.low + a.low * b.high);
  return p;
}

double quotient(const Pair& a, const Pair& b) {
  const double q = a.value() / b.value();
  if (!std::isfinite(q)) {
    return q;
  }
  const double p = q * b.high;
  const double rest = ((a.high - p) - kernels::exactProductError(q, b.high, p) + a.low) - q * b.low;
  return q + rest / b.high;
}

// What a part of a window adds up to.
struct PartialSum {
  Pair sum;
  Pair weight;
};
struct PartialMoments {
  Pair sum;  // of w d, d = x - centre
  Pair squares;
  Pair weight;
  double centre = 0;
  bool empty = true;
  bool spread = false;  // some d is not 0
};

void include(PartialSum& part, double x, double w, bool weighted) {
  if (weighted) {
    part.sum.addProduct(w, x);
    part.weight.add(w);
  } else {
    part.sum.add(x);
  }
}

// The first element is the centre: it is in every window that the part is in, so that what is
// squared is never larger than the window's own range.
void include(PartialMoments& part, double x, double w, bool weighted) {
  if (part.empty) {
    part.centre = x;
    part.empty = false;
  }
  const double d = x - part.centre;
  part.spread |= d != 0;
  if (weighted) {
    part.weight.add(w);
    part.sum.addProduct(w, d);
    Pair square;
    square.addProduct(d, d);
    part.squares.add(product(square, {w, 0}));
  } else {
    part.weight.high += 1;
    part.sum.add(d);
    part.squares.addProduct(d, d);
  }
}

PartialSum together(const PartialSum& a, const PartialSum& b) {
  PartialSum both = a;
  both.sum.add(b.sum);
  both.weight.add(b.weight);
  return both;
}

PartialMoments together(const PartialMoments& a, const PartialMoments& b) {
  if (b.empty) {
    return a;
  }
  if (a.empty) {
    return b;
  }
  // b about the centre of a: d + shift.
  Pair shift;
  shift.add(b.centre);
  shift.add(-a.centre);
  const Pair moved = product(shift, b.weight);
  PartialMoments both = a;
  both.spread |= b.spread || a.centre != b.centre;
  both.weight.add(b.weight);
  both.sum.add(b.sum);
  both.sum.add(moved);
  both.squares.add(b.squares);
  Pair twice = b.sum;
  twice.add(b.sum);
  twice.add(moved);
  both.squares.add(product(shift, twice));
  return both;
}

// emit(j, part) for every window j of the stretch.
template <typename Part, typename Emit>
void slide(const Stretch& s, Emit emit) {
  const std::size_t w = s.window();
  const bool weighted = !s.weights().empty();
  const auto take = [&](Part& part, std::size_t i) {
    if (s.kind(i) == Kind::finite) {
      include(part, s.values()[i], s.weight(i), weighted);
    }
  };
  std::vector<Part> ends(w);
  for (std::size_t block = 0; block < s.results(); block += w) {
    Part end;
    for (std::size_t i = w; i-- > 0;) {
      take(end, block + i);
      ends[i] = end;
    }
    Part beginning;
    const std::size_t stop = std::min(w, s.results() - block);
    for (std::size_t i = 0; i < stop; ++i) {
      emit(block + i, together(ends[i], beginning));
      if (i + 1 < stop) {
        take(beginning, block + w + i);
      }
    }
  }
}

// f(window j's finite pairs), for the rare windows that leave the range of doubles on the way.
template <typename F>
void forFinite(const Stretch& s, std::size_t j, F f) {
  for (std::size_t i = j; i < j + s.window(); ++i) {
    if (s.kind(i) == Kind::finite) {
      f(s.values()[i], s.weight(i));
    }
  }
}

double directSum(const Stretch& s, std::size_t j, bool mean) {
  constexpr double unit = 0x1p-70;
  kernels::RunningSum sum;
  kernels::RunningSum weight;
  forFinite(s, j, [&](double x, double w) {
    sum.addProduct(w, x * unit);
    weight.add(w);
  });
  return (mean ? sum.value() / weight.value() : sum.value()) / unit;
}

// Sums of squares of differences that are scaled to lie around 1.
double directVariance(const Stretch& s, std::size_t j, bool root) {
  double low = std::numeric_limits<double>::infinity();
  double high = -low;
  forFinite(s, j, [&](double x, double) {
    low = std::min(low, x);
    high = std::max(high, x);
  });
  if (low == high) {
    return 0;
  }
  int exponent = 0;
  std::frexp(std::max(high / 2 - low / 2, std::numeric_limits<double>::denorm_min()), &exponent);
  PartialMoments part;
  const bool weighted = !s.weights().empty();
  forFinite(s, j, [&](double x, double w) {
    include(part, std::ldexp(x / 2 - low / 2, -exponent), w, weighted);
  });
  Pair count = part.weight;
  Pair squares = product(part.squares, part.weight);
  Pair negated = product(part.sum, part.sum);
  squares.add(-negated.high, -negated.low);
  Pair divisor = count;
  divisor.add(-1);
  divisor = product(divisor, count);
  const double scaled = quotient(squares, divisor);
  return root ? std::ldexp(std::sqrt(scaled), exponent + 1) : std::ldexp(scaled, 2 * exponent + 2);
}

}  // namespace

void movingSums(const Stretch& s, bool means, std::size_t minCount, double* out) {
  WindowCounts counts(s);
  const bool weighted = !s.weights().empty();
  slide<PartialSum>(s, [&](std::size_t j, const PartialSum& part) {
    if (j > 0 && !s.plain()) {
      counts.slide();
    }
    out[j] = kNan;
    if (!counts.answers(minCount) || (means && counts.present() == 0)) {
      return;
    }
    if (counts.infinities() > 0) {
      out[j] = counts.infiniteSum();
      return;
    }
    const Pair weight = weighted ? part.weight : Pair{static_cast<double>(counts.present()), 0};
    out[j] = means ? quotient(part.sum, weight) : part.sum.value();
    if (!std::isfinite(out[j])) {
      out[j] = directSum(s, j, means);
    }
  });
}

void movingVariances(const Stretch& s, bool roots, std::size_t minCount, double* out) {
  constexpr double smallest = 0x1p-960;  // what is less may have lost digits to underflow
  WindowCounts counts(s);
  slide<PartialMoments>(s, [&](std::size_t j, const PartialMoments& part) {
    if (j > 0 && !s.plain()) {
      counts.slide();
    }
    out[j] = kNan;
    Pair divisor = part.weight;
    divisor.add(-1);
    if (!counts.answers(minCount) || counts.infinities() > 0 || !(divisor.value() > 0)) {
      return;
    }
    // (squares - sum^2 / n) / (n - 1)
    Pair squares = product(part.squares, part.weight);
    const Pair square = product(part.sum, part.sum);
    squares.add(-square.high, -square.low);
    if (!part.spread) {
      out[j] = 0;
    } else {
      const double variance = quotient(squares, product(divisor, part.weight));
      out[j] = roots ? std::sqrt(variance) : variance;
      if (!(variance > smallest && variance <= std::numeric_limits<double>::max())) {
        out[j] = directVariance(s, j, roots);
      }
    }
  });
}

}  // namespace vexel

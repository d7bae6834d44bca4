// Covariance and Pearson's correlation.

#include "functions/descriptive/covariance.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <utility>

#include "functions/data/totals.hpp"
#include "functions/descriptive/correlation.hpp"
#include "kernels/vector/powers.hpp"
#include "vexel/descriptive.hpp"

namespace vexel {

namespace {

using kernels::DoubleDouble;
using kernels::ExactSum;

// A sum of lanes to 2^-100, in little room: a matrix has many.
class LaneSum {
 public:
  void add(const double* lanes) {
    for (std::size_t i = 0; i < kernels::sumLanes; ++i) {
      sum_ = sum_ + DoubleDouble(lanes[i]);
    }
  }
  void add(DoubleDouble x) { sum_ = sum_ + x; }
  DoubleDouble value() const { return sum_; }
  // Far from where its terms overflow or vanish.
  bool inRange() const { return std::isfinite(sum_.high) && std::fabs(sum_.high) > 0x1p-600; }

 private:
  DoubleDouble sum_;
};

// Sums of w d and w d e, where d and e are differences from the centers of two columns.
class ProductSums {
 public:
  ProductSums(std::vector<double> centers, bool diagonal, std::size_t rows)
      : centers_(std::move(centers)), diagonal_(diagonal), rows_(rows), first_(centers_.size()) {
    const std::size_t k = centers_.size();
    products_.resize(k * (k + 1) / 2);
  }

  void take(const double* const* x, const double* w, std::size_t n) {
    addWeights(weight_, w, n);
    std::size_t at = 0;
    for (std::size_t i = 0; i < centers_.size(); ++i) {
      if (centers_.size() > kMany) {
        kernels::poll(done_ / static_cast<double>(rows_));
      }
      for (std::size_t j = i; j < centers_.size(); ++j, ++at) {
        if (diagonal_ || i != j) {
          if (w == nullptr) {
            takePair(x[i], x[j], n, i, j, products_[at]);
          } else {
            takeWeighted(x[i], x[j], w, n, i, j, products_[at]);
          }
        }
      }
    }
    done_ += static_cast<double>(n);
  }

  // Whether nothing overflowed and no sum is near where products vanish.
  bool inRange() const {
    return diagonal_ ? std::all_of(products_.begin(), products_.end(),
                                   [](const LaneSum& s) { return s.inRange(); })
                     : products_[1].inRange();
  }

  DoubleDouble weight() const { return weight_.inTwo(); }
  DoubleDouble shift(std::size_t j) const { return first_[j].inTwo() / weight(); }
  std::vector<DoubleDouble> values() const {
    std::vector<DoubleDouble> result;
    std::size_t at = 0;
    for (std::size_t i = 0; i < centers_.size(); ++i) {
      for (std::size_t j = i; j < centers_.size(); ++j, ++at) {
        result.push_back(products_[at].value() / weight() - shift(i) * shift(j));
        if (i == j && result.back().high < 0.0) {  // by rounding, under weights of all magnitudes
          result.back() = DoubleDouble();
        }
      }
    }
    return result;
  }

 private:
  static constexpr std::size_t kMany = 16;  // columns, of which a block takes long

  // The sums of d come along with pairs of neighbours; in a matrix, with the diagonal.
  bool wantsFirst(std::size_t i, std::size_t j) const { return diagonal_ ? i == j : true; }

  void takePair(const double* x, const double* y, std::size_t n, std::size_t i, std::size_t j,
                LaneSum& product) {
    double xs[kernels::powerLanes];
    double ys[kernels::powerLanes];
    double products[kernels::sumLanes];
    kernels::productsInLanes(x, y, n, centers_[i], centers_[j], xs, ys, products);
    product.add(products);
    if (wantsFirst(i, j)) {
      first_[i].add({xs, kernels::powerLanes});
      if (i != j) {
        first_[j].add({ys, kernels::powerLanes});
      }
    }
  }

  void takeWeighted(const double* x, const double* y, const double* w, std::size_t n, std::size_t i,
                    std::size_t j, LaneSum& product) {
    d_.resize(n);
    e_.resize(n);
    for (std::size_t r = 0; r < n; ++r) {
      d_[r] = w[r] * (x[r] - centers_[i]);
      e_[r] = y[r] - centers_[j];
    }
    ExactSum sum;
    addProducts(sum, d_.data(), e_.data(), n);
    product.add(sum.inTwo());
    if (wantsFirst(i, j)) {
      addBlock(first_[i], d_.data(), n);
      if (i != j) {
        addProducts(first_[j], w, e_.data(), n);
      }
    }
  }

  std::vector<double> centers_;
  bool diagonal_;
  std::size_t rows_;
  double done_ = 0.0;
  std::vector<ExactSum> first_;
  std::vector<LaneSum> products_;
  ExactSum weight_;
  std::vector<double> d_;
  std::vector<double> e_;
};

// Looks at the rows about rough means, and again where a shift turns out to be large.  False when
// products overflow or vanish.
bool lookAround(const Rows& rows, bool diagonal, Comoments& result) {
  std::vector<double> centers;
  std::vector<double> deviations;
  for (std::size_t j = 0; j < rows.width(); ++j) {
    centers.push_back(rows.rough(j).mean);
    deviations.push_back(rows.rough(j).deviation);
  }
  for (int again = 0;; ++again) {
    ProductSums sums(centers, diagonal, rows.size());
    const auto found = rows.present(
        [&](const double* const* x, const double* w, std::size_t n) { sums.take(x, w, n); });
    result.defined = !rows.undefined(found);
    if (!result.defined) {
      return true;
    }
    if (!sums.inRange() && result.infinite.empty()) {
      return false;
    }
    bool far = false;
    for (std::size_t j = 0; j < rows.width(); ++j) {
      const double shift = sums.shift(j).high;
      far = far || std::fabs(shift) > 0.5 * deviations[j];
      centers[j] += std::isfinite(shift) ? shift : 0.0;
    }
    if (!far || again == 1) {
      result.weight = sums.weight();
      result.values = sums.values();
      return true;
    }
  }
}

// Scales columns to a spread of about 1; which of them have infinite points.
std::vector<bool> scaleToSpread(Rows& rows) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  std::vector<kernels::Range> ranges(rows.width(), {infinity, -infinity});
  double largestWeight = 0.0;
  rows.present([&](const double* const* x, const double* w, std::size_t n) {
    for (std::size_t j = 0; j < ranges.size(); ++j) {
      const kernels::Range range = kernels::rangeOf(x[j], n);
      ranges[j] = {std::min(ranges[j].min, range.min), std::max(ranges[j].max, range.max)};
    }
    if (w != nullptr) {
      largestWeight = std::max(largestWeight, kernels::rangeOf(w, n).max);
    }
  });
  std::vector<bool> infinite;
  std::vector<int> exponents;
  for (const kernels::Range& range : ranges) {
    infinite.push_back(std::isinf(range.min) || std::isinf(range.max));
    exponents.push_back(infinite.back() ? 0 : exponentOf(range.max / 2 - range.min / 2) + 1);
  }
  rows.scale(std::move(exponents), exponentOf(largestWeight));
  return infinite;
}

double rounded(const Comoments& all, DoubleDouble value, std::size_t i, std::size_t j) {
  return all.infinite[i] || all.infinite[j]
             ? kNaN
             : std::ldexp(value.high, all.exponents[i] + all.exponents[j]);
}

double covarianceOf(const Comoments& all, std::size_t i, std::size_t j, double ddof) {
  const DoubleDouble divisor = all.weight - DoubleDouble(ddof);
  if (!all.defined || !(divisor.high > 0.0)) {
    return kNaN;
  }
  return rounded(all, all.values[all.at(i, j)] * (all.weight / divisor), i, j);
}

// Fills a symmetric matrix with entry(i, j) of the columns that have nothing missing, or of all
// with the complete rows where missing ones are left out; the rest is NaN.
template <typename Entry>
SquareMatrix matrixOf(const Rows& rows, Missing missing, Entry entries) {
  const std::size_t k = rows.width();
  SquareMatrix result{k, std::vector<double>(k * k, kNaN)};
  std::vector<std::size_t> columns;
  const std::vector<bool> gone =
      missing == Missing::propagate ? rows.columnsMissing() : std::vector<bool>(k);
  for (std::size_t j = 0; j < k; ++j) {
    if (!gone[j]) {
      columns.push_back(j);
    }
  }
  if (columns.empty()) {
    return result;
  }
  Rows some = rows.only(columns);
  const auto entry = entries(some);
  for (std::size_t i = 0; i < columns.size(); ++i) {
    for (std::size_t j = i; j < columns.size(); ++j) {
      const double value = entry(i, j);
      result.values[columns[i] * k + columns[j]] = value;
      result.values[columns[j] * k + columns[i]] = value;
    }
  }
  return result;
}

}  // namespace

double pearsonOf(const Comoments& all, std::size_t i, std::size_t j) {
  if (!all.defined || all.infinite[i] || all.infinite[j]) {
    return kNaN;
  }
  const DoubleDouble xx = all.values[all.at(i, i)];
  const DoubleDouble yy = all.values[all.at(j, j)];
  if (!(xx.high > 0.0) || !(yy.high > 0.0)) {
    return kNaN;
  }
  return std::clamp((all.values[all.at(i, j)] / (sqrt(xx) * sqrt(yy))).high, -1.0, 1.0);
}

Comoments comoments(Rows& rows, bool diagonal) {
  Comoments result;
  if (!lookAround(rows, diagonal, result)) {
    result.infinite = scaleToSpread(rows);
    lookAround(rows, diagonal, result);
  } else {
    result.infinite.assign(rows.width(), false);
  }
  result.weight = result.weight.timesTwoTo(rows.wExponent());
  for (std::size_t j = 0; j < rows.width(); ++j) {
    result.exponents.push_back(rows.exponent(j));
  }
  return result;
}

double cov(Data x, Data y, const CovarianceOptions& options) {
  const Data columns[] = {x, y};
  Rows rows("cov", columns, options.weights, options.missing);
  return covarianceOf(comoments(rows, false), 0, 1, options.ddof);
}

SquareMatrix cov(std::span<const Data> columns, const CovarianceOptions& options) {
  const Rows rows("cov", columns, options.weights, options.missing);
  return matrixOf(rows, options.missing, [&](Rows& some) {
    return [all = comoments(some, true), ddof = options.ddof](std::size_t i, std::size_t j) {
      return covarianceOf(all, i, j, ddof);
    };
  });
}

double corr(Data x, Data y, const CorrelationOptions& options) {
  const Data columns[] = {x, y};
  Rows rows("corr", columns, options.weights, options.missing);
  switch (options.method) {
    case Correlation::spearman:
      return spearman(rows, 0, 1);
    case Correlation::kendall:
      return kendall(rows, 0, 1);
    default:
      return pearsonOf(comoments(rows, true), 0, 1);
  }
}

SquareMatrix corr(std::span<const Data> columns, const CorrelationOptions& options) {
  const Rows rows("corr", columns, options.weights, options.missing);
  return matrixOf(rows, options.missing, [&](Rows& some) -> CorrelationEntry {
    switch (options.method) {
      case Correlation::spearman:
        return [complete = CompleteRows(some)](std::size_t i, std::size_t j) {
          return spearman(complete.rows(), i, j);
        };
      case Correlation::kendall:
        return [complete = CompleteRows(some)](std::size_t i, std::size_t j) {
          return kendall(complete.rows(), i, j);
        };
      default:
        return [all = comoments(some, true)](std::size_t i, std::size_t j) {
          return pearsonOf(all, i, j);
        };
    }
  });
}

}  // namespace vexel

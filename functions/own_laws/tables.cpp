#include "functions/own_laws/tables.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "functions/data/text.hpp"
#include "functions/own_laws/survey.hpp"

namespace vexel::detail {

using namespace own_laws;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double nan = std::numeric_limits<double>::quiet_NaN();

// What the steps and tails may add up to, as shares of the error asked for.
constexpr double perSegment = 1e-2;
constexpr double perTail = 1e-3;
constexpr double perPiece = 0.5;

void check(Interval support, double error) {
  if (!(support.low < support.high)) {
    throw std::invalid_argument("support must go from a lower to a higher end, not from " +
                                number(support.low) + " to " + number(support.high));
  }
  if (support.high - support.low < 1e-290) {
    throw std::invalid_argument("support must be longer than 1e-290, not from " +
                                number(support.low) + " to " + number(support.high));
  }
  if (!(error >= 1e-12 && error <= 1e-2)) {
    throw std::invalid_argument("error must be 1e-12 to 0.01, got " + number(error));
  }
}

void checkError(double error, double asked) {
  if (!(error <= asked)) {
    throw std::invalid_argument("the function is too rough: after " +
                                std::to_string(mostEvaluations) +
                                " values the probability may be wrong by " + number(error) +
                                ", where " + number(asked) + " was asked for");
  }
}

void checkResolved(const Built& built, double error) {
  if (!(built.mass > 0)) {
    throw std::invalid_argument("no mass found");
  }
  if (std::isinf(built.mass)) {
    throw std::invalid_argument("the density's integral is beyond the largest number");
  }
  checkError(built.error, error);
}

// Slopes of the logarithm fall from node to node, as far as the nodes are apart enough to tell.
bool looksLogConcave(const std::vector<Segment>& segments) {
  constexpr double least = 1e-250;
  double x = nan;
  double log = nan;
  double slope = infinity;
  bool ended = false;
  for (const Segment& s : segments) {
    for (std::size_t j = nodeCount; j-- > 0;) {
      const double t = s.tAt(chebyshevNodes()[j]);
      const double at = s.map.x(t);
      const double value = s.values[j] / s.map.slope(t);
      if (!(value > least)) {
        ended = !std::isnan(x);
        continue;
      }
      if (ended) {
        return false;  // a gap
      }
      const double next = std::log(value);
      if (!std::isnan(x)) {
        const double width = at - x;
        const double here = (next - log) / width;
        const double rounding = 1e-12 * (1 + std::abs(next)) / width;
        if (!(here <= slope + rounding)) {
          return false;
        }
        // Of nodes that are too near to tell, the slope is not to be gone by.
        slope = rounding < 1e-6 * std::abs(here) || slope == infinity ? here + rounding : slope;
      }
      x = at;
      log = next;
    }
  }
  return true;
}

}  // namespace

OwnLawTables::OwnLawTables(FunctionOfSpans f, const DensityOptions& options)
    : support_(options.support) {
  check(support_, options.error);
  density_.emplace(std::move(f), options.log, support_);
  double hint = options.mode;
  if (std::isfinite(hint) && !(hint >= support_.low && hint <= support_.high)) {
    throw std::invalid_argument("mode must be in the support, got " + number(hint));
  }
  for (int attempt = 0;; ++attempt) {
    try {
      const Survey survey = surveyed(*density_, hint);
      density_->setScale(survey.logPeak);
      const Plan plan{.support = support_,
                      .mode = survey.mode,
                      .leftWidth = survey.leftWidth,
                      .rightWidth = survey.rightWidth,
                      .breaks = survey.breaks,
                      .tolerance = perSegment * options.error,
                      .negligible = perTail * options.error,
                      .evaluations = mostEvaluations - std::min(mostEvaluations, density_->count()),
                      .cumulative = false};
      Built built = build(
          [this](std::span<const double> x, std::span<double> y) { density_->scaled(x, y); }, plan);
      checkResolved(built, options.error);
      logIntegral_ = std::log(built.mass) + density_->logScale();
      constexpr std::size_t strips = 250;
      if (density_->count() + strips + 20 <= mostEvaluations && looksLogConcave(built.segments)) {
        envelope_ = Envelope::over(*density_, survey.mode, built.mass, strips, options.derivative);
      }
      finish(std::move(built), options.error);
      break;
    } catch (const HigherPeak& peak) {
      if (attempt == 2) {
        throw std::invalid_argument("the density grows beyond measure near " + number(peak.at));
      }
      hint = peak.at;
    }
  }
  evaluations_ = density_->count();
}

void OwnLawTables::finish(Built built, double error) {
  segments_ = std::move(built.segments);
  double sum = 0;
  for (Segment& s : segments_) {
    s.mass = std::max(s.mass, 0.0) / built.mass;
    for (std::size_t k = 0; k < s.cumulative.size(); ++k) {
      s.cumulative[k] /= built.mass;
      s.density[k] /= built.mass;
    }
    s.left = sum;
    sum += s.mass;
  }
  double behind = 0;
  for (auto s = segments_.rbegin(); s != segments_.rend(); ++s) {
    s->right = behind;
    behind += s->mass;
  }
  inverse_ = InverseTable(segments_, support_, perPiece * error);
  error_ = inverse_.error() + built.error;
  checkError(error_, error);
}

namespace {

// x where values cross p, between two points of a survey.
double crossing(CumulativeValues& f, std::vector<double> x, std::vector<double> y, double p) {
  double low = x.front();
  double high = x.back();
  for (int round = 0; round < 5; ++round) {
    std::size_t i = 0;
    while (i < x.size() && y[i] < p) {
      ++i;
    }
    low = i == 0 ? low : x[i - 1];
    high = i == x.size() ? high : x[i];
    if (round == 4) {
      break;
    }
    x.clear();
    for (int k = 1; k < 9; ++k) {
      x.push_back(low + (high - low) * k / 9);
    }
    y.resize(x.size());
    f(x, y);
  }
  return 0.5 * (low + high);
}

}  // namespace

OwnLawTables::OwnLawTables(FunctionOfSpans function, const CumulativeDistributionOptions& options)
    : support_(options.support), given_(options.density) {
  check(support_, options.error);
  CumulativeValues f(std::move(function), support_);
  const std::vector<double> x = surveyPoints(support_, nan);
  if (x.empty()) {
    throw std::invalid_argument("support holds no number between its ends");
  }
  std::vector<double> y(x.size());
  f(x, y);
  for (std::size_t i = 1; i < x.size(); ++i) {
    if (y[i] < y[i - 1] - 1e-12) {
      throw std::invalid_argument("the distribution function falls between " + number(x[i - 1]) +
                                  " and " + number(x[i]));
    }
  }
  const double middle = crossing(f, x, y, 0.5);
  const double lower = crossing(f, x, y, 0.25);
  const double upper = crossing(f, x, y, 0.75);
  const double least = 1e-9 * std::max(std::abs(middle), upper - lower) + 1e-300;
  const Plan plan{.support = support_,
                  .mode = middle,
                  .leftWidth = std::max(middle - lower, least),
                  .rightWidth = std::max(upper - middle, least),
                  .breaks = {},
                  .tolerance = perSegment * options.error,
                  .negligible = perTail * options.error,
                  .evaluations = mostEvaluations - std::min(mostEvaluations, f.count()),
                  .cumulative = true};
  Built built =
      build([&f](std::span<const double> at, std::span<double> out) { f(at, out); }, plan);
  checkResolved(built, options.error);
  if (std::abs(built.mass - 1) > 10 * options.error) {
    throw std::invalid_argument("the distribution function rises by " + number(built.mass) +
                                " over the support, not by 1");
  }
  for (const Segment& s : built.segments) {
    if (s.mass < -options.error) {
      throw std::invalid_argument("the distribution function falls between " + number(s.low) +
                                  " and " + number(s.high));
    }
  }
  finish(std::move(built), options.error);
  evaluations_ = f.count();
}

const Segment* OwnLawTables::segmentOf(double x) const {
  const auto after = std::upper_bound(segments_.begin(), segments_.end(), x,
                                      [](double at, const Segment& s) { return at < s.low; });
  return after == segments_.begin() ? nullptr : &*std::prev(after);
}

double OwnLawTables::pdf(double x) const {
  if (density_) {
    return std::exp(logpdf(x));
  }
  if (!(x >= support_.low && x <= support_.high)) {
    return std::isnan(x) ? x : 0;
  }
  if (given_) {
    return given_(x);
  }
  const Segment* s = segmentOf(x);
  return s == nullptr || x > s->high ? 0 : s->densityAt(x);
}

double OwnLawTables::logpdf(double x) const {
  if (!density_) {
    return std::log(pdf(x));
  }
  if (!(x >= support_.low && x <= support_.high)) {
    return std::isnan(x) ? x : -infinity;
  }
  return std::isinf(x) ? -infinity : density_->logarithmOnce(x) - logIntegral_;
}

double OwnLawTables::cdf(double x) const {
  if (std::isnan(x) || x <= support_.low || x >= support_.high) {
    return std::isnan(x) ? x : x >= support_.high ? 1 : 0;
  }
  const Segment* s = segmentOf(x);
  return s == nullptr ? 0 : std::min(1.0, s->left + (x >= s->high ? s->mass : s->massTo(x)));
}

double OwnLawTables::sf(double x) const {
  if (std::isnan(x) || x <= support_.low || x >= support_.high) {
    return std::isnan(x) ? x : x >= support_.high ? 0 : 1;
  }
  const Segment* s = segmentOf(x);
  return s == nullptr ? 1 : std::min(1.0, s->right + (x >= s->high ? 0 : s->mass - s->massTo(x)));
}

double OwnLawTables::quantile(double p) const {
  if (!(p > 0 && p < 1)) {
    return p == 0 ? support_.low : p == 1 ? support_.high : p;
  }
  const auto after = std::partition_point(segments_.begin(), segments_.end(),
                                          [p](const Segment& s) { return s.left + s.mass < p; });
  return after == segments_.end() ? segments_.back().high : after->inverse(p - after->left);
}

double OwnLawTables::isf(double q) const {
  if (!(q > 0 && q < 1)) {
    return q == 0 ? support_.high : q == 1 ? support_.low : q;
  }
  const auto found = std::partition_point(segments_.begin(), segments_.end(),
                                          [q](const Segment& s) { return s.right >= q; });
  return found == segments_.end() ? segments_.back().high
                                  : found->inverse(found->mass - (q - found->right));
}

namespace {

// Fejér's rule with 32 nodes on [-1, 1]: twice as many as a series has, for powers of x beside it.
constexpr std::size_t ruleSize = 32;
const std::array<std::array<double, 2>, ruleSize>& rule() {
  static const auto table = [] {
    std::array<std::array<double, 2>, ruleSize> r{};
    for (std::size_t j = 0; j < ruleSize; ++j) {
      const double angle = 3.141592653589793 * static_cast<double>(2 * j + 1) / (2 * ruleSize);
      double weight = 1;
      for (std::size_t k = 1; k <= ruleSize / 2; ++k) {
        const auto even = static_cast<double>(2 * k);
        weight -= 2 * std::cos(even * angle) / (even * even - 1);
      }
      r[j] = {std::cos(angle), 2 * weight / ruleSize};
    }
    return r;
  }();
  return table;
}

}  // namespace

double OwnLawTables::moment(int order, double center) const {
  double sum = 0;
  for (const Segment& s : segments_) {
    double part = 0;
    for (const auto& [node, weight] : rule()) {
      part += weight * valueOf(s.density, node) * std::pow(s.map.x(s.tAt(node)) - center, order);
    }
    sum += part * s.halfWidth();
  }
  const double above = momentBeyond(segments_.back(), 1, order, center, sum);
  const double below = momentBeyond(segments_.front(), -1, order, center, sum);
  return std::isinf(above) && below == -above ? nan : sum + above + below;
}

// The density is followed on, a factor of 16 at a time, until it adds no more; a moment whose parts
// do not become smaller is infinite.  A distribution function has no more to tell there: what is
// left of it, down to the error of the tables, is taken to fall as a power if it does so before.
double OwnLawTables::momentBeyond(const Segment& last, int side, int order, double center,
                                  double sum) const {
  if (std::isfinite(side < 0 ? support_.low : support_.high) || last.map.side != side) {
    return 0;
  }
  if (!density_) {
    return powerBeyond(side, order);
  }
  constexpr double width = 2.7725887222397811;
  double t = side < 0 ? last.begin : last.end;
  double total = 0;
  double before = infinity;
  double ratioBefore = 0;
  while (std::abs(t) < 690) {
    double part = 0;
    for (const auto& [node, weight] : rule()) {
      const double at = t + side * 0.5 * width * (1 + node);
      const double x = last.map.x(at);
      const double y = std::exp(density_->logarithmOnce(x) - logIntegral_);
      part += 0.5 * width * weight * y * last.map.slope(at) * std::pow(x - center, order);
    }
    if (!(std::abs(part) < infinity)) {
      break;
    }
    total += part;
    const double ratio = std::abs(part) / before;
    if (std::abs(part) <= 1e-17 * std::abs(sum) || (ratio < 1 && std::abs(part) < 1e-300)) {
      return total;
    }
    if (ratio > 1 - 1e-6 && std::abs(ratio - ratioBefore) < 1e-4 * ratio) {
      break;  // a power, and too slow a one
    }
    ratioBefore = ratio;
    before = std::abs(part);
    t += side * width;
  }
  return side < 0 && order % 2 == 1 ? -infinity : infinity;
}

double OwnLawTables::powerBeyond(int side, int order) const {
  // Where the tail has a share of 1e-7, which the tables know to three digits or more.
  constexpr double share = 1e-7;
  const double x = side > 0 ? isf(share) : quantile(share);
  const Segment* s = segmentOf(x);
  if (s->map.side != side) {
    return 0;
  }
  const double t = s->map.t(x);
  const double decay = valueOf(s->density, s->nodeAt(t)) / share;
  constexpr double steep = 8;
  const double sign = side < 0 && order % 2 == 1 ? -1 : 1;
  if (decay > steep) {
    return 0;
  }
  if (!(decay > order * (1 + 1e-3))) {
    return sign * infinity;
  }
  const Segment& last = side > 0 ? segments_.back() : segments_.front();
  const double end = side > 0 ? last.end : last.begin;
  return sign * share * std::exp(-decay * std::abs(end - t)) * decay / (decay - order) *
         std::pow(std::exp(std::abs(end)), order);
}

}  // namespace vexel::detail

#include "functions/own_laws/survey.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace vexel::own_laws {

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

// from + side 2^k for low <= k <= high by steps.
void addPowers(std::vector<double>& points, double from, double side, double low, double high,
               double step) {
  for (double k = low; k <= high; k += step) {
    points.push_back(from + side * std::exp2(k));
  }
}

struct Point {
  double x;
  double log;
};

std::vector<Point> evaluated(DensityValues& f, const std::vector<double>& x) {
  std::vector<double> logs(x.size());
  f.logarithms(x, logs);
  std::vector<Point> points(x.size());
  for (std::size_t i = 0; i < x.size(); ++i) {
    points[i] = {x[i], logs[i]};
  }
  return points;
}

// The largest value between two points, from the best of eight, again and again.
Point climbed(DensityValues& f, double low, Point best, double high, int rounds) {
  constexpr int parts = 9;
  for (int round = 0; round < rounds && high > low; ++round) {
    std::vector<double> x;
    for (int i = 1; i < parts; ++i) {
      const double at = low + (high - low) * i / parts;
      if (at > low && at < high && at != best.x) {
        x.push_back(at);
      }
    }
    double below = low;
    double above = high;
    std::vector<Point> points = evaluated(f, x);
    points.push_back(best);
    best = *std::max_element(points.begin(), points.end(),
                             [](Point a, Point b) { return a.log < b.log; });
    for (const Point& p : points) {
      if (p.x < best.x) {
        below = std::max(below, p.x);
      } else if (p.x > best.x) {
        above = std::min(above, p.x);
      }
    }
    low = below;
    high = above;
  }
  return best;
}

// The distance from the mode to where the density is e times smaller, within a factor of two.
double widthTowards(DensityValues& f, const Point& mode, double side, double limit,
                    const std::vector<Point>& points, int halvings = 40) {
  double width = limit;
  for (const Point& p : points) {
    const double distance = side * (p.x - mode.x);
    if (distance > 0 && distance < width && p.log < mode.log - 1) {
      width = distance;
    }
  }
  if (!std::isfinite(width)) {
    width = std::max(1.0, std::abs(mode.x));
  }
  std::vector<double> x;
  for (int k = 1; k <= halvings; ++k) {
    const double at = mode.x + side * std::ldexp(width, -k);
    if (at == mode.x || !(at > f.support().low && at < f.support().high)) {
      break;
    }
    x.push_back(at);
  }
  const std::vector<Point> nearer = evaluated(f, x);
  for (const Point& p : nearer) {
    if (!(p.log < mode.log - 1)) {
      break;
    }
    width = side * (p.x - mode.x);
  }
  return width;
}

// Maxima beside the first: breaks at their places, and around those that fall off between two
// points.
void addOtherMaxima(DensityValues& f, Survey& survey, const std::vector<Point>& points,
                    const Point& first) {
  constexpr double negligible = 40;
  constexpr std::size_t most = 32;
  for (std::size_t i = 1; i + 1 < points.size() && survey.breaks.size() < most; ++i) {
    const Point& p = points[i];
    const double before = points[i - 1].log;
    const double after = points[i + 1].log;
    if (p.x == first.x || !(p.log > before && p.log >= after && p.log > first.log - negligible)) {
      continue;
    }
    if (std::min(before, after) > p.log - 3) {
      survey.breaks.push_back(p.x);
      continue;
    }
    const Point peak = climbed(f, points[i - 1].x, p, points[i + 1].x, 5);
    survey.breaks.push_back(peak.x);
    for (const double side : {-1.0, 1.0}) {
      const double limit = side > 0 ? points[i + 1].x - peak.x : peak.x - points[i - 1].x;
      const double width = widthTowards(f, peak, side, limit, points, 20);
      survey.breaks.push_back(peak.x + side * width);
      survey.breaks.push_back(peak.x + side * std::min(limit, 8 * width));
    }
  }
}

}  // namespace

std::vector<double> surveyPoints(Interval support, double hint) {
  std::vector<double> points;
  const bool lowFinite = std::isfinite(support.low);
  const bool highFinite = std::isfinite(support.high);
  // Both ends may be finite and their distance not.
  const double length = lowFinite && highFinite ? std::min(support.high - support.low,
                                                           std::numeric_limits<double>::max())
                                                : infinity;
  if (lowFinite && highFinite) {
    constexpr int even = 128;
    for (int i = 0; i < even; ++i) {
      points.push_back(std::lerp(support.low, support.high, (i + 0.5) / even));
    }
    const double size = std::log2(length);
    addPowers(points, support.low, 1, size - 50, size - 8, 3);
    addPowers(points, support.high, -1, size - 50, size - 8, 3);
  } else {
    const double center = lowFinite ? support.low : highFinite ? support.high : 0;
    for (const double side : {-1.0, 1.0}) {
      addPowers(points, center, side, -40, -12, 2);
      addPowers(points, center, side, -10, 14, 0.5);
      addPowers(points, center, side, 15, 60, 3);
    }
    points.push_back(center);
    if (const double size = std::log2(std::abs(center)); size > 100) {
      for (const double side : {-1.0, 1.0}) {
        addPowers(points, center, side, size - 48, std::min(size + 8, 1023.0), 2);
      }
    }
  }
  if (std::isfinite(hint)) {
    points.push_back(hint);
    const double size = std::isfinite(length) ? std::log2(length) : 20;
    for (const double side : {-1.0, 1.0}) {
      addPowers(points, hint, side, size - 40, size, 2);
    }
  }
  std::erase_if(points, [&](double x) { return !(x > support.low && x < support.high); });
  std::sort(points.begin(), points.end());
  points.erase(std::unique(points.begin(), points.end()), points.end());
  return points;
}

Survey surveyed(DensityValues& f, double hint) {
  const Interval support = f.support();
  const std::vector<Point> points = evaluated(f, surveyPoints(support, hint));
  const auto best = std::max_element(points.begin(), points.end(),
                                     [](Point a, Point b) { return a.log < b.log; });
  if (best == points.end() || best->log == -infinity) {
    throw std::invalid_argument(
        "the density is 0 wherever it was looked at: give its mode, or a smaller support");
  }
  const double below = best == points.begin() ? support.low : std::prev(best)->x;
  const double above = std::next(best) == points.end() ? support.high : std::next(best)->x;
  Point mode = *best;
  if (std::isfinite(below) && std::isfinite(above)) {
    mode = climbed(f, below, mode, above, 10);
    const double near = std::max(1e-5 * (above - below),
                                 8 * std::numeric_limits<double>::epsilon() * std::abs(mode.x));
    if (mode.x - support.low < near) {
      mode.x = support.low;
    } else if (support.high - mode.x < near) {
      mode.x = support.high;
    }
  }
  Survey survey{.mode = mode.x, .logPeak = mode.log};
  if (mode.x > support.low) {
    survey.leftWidth = widthTowards(f, mode, -1, mode.x - support.low, points);
  }
  if (mode.x < support.high) {
    survey.rightWidth = widthTowards(f, mode, 1, support.high - mode.x, points);
  }
  // Not so narrow that what lies beside a pole cannot be told from it.
  const double least = 0x1p-30 * std::abs(mode.x);
  if (survey.leftWidth > 0) {
    survey.leftWidth = std::min(std::max(survey.leftWidth, least), mode.x - support.low);
  }
  if (survey.rightWidth > 0) {
    survey.rightWidth = std::min(std::max(survey.rightWidth, least), support.high - mode.x);
  }
  addOtherMaxima(f, survey, points, *best);
  return survey;
}

}  // namespace vexel::own_laws

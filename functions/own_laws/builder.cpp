#include "functions/own_laws/builder.hpp"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>

#include "functions/data/text.hpp"

namespace vexel::own_laws {

namespace {

// A row of segments towards an end that may never be reached: an infinite one, or one with a pole.
struct Row {
  Map map;
  double at;         // t where the next segment begins
  double direction;  // of t
  double width;
  double limit;  // t where the row ends
  enum class End {
    plain,    // at the limit
    open,     // where the mass is negligible; there is nothing to be found at the limit
    rounded,  // the same, but what is beyond the limit is within the rounding of x
  } end;
  int growing;  // consecutive segments of which each has more mass than the one before
};

class Builder {
 public:
  Builder(const Values& values, const Plan& plan) : values_(values), plan_(plan) {}

  Built run() {
    begin();
    do {
      evaluate();
    } while (advanceRows() || split());
    Built built;
    std::sort(done_.begin(), done_.end(),
              [](const Segment& a, const Segment& b) { return a.low < b.low; });
    if (plan_.cumulative) {
      addJumps();
    }
    for (const Segment& s : done_) {
      built.mass += s.mass;
      built.error += s.error;
    }
    built.error /= built.mass;
    built.segments = std::move(done_);
    return built;
  }

 private:
  static constexpr double infinity = std::numeric_limits<double>::infinity();
  static constexpr double firstWidth = 2.75;  // a factor of 16

  void begin() {
    const Interval support = plan_.support;
    if (plan_.rightWidth > 0) {
      const double to = std::min(support.high, plan_.mode + plan_.rightWidth);
      want({}, plan_.mode, to, 0);
      addRow({plan_.mode, 1}, std::log(plan_.rightWidth), 1, support.high);
    }
    if (plan_.leftWidth > 0) {
      const double to = std::max(support.low, plan_.mode - plan_.leftWidth);
      want({}, to, plan_.mode, 0);
      addRow({plan_.mode, -1}, -std::log(plan_.leftWidth), -1, support.low);
    }
  }

  void addRow(const Map& map, double at, double direction, double end) {
    const double limit = std::isinf(end) ? direction * 690 : map.t(end);
    if (direction * (limit - at) > 1e-9) {
      rows_.push_back({map, at, direction, firstWidth, limit,
                       std::isinf(end) ? Row::End::open : Row::End::plain, 0});
    }
  }

  static bool isAnchor(const Map& map, double end, int side) {
    return map.side == side && map.origin == end;
  }

  // A segment to evaluate, cut where a break lies in it.
  void want(const Map& map, double begin, double end, int depth) {
    for (const double x : plan_.breaks) {
      if (x > map.x(begin) && x < map.x(end)) {
        const double t = map.t(x);
        if (t - begin > 1e-9 * (end - begin) && end - t > 1e-9 * (end - begin)) {
          want(map, begin, t, depth);
          want(map, t, end, depth);
          return;
        }
      }
    }
    Segment s;
    s.map = map;
    s.begin = begin;
    s.end = end;
    s.low = std::clamp(map.x(begin), plan_.support.low, plan_.support.high);
    s.high = std::clamp(map.x(end), plan_.support.low, plan_.support.high);
    // An end of the support that the map's rounding missed.
    const double near = 1e-12 * (s.high - s.low);
    if (!isAnchor(map, plan_.support.low, 1) && s.low - plan_.support.low < near) {
      s.low = plan_.support.low;
    }
    if (!isAnchor(map, plan_.support.high, -1) && plan_.support.high - s.high < near) {
      s.high = plan_.support.high;
    }
    s.depth = depth;
    wanted_.push_back(s);
  }

  double inside(double x) const {
    return std::clamp(x, std::nextafter(plan_.support.low, infinity),
                      std::nextafter(plan_.support.high, -infinity));
  }

  void evaluate() {
    if (wanted_.empty()) {
      return;
    }
    std::vector<double> x;
    for (const Segment& s : wanted_) {
      for (const double node : chebyshevNodes()) {
        x.push_back(inside(s.map.x(s.tAt(node))));
      }
    }
    used_ += x.size();
    std::vector<double> y(x.size());
    values_(x, y);
    std::size_t i = 0;
    for (Segment& s : wanted_) {
      std::array<double, nodeCount> shifts{};
      for (std::size_t j = 0; j < nodeCount; ++j, ++i) {
        const double t = s.map.t(x[i]);
        shifts[j] = t - s.tAt(chebyshevNodes()[j]);
        s.values[j] = plan_.cumulative ? y[i] : y[i] * s.map.slope(t);
      }
      if (plan_.cumulative) {
        s.left = s.fitCumulative();
      } else {
        s.fitDensity(shifts);
      }
      done_.push_back(s);
    }
    wanted_.clear();
  }

  double mass() const {
    double sum = 0;
    for (const Segment& s : done_) {
      sum += std::max(0.0, s.mass);
    }
    return sum;
  }

  // The next segment of each row, until rows have come to their ends.
  bool advanceRows() {
    const double total = mass();
    for (auto row = rows_.begin(); row != rows_.end();) {
      const bool over = row->direction * (row->limit - row->at) <= 1e-9;
      const bool negligible = row->end != Row::End::plain && isNegligible(*row, total);
      constexpr int hopeless = 12;
      if (over || negligible || row->growing > hopeless) {
        if (!negligible && row->end != Row::End::plain) {
          endRow(*row, total);
        }
        row = rows_.erase(row);
        continue;
      }
      widen(*row);
      const double step = std::min(row->width, row->direction * (row->limit - row->at));
      const double next = row->at + row->direction * step;
      want(row->map, std::min(row->at, next), std::max(row->at, next), 0);
      row->at = next;
      ++row;
    }
    if (used_ + wanted_.size() * nodeCount > plan_.evaluations) {
      throw std::invalid_argument("the function has too much of a tail for " +
                                  std::to_string(plan_.evaluations) + " values of it");
    }
    return !wanted_.empty();
  }

  // The segments that end where the row has come to.
  const Segment* lastOf(const Row& row) const {
    for (auto s = done_.rbegin(); s != done_.rend(); ++s) {
      if (s->map.origin == row.map.origin && s->map.side == row.map.side &&
          (row.direction > 0 ? s->end : s->begin) == row.at) {
        return &*s;
      }
    }
    return nullptr;
  }

  // Mass beyond the row's place, were the density a power from there on.
  double massBeyond(const Row& row, const Segment& last) const {
    const double node = row.direction;
    const double here = valueOf(last.density, node);
    if (plan_.cumulative) {
      const double f = last.values[row.direction > 0 ? 0 : nodeCount - 1];
      return row.direction > 0 ? 1 - f : f;
    }
    if (!(here > 0)) {
      return 0;
    }
    const double slope = valueOf(derivativeOf(last.density), node) / last.halfWidth();
    const double decay = -row.direction * slope / here;
    return decay > 1e-3 ? here / decay : infinity;
  }

  bool isNegligible(const Row& row, double total) const {
    const Segment* last = lastOf(row);
    const double x = row.map.x(row.at);
    for (const double b : plan_.breaks) {
      if (row.direction * row.map.side > 0
              ? std::abs(b - row.map.origin) > std::abs(x - row.map.origin) &&
                    (b > x) == (x > row.map.origin)
              : (b > row.map.origin) == (x > row.map.origin) &&
                    std::abs(b - row.map.origin) < std::abs(x - row.map.origin)) {
        return false;
      }
    }
    return last != nullptr && last->mass <= 1e3 * plan_.negligible * total &&
           massBeyond(row, *last) <= plan_.negligible * total;
  }

  void widen(Row& row) const {
    const Segment* last = lastOf(row);
    if (last == nullptr) {
      return;
    }
    const bool grows = !plan_.cumulative && row.end == Row::End::open &&
                       massBeyond(row, *last) == infinity && last->mass > 0.01 * mass();
    row.growing = grows ? row.growing + 1 : 0;
    // A power is a straight exponential in t: a longer stretch of it will do as well.
    const bool easy = !plan_.cumulative && last->mass > 0 && last->error < 1e-12 * last->mass;
    row.width = easy ? std::min(2 * row.width, 40.0) : std::nextafter(firstWidth, 3.0);
  }

  // At the limit with mass left: a segment for what rounding keeps from being looked at.
  void endRow(const Row& row, double total) {
    const Segment* last = lastOf(row);
    const double beyond = last == nullptr ? infinity : massBeyond(row, *last);
    const bool outwards = row.direction * row.map.side > 0;
    const double end = outwards ? row.map.side * infinity : row.map.origin;
    if (row.end == Row::End::open || !(beyond < total)) {
      throw std::invalid_argument(
          plan_.cumulative
              ? "the distribution function does not come to 0 and 1 by " + number(end)
              : "the mass is infinite, or not to be found by a double, towards " + number(end));
    }
    continueAsPower(row, *last, beyond, total);
  }

  // Segments for what rounding keeps from being looked at: the mass goes on as a power.
  void continueAsPower(const Row& row, const Segment& last, double beyond, double total) {
    const double decay = valueOf(last.density, row.direction) / beyond;
    const double width = 4 / decay;
    double t = row.at;
    for (double left = beyond; left > plan_.negligible * total; left *= std::exp(-decay * width)) {
      Segment s;
      s.map = row.map;
      s.begin = std::min(t, t + row.direction * width);
      s.end = std::max(t, t + row.direction * width);
      s.low = std::clamp(s.map.x(s.begin), plan_.support.low, plan_.support.high);
      s.high = std::clamp(s.map.x(s.end), plan_.support.low, plan_.support.high);
      for (std::size_t j = 0; j < nodeCount; ++j) {
        const double away = row.direction * (s.tAt(chebyshevNodes()[j]) - t);
        s.values[j] = decay * left * std::exp(-decay * away);
      }
      s.fitDensity({});
      s.left = row.direction > 0 ? 1 - left : left * std::exp(-decay * width);
      done_.push_back(s);
      t += row.direction * width;
    }
  }

  // Between segments a distribution function may jump: one of no width has that mass.
  void addJumps() {
    std::vector<Segment> jumps;
    double before = 0;
    for (const Segment& s : done_) {
      const double rise = s.left - before;
      if (rise > 10 * plan_.tolerance) {
        Segment jump;
        jump.begin = jump.low = s.low;
        jump.end = std::nextafter(s.low, infinity);
        jump.high = s.low;
        jump.mass = rise;
        jump.cumulative[0] = jump.cumulative[1] = 0.5 * rise;
        jump.density[0] = rise / (jump.end - jump.begin);
        jumps.push_back(jump);
      }
      before = s.left + s.mass;
    }
    done_.insert(done_.end(), jumps.begin(), jumps.end());
    std::stable_sort(done_.begin(), done_.end(), [](const Segment& a, const Segment& b) {
      return a.low < b.low || (a.low == b.low && a.high < b.high);
    });
  }

  // Halves the segments that are not yet polynomials; false when there are none, or no more values.
  bool split() {
    const double total = mass();
    if (!(total > 0)) {
      return false;
    }
    std::vector<Segment> bad;
    const auto good = std::partition(done_.begin(), done_.end(), [&](const Segment& s) {
      return s.error <= plan_.tolerance * total || s.high <= std::nextafter(s.low, infinity);
    });
    bad.assign(good, done_.end());
    std::sort(bad.begin(), bad.end(),
              [](const Segment& a, const Segment& b) { return a.error > b.error; });
    const std::size_t room =
        used_ < plan_.evaluations ? (plan_.evaluations - used_) / (2 * nodeCount) : 0;
    if (room == 0 || bad.empty()) {
      return false;
    }
    done_.erase(good, done_.end());
    for (std::size_t i = 0; i < bad.size(); ++i) {
      if (i >= room) {
        done_.push_back(bad[i]);
      } else {
        cut(bad[i]);
      }
    }
    return true;
  }

  void cut(const Segment& s) {
    constexpr int patience = 4;
    const Interval support = plan_.support;
    const bool atLow = s.low == support.low && !isAnchor(s.map, support.low, 1);
    const bool atHigh = s.high == support.high && !isAnchor(s.map, support.high, -1);
    if (s.depth >= patience && atLow) {
      anchor(s, {support.low, 1}, -1);
      return;
    }
    if (s.depth >= patience && atHigh) {
      anchor(s, {support.high, -1}, 1);
      return;
    }
    double middle = 0.5 * (s.begin + s.end);
    if (s.depth >= 6 && used_ + 100 < plan_.evaluations) {
      middle = jumpIn(s).value_or(middle);
    }
    want(s.map, s.begin, middle, s.depth + 1);
    want(s.map, middle, s.end, s.depth + 1);
  }

  // In place of a segment that ends at a pole, a row of segments towards it.
  void anchor(const Segment& s, const Map& map, double direction) {
    const double from = direction > 0 ? s.low : s.high;
    const double end = direction > 0 ? s.high : s.low;
    const double least = std::max(1e-300, 0x1p-40 * std::abs(end));
    const double limit = map.side * std::log(least);
    rows_.push_back({map, map.t(from), direction, firstWidth, limit,
                     end == 0 ? Row::End::open : Row::End::rounded, 0});
  }

  // Where the values jump, if most of their range is between two nodes: a smooth function has
  // become nearly straight by now.
  std::optional<double> jumpIn(const Segment& s) {
    std::size_t widest = 1;
    for (std::size_t j = 1; j < nodeCount; ++j) {
      if (std::abs(s.values[j] - s.values[j - 1]) >
          std::abs(s.values[widest] - s.values[widest - 1])) {
        widest = j;
      }
    }
    const auto [least, most] = std::minmax_element(s.values.begin(), s.values.end());
    if (std::abs(s.values[widest] - s.values[widest - 1]) < 0.6 * (*most - *least)) {
      return std::nullopt;
    }
    double high = inside(s.map.x(s.tAt(chebyshevNodes()[widest - 1])));
    double low = inside(s.map.x(s.tAt(chebyshevNodes()[widest])));
    const auto weight = [&](double x) { return plan_.cumulative ? 1.0 : s.map.slope(s.map.t(x)); };
    const double middleValue = 0.5 * (s.values[widest] + s.values[widest - 1]);
    const bool rising = s.values[widest - 1] > s.values[widest];
    for (int i = 0; i < 64; ++i) {
      const double x = 0.5 * (low + high);
      if (x <= low || x >= high) {
        break;
      }
      double y = 0;
      values_(std::span(&x, 1), std::span(&y, 1));
      ++used_;
      (((y * weight(x) > middleValue) == rising) ? high : low) = x;
    }
    const double t = s.map.t(high);
    return t > s.begin && t < s.end ? std::optional(t) : std::nullopt;
  }

  const Values& values_;
  const Plan& plan_;
  std::vector<Segment> done_;
  std::vector<Segment> wanted_;
  std::vector<Row> rows_;
  std::size_t used_ = 0;
};

}  // namespace

Built build(const Values& values, const Plan& plan) { return Builder(values, plan).run(); }

}  // namespace vexel::own_laws

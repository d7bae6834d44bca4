#include "functions/descriptive/selection.hpp"

#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <utility>
#include <vector>

#include "functions/data/totals.hpp"
#include "functions/descriptive/selection_points.hpp"
#include "kernels/vector/selection.hpp"

namespace vexel {

namespace {

using kernels::DoubleDouble;

constexpr std::size_t kFewPoints = 4000;  // below, all of them are collected
// Of what is collected, few points, or few ranks of more points, are put at their places; for the
// rest a sort by vector instructions takes less time.  It also takes less than brackets for many
// ranks of not so many points.
constexpr std::size_t kFewToPlace = 500;
constexpr std::size_t kManyToPlace = 4000;
constexpr std::size_t kFewRanks = 8;
constexpr std::size_t kFewToBracket = 100000;
constexpr std::size_t kFewBrackets = 3;  // each is read for by itself; more go by cells
constexpr std::size_t kMostBrackets = 250;
constexpr double kWidestShare = 0.5;  // of all points between the ends of brackets
// Standard deviations of a rank in the sample of points, to either side: one call in 10^4 misses.
constexpr double kMargin = 4.0;
constexpr std::int32_t kCells = 8192;

bool reaches(double cumulative, const Target& target) {
  return target.beyond ? cumulative > target.weight : cumulative >= target.weight;
}

// Targets in ascending order, with their places in the result.
struct Ordered {
  Target target;
  std::size_t place;
};

std::vector<Ordered> inOrder(std::span<const Target> targets) {
  std::vector<Ordered> all;
  for (const Target& t : targets) {
    all.push_back({t, all.size()});
  }
  std::sort(all.begin(), all.end(), [](const Ordered& a, const Ordered& b) {
    return a.target.weight < b.target.weight ||
           (a.target.weight == b.target.weight && !a.target.beyond && b.target.beyond);
  });
  return all;
}

// Puts the elements of the ascending ranks of x[begin..end-1] at their places.
void placeRanks(double* x, std::size_t begin, std::size_t end, std::span<const std::size_t> ranks) {
  while (!ranks.empty()) {
    const std::size_t middle = ranks.size() / 2;
    const std::size_t rank = ranks[middle];
    if (end - begin > std::size_t{1} << 16) {
      kernels::poll();
    }
    std::nth_element(x + begin, x + rank, x + end);
    placeRanks(x, begin, rank, ranks.first(middle));
    ranks = ranks.subspan(middle + 1);
    while (!ranks.empty() && ranks.front() == rank) {
      ranks = ranks.subspan(1);
    }
    begin = rank + 1;
  }
}

std::unique_ptr<double[]> sortedCopy(const std::vector<double>& x) {
  auto sorted = std::make_unique_for_overwrite<double[]>(x.size());
  NagError fail;
  fail.code = NAG2_OK;
  nag2_sort_typed(x.data(), x.size(), NAG2_FLOAT64, Nag_Ascending, sorted.get(), &fail);
  if (fail.code != NAG2_OK) {
    throw std::bad_alloc();
  }
  return sorted;
}

// Values of targets in sorted points, the first of which has before in front of it.  Stops at the
// first target that lies further on; how many were found.
std::size_t walk(const std::vector<Point>& points, DoubleDouble before,
                 std::span<const Ordered> targets, double* values) {
  std::size_t found = 0;
  for (const Point& p : points) {
    before = before + DoubleDouble(p.w);
    while (found < targets.size() && reaches(before.high, targets[found].target)) {
      values[targets[found++].place] = p.x;
    }
  }
  return found;
}

// By a copy of everything.
template <typename Points>
void selectFromAll(const Points& points, std::span<const Ordered> targets, double* values) {
  if (!points.weighted()) {
    std::vector<double> all;
    all.reserve(points.size());
    points.read(
        [&](const double* x, const double*, std::size_t n) { all.insert(all.end(), x, x + n); });
    std::vector<std::size_t> ranks;
    for (const Ordered& t : targets) {
      ranks.push_back(rankOf(t.target, all.size()));
    }
    const bool sorts =
        all.size() > kFewToPlace && (ranks.size() > kFewRanks || all.size() > kManyToPlace);
    const auto sorted = sorts ? sortedCopy(all) : nullptr;
    if (!sorts) {
      placeRanks(all.data(), 0, all.size(), ranks);
    }
    const double* const found = sorts ? sorted.get() : all.data();
    for (std::size_t i = 0; i < targets.size(); ++i) {
      values[targets[i].place] = found[ranks[i]];
    }
    return;
  }
  std::vector<Point> all;
  points.read([&](const double* x, const double* w, std::size_t n) {
    for (std::size_t i = 0; i < n; ++i) {
      all.push_back({x[i], w[i]});
    }
  });
  sortPoints(all, true);
  for (std::size_t i = walk(all, 0.0, targets, values); i < targets.size(); ++i) {
    values[targets[i].place] = all.back().x;
  }
}

// Two values between which some neighbouring targets lie, nearly for sure.
struct Bracket {
  double low;
  double high;
  std::span<const Ordered> targets;
};

// Brackets from sorted points of the sample; of neighbours that overlap one is made.  Empty when
// they would cover too much.
std::vector<Bracket> bracketsOf(const std::vector<Point>& sorted, std::span<const Ordered> targets,
                                double total) {
  std::vector<double> cumulative;
  double sum = 0.0;
  double squares = 0.0;
  double largest = 0.0;
  for (const Point& p : sorted) {
    cumulative.push_back(sum += p.w);
    squares += p.w * p.w;
    largest = std::max(largest, p.w);
  }
  const auto placeOf = [&](double weight) {
    return std::lower_bound(cumulative.begin(), cumulative.end(), weight) - cumulative.begin();
  };
  const auto size = static_cast<std::ptrdiff_t>(sorted.size());
  const auto valueAt = [&](std::ptrdiff_t place) {
    return place < 0       ? -std::numeric_limits<double>::infinity()
           : place >= size ? std::numeric_limits<double>::infinity()
                           : sorted[static_cast<std::size_t>(place)].x;
  };
  std::vector<Bracket> brackets;
  std::ptrdiff_t end = -2;
  std::ptrdiff_t covered = 0;
  for (std::size_t i = 0; i < targets.size(); ++i) {
    const double p = std::clamp(targets[i].target.weight / total, 0.0, 1.0);
    const double margin = kMargin * std::sqrt(p * (1.0 - p) * squares) + 2.0 * largest;
    const std::ptrdiff_t low = placeOf(p * sum - margin) - 1;
    const std::ptrdiff_t high = std::max(placeOf(p * sum + margin), end);
    if (!brackets.empty() && low <= end) {
      covered += high - end;
      Bracket& last = brackets.back();
      last.high = valueAt(high);
      last.targets = {last.targets.data(), last.targets.size() + 1};
    } else {
      covered += high - low;
      brackets.push_back({valueAt(low), valueAt(high), targets.subspan(i, 1)});
    }
    end = high;
  }
  const bool wide = static_cast<double>(covered) > kWidestShare * static_cast<double>(size);
  return wide || brackets.size() > kMostBrackets ? std::vector<Bracket>() : brackets;
}

template <typename Points>
void select(const Points& points, std::size_t n, double total, std::span<const Ordered> targets,
            double* values);

// Room for numbers that grows without being cleared.
struct Bag {
  std::unique_ptr<double[]> data;
  std::size_t room = 0;

  void reserve(std::size_t filled, std::size_t more) {
    if (filled + more > room) {
      room = 2 * filled + 2 * more;
      auto grown = std::make_unique_for_overwrite<double[]>(room);
      std::copy_n(data.get(), filled, grown.get());
      data = std::move(grown);
    }
  }
};

// What the data have below, at and between the ends of a bracket, without weights.  Ties with the
// ends are counted, not collected: data with few distinct values fit too.
class CountedBracket {
 public:
  explicit CountedBracket(const Bracket& bracket) : bracket_(bracket) {}

  void read(const double* x, std::size_t n) {
    between_.reserve(collected_, n);
    collected_ += kernels::countAndCollect(x, n, bracket_.low, bracket_.high, counts_,
                                           between_.data.get() + collected_);
  }

  // False when some target lies outside.
  bool finish(std::size_t n, double* values) {
    std::vector<std::size_t> places;
    const auto rank = [&](const Ordered& t) {
      return static_cast<std::int64_t>(rankOf(t.target, n));
    };
    for (const Ordered& t : bracket_.targets) {
      if (rank(t) < counts_.belowLow || rank(t) >= counts_.toHigh) {
        return false;
      }
      if (rank(t) >= counts_.toLow && rank(t) < counts_.belowHigh) {
        places.push_back(static_cast<std::size_t>(rank(t) - counts_.toLow));
      }
    }
    placeRanks(between_.data.get(), 0, collected_, places);
    for (const Ordered& t : bracket_.targets) {
      values[t.place] = rank(t) < counts_.toLow ? bracket_.low
                        : rank(t) < counts_.belowHigh
                            ? between_.data[static_cast<std::size_t>(rank(t) - counts_.toLow)]
                            : bracket_.high;
    }
    return true;
  }

 private:
  Bracket bracket_;
  kernels::BracketCounts counts_;
  Bag between_;
  std::size_t collected_ = 0;
};

template <typename Points>
bool selectByCounting(const Points& points, std::size_t n, std::span<const Bracket> brackets,
                      double* values) {
  std::vector<CountedBracket> counted(brackets.begin(), brackets.end());
  points.read([&](const double* x, const double*, std::size_t size) {
    for (CountedBracket& b : counted) {
      b.read(x, size);
    }
  });
  return std::all_of(counted.begin(), counted.end(),
                     [&](CountedBracket& b) { return b.finish(n, values); });
}

// Many brackets at once: the range between the outermost ends is cut into cells of one width, and a
// table says of each cell which bracket, or gap between brackets, it belongs to.  Cells that touch
// a bracket are collected, of the others the weight is added up.
class CellTable {
 public:
  // False when the ends are no base for cells.
  bool build(std::span<const Bracket> brackets) {
    double low = std::numeric_limits<double>::infinity();
    double high = -low;
    for (const Bracket& b : brackets) {
      for (const double end : {b.low, b.high}) {
        low = std::isfinite(end) ? std::min(low, end) : low;
        high = std::isfinite(end) ? std::max(high, end) : high;
      }
    }
    // The first and the last cell are for what lies outside.
    scale_ = (kCells - 4) / (high - low);
    base_ = low - 1.5 / scale_;
    if (!(low < high) || !std::isnormal(scale_) || !std::isfinite(base_)) {
      return false;
    }
    std::int32_t next = 0;  // cells below have their codes
    for (const Bracket& b : brackets) {
      const std::int32_t first = cellOf(b.low);
      const std::int32_t last = cellOf(b.high);
      if (groups_.empty() || first >= next) {
        fill(next, first, 2 * groups_.size());
        groups_.push_back(b.targets);
        next = first;
      } else {
        groups_.back() = {groups_.back().data(), groups_.back().size() + b.targets.size()};
      }
      fill(next, last + 1, 2 * groups_.size() - 1);
      next = std::max(next, last + 1);
    }
    fill(next, kCells, 2 * groups_.size());
    return true;
  }

  const std::vector<std::span<const Ordered>>& groups() const { return groups_; }
  void cellsOf(const double* x, std::size_t n, std::int32_t* cells) const {
    kernels::cellsOf(x, n, base_, scale_, kCells, cells);
  }
  // 2 g of the gap before group g, 2 g + 1 of the group.
  std::uint16_t code(std::int32_t cell) const { return codes_[static_cast<std::size_t>(cell)]; }
  std::uint16_t codeOf(double x) const { return code(cellOf(x)); }

 private:
  std::int32_t cellOf(double x) const {
    std::int32_t cell = 0;
    cellsOf(&x, 1, &cell);
    return cell;
  }
  void fill(std::int32_t begin, std::int32_t end, std::size_t code) {
    for (std::int32_t i = begin; i < end; ++i) {
      codes_[static_cast<std::size_t>(i)] = static_cast<std::uint16_t>(code);
    }
  }

  double base_ = 0.0;
  double scale_ = 0.0;
  std::vector<std::uint16_t> codes_ = std::vector<std::uint16_t>(kCells);
  std::vector<std::span<const Ordered>> groups_;
};

// Without weights: counts, and values within groups by selection again.
template <typename Points>
bool selectByCells(const Points& points, std::size_t n, const CellTable& table, double* values) {
  constexpr std::size_t ways = 4;  // neighbours count apart, so that none waits for another
  const std::size_t size = table.groups().size();
  const std::size_t codes = 2 * size + 1;
  std::vector<std::size_t> counts(ways * codes);
  std::vector<Bag> bags(size);
  std::vector<std::size_t> filled(size);
  std::vector<std::int32_t> cells(Sample::block);
  std::vector<std::uint16_t> kept(Sample::block);  // elements of groups
  static_assert(Sample::block <= 65536);
  points.read([&](const double* x, const double*, std::size_t length) {
    table.cellsOf(x, length, cells.data());
    std::size_t keep = 0;
    for (std::size_t i = 0; i < length; ++i) {
      const std::size_t code = table.code(cells[i]);
      ++counts[(i % ways) * codes + code];
      kept[keep] = static_cast<std::uint16_t>(i);
      keep += code & 1U;
    }
    for (std::size_t g = 0; g < size; ++g) {
      bags[g].reserve(filled[g], length);
    }
    for (std::size_t k = 0; k < keep; ++k) {
      const std::size_t g = table.code(cells[kept[k]]) / 2U;
      bags[g].data[filled[g]++] = x[kept[k]];
    }
  });
  std::size_t before = 0;
  for (std::size_t g = 0; g < size; ++g) {
    kernels::poll();
    for (std::size_t way = 0; way < ways; ++way) {
      before += counts[way * codes + 2 * g];
    }
    const std::size_t count = filled[g];
    std::vector<Ordered> inside;
    for (const Ordered& t : table.groups()[g]) {
      const std::size_t rank = rankOf(t.target, n);
      if (rank < before || rank >= before + count || count > n / 2) {
        return false;
      }
      inside.push_back({{static_cast<double>(rank - before + 1)}, t.place});
    }
    select(PlainPoints({bags[g].data.get(), count}), count, static_cast<double>(count), inside,
           values);
    before += count;
  }
  return true;
}

// With weights: those of the gaps are added up with compensation.
template <typename Points>
bool selectByWeight(const Points& points, const CellTable& table, double* values) {
  constexpr std::size_t ways = 4;  // neighbours are added apart, so that none waits for another
  const std::size_t codes = 2 * table.groups().size() + 1;
  std::vector<DoubleDouble> weights(ways * codes);
  std::vector<std::vector<Point>> groups(table.groups().size());
  std::vector<std::int32_t> cells(Sample::block);
  points.read([&](const double* x, const double* w, std::size_t size) {
    table.cellsOf(x, size, cells.data());
    for (std::size_t i = 0; i < size; ++i) {
      const std::size_t code = table.code(cells[i]);
      if (code % 2 == 1) {
        groups[code / 2].push_back({x[i], w[i]});
      } else {
        DoubleDouble& sum = weights[(i % ways) * codes + code];
        const DoubleDouble s = DoubleDouble::sumOf(sum.high, w[i]);
        sum = {s.high, sum.low + s.low};
      }
    }
  });
  DoubleDouble before = 0.0;
  for (std::size_t g = 0; g < groups.size(); ++g) {
    for (std::size_t way = 0; way < ways; ++way) {
      const DoubleDouble& sum = weights[way * codes + 2 * g];
      before = before + DoubleDouble::sumOf(sum.high, sum.low);
    }
    const std::span<const Ordered> targets = table.groups()[g];
    if (before.high > 0.0 && reaches(before.high, targets.front().target)) {
      return false;
    }
    sortPoints(groups[g], true);
    if (walk(groups[g], before, targets, values) < targets.size()) {
      return false;
    }
    for (const Point& p : groups[g]) {
      before = before + DoubleDouble(p.w);
    }
  }
  return true;
}

// Of n present points of total weight total.
template <typename Points>
void select(const Points& points, std::size_t n, double total, std::span<const Ordered> targets,
            double* values) {
  const bool sortsFaster = !points.weighted() && targets.size() > kFewRanks && n < kFewToBracket;
  if (n > kFewPoints && !sortsFaster) {
    const bool few = targets.size() <= 2 * kFewBrackets && !points.weighted();
    const double size = std::pow(static_cast<double>(points.size()), 2.0 / 3.0);
    const std::vector<Point> some =
        somePoints(points, static_cast<std::size_t>(few ? size : 4.0 * size));
    const std::vector<Bracket> brackets = bracketsOf(some, targets, total);
    if (!brackets.empty() && brackets.size() <= kFewBrackets && !points.weighted()) {
      if (selectByCounting(points, n, brackets, values)) {
        return;
      }
    } else if (CellTable table; !brackets.empty() && table.build(brackets)) {
      if (points.weighted() ? selectByWeight(points, table, values)
                            : selectByCells(points, n, table, values) ||
                                  selectByCounting(points, n, brackets, values)) {
        return;
      }
    }
  }
  selectFromAll(points, targets, values);
}

}  // namespace

std::size_t rankOf(const Target& target, std::size_t n) {
  const double rank = target.beyond ? std::floor(target.weight) + 1.0 : std::ceil(target.weight);
  return rank < 1.0                             ? 0
         : rank >= static_cast<double>(n) + 1.0 ? n - 1
                                                : static_cast<std::size_t>(rank) - 1;
}

bool Selection::look() {
  kernels::ExactSum weight;
  found_ = sample_.present(
      [&](const double*, const double* w, std::size_t n) { addWeights(weight, w, n); }, 0, 2);
  total_ = weight.rounded();
  return !sample_.undefined(found_);
}

std::optional<std::vector<double>> Selection::values(const Targets& targets) {
  // Large samples without weights are thought to have nothing missing until they are read.
  const bool hopeful = !sample_.weighted() && sample_.size() > kFewPoints;
  for (const bool hope : {hopeful, false}) {
    if (hope) {
      found_.points = sample_.size();
      total_ = static_cast<double>(found_.points);
    } else if (!look()) {
      return std::nullopt;
    }
    const std::vector<Target> wanted = targets(total_);
    std::vector<double> result(wanted.size());
    const std::vector<Ordered> ordered = inOrder(wanted);
    const SamplePoints points(sample_, about_);
    select(points, found_.points, total_, ordered, result.data());
    if (!hope || points.found().points == sample_.size()) {
      return result;
    }
  }
  return std::nullopt;
}

}  // namespace vexel

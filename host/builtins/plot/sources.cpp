// Laws and densities over a histogram have its area, those over a tally its total: what one wants
// to compare then lies on one scale, and a histogram of area 1 changes nothing.

#include "builtins/plot/sources.hpp"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "builtins/functions/call.hpp"
#include "builtins/functions/objects.hpp"
#include "mathematics/elementwise.hpp"
#include "values/arrays.hpp"
#include "values/dates.hpp"
#include "values/errors.hpp"
#include "values/text.hpp"

namespace vexel::plots {

namespace {

constexpr int kCurvePoints = 481;
constexpr double kMostValues = 500;  // of a discrete law
constexpr std::array<std::uint32_t, 7> kColours = {0x1f6f8b, 0xc9a227, 0xb5483a, 0x6b8e4e,
                                                   0x7a5c99, 0x8c8c8c, 0x333333};

// A layer in the making.
struct Part {
  Layer layer;
  LawObject* law = nullptr;
  ALGEB procedure = nullptr;
  bool density = false;  // a law or a kernel density: scaled, and standing on zero

  bool isCurve() const { return law != nullptr || procedure != nullptr; }
};

struct Extent {
  double low = std::numeric_limits<double>::infinity();
  double high = -std::numeric_limits<double>::infinity();
  void take(double v, Scale scale) {
    if (std::isfinite(v) && (scale == Scale::linear || v > 0)) {
      low = std::min(low, v);
      high = std::max(high, v);
    }
  }
  bool empty() const { return !(low <= high); }
};

class PanelMaker {
 public:
  PanelMaker(State& state, const PanelOptions& options) : state_(state), options_(options) {
    panel_.title = options.title;
    panel_.legend = options.legend;
    panel_.x.scale = options.xscale;
    panel_.x.label = options.xlabel;
    panel_.y.scale = options.yscale;
    panel_.y.label = options.ylabel;
  }

  Panel make(std::span<const Source> sources) {
    for (const Source& source : sources) {
      add(source);
    }
    setRangeOfX();
    for (Part& part : parts_) {
      if (part.isCurve()) {
        evaluate(part);
      }
      if (part.density) {
        const double factor = part.law != nullptr && part.law->discrete() ? total_ : area_;
        for (double& y : part.layer.y) {
          y *= factor;
        }
      }
    }
    setRangeOfY();
    for (Part& part : parts_) {
      thin(part.layer, panel_.x, panel_.y);
      panel_.layers.push_back(std::move(part.layer));
    }
    return std::move(panel_);
  }

 private:
  void add(const Source& source);
  void addTable(Part& part, ALGEB x, std::optional<Style> style);
  void addBars(Part& part, std::span<const double> edges, std::optional<Style> style);
  void addData(Part& part, const Source& source);
  std::vector<std::vector<double>> columnsOf(const Source& source);
  std::vector<double> numbers(ALGEB x);
  void dropMissing(Layer& layer);
  void setRangeOfX();
  void setRangeOfY();
  void fix(Axis& axis, Extent extent, const std::optional<Interval>& given, double below,
           double above);
  void evaluate(Part& part);

  State& state_;
  const PanelOptions& options_;
  Panel panel_;
  std::vector<Part> parts_;
  double area_ = 1;   // of the first histogram
  double total_ = 1;  // of the first tally
};

// --- what there is to draw ---

std::vector<double> PanelMaker::numbers(ALGEB x) {
  std::vector<double> room;
  const Data data = dataOf(state_, x, room);
  if (!room.empty()) {
    return room;
  }
  room.resize(data.size());
  for (std::size_t i = 0; i < data.size(); ++i) {
    lookAtInterrupt();
    room[i] = data[i];
  }
  return room;
}

ALGEB fieldOf(State& state, ALGEB x, const char* key) { return table(x).find(name(state, key)); }

bool isColumn(ALGEB x) { return x != nullptr && isContainer(x); }

// The results of histogram, frequency_table and tally.
void PanelMaker::addTable(Part& part, ALGEB x, std::optional<Style> style) {
  Layer& layer = part.layer;
  layer.style = style.value_or(Style::bars);
  const ALGEB edges = fieldOf(state_, x, "edges");
  const ALGEB values = fieldOf(state_, x, "values");
  const ALGEB counts = fieldOf(state_, x, "counts");
  const ALGEB lower = fieldOf(state_, x, "lower");
  const ALGEB upper = fieldOf(state_, x, "upper");
  const ALGEB count = fieldOf(state_, x, "count");
  if (isColumn(edges) && isColumn(counts)) {
    layer.y = numbers(counts);
    return addBars(part, numbers(edges), style);
  }
  if (isColumn(lower) && isColumn(upper) && isColumn(count)) {
    layer.y = numbers(count);
    std::vector<double> ends = numbers(lower);
    const std::vector<double> tops = numbers(upper);
    if (!tops.empty()) {
      ends.push_back(tops.back());
    }
    return addBars(part, ends, style);
  }
  if (!isColumn(values) || !isColumn(counts)) {
    raise(state_, "plot draws the tables of histogram, frequency_table and tally, received: %1", x);
  }
  layer.x = numbers(values);
  layer.y = numbers(counts);
  if (layer.x.size() != layer.y.size()) {
    raise(state_, "plot expects as many counts as values, received: %1", x);
  }
  double sum = 0;
  for (const double c : layer.y) {
    sum += c;
  }
  total_ = total_ == 1 && sum > 0 ? sum : total_;
}

void PanelMaker::addBars(Part& part, std::span<const double> edges, std::optional<Style> style) {
  Layer& layer = part.layer;
  const std::vector<double> heights = std::move(layer.y);
  layer.y.clear();
  if (edges.size() != heights.size() + 1) {
    raise(state_, "plot expects one edge more than counts of a histogram");
  }
  double area = 0;
  for (std::size_t i = 0; i < heights.size(); ++i) {
    area += heights[i] * (edges[i + 1] - edges[i]);
  }
  area_ = area_ == 1 && area > 0 && std::isfinite(area) ? area : area_;
  if (style == Style::steps) {
    layer.x.assign(1, edges[0]);
    layer.y.assign(1, 0);
    layer.x.insert(layer.x.end(), edges.begin(), edges.end());
    layer.y.insert(layer.y.end(), heights.begin(), heights.end());
    layer.y.push_back(0);
    return;
  }
  for (std::size_t i = 0; i < heights.size(); ++i) {
    layer.x.push_back(edges[i] + (edges[i + 1] - edges[i]) / 2);
    layer.y.push_back(heights[i]);
    layer.width.push_back(edges[i + 1] - edges[i]);
  }
}

std::vector<std::vector<double>> PanelMaker::columnsOf(const Source& source) {
  std::vector<std::vector<double>> columns;
  for (const ALGEB x : {source.x, source.y, source.error}) {
    if (x == nullptr) {
      continue;
    }
    if (isArray(x) && arrayOf(x).dimensions == 2) {
      const auto rows = static_cast<std::size_t>(arrayOf(x).extent(0));
      const auto across = static_cast<std::size_t>(arrayOf(x).extent(1));
      const bool byColumn = arrayOf(x).order == RTABLE_COLUMN_MAJOR;
      const std::vector<double> all = numbers(x);
      if (all.size() != rows * across) {
        raise(state_, "plot draws arrays that hold all of their elements, received: %1", x);
      }
      for (std::size_t c = 0; c < std::min<std::size_t>(across, 4); ++c) {
        columns.emplace_back(rows);
        for (std::size_t r = 0; r < rows; ++r) {
          columns.back()[r] = all[byColumn ? c * rows + r : r * across + c];
        }
      }
    } else if (isArray(x) && arrayOf(x).dimensions != 1) {
      raise(state_, "plot draws arrays of one or two dimensions, received: %1", x);
    } else if (isList(x) && countOf(x) > 0 && isContainer(element(state_, x, 1))) {
      for (std::size_t i = 1; i <= countOf(x) && i <= 4; ++i) {
        const ALGEB column = element(state_, x, i);
        if (!isContainer(column) || (isArray(column) && arrayOf(column).dimensions != 1)) {
          raise(state_, "plot draws lists of columns [x, y], received: %1", x);
        }
        columns.push_back(numbers(column));
      }
    } else {
      columns.push_back(numbers(x));
    }
  }
  if (columns.empty()) {
    columns.emplace_back();  // an array of no columns
  }
  return columns;
}

// Whether the first value there is is a date.
bool holdsDates(State& state, ALGEB x) {
  if (isList(x)) {
    return countOf(x) > 0 && isDate(element(state, x, 1));
  }
  if (!isArray(x) || arrayOf(x).type != RTABLE_DAG || arrayOf(x).data == nullptr) {
    return false;
  }
  const auto* const elements = static_cast<const ALGEB*>(arrayOf(x).data);
  const auto* const end = elements + arrayOf(x).count;
  const auto* const first =
      std::find_if(elements, end, [&](ALGEB e) { return e != nullptr && e != state.null; });
  return first != end && isDate(*first);
}

// The least distance of neighbours, for the width of bars.
double leastGap(std::vector<double> x) {
  std::sort(x.begin(), x.end());
  double gap = std::numeric_limits<double>::infinity();
  for (std::size_t i = 1; i < x.size(); ++i) {
    gap = x[i] > x[i - 1] ? std::min(gap, x[i] - x[i - 1]) : gap;
  }
  return std::isfinite(gap) ? gap : 1;
}

// y against 1, 2, ...; y against x; with errors.
void PanelMaker::addData(Part& part, const Source& source) {
  Layer& layer = part.layer;
  std::vector<std::vector<double>> columns = columnsOf(source);
  if (columns.size() > 3) {
    raise(state_, "plot draws y, [x, y] or [x, y, error], received: %1", source.x);
  }
  const std::size_t n = columns[0].size();
  const ALGEB first = isList(source.x) && source.y == nullptr && countOf(source.x) > 0
                          ? element(state_, source.x, 1)
                          : source.x;
  panel_.x.dates = panel_.x.dates || (columns.size() > 1 && holdsDates(state_, first));
  for (const std::vector<double>& column : columns) {
    if (column.size() != n) {
      raise(state_, "plot expects as many y and errors as x, received: " + std::to_string(n) +
                        " and " + std::to_string(column.size()) + " values");
    }
  }
  layer.style = source.style.value_or(columns.size() == 1 ? Style::lines : Style::points);
  if (layer.style == Style::rug) {
    if (columns.size() > 1) {
      raise(state_, "plot draws the values of one array as a rug, received: %1", source.x);
    }
    layer.x = std::move(columns[0]);
    layer.y.assign(n, 0);
  } else if (columns.size() == 1) {
    layer.y = std::move(columns[0]);
    layer.x.resize(n);
    for (std::size_t i = 0; i < n; ++i) {
      layer.x[i] = static_cast<double>(i + 1);
    }
  } else {
    layer.x = std::move(columns[0]);
    layer.y = std::move(columns[1]);
    layer.error = columns.size() == 3 ? std::move(columns[2]) : std::vector<double>();
    for (const double e : layer.error) {
      if (e < 0) {
        raise(state_, "plot expects errors that are not negative, received: " + doubleText(e));
      }
    }
  }
}

void PanelMaker::add(const Source& source) {
  const ALGEB x = source.x;
  Part part;
  part.layer.label = source.label;
  part.layer.colour = source.colour.value_or(kColours[parts_.size() % kColours.size()]);
  part.layer.style = source.style.value_or(Style::lines);
  if (!isContainer(x) && source.y != nullptr) {
    raise(state_, "plot expects arrays as x and y, received: %1", x);
  }
  if (isContainer(x)) {
    addData(part, source);
  } else if (is(x, Tag::table)) {
    addTable(part, x, source.style);
  } else if (auto* density = objectOf<DensityObject>(x)) {
    part.layer.x = density->density.x();
    part.layer.y = density->density.y();
    part.density = true;
  } else if (auto* law = objectOf<LawObject>(x)) {
    part.law = law;
    part.density = true;
    if (law->discrete()) {
      part.layer.style = source.style.value_or(Style::points);
    }
  } else if (isProcedure(x)) {
    part.procedure = x;
  } else {
    raise(state_,
          "plot draws arrays, tables of counts, densities, laws and procedures (t -> ...), "
          "received: %1",
          x);
  }
  dropMissing(part.layer);
  if (part.layer.style == Style::bars && part.layer.width.empty() && !part.isCurve()) {
    part.layer.width.assign(part.layer.x.size(), 0.8 * leastGap(part.layer.x));
  }
  parts_.push_back(std::move(part));
}

// Points that have no place on the axis of x go; where y has none, a line has a gap.
void PanelMaker::dropMissing(Layer& layer) {
  std::size_t kept = 0;
  for (std::size_t i = 0; i < layer.x.size(); ++i) {
    if (!std::isfinite(layer.x[i])) {
      continue;
    }
    layer.x[kept] = layer.x[i];
    layer.y[kept] = std::isfinite(layer.y[i]) ? layer.y[i] : NAN;
    for (std::vector<double>* v : {&layer.error, &layer.width}) {
      if (!v->empty()) {
        (*v)[kept] = std::isfinite((*v)[i]) ? (*v)[i] : 0;
      }
    }
    ++kept;
  }
  for (std::vector<double>* v : {&layer.x, &layer.y, &layer.error, &layer.width}) {
    v->resize(v->empty() ? 0 : kept);
  }
}

// --- ranges ---

// An axis over what was given, or over the extent and a share of it on each side.
void PanelMaker::fix(Axis& axis, Extent extent, const std::optional<Interval>& given, double below,
                     double above) {
  const char* const what = &axis == &panel_.x ? "xrange" : "yrange";
  if (given) {
    if (!(given->low < given->high) || !std::isfinite(given->high - given->low) ||
        (axis.scale == Scale::log && !(given->low > 0))) {
      raise(state_, std::string("plot expects an ascending range") +
                        (axis.scale == Scale::log ? " of positive numbers" : "") + " as " + what +
                        ", received: " + doubleText(given->low) + " .. " + doubleText(given->high));
    }
    axis.low = given->low;
    axis.high = given->high;
    return;
  }
  if (extent.empty()) {
    raise(state_, axis.scale == Scale::log ? "plot has no positive value for a logarithmic axis"
                                           : "plot has no finite value to draw");
  }
  axis.low = extent.low;
  axis.high = extent.high;
  if (axis.low == axis.high) {
    const double half = axis.low == 0 ? 0.5 : std::fabs(axis.low) / 4;
    axis.low = axis.scale == Scale::log ? axis.low / 2 : axis.low - half;
    axis.high = axis.scale == Scale::log ? axis.high * 2 : axis.high + half;
  }
  const Axis bare = axis;
  axis.low = bare.value(-below);
  axis.high = bare.value(1 + above);
  if (!(axis.low < axis.high) || !std::isfinite(axis.high - axis.low) ||
      (axis.scale == Scale::log && !(axis.low > 0 && std::isfinite(axis.high / axis.low)))) {
    raise(state_, "plot cannot draw values from " + doubleText(extent.low) + " to " +
                      doubleText(extent.high) + " in one picture");
  }
}

// Data decide; where there are none, laws show nearly all of their probability.
void PanelMaker::setRangeOfX() {
  const Scale scale = panel_.x.scale;
  Extent extent;
  Extent ofLaws;
  bool curves = false;
  for (const Part& part : parts_) {
    curves = curves || part.procedure != nullptr;
    if (part.law != nullptr && !options_.xrange) {
      const Interval most = part.law->interval(0.995);
      const Interval all = part.law->support();
      const double near = (most.high - most.low) / 10;
      ofLaws.take(most.low - all.low < near ? all.low : most.low, scale);
      ofLaws.take(all.high - most.high < near ? all.high : most.high, scale);
      ofLaws.take(most.low, scale);
    }
    for (std::size_t i = 0; i < part.layer.x.size(); ++i) {
      const double half = part.layer.width.empty() ? 0 : part.layer.width[i] / 2;
      extent.take(part.layer.x[i] - half, scale);
      extent.take(part.layer.x[i] + half, scale);
    }
  }
  const bool isData = !extent.empty();
  extent = isData ? extent : ofLaws;
  if (extent.empty() && curves && !options_.xrange) {
    raise(state_, "plot needs a range for a procedure: plot(f, 0 .. 10)");
  }
  const double margin = isData ? 0.02 : 0;
  fix(panel_.x, extent, options_.xrange, margin, margin);
}

void PanelMaker::setRangeOfY() {
  const Scale scale = panel_.y.scale;
  Extent extent;
  bool onZero = false;
  bool onlyRugs = true;
  for (const Part& part : parts_) {
    const Layer& layer = part.layer;
    if (layer.style == Style::rug) {
      continue;
    }
    onlyRugs = false;
    onZero = onZero || part.density || layer.style == Style::bars || layer.style == Style::area;
    for (std::size_t i = 0; i < layer.x.size(); ++i) {
      if (options_.xrange && !(layer.x[i] >= panel_.x.low && layer.x[i] <= panel_.x.high)) {
        continue;
      }
      const double error = layer.error.empty() ? 0 : layer.error[i];
      extent.take(layer.y[i] - error, scale);
      extent.take(layer.y[i] + error, scale);
      extent.take(layer.y[i], scale);
    }
  }
  if (onlyRugs) {
    extent = {0, 1};
  }
  const bool zero = onZero && scale == Scale::linear && !extent.empty();
  if (zero) {
    extent.take(0, scale);
  }
  fix(panel_.y, extent, options_.yrange, zero && extent.low == 0 ? 0 : 0.05,
      zero && extent.high == 0 ? 0 : 0.05);
}

void PanelMaker::evaluate(Part& part) {
  Layer& layer = part.layer;
  const Axis& axis = panel_.x;
  if (part.law != nullptr && part.law->discrete()) {
    const double first = std::ceil(axis.low);
    const double step = std::max(1.0, std::ceil((axis.high - first) / kMostValues));
    for (double k = first;
         k <= axis.high && layer.x.size() <= static_cast<std::size_t>(kMostValues); k += step) {
      layer.x.push_back(k);
    }
    layer.width.assign(layer.style == Style::bars ? layer.x.size() : 0, 0.8);
  } else {
    for (int i = 0; i < kCurvePoints; ++i) {
      layer.x.push_back(i + 1 == kCurvePoints ? axis.high : axis.value(i / (kCurvePoints - 1.0)));
    }
    const double apart = layer.x[1] - layer.x[0];
    layer.width.assign(layer.style == Style::bars ? layer.x.size() : 0, apart);
  }
  layer.y.resize(layer.x.size());
  if (part.law != nullptr) {
    part.law->at(LawFunction::pdf, layer.x, layer.y);
  } else {
    NumericProcedure f(state_, part.procedure);
    for (std::size_t i = 0; i < layer.x.size(); ++i) {
      lookAtInterrupt();
      layer.y[i] = f(layer.x[i]);
    }
  }
  for (double& y : layer.y) {
    y = std::isfinite(y) ? y : NAN;
  }
}

}  // namespace

Panel panelOf(State& state, std::span<const Source> sources, const PanelOptions& options) {
  return PanelMaker(state, options).make(sources);
}

}  // namespace vexel::plots

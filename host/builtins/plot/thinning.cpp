// What of many points is drawn.

#include <algorithm>
#include <cmath>
#include <limits>

#include "builtins/plot/picture.hpp"
#include "memory/unwinding.hpp"

namespace vexel::plots {

namespace {

constexpr std::size_t kFew = 4000;       // as many are drawn as they are
constexpr std::size_t kColumns = 1000;   // of lines that are thinned
constexpr std::size_t kCells = 300;      // of points, each way
constexpr std::size_t kMostOdd = 20000;  // of lines that go back and forth

// Keeps the elements at these places, of every vector that the layer has.
void keep(Layer& layer, const std::vector<std::size_t>& places) {
  for (std::vector<double>* v : {&layer.x, &layer.y, &layer.error, &layer.width}) {
    if (v->empty()) {
      continue;
    }
    for (std::size_t i = 0; i < places.size(); ++i) {
      (*v)[i] = (*v)[places[i]];  // places ascend
    }
    v->resize(places.size());
    v->shrink_to_fit();
  }
}

// The cell of a position between 0 and 1; none for what lies elsewhere.
std::size_t cellOf(double position, std::size_t cells) {
  return position >= 0 && position <= 1
             ? std::min(static_cast<std::size_t>(position * static_cast<double>(cells)), cells - 1)
             : cells;
}

std::vector<std::size_t> everySoOften(std::size_t n, std::size_t most) {
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < n; i += n / most + 1) {
    places.push_back(i);
  }
  return places;
}

std::vector<std::size_t> ofLine(const Layer& layer, const Axis& x) {
  if (!std::is_sorted(layer.x.begin(), layer.x.end())) {
    return everySoOften(layer.x.size(), kMostOdd);
  }
  std::vector<std::size_t> places;
  const std::size_t n = layer.x.size();
  for (std::size_t first = 0, last = 0; first < n; first = last) {
    lookAtInterrupt();
    const std::size_t column = cellOf(x.at(layer.x[first]), kColumns);
    std::size_t least = first;
    std::size_t greatest = first;
    std::size_t gap = n;
    for (last = first; last < n && cellOf(x.at(layer.x[last]), kColumns) == column; ++last) {
      least = layer.y[last] < layer.y[least] ? last : least;
      greatest = layer.y[last] > layer.y[greatest] ? last : greatest;
      gap = std::isnan(layer.y[last]) ? last : gap;
      if (std::isnan(layer.y[least])) {
        least = greatest = last;
      }
    }
    std::vector<std::size_t> kept = {first, least, greatest, last - 1};
    if (gap < n) {
      kept.push_back(gap);
    }
    std::sort(kept.begin(), kept.end());
    kept.erase(std::unique(kept.begin(), kept.end()), kept.end());
    places.insert(places.end(), kept.begin(), kept.end());
  }
  return places;
}

std::vector<std::size_t> ofPoints(const Layer& layer, const Axis& x, const Axis& y) {
  const bool rug = layer.style == Style::rug;
  std::vector<bool> taken((kCells + 1) * (kCells + 1));
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < layer.x.size(); ++i) {
    lookAtInterrupt();
    const std::size_t column = cellOf(x.at(layer.x[i]), kCells);
    const std::size_t row = rug ? 0 : cellOf(y.at(layer.y[i]), kCells);
    if (column < kCells && row < kCells && !taken[row * kCells + column]) {
      taken[row * kCells + column] = true;
      places.push_back(i);
    }
  }
  return places;
}

// Neighbouring bars as one that is as high as the highest.
void joinBars(Layer& layer) {
  const std::size_t group = layer.x.size() / kFew + 1;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < layer.x.size(); i += group, ++kept) {
    lookAtInterrupt();
    const std::size_t last = std::min(i + group, layer.x.size()) - 1;
    const double left = layer.x[i] - layer.width[i] / 2;
    const double right = layer.x[last] + layer.width[last] / 2;
    double height = layer.y[i];
    for (std::size_t k = i; k <= last; ++k) {
      height = !(std::fabs(layer.y[k]) <= std::fabs(height)) ? layer.y[k] : height;
    }
    layer.x[kept] = left + (right - left) / 2;
    layer.width[kept] = right - left;
    layer.y[kept] = height;
  }
  layer.x.resize(kept);
  layer.y.resize(kept);
  layer.width.resize(kept);
}

}  // namespace

void thin(Layer& layer, const Axis& x, const Axis& y) {
  if (layer.x.size() <= kFew) {
    return;
  }
  switch (layer.style) {
    case Style::bars:
      return joinBars(layer);
    case Style::points:
    case Style::rug:
      return keep(layer, ofPoints(layer, x, y));
    default:
      return keep(layer, ofLine(layer, x));
  }
}

}  // namespace vexel::plots

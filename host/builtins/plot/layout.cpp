// Where everything stands on the page: titles and legends above, axes at the left and below, the
// layers between them in their order.

#include "builtins/plot/layout.hpp"

#include <algorithm>
#include <cmath>

#include "memory/unwinding.hpp"

namespace vexel::plots {

namespace {

using Kind = Shape::Kind;
using Anchor = Shape::Anchor;

constexpr std::uint32_t kInk = 0x333333;
constexpr std::uint32_t kGrid = 0xe4e4e4;
constexpr double kLetter = 0.56 * kFontSize;  // the width of one, nearly
constexpr double kLineOfText = 20;
constexpr double kFar = 1e6;            // widths of the picture
constexpr std::size_t kFewPoints = 80;  // which are larger

double widthOf(const std::string& text) { return kLetter * static_cast<double>(lengthOf(text)); }

// One panel in its box.
class Page {
 public:
  Page(std::vector<Shape>& shapes, const Panel& panel, double left, double top, double width,
       double height)
      : shapes_(shapes), panel_(panel), left_(left), top_(top), width_(width), height_(height) {}

  void draw() {
    head();
    frame();
    for (const Layer& layer : panel_.layers) {
      lookAtInterrupt();
      draw(layer);
    }
    axisLine();
  }

 private:
  void text(Point at, const std::string& words, Anchor anchor, bool bold = false,
            bool upwards = false) {
    shapes_.push_back({.kind = Kind::text,
                       .colour = kInk,
                       .points = {at},
                       .text = words,
                       .anchor = anchor,
                       .bold = bold,
                       .upwards = upwards});
  }
  void line(std::vector<Point> points, std::uint32_t colour, double size = 1) {
    if (points.size() > 1) {
      shapes_.push_back(
          {.kind = Kind::line, .colour = colour, .points = std::move(points), .size = size});
    }
  }
  void filled(std::vector<Point> points, std::uint32_t colour, double opacity) {
    shapes_.push_back(
        {.kind = Kind::filled, .colour = colour, .points = std::move(points), .opacity = opacity});
  }

  double px(double position) const { return x0_ + position * (x1_ - x0_); }
  double py(double position) const { return y0_ + position * (y1_ - y0_); }

  void head();
  void sample(const Layer& layer, Point at);
  void frame();
  void axisLine();
  void draw(const Layer& layer);
  void drawLine(const Layer& layer, const std::vector<Point>& places);
  void segment(Point a, Point b, std::vector<Point>& run, std::uint32_t colour, double size);
  void drawArea(const Layer& layer, const std::vector<Point>& places);
  void drawBars(const Layer& layer);
  void drawPoints(const Layer& layer, const std::vector<Point>& places);

  std::vector<Shape>& shapes_;
  const Panel& panel_;
  double left_, top_, width_, height_;
  // The ends of the axes.
  double x0_ = 0, x1_ = 0, y0_ = 0, y1_ = 0;
};

// The title and, as rows of samples and labels, the legend.
void Page::head() {
  double y = top_ + 6;
  if (!panel_.title.empty()) {
    y += kLineOfText;
    text({left_ + width_ / 2, y - 4}, panel_.title, Anchor::middle, true);
  }
  double x = left_ + 24;
  bool any = false;
  for (const Layer& layer : panel_.layers) {
    if (!panel_.legend || layer.label.empty()) {
      continue;
    }
    const double room = 34 + widthOf(layer.label) + 14;
    if (!any || x + room > left_ + width_) {
      y += kLineOfText;
      x = left_ + 24;
    }
    any = true;
    sample(layer, {x, y - 8});
    text({x + 34, y - 4}, layer.label, Anchor::start);
    x += room;
  }
  y1_ = y + 12;
}

void Page::sample(const Layer& layer, Point at) {
  switch (layer.style) {
    case Style::points:
      shapes_.push_back(
          {.kind = Kind::dots, .colour = layer.colour, .points = {{at.x + 14, at.y}}, .size = 5});
      break;
    case Style::bars:
    case Style::area:
      filled({{at.x, at.y - 5}, {at.x + 28, at.y - 5}, {at.x + 28, at.y + 5}, {at.x, at.y + 5}},
             layer.colour, 0.35);
      break;
    case Style::rug:
      line({{at.x + 14, at.y - 5}, {at.x + 14, at.y + 5}}, layer.colour);
      break;
    default:
      line({{at.x, at.y}, {at.x + 28, at.y}}, layer.colour, 2);
  }
}

// Grid, ticks and labels; sets the ends of the axes.
void Page::frame() {
  const bool rug = std::any_of(panel_.layers.begin(), panel_.layers.end(),
                               [](const Layer& l) { return l.style == Style::rug; });
  y0_ = top_ + height_ - 28 - (panel_.x.label.empty() ? 0 : kLineOfText) - (rug ? 12 : 0);
  y1_ = std::min(y1_, y0_ - 10);
  const std::vector<Tick> up = ticksOf(panel_.y, std::max(3, static_cast<int>((y0_ - y1_) / 45)));
  double widest = 0;
  for (const Tick& tick : up) {
    widest = std::max(widest, widthOf(tick.label));
  }
  x0_ = left_ + 16 + std::min(widest, width_ / 3) + (panel_.y.label.empty() ? 0 : kLineOfText);
  x1_ = std::max(left_ + width_ - 22, x0_ + 10);
  for (const Tick& tick : up) {
    line({{x0_, py(tick.position)}, {x1_, py(tick.position)}}, kGrid);
    text({x0_ - 6, py(tick.position) + 4}, tick.label, Anchor::end);
  }
  for (const Tick& tick : ticksOf(panel_.x, std::max(4, static_cast<int>((x1_ - x0_) / 60)))) {
    line({{px(tick.position), y0_}, {px(tick.position), y1_}}, kGrid);
    text({px(tick.position), y0_ + 18 + (rug ? 12 : 0)}, tick.label, Anchor::middle);
  }
  if (!panel_.x.label.empty()) {
    text({(x0_ + x1_) / 2, top_ + height_ - 10}, panel_.x.label, Anchor::middle);
  }
  if (!panel_.y.label.empty()) {
    text({left_ + 16, (y0_ + y1_) / 2}, panel_.y.label, Anchor::middle, false, true);
  }
}

void Page::axisLine() { line({{x0_, y0_}, {x1_, y0_}}, kInk); }

void Page::draw(const Layer& layer) {
  if (layer.style == Style::bars) {
    return drawBars(layer);
  }
  std::vector<Point> places;  // on the axes, 0 to 1
  places.reserve(layer.x.size());
  for (std::size_t i = 0; i < layer.x.size(); ++i) {
    // How far outside makes no difference, but for differences that overflow.
    places.push_back({std::clamp(panel_.x.at(layer.x[i]), -kFar, kFar),
                      std::clamp(panel_.y.at(layer.y[i]), -kFar, kFar)});
  }
  switch (layer.style) {
    case Style::area:
      drawArea(layer, places);
      return drawLine(layer, places);
    case Style::points:
    case Style::rug:
      return drawPoints(layer, places);
    default:
      drawLine(layer, places);
      drawPoints(layer, places);
  }
}

// What of a to b lies within the axes goes on with the run of points, or begins a new one.
void Page::segment(Point a, Point b, std::vector<Point>& run, std::uint32_t colour, double size) {
  double from = 0;
  double to = 1;
  const Point d = {b.x - a.x, b.y - a.y};
  // Liang and Barsky (1984): each border of the square moves one end of the segment.
  for (const auto& [speed, distance] :
       {Point{-d.x, a.x}, {d.x, 1 - a.x}, {-d.y, a.y}, {d.y, 1 - a.y}}) {
    if (speed == 0 ? distance < 0 : !std::isfinite(distance / speed)) {
      from = 2;
    } else if (speed < 0) {
      from = std::max(from, distance / speed);
    } else if (speed > 0) {
      to = std::min(to, distance / speed);
    }
  }
  if (!(from <= to)) {
    line(std::move(run), colour, size);
    run.clear();
    return;
  }
  if (from > 0 || run.empty()) {
    line(std::move(run), colour, size);
    run = {{px(a.x + from * d.x), py(a.y + from * d.y)}};
  }
  run.push_back({px(a.x + to * d.x), py(a.y + to * d.y)});
  if (to < 1) {
    line(std::move(run), colour, size);
    run.clear();
  }
}

void Page::drawLine(const Layer& layer, const std::vector<Point>& places) {
  const double size = layer.style == Style::area ? 1.5 : 2;
  std::vector<Point> run;
  for (std::size_t i = 1; i < places.size(); ++i) {
    const Point a = places[i - 1];
    const Point b = places[i];
    if (std::isnan(a.x + a.y) || std::isnan(b.x + b.y)) {
      line(std::move(run), layer.colour, size);
      run.clear();
    } else if (layer.style == Style::steps) {
      segment(a, {b.x, a.y}, run, layer.colour, size);
      segment({b.x, a.y}, b, run, layer.colour, size);
    } else {
      segment(a, b, run, layer.colour, size);
    }
  }
  line(std::move(run), layer.colour, size);
}

void Page::drawArea(const Layer& layer, const std::vector<Point>& places) {
  const double zero = panel_.y.at(0);
  const double floor = py(std::isnan(zero) ? 0 : std::clamp(zero, 0.0, 1.0));
  std::vector<Point> outline;
  const auto finish = [&] {
    if (outline.size() > 1) {
      const double first = outline.front().x;
      outline.push_back({outline.back().x, floor});
      outline.push_back({first, floor});
      filled(std::move(outline), layer.colour, 0.2);
    }
    outline.clear();
  };
  for (const Point& place : places) {
    if (std::isnan(place.y)) {
      finish();
    } else if (place.x >= 0 && place.x <= 1) {
      outline.push_back({px(place.x), py(std::clamp(place.y, 0.0, 1.0))});
    }
  }
  finish();
}

void Page::drawBars(const Layer& layer) {
  const double zero = panel_.y.at(0);
  const double floor = std::isnan(zero) ? 0 : std::clamp(zero, 0.0, 1.0);
  for (std::size_t i = 0; i < layer.x.size(); ++i) {
    double left = panel_.x.at(layer.x[i] - layer.width[i] / 2);
    const double right = std::min(panel_.x.at(layer.x[i] + layer.width[i] / 2), 1.0);
    left = std::isnan(left) ? 0 : std::max(left, 0.0);
    const double y = std::clamp(panel_.y.at(layer.y[i]), 0.0, 1.0);
    if (!(right >= left) || std::isnan(y) || y == floor) {
      continue;
    }
    // A thin gap between bars that have room for it; at least a hair for those that have none.
    const double gap = px(right) - px(left) > 4 ? 0.5 : px(right) - px(left) < 1 ? -0.5 : 0;
    filled({{px(left) + gap, py(y)},
            {px(right) - gap, py(y)},
            {px(right) - gap, py(floor)},
            {px(left) + gap, py(floor)}},
           layer.colour, 0.35);
  }
}

void Page::drawPoints(const Layer& layer, const std::vector<Point>& places) {
  const auto inside = [](double position) { return position >= 0 && position <= 1; };
  Shape dots{.kind = Kind::dots,
             .colour = layer.colour,
             .points = {},
             .size = layer.style == Style::points && places.size() <= kFewPoints ? 6.0 : 4.0};
  std::vector<Point> marks;  // of a rug or of errors
  const auto add = [](std::vector<Point>& to, Point a, Point b) {
    if (!to.empty()) {
      to.push_back({NAN, NAN});
    }
    to.push_back(a);
    to.push_back(b);
  };
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (!inside(places[i].x)) {
      continue;
    }
    const double x = px(places[i].x);
    if (layer.style == Style::rug) {
      add(marks, {x, y0_ + 3}, {x, y0_ + 12});
      continue;
    }
    // Of a line: what has errors, or no neighbour to be joined with.
    const bool seen = layer.style == Style::points || !layer.error.empty() ||
                      ((i == 0 || std::isnan(places[i - 1].y)) &&
                       (i + 1 == places.size() || std::isnan(places[i + 1].y)));
    if (seen && inside(places[i].y)) {
      dots.points.push_back({x, py(places[i].y)});
    }
    if (!layer.error.empty() && layer.error[i] >= 0) {
      const double low = panel_.y.at(layer.y[i] - layer.error[i]);
      const double high = panel_.y.at(layer.y[i] + layer.error[i]);
      const double from = std::isnan(low) ? 0 : std::max(low, 0.0);
      const double to = std::min(high, 1.0);
      if (from <= to) {
        add(marks, {x, py(from)}, {x, py(to)});
        for (const double end : {low, high}) {
          if (inside(end)) {
            add(marks, {x - 3, py(end)}, {x + 3, py(end)});
          }
        }
      }
    }
  }
  line(std::move(marks), layer.colour);
  if (!dots.points.empty()) {
    shapes_.push_back(std::move(dots));
  }
}

}  // namespace

std::vector<Shape> shapesOf(const Picture& picture) {
  std::vector<Shape> shapes;
  const int n = static_cast<int>(picture.panels.size());
  const int columns = std::clamp(picture.columns, 1, n);
  const int rows = (n + columns - 1) / columns;
  const double width = static_cast<double>(picture.width) / columns;
  const double height = static_cast<double>(picture.height) / rows;
  for (int i = 0; i < n; ++i) {
    const Panel& panel = picture.panels[static_cast<std::size_t>(i)];
    Page(shapes, panel, (i % columns) * width, (i / columns) * height, width, height).draw();
  }
  return shapes;
}

}  // namespace vexel::plots

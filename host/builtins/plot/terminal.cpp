// Pictures in characters: bars and areas of eighths of a block, lines and points of the dots of
// Braille, two by four in a character.  A character stands for ten by twenty pixels.

#include <algorithm>
#include <array>
#include <cmath>

#include "builtins/plot/picture.hpp"
#include "memory/unwinding.hpp"

namespace vexel::plots {

namespace {

constexpr int kCellWidth = 10;
constexpr int kCellHeight = 20;
constexpr std::size_t kFewPoints = 80;  // which are drawn as discs

std::string utf8(unsigned code) {  // of three bytes
  return {static_cast<char>(0xE0U | (code >> 12U)), static_cast<char>(0x80U | ((code >> 6U) & 63U)),
          static_cast<char>(0x80U | (code & 63U))};
}

// A row of characters that texts are put into.
class Row {
 public:
  explicit Row(int columns) : cells_(static_cast<std::size_t>(std::max(columns, 0)), " ") {}
  void put(int column, const std::string& text) {
    for (std::size_t i = 0; i < text.size();) {
      std::size_t end = i + 1;
      while (end < text.size() && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        ++end;
      }
      if (column >= 0 && column < static_cast<int>(cells_.size())) {
        cells_[static_cast<std::size_t>(column)] = text.substr(i, end - i);
      }
      ++column;
      i = end;
    }
  }
  // Puts a text in the middle of column, if that place is free.
  void label(int column, const std::string& text) {
    const int n = static_cast<int>(lengthOf(text));
    const int first =
        std::clamp(column - n / 2, 0, std::max(static_cast<int>(cells_.size()) - n, 0));
    for (int i = std::max(first - 1, 0); i <= first + n && i < static_cast<int>(cells_.size());
         ++i) {
      if (cells_[static_cast<std::size_t>(i)] != " ") {
        return;
      }
    }
    put(first, text);
  }
  std::string text() const {
    std::string out;
    for (const std::string& cell : cells_) {
      out += cell;
    }
    return out.substr(0, out.find_last_not_of(' ') + 1);
  }

 private:
  std::vector<std::string> cells_;
};

// Which dots of a line are drawn: all for the first, then ever fewer, so that lines can be told
// apart.
struct Dashes {
  int on;
  int off;
  const char* sample;
};
constexpr std::array<Dashes, 4> kDashes = {
    {{1, 0, "⠒⠒⠒"}, {5, 3, "⠒⠂⠐"}, {1, 1, "⠂⠂⠂"}, {1, 3, "⠂ ⠂"}}};

// The place between the axes: columns by rows of characters.
class Canvas {
 public:
  Canvas(const Panel& panel, int columns, int rows)
      : panel_(panel),
        columns_(columns),
        rows_(rows),
        dots_(static_cast<std::size_t>(columns) * static_cast<std::size_t>(rows)),
        discs_(dots_.size()),
        heights_(static_cast<std::size_t>(columns), NAN),
        ticks_(static_cast<std::size_t>(columns), "─") {
    const double zero = panel.y.at(0);
    floor_ = std::isnan(zero) ? 0 : std::clamp(zero, 0.0, 1.0);
  }

  void draw(const Layer& layer, const Dashes& dashes) {
    std::vector<double> x;
    std::vector<double> y;
    for (std::size_t i = 0; i < layer.x.size(); ++i) {
      x.push_back(panel_.x.at(layer.x[i]));
      y.push_back(panel_.y.at(layer.y[i]));
    }
    switch (layer.style) {
      case Style::bars:
        return drawBars(layer, y);
      case Style::area:
        return drawArea(x, y);
      case Style::rug:
        for (const double at : x) {
          mark(at, "┴");
        }
        return;
      case Style::points:
        for (std::size_t i = 0; i < x.size(); ++i) {
          drawPoint(x[i], y[i], x.size() <= kFewPoints);
          drawError(layer, i, x[i]);
        }
        return;
      default:
        drawLine(layer, dashes, x, y);
    }
  }

  void tick(double position) { mark(position, "┬"); }
  // Rows from the top.
  std::string row(int r) const {
    std::string out;
    for (int c = 0; c < columns_; ++c) {
      const auto place = static_cast<std::size_t>(r * columns_ + c);
      const unsigned dots = dots_[place];
      out += discs_[place] ? "•" : dots != 0 ? utf8(0x2800U + dots) : block(c, rows_ - 1 - r);
    }
    return out;
  }
  std::string axis() const {
    std::string out;
    for (const std::string& mark : ticks_) {
      out += mark;
    }
    return out;
  }
  int columnOf(double position) const {
    return std::clamp(static_cast<int>(position * columns_), 0, columns_ - 1);
  }

 private:
  double dotsAcross() const { return 2 * columns_ - 1; }
  double dotsUp() const { return 4 * rows_ - 1; }

  void dot(double x, double y) {
    if (!(x >= -0.5 && y >= -0.5 && x <= dotsAcross() + 0.5 && y <= dotsUp() + 0.5)) {
      return;
    }
    const int column = std::min(static_cast<int>(x + 0.5), 2 * columns_ - 1);
    const int row = 4 * rows_ - 1 - std::min(static_cast<int>(y + 0.5), 4 * rows_ - 1);
    constexpr unsigned kDots[4][2] = {{0x01, 0x08}, {0x02, 0x10}, {0x04, 0x20}, {0x40, 0x80}};
    dots_[static_cast<std::size_t>((row / 4) * columns_ + column / 2)] |=
        static_cast<unsigned char>(kDots[row % 4][column % 2]);
  }

  // A dot among many, a disc where it is one of few.
  void drawPoint(double x, double y, bool large) {
    if (!large) {
      dot(x * dotsAcross(), y * dotsUp());
    } else if (x >= 0 && x <= 1 && y >= 0 && y <= 1) {
      const int row = std::min(static_cast<int>((1 - y) * rows_), rows_ - 1);
      discs_[static_cast<std::size_t>(row * columns_ + columnOf(x))] = true;
    }
  }

  void mark(double position, const std::string& sign) {
    if (position >= 0 && position <= 1) {
      std::string& at = ticks_[static_cast<std::size_t>(columnOf(position))];
      at = at == "─" || at == sign ? sign : "┼";
    }
  }

  // A character of a bar: as many eighths as it is high above the axis.
  std::string block(int column, int rowFromBelow) const {
    const double height = heights_[static_cast<std::size_t>(column)];
    if (std::isnan(height)) {
      return " ";
    }
    const double low = std::min(height, floor_) * rows_ - rowFromBelow;
    const double high = std::max(height, floor_) * rows_ - rowFromBelow;
    if (low > 0.01) {  // what hangs or stands above the lower edge: whole or nothing
      return low < 0.5 && high >= 1 ? "█" : " ";
    }
    const int eighths = std::clamp(static_cast<int>(std::lround(8 * high)), 0, 8);
    return eighths == 0 ? " " : utf8(0x2580U + static_cast<unsigned>(eighths));
  }

  void raise(int column, double height) {
    double& at = heights_[static_cast<std::size_t>(column)];
    at = std::isnan(at) || std::fabs(height - floor_) > std::fabs(at - floor_) ? height : at;
  }

  void drawBars(const Layer& layer, const std::vector<double>& y) {
    for (std::size_t i = 0; i < y.size(); ++i) {
      double left = panel_.x.at(layer.x[i] - layer.width[i] / 2);
      const double right = panel_.x.at(layer.x[i] + layer.width[i] / 2);
      left = std::isnan(left) ? 0 : left;
      if (std::isnan(y[i]) || !(right >= 0) || !(left <= 1)) {
        continue;
      }
      // Columns whose middle is in the bar; at least that of the bar's own middle.
      const int first =
          std::max(static_cast<int>(std::ceil(std::max(left, 0.0) * columns_ - 0.5)), 0);
      const int last =
          std::min(static_cast<int>(std::ceil(std::min(right, 1.0) * columns_ - 0.5)), columns_) -
          1;
      const double height = std::clamp(y[i], 0.0, 1.0);
      if (last < first) {
        raise(columnOf(std::clamp((left + right) / 2, 0.0, 1.0)), height);
      }
      for (int c = first; c <= last; ++c) {
        raise(c, height);
      }
    }
  }

  void drawArea(const std::vector<double>& x, const std::vector<double>& y) {
    for (std::size_t i = 1; i < x.size(); ++i) {
      if (std::isnan(y[i - 1]) || std::isnan(y[i]) || !(x[i] > x[i - 1])) {
        continue;
      }
      const double from = std::clamp(x[i - 1] * columns_ - 0.5, 0.0, columns_ - 1.0);
      const double to = std::clamp(x[i] * columns_ - 0.5, 0.0, columns_ - 1.0);
      for (int c = static_cast<int>(std::ceil(from)); c <= to; ++c) {
        const double part = ((c + 0.5) / columns_ - x[i - 1]) / (x[i] - x[i - 1]);
        if (part >= 0 && part <= 1) {
          raise(c, std::clamp(y[i - 1] + part * (y[i] - y[i - 1]), 0.0, 1.0));
        }
      }
    }
  }

  // Dots from a to b, in steps of one; `done` counts those of the line for its dashes.
  void drawSegment(double x0, double y0, double x1, double y1, const Dashes& dashes, int& done) {
    if (std::isnan(x0 + y0 + x1 + y1)) {
      return;
    }
    // Far outside nothing is seen, and steps would be many.
    const double most = 4 * (dotsAcross() + dotsUp());
    const auto nearby = [&](double v) { return std::clamp(v, -most, 2 * most); };
    x0 = nearby(x0 * dotsAcross());
    x1 = nearby(x1 * dotsAcross());
    y0 = nearby(y0 * dotsUp());
    y1 = nearby(y1 * dotsUp());
    const int steps =
        std::max(1, static_cast<int>(std::ceil(std::max(std::fabs(x1 - x0), std::fabs(y1 - y0)))));
    for (int i = 0; i <= steps; ++i) {
      const double part = static_cast<double>(i) / steps;
      const bool on = (done + i) % (dashes.on + dashes.off) < dashes.on;
      if (on) {
        dot(x0 + part * (x1 - x0), y0 + part * (y1 - y0));
      }
    }
    done += std::max(std::fabs(x1 - x0), std::fabs(y1 - y0)) < 1 ? 0 : steps;
  }

  void drawLine(const Layer& layer, const Dashes& dashes, const std::vector<double>& x,
                const std::vector<double>& y) {
    int done = 0;
    std::size_t from = 0;
    for (std::size_t i = 0; i < x.size(); ++i) {
      lookAtInterrupt();
      if (i > from && !std::isnan(y[i]) && !std::isnan(y[i - 1])) {
        const bool steps = layer.style == Style::steps;
        if (steps) {
          drawSegment(x[from], y[from], x[i], y[from], dashes, done);
        }
        // Points closer than a dot wait for one that is farther, so that dashes keep their length.
        const bool farther = std::fabs(x[i] - x[from]) * dotsAcross() >= 1 ||
                             std::fabs(y[i] - y[from]) * dotsUp() >= 1;
        if (farther || i + 1 == x.size()) {
          drawSegment(steps ? x[i] : x[from], y[from], x[i], y[i], dashes, done);
          from = i;
        }
      } else {
        from = i;
        dot(x[i] * dotsAcross(), y[i] * dotsUp());
      }
      drawError(layer, i, x[i]);
    }
  }

  void drawError(const Layer& layer, std::size_t i, double x) {
    if (!layer.error.empty() && layer.error[i] >= 0) {
      const double low = panel_.y.at(layer.y[i] - layer.error[i]);
      const double high = panel_.y.at(layer.y[i] + layer.error[i]);
      int done = 0;
      drawSegment(x, std::isnan(low) ? 0 : low, x, high, kDashes[0], done);
    }
  }

  const Panel& panel_;
  int columns_;
  int rows_;
  double floor_ = 0;
  std::vector<unsigned char> dots_;
  std::vector<bool> discs_;
  std::vector<double> heights_;
  std::vector<std::string> ticks_;
};

const char* sampleOf(const Layer& layer, const Dashes& dashes) {
  switch (layer.style) {
    case Style::bars:
      return "██";
    case Style::area:
      return "▅▅";
    case Style::points:
      return layer.x.size() <= kFewPoints ? "•" : "⠂";
    case Style::rug:
      return "┴";
    default:
      return dashes.sample;
  }
}

bool isLine(const Layer& layer) {
  return layer.style == Style::lines || layer.style == Style::steps;
}

// Title, legend, the canvas between its axes, labels of the axes.
std::string textOf(const Panel& panel, int columns, int rows) {
  const std::vector<Tick> up = ticksOf(panel.y, std::max(rows / 3, 2));
  int widest = 0;
  for (const Tick& tick : up) {
    widest = std::max(widest, static_cast<int>(lengthOf(tick.label)));
  }
  const int left = widest + 2;
  const int across = std::max(columns - left, 10);
  Canvas canvas(panel, across, rows);
  std::string legend;
  std::size_t lines = 0;
  for (const Layer& layer : panel.layers) {
    const Dashes& dashes = kDashes[isLine(layer) ? lines++ % kDashes.size() : 0];
    canvas.draw(layer, dashes);
    if (panel.legend && !layer.label.empty()) {
      legend +=
          std::string(legend.empty() ? "" : "   ") + sampleOf(layer, dashes) + " " + layer.label;
    }
  }
  std::string out;
  const auto centred = [&](const std::string& text) {
    const int space = left + (across - static_cast<int>(lengthOf(text))) / 2;
    return std::string(static_cast<std::size_t>(std::max(space, 0)), ' ') + text + "\n";
  };
  out += panel.title.empty() ? "" : centred(panel.title);
  out += legend.empty() ? "" : centred(legend);
  out += panel.y.label.empty() ? "" : panel.y.label + "\n";
  for (int r = 0; r < rows; ++r) {
    Row margin(left);
    bool ticked = false;
    for (const Tick& tick : up) {
      if (std::clamp(static_cast<int>((1 - tick.position) * rows), 0, rows - 1) == r && !ticked) {
        margin.put(widest - static_cast<int>(lengthOf(tick.label)), tick.label);
        ticked = true;
      }
    }
    std::string line = margin.text();
    line += std::string(static_cast<std::size_t>(left - 1) - lengthOf(line), ' ');
    line += (ticked ? "┤" : "│") + canvas.row(r);
    out += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
  }
  Row labels(left + across);
  for (const Tick& tick : ticksOf(panel.x, std::max(across / 10, 2))) {
    canvas.tick(tick.position);
    labels.label(left + canvas.columnOf(tick.position), tick.label);
  }
  out += std::string(static_cast<std::size_t>(left - 1), ' ') + "└" + canvas.axis() + "\n" +
         labels.text() + "\n";
  return out + (panel.x.label.empty() ? "" : centred(panel.x.label));
}

}  // namespace

std::size_t lengthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80U;
  }));
}

std::string textOf(const Picture& picture) {
  const int columns = std::clamp(picture.width / kCellWidth, 24, 400);
  const int down = std::max((static_cast<int>(picture.panels.size()) + picture.columns - 1) /
                                std::max(picture.columns, 1),
                            1);
  const int rows = std::clamp(picture.height / kCellHeight / down - 4, 5, 200);
  std::string out;
  for (const Panel& panel : picture.panels) {
    out += (out.empty() ? "" : "\n") + textOf(panel, columns, rows);
  }
  return out;
}

}  // namespace vexel::plots

// Pictures: what is drawn, apart from how.
//
// A picture is one panel or several.  layout.hpp turns it into shapes on a page, which svg.cpp and
// gnuplot.cpp write; terminal.cpp draws it in characters.  Nothing here knows of the host.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vexel::plots {

enum class Style : std::uint8_t { lines, points, bars, steps, area, rug };
enum class Scale : std::uint8_t { linear, log };

struct Axis {
  double low = 0;
  double high = 1;
  Scale scale = Scale::linear;
  std::string label = {};
  bool dates = false;  // values are days since 1970-01-01

  // Where v lies between the ends: 0 at low, 1 at high; NaN where a scale has no place for it.
  double at(double v) const;
  // The value there.
  double value(double position) const;
};

struct Tick {
  double position;  // 0 to 1
  std::string label;
};

// Ticks at round values, about as many as asked for.
std::vector<Tick> ticksOf(const Axis& axis, int about);

struct Layer {
  Style style = Style::lines;
  std::string label;     // for the legend; empty for none
  std::uint32_t colour;  // 0xRRGGBB
  std::vector<double> x;
  std::vector<double> y;      // NaN: a gap
  std::vector<double> error;  // of y, both ways; empty for none
  std::vector<double> width;  // of bars, with x in the middle
};

struct Panel {
  std::string title;
  Axis x;
  Axis y;
  bool legend = true;
  std::vector<Layer> layers;
};

struct Picture {
  int width = 640;  // in pixels, of the whole
  int height = 400;
  int columns = 1;  // of panels
  std::vector<Panel> panels;
};

// Leaves out what could not be seen anyway, so that any number of points draws quickly: lines keep
// the first, least, greatest and last of what falls in a column of the picture, points and rugs one
// in a cell.  Axes must be set.
void thin(Layer& layer, const Axis& x, const Axis& y);

std::string svgOf(const Picture& picture);
std::string textOf(const Picture& picture);

// Commands for gnuplot that draw a PNG picture to its standard output.
std::string gnuplotCommands(const Picture& picture);

// Runs gnuplot on commands; what it wrote.  Empty text: it failed.  Throws NoGnuplot where there is
// none, and what lookAtInterrupt throws; either way no process is left behind.
struct NoGnuplot {};
std::string runGnuplot(const std::string& commands);

// Characters, not bytes.
std::size_t lengthOf(const std::string& utf8);
// The shortest text of x with at most that many decimals.
std::string fixedText(double x, int decimals);

}  // namespace vexel::plots

// A picture as shapes on a page of pixels, y downwards.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "builtins/plot/picture.hpp"

namespace vexel::plots {

struct Point {
  double x;
  double y;
};

struct Shape {
  enum class Kind : std::uint8_t { line, filled, dots, text };
  enum class Anchor : std::uint8_t { start, middle, end };
  Kind kind;
  std::uint32_t colour;
  std::vector<Point> points;  // of a text where it stands; of a line, NaN begins a new one
  double size = 1;            // width of a line, diameter of a dot
  double opacity = 1;
  std::string text = {};
  Anchor anchor = Anchor::start;
  bool bold = false;
  bool upwards = false;  // a text that is read from below
};

inline constexpr double kFontSize = 13;

std::vector<Shape> shapesOf(const Picture& picture);

}  // namespace vexel::plots

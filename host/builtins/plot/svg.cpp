// Pictures as SVG: coordinates with one decimal, so that the same picture is the same text
// everywhere.

#include <array>
#include <cmath>
#include <cstdio>

#include "builtins/plot/layout.hpp"
#include "memory/unwinding.hpp"

namespace vexel::plots {

namespace {

std::string colourText(std::uint32_t colour) {
  std::array<char, 8> text;
  std::snprintf(text.data(), text.size(), "#%06x", colour & 0xFFFFFFU);
  return text.data();
}

std::string pixels(double x) { return fixedText(x, 1); }

std::string escaped(const std::string& text) {
  std::string out;
  for (const char c : text) {
    switch (c) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      default:
        out += c;
    }
  }
  return out;
}

std::string pathOf(const Shape& shape) {
  std::string d;
  const char* next = "M";
  for (const Point& p : shape.points) {
    if (std::isnan(p.x)) {
      next = "M";
      continue;
    }
    d += next + pixels(p.x) + "," + pixels(p.y);
    next = " ";
  }
  return d;
}

std::string textElement(const Shape& shape) {
  constexpr std::array<const char*, 3> kAnchors = {"start", "middle", "end"};
  const std::string x = pixels(shape.points[0].x);
  const std::string y = pixels(shape.points[0].y);
  return "<text x=\"" + x + "\" y=\"" + y + "\" text-anchor=\"" +
         kAnchors[static_cast<std::size_t>(shape.anchor)] + "\"" +
         (shape.bold ? " font-weight=\"bold\"" : "") +
         (shape.upwards ? " transform=\"rotate(-90 " + x + " " + y + ")\"" : "") + ">" +
         escaped(shape.text) + "</text>\n";
}

std::string elementOf(const Shape& shape) {
  switch (shape.kind) {
    case Shape::Kind::text:
      return textElement(shape);
    case Shape::Kind::filled:
      return "<path d=\"" + pathOf(shape) + "Z\" fill=\"" + colourText(shape.colour) +
             "\" fill-opacity=\"" + fixedText(shape.opacity, 2) + "\"/>\n";
    case Shape::Kind::dots: {
      std::string d;  // strokes of no length with round ends
      for (const Point& p : shape.points) {
        d += "M" + pixels(p.x) + "," + pixels(p.y) + "h0";
      }
      return "<path d=\"" + d + "\" stroke=\"" + colourText(shape.colour) + "\" stroke-width=\"" +
             pixels(shape.size) + "\" stroke-linecap=\"round\"/>\n";
    }
    default:
      return "<path d=\"" + pathOf(shape) + "\" fill=\"none\" stroke=\"" +
             colourText(shape.colour) +
             (shape.size != 1 ? "\" stroke-width=\"" + pixels(shape.size) : "") + "\"/>\n";
  }
}

}  // namespace

std::string svgOf(const Picture& picture) {
  const std::string width = std::to_string(picture.width);
  const std::string height = std::to_string(picture.height);
  std::string out = "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" + width + "\" height=\"" +
                    height + "\" viewBox=\"0 0 " + width + " " + height +
                    "\" font-family=\"sans-serif\" font-size=\"" + pixels(kFontSize) +
                    "\" fill=\"#333\">\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
  for (const Shape& shape : shapesOf(picture)) {
    lookAtInterrupt();
    out += elementOf(shape);
  }
  return out + "</svg>\n";
}

}  // namespace vexel::plots

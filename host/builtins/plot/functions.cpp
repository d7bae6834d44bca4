// plot, picture and layer.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <vexel/interruption.hpp>

#include "builtins/builtins.hpp"
#include "builtins/functions/call.hpp"
#include "builtins/functions/objects.hpp"
#include "builtins/plot/sources.hpp"
#include "mathematics/elementwise.hpp"
#include "values/errors.hpp"
#include "values/frames.hpp"
#include "values/utf8.hpp"

namespace vexel {

namespace {

using plots::Picture;
using plots::Source;

constexpr std::size_t kLongestLabel = 200;

struct PictureObject final : Foreign {
  explicit PictureObject(Picture p) : picture(std::move(p)) {}
  void print(State&, std::string& out) const override {
    const std::size_t n = picture.panels.size();
    out += "Picture(" + std::to_string(n) + (n == 1 ? " panel)" : " panels)");
  }
  Picture picture;
};

struct LayerObject final : Foreign {
  explicit LayerObject(Source s) : source(std::move(s)) {}
  void mark(Marker& marker) override {
    for (const ALGEB x : {source.x, source.y, source.error}) {
      if (x != nullptr) {
        marker.mark(x);
      }
    }
  }
  void print(State& state, std::string& out) const override {
    out += "Layer(";
    appendSource(state, out, source.x, {.maxElements = 3, .maxLength = 60, .raiseTooDeep = false});
    out += ")";
  }
  Source source;
};

// Text that a picture can show: valid characters on one line.
std::string shown(std::string_view text) {
  std::string out;
  while (!text.empty() && out.size() < kLongestLabel) {
    const auto c = static_cast<unsigned char>(text.front());
    const std::size_t n = c < 0x80 ? 1 : utf8Length(text);
    out += n == 0 ? "?" : c < ' ' || c == 0x7F ? " " : std::string(text.substr(0, n));
    text.remove_prefix(std::max<std::size_t>(n, 1));
  }
  return out;
}

std::string shownOption(Call& call, const char* parameter) {
  const ALGEB x = call.value(parameter);
  return x == nullptr ? "" : shown(plainText(call.state(), x));
}

std::optional<std::uint32_t> colourOf(Call& call) {
  if (!call.given("color")) {
    return std::nullopt;
  }
  constexpr std::array<std::pair<std::string_view, std::uint32_t>, 9> kNames = {
      {{"blue", 0x1f6f8b},
       {"gold", 0xc9a227},
       {"red", 0xb5483a},
       {"green", 0x6b8e4e},
       {"purple", 0x7a5c99},
       {"gray", 0x8c8c8c},
       {"silver", 0xbbbbbb},
       {"orange", 0xd9822b},
       {"black", 0x333333}}};
  const std::string word = call.word("color");
  std::string all;
  for (const auto& [name, colour] : kNames) {
    if (name == word) {
      return colour;
    }
    all += std::string(name) + ", ";
  }
  unsigned colour = 0;
  int end = 0;
  if (word.size() == 7 && std::sscanf(word.c_str(), "#%6x%n", &colour, &end) == 1 && end == 7) {
    return colour;
  }
  call.refuse("color", "one of " + all + "or \"#rrggbb\"");
}

std::optional<plots::Style> styleOf(Call& call) {
  return call.given("style") ? std::optional(call.choice("style", plots::Style::lines))
                             : std::nullopt;
}

const Signature& layerSignature() {
  static const Signature signature("layer", "x, y = none, error = none; label, style, color");
  return signature;
}

ALGEB layer(State& state, ALGEB args) {
  Call call(state, layerSignature(), args);
  for (const char* parameter : {"y", "error"}) {
    if (call.given(parameter) && !isContainer(call.value(parameter))) {
      call.refuse(parameter, "a list or an array");
    }
  }
  if (call.given("error") && !call.given("y")) {
    call.refuse("error", "y before it, and not only an array");
  }
  Source source{.x = call.value("x"),
                .y = call.value("y"),
                .error = call.value("error"),
                .label = shownOption(call, "label"),
                .style = styleOf(call),
                .colour = colourOf(call)};
  return newForeign(state, Tag::foreign, std::make_unique<LayerObject>(std::move(source)));
}

const Signature& plotSignature() {
  static const Signature signature = [] {
    Signature s("plot",
                "; title, xlabel, ylabel, xscale = linear, yscale = linear, xrange, yrange, style, "
                "legend = true, width = 640, height = 400, columns, file");
    s.text = "plot(what, ...; " + s.text.substr(s.text.find(';') + 2);
    return s;
  }();
  return signature;
}

// The arguments of plot, sorted.
struct Drawn {
  std::vector<Source> sources;
  std::vector<const PictureObject*> pictures;
  std::optional<ALGEB> range;
  std::vector<ALGEB> options;
};

Source sourceOf(ALGEB x) {
  const auto* made = objectOf<LayerObject>(x);
  return made != nullptr ? made->source : Source{.x = x};
}

// A list or array of numbers that stands for itself, not for columns.
bool isFlat(State& state, ALGEB x) {
  return (isArray(x) && arrayOf(x).dimensions == 1) ||
         (isList(x) && (countOf(x) == 0 || !isContainer(element(state, x, 1))));
}

// Sorts arguments; those of sequences and of lists of pictures or layers one by one.
class Sorter {
 public:
  explicit Sorter(State& state) : state_(state) {}

  void take(ALGEB x) {
    checkStack(state_);
    if (isSequence(x) || isListOfMade(x)) {
      for (std::size_t i = 1; i <= countOf(x); ++i) {
        take(element(state_, x, i));
      }
    } else if (isEquation(x) && is(operand(x, 1), Tag::string)) {
      Source source = sourceOf(operand(x, 2));
      source.label = shown(text(operand(x, 1)));
      drawn.sources.push_back(std::move(source));
    } else if (isEquation(x)) {
      drawn.options.push_back(x);
    } else if (isRange(x)) {
      if (drawn.range) {
        raise(state_, "plot takes one range, that of x; yrange = a .. b is that of y");
      }
      drawn.range = x;
    } else if (const auto* picture = objectOf<PictureObject>(x)) {
      drawn.pictures.push_back(picture);
    } else if (isFrame(x)) {
      for (const ALGEB heading : headingsOf(x)) {  // its columns of numbers
        const ALGEB column = columnOf(state_, x, heading);
        if (isMachineArray(column)) {
          drawn.sources.push_back({.x = column, .label = shown(plainText(state_, heading))});
        }
      }
    } else if (isFlat(state_, x)) {
      takeColumn(x);
    } else {
      drawn.sources.push_back(sourceOf(x));
    }
  }

  Drawn drawn;

 private:
  bool isListOfMade(ALGEB x) {
    return isList(x) && countOf(x) > 0 && is(element(state_, x, 1), Tag::foreign);
  }

  // x, then y, then errors.
  void takeColumn(ALGEB x) {
    if (++columns_ > 3) {
      raise(state_,
            "plot takes x, y and errors; several series are written \"label\" = y or [x, y]");
    }
    if (columns_ == 1) {
      first_ = drawn.sources.size();
      drawn.sources.push_back({.x = x});
    } else {
      (columns_ == 2 ? drawn.sources[first_].y : drawn.sources[first_].error) = x;
    }
  }

  State& state_;
  int columns_ = 0;
  std::size_t first_ = 0;
};

Drawn sorted(State& state, ALGEB args) {
  Sorter sorter(state);
  sorter.take(args);
  return std::move(sorter.drawn);
}

int pixelsOf(Call& call, const char* parameter, int fallback) {
  const std::int64_t n = call.integer(parameter, fallback);
  if (n < 100 || n > 10'000) {
    call.refuse(parameter, "100 to 10000 pixels");
  }
  return static_cast<int>(n);
}

// Pictures side by side, or the one picture that was given.
Picture joined(Call& call, const std::vector<const PictureObject*>& pictures) {
  for (const char* parameter :
       {"title", "xlabel", "ylabel", "xscale", "yscale", "xrange", "yrange", "style", "legend"}) {
    if (call.given(parameter)) {
      raise(call.state(),
            std::string(parameter) + " belongs to the pictures that are put together");
    }
  }
  Picture all = pictures.front()->picture;
  for (std::size_t i = 1; i < pictures.size(); ++i) {
    const std::vector<plots::Panel>& more = pictures[i]->picture.panels;
    all.panels.insert(all.panels.end(), more.begin(), more.end());
  }
  if (pictures.size() > 1) {
    const auto n = static_cast<int>(all.panels.size());
    const auto most = static_cast<std::int64_t>(n);
    all.columns = static_cast<int>(std::ceil(std::sqrt(n)));
    all.columns =
        static_cast<int>(std::clamp<std::int64_t>(call.integer("columns", all.columns), 1, most));
    all.width = std::min(320 * all.columns, 1280);
    all.height = std::min(260 * ((n + all.columns - 1) / all.columns), 5200);
  }
  all.width = pixelsOf(call, "width", all.width);
  all.height = pixelsOf(call, "height", all.height);
  return all;
}

Picture pictureOf(Call& call, Drawn& drawn) {
  State& state = call.state();
  if (!drawn.pictures.empty()) {
    if (!drawn.sources.empty() || drawn.range) {
      raise(state, "plot draws pictures beside each other or layers over each other, not both");
    }
    return joined(call, drawn.pictures);
  }
  if (drawn.sources.empty()) {
    raise(state, "plot needs something to draw; it is called as " + call.signature().text);
  }
  if (drawn.range && call.given("xrange")) {
    raise(state, "plot was given xrange twice");
  }
  plots::PanelOptions options{.title = shownOption(call, "title"),
                              .xlabel = shownOption(call, "xlabel"),
                              .ylabel = shownOption(call, "ylabel"),
                              .xscale = call.choice("xscale", plots::Scale::linear),
                              .yscale = call.choice("yscale", plots::Scale::linear),
                              .xrange = call.range("xrange"),
                              .yrange = call.range("yrange"),
                              .legend = call.boolean("legend", true)};
  if (drawn.range) {
    options.xrange = Interval{doubleOfValue(state, operand(*drawn.range, 1)),
                              doubleOfValue(state, operand(*drawn.range, 2))};
  }
  const auto style = styleOf(call);
  for (Source& source : drawn.sources) {
    if (!source.style && isContainer(source.x)) {
      source.style = style;
    }
  }
  Picture picture;
  picture.width = pixelsOf(call, "width", picture.width);
  picture.height = pixelsOf(call, "height", picture.height);
  picture.panels.push_back(panelOf(state, drawn.sources, options));
  return picture;
}

std::string pngOf(State& state, const Picture& picture) {
  std::string png;
  try {
    png = plots::runGnuplot(plots::gnuplotCommands(picture));
  } catch (const plots::NoGnuplot&) {
    raise(state, "a .png picture needs gnuplot, which is not installed; .svg needs nothing");
  }
  if (png.empty()) {
    raise(state, "gnuplot could not draw the picture; .svg does without it");
  }
  return png;
}

void write(State& state, const Picture& picture, ALGEB file) {
  const std::string path(is(file, Tag::string) ? text(file) : "");
  std::string ending = path.size() > 4 ? path.substr(path.size() - 4) : "";
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  if ((ending != ".svg" && ending != ".png") || path.find('\0') != std::string::npos) {
    raise(state, "plot expects the name of an .svg or .png file, received: %1", file);
  }
  const std::string contents = ending == ".svg" ? svgOf(picture) : pngOf(state, picture);
  std::FILE* out = std::fopen(path.c_str(), "wb");
  const bool written =
      out != nullptr && std::fwrite(contents.data(), 1, contents.size(), out) == contents.size();
  if (out == nullptr || std::fclose(out) != 0 || !written) {
    raise(state, "unable to write the file %1", file);
  }
}

ALGEB plotOrPicture(State& state, ALGEB args, bool draws) {
  Drawn drawn = sorted(state, args);
  Call call(state, plotSignature(), argumentsFrom(state, drawn.options));
  if (!draws && call.given("file")) {
    raise(state, "picture makes a value; plot(p, file = ...) writes it");
  }
  Picture picture = pictureOf(call, drawn);
  if (!draws) {
    return newForeign(state, Tag::foreign, std::make_unique<PictureObject>(std::move(picture)));
  }
  if (call.given("file")) {
    write(state, picture, call.value("file"));
  } else {
    state.output(textOf(picture));
  }
  return state.null;
}

void define(State& state, const char* functionName, ALGEB (*body)(State&, ALGEB)) {
  auto function = std::make_unique<MachineFunction>();
  function->name = functionName;
  function->takesEquations = true;
  function->call = [body](State& s, ALGEB args) {
    const Watch watch([](double) {
      lookAtInterrupt();
      return true;
    });
    return body(s, args);
  };
  setNameFunction(name(state, functionName), newFunction(state, std::move(function)));
}

}  // namespace

void definePlotFunctions(State& state) {
  define(state, "plot", [](State& s, ALGEB args) { return plotOrPicture(s, args, true); });
  define(state, "picture", [](State& s, ALGEB args) { return plotOrPicture(s, args, false); });
  define(state, "layer", layer);
}

}  // namespace vexel

// What of the language can be drawn, and how it becomes the layers of a panel.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vexel/interval.hpp>
#include <vexel/names.hpp>

#include "builtins/plot/picture.hpp"
#include "values/objects.hpp"

namespace vexel {

template <>
inline constexpr auto namesOf<plots::Style> =
    std::to_array<NameOf<plots::Style>>({{"lines", plots::Style::lines},
                                         {"points", plots::Style::points},
                                         {"bars", plots::Style::bars},
                                         {"steps", plots::Style::steps},
                                         {"area", plots::Style::area},
                                         {"rug", plots::Style::rug}});
template <>
inline constexpr auto namesOf<plots::Scale> = std::to_array<NameOf<plots::Scale>>(
    {{"linear", plots::Scale::linear}, {"log", plots::Scale::log}});

namespace plots {

// A value to draw, with what was said about it.  The handles live in the arguments of a call, or in
// an object that marks them.
struct Source {
  ALGEB x = nullptr;  // an array, a table of counts, a density, a law, a procedure
  ALGEB y = nullptr;  // null: not given
  ALGEB error = nullptr;
  std::string label = {};
  std::optional<Style> style = {};
  std::optional<std::uint32_t> colour = {};
};

struct PanelOptions {
  std::string title = {};
  std::string xlabel = {};
  std::string ylabel = {};
  Scale xscale = Scale::linear;
  Scale yscale = Scale::linear;
  std::optional<Interval> xrange = {};
  std::optional<Interval> yrange = {};
  bool legend = true;
};

// Raises where a source cannot be drawn or nothing is left to draw.
Panel panelOf(State& state, std::span<const Source> sources, const PanelOptions& options);

}  // namespace plots
}  // namespace vexel

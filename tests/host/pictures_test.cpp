// What holds for every picture: ticks lie on the axis, thinning keeps what can be seen, and files
// are bounded and well-formed whatever the data.

#include <algorithm>
#include <cmath>
#include <random>

#include "builtins/plot/picture.hpp"
#include "state_test.hpp"
#include "values/kernel_state.hpp"

namespace vexel::plots {
namespace {

using Random64 = std::mt19937_64;

Axis randomAxis(Random64& random) {
  std::uniform_real_distribution<double> exponent(-300, 300);
  std::uniform_real_distribution<double> share(-1, 1);
  Axis axis;
  axis.scale = random() % 2 == 0 ? Scale::log : Scale::linear;
  const double middle = std::pow(10, exponent(random));
  const double width = middle * std::pow(10, 8 * share(random));
  axis.low = axis.scale == Scale::log ? middle : middle * share(random);
  axis.high =
      axis.scale == Scale::log ? middle * (1 + std::fabs(width / middle)) : axis.low + width;
  return axis;
}

TEST(PicturesTest, TicksAscendWithinTheirAxisUnderDifferentLabels) {
  Random64 random(1);
  for (int i = 0; i < 20000; ++i) {
    const Axis axis = randomAxis(random);
    if (!(axis.low < axis.high) || axis.high - axis.low < 1e-9 * std::fabs(axis.high)) {
      continue;
    }
    const std::vector<Tick> ticks = ticksOf(axis, 2 + static_cast<int>(random() % 12));
    SCOPED_TRACE(testing::Message()
                 << axis.low << " .. " << axis.high << (axis.scale == Scale::log ? " log" : ""));
    ASSERT_GE(ticks.size(), 2U);
    ASSERT_LE(ticks.size(), 50U);
    for (std::size_t k = 0; k < ticks.size(); ++k) {
      ASSERT_GE(ticks[k].position, -1e-6);
      ASSERT_LE(ticks[k].position, 1 + 1e-6);
      ASSERT_LT(ticks[k].label.size(), 26U);
      if (k > 0) {
        ASSERT_GT(ticks[k].position, ticks[k - 1].position);
        ASSERT_NE(ticks[k].label, ticks[k - 1].label);
      }
    }
  }
}

TEST(PicturesTest, ThinningKeepsExtremesEndsAndGaps) {
  Random64 random(2);
  std::normal_distribution<double> normal;
  for (const Style style : {Style::lines, Style::points, Style::bars, Style::steps, Style::area}) {
    Layer layer{
        .style = style, .label = {}, .colour = 0, .x = {}, .y = {}, .error = {}, .width = {}};
    double sum = 0;
    for (int i = 0; i < 100000; ++i) {
      layer.x.push_back(i);
      layer.y.push_back(sum += normal(random));
      if (style == Style::bars) {
        layer.width.push_back(1);
      }
    }
    layer.y[50000] = NAN;
    Layer thinned = layer;
    Axis across;
    across.high = 1e5;
    Axis up;
    up.low = -3000;
    up.high = 3000;
    thin(thinned, across, up);
    EXPECT_LT(thinned.x.size(), 7000U);
    EXPECT_EQ(thinned.y.size(), thinned.x.size());
    const auto greatest = [](const Layer& l) {
      double y = -INFINITY;
      for (const double v : l.y) {
        y = std::max(y, std::isnan(v) ? y : std::fabs(v));
      }
      return y;
    };
    EXPECT_NEAR(greatest(thinned), greatest(layer), style == Style::points ? 20 : 1e-9);
    if (style == Style::lines) {
      EXPECT_EQ(thinned.x.front(), 0);
      EXPECT_EQ(thinned.x.back(), 99999);
      EXPECT_TRUE(
          std::any_of(thinned.y.begin(), thinned.y.end(), [](double y) { return std::isnan(y); }));
    }
  }
}

TEST(PicturesTest, CoordinatesAreNumbersHoweverFarValuesAre) {
  for (const Style style : {Style::lines, Style::points, Style::bars, Style::steps, Style::area}) {
    Layer layer;
    layer.style = style;
    layer.colour = 0;
    for (const double y : {-1.7e308, 1.7e308, 0.5, -1e300, 1e-320, 1e308}) {
      layer.x.push_back(static_cast<double>(layer.x.size()) / 4);
      layer.y.push_back(y);
      layer.error.push_back(style == Style::points ? 1e308 : 0);
      layer.width.push_back(0.1);
    }
    Picture picture;
    picture.panels.emplace_back();  // axes from 0 to 1
    picture.panels[0].layers.push_back(layer);
    for (const std::string& text : {svgOf(picture), gnuplotCommands(picture)}) {
      EXPECT_EQ(text.find("nan"), std::string::npos);
      EXPECT_EQ(text.find("inf"), std::string::npos);
    }
  }
}

struct PicturesOfStatements : StateTest {
  // What the statements draw in the terminal.
  std::string drawn(const std::string& statements) {
    std::string all;
    state.output = [&](std::string_view text) { all += text; };
    kernel.eval(statements);
    return all;
  }
};

TEST_F(PicturesOfStatements, TheTerminalShowsBarsOfEighths) {
  EXPECT_EQ(
      drawn(
          "plot(histogram([1, 2, 2, 3, 3, 3], 3), width = 240, height = 200, title = \"counts\"):"),
      "          counts\n"
      "  │              ▆▆▆▆▆▆▆\n"
      "  │              ███████\n"
      "2 ┤       ▆▆▆▆▆▆▆███████\n"
      "  │       ██████████████\n"
      "  │▇▇▇▇▇▇▇██████████████\n"
      "0 ┤█████████████████████\n"
      "  └┬─────────┬─────────┬\n"
      "   1         2         3\n");
}

// Every layer in its own column, at every style and odd value; each line is as wide as the picture.
TEST_F(PicturesOfStatements, NoPictureLeavesItsPage) {
  for (const char* style : {"lines", "points", "bars", "steps", "area", "rug"}) {
    for (const char* values :
         {"[5]", "[1, undefined, 3]", "[infinity, 1, -infinity, 2]", "[1e-320, 2e-320]",
          "[1e15, 1e15 + 1]", "[-3, 0, 4]", "[seq((-1)^k*1e300, k = 1 .. 9)]"}) {
      for (const char* more : {"", ", yrange = -2 .. 2", ", xrange = 2 .. 5", ", xscale = log"}) {
        const std::string call = std::string("plot(") + values + ", style = " + style + more + "):";
        SCOPED_TRACE(call);
        std::string text;
        try {
          text = drawn(call);
        } catch (const Error&) {
          continue;  // no value on the axis
        }
        for (std::size_t at = 0; at < text.size();) {
          const std::size_t end = text.find('\n', at);
          ASSERT_LE(lengthOf(text.substr(at, end - at)), 64U);
          at = end + 1;
        }
      }
    }
  }
}

}  // namespace
}  // namespace vexel::plots

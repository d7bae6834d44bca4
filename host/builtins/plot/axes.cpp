// Scales and their ticks.

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cmath>

#include "builtins/plot/picture.hpp"

namespace vexel::plots {

namespace {

constexpr int kMostTicks = 50;

// 1, 2 or 5 times a power of ten, at least x.
double roundStep(double x) {
  const double power = std::pow(10, std::floor(std::log10(x)));
  for (const double factor : {1.0, 2.0, 5.0}) {
    if (factor * power >= x * (1 - 1e-9)) {
      return factor * power;
    }
  }
  return 10 * power;
}

std::string scientificText(double x, int digits) {
  std::array<char, 64> buffer;
  const auto end = std::to_chars(buffer.begin(), buffer.end(), x, std::chars_format::scientific,
                                 std::clamp(digits, 0, 17));
  std::string text(buffer.begin(), end.ptr);
  const std::size_t e = text.find('e');
  std::string exponent = text.substr(e + 1);
  const bool negative = exponent[0] == '-';
  exponent.erase(0, exponent.find_first_not_of("+-0"));
  return text.substr(0, e) + "e" + (negative ? "-" : "") + (exponent.empty() ? "0" : exponent);
}

// x, a multiple of step, among values up to largest.
std::string tickText(double x, double step, double largest) {
  if (x == 0) {
    return "0";
  }
  const int stepPower = static_cast<int>(std::floor(std::log10(step) + 1e-9));
  if (largest < 1e6 && step >= 1e-6) {
    return fixedText(x, std::max(0, -stepPower));
  }
  return scientificText(x, static_cast<int>(std::floor(std::log10(std::fabs(x)))) - stepPower);
}

std::string powerOfTenText(int power) {
  constexpr std::array<const char*, 10> kRaised = {"⁰", "¹", "²", "³", "⁴",
                                                   "⁵", "⁶", "⁷", "⁸", "⁹"};
  std::string text = power < 0 ? "10⁻" : "10";
  for (const char digit : std::to_string(std::abs(power))) {
    text += kRaised[static_cast<std::size_t>(digit - '0')];
  }
  return text;
}

// Powers of ten where two or more fit, else round values as on a linear axis.
std::vector<Tick> logTicks(const Axis& axis, int about) {
  const int first = static_cast<int>(std::ceil(std::log10(axis.low) - 1e-9));
  const int last = static_cast<int>(std::floor(std::log10(axis.high) + 1e-9));
  const int every = std::max(1, (last - first + about) / about);
  const bool plain = first >= -3 && last <= 5;
  // Few decades take 2 and 5 between them.
  const bool between = 2 * (last - first + 1) <= about && first >= -4 && last <= 5;
  std::vector<Tick> ticks;
  for (int power = first - 1; power <= last; ++power) {
    for (const double factor : {1.0, 2.0, 5.0}) {
      const double v = factor * std::pow(10, power);
      if (v < axis.low * (1 - 1e-9) || v > axis.high * (1 + 1e-9) ||
          (factor > 1 ? !between : (power - first) % every != 0)) {
        continue;
      }
      ticks.push_back({axis.at(v), plain || between ? fixedText(v, std::max(0, -power))
                                                    : powerOfTenText(power)});
    }
  }
  return ticks;
}

std::vector<Tick> linearTicks(const Axis& axis, int about) {
  const double step = roundStep((axis.high - axis.low) / about);
  const double largest = std::max(std::fabs(axis.low), std::fabs(axis.high));
  std::vector<Tick> ticks;
  const double first = std::ceil(axis.low / step - 1e-9);
  for (int i = 0; i < kMostTicks; ++i) {
    const double v = (first + i) * step;
    if (!(v <= axis.high + 1e-9 * step)) {
      break;
    }
    ticks.push_back({axis.at(v), tickText(v, step, largest)});
  }
  return ticks;
}

// What may lie between the ticks of dates.
struct DateStep {
  int months;  // 0: days
  int size;    // of them
};

DateStep dateStep(double days, int about) {
  constexpr double kMonth = 365.2425 / 12;
  for (const int size : {1, 2, 7, 14}) {
    if (days <= size * about) {
      return {0, size};
    }
  }
  for (const int size : {1, 2, 3, 6}) {
    if (days <= kMonth * size * about) {
      return {size, 1};
    }
  }
  return {12, static_cast<int>(roundStep(std::max(days / (12 * kMonth * about), 1.0)))};
}

std::string twoDigits(unsigned n) { return (n < 10 ? "0" : "") + std::to_string(n); }

// Days as 06-15, first days of months as 1973-06, of years as 1973.
std::string dateTickText(std::chrono::year_month_day day, const DateStep& step) {
  if (step.months == 0) {
    return twoDigits(unsigned{day.month()}) + "-" + twoDigits(unsigned{day.day()});
  }
  const std::string year = std::to_string(int{day.year()});
  return step.months == 12 ? year : year + "-" + twoDigits(unsigned{day.month()});
}

std::vector<Tick> dateTicks(const Axis& axis, int about) {
  using namespace std::chrono;
  const DateStep step = dateStep(axis.high - axis.low, about);
  std::vector<Tick> ticks;
  const auto add = [&](sys_days day) {
    const auto v = static_cast<double>(day.time_since_epoch().count());
    if (v >= axis.low && v <= axis.high) {
      ticks.push_back({axis.at(v), dateTickText(day, step)});
    }
  };
  const sys_days low{days{static_cast<int>(std::floor(axis.low))}};
  const sys_days high{days{static_cast<int>(std::ceil(axis.high))}};
  if (step.months == 0) {
    constexpr int kMonday = 4;  // 1970-01-05
    const int first = static_cast<int>(std::floor(axis.low)) - kMonday;
    const int skipped = ((first % step.size) + step.size) % step.size;
    for (sys_days day = low - days{skipped}; day <= high; day += days{step.size}) {
      add(day);
    }
    return ticks;
  }
  const year_month_day from{low};
  const int every = step.months * step.size;
  const int count = 12 * int{from.year()} + static_cast<int>(unsigned{from.month()}) - 1;
  for (int month = count / every * every;; month += every) {
    const sys_days day =
        year{month / 12} / std::chrono::month{static_cast<unsigned>(month % 12 + 1)} / 1;
    if (day > high) {
      return ticks;
    }
    add(day);
  }
}

// Years from 1 on, and not too many.
bool areDates(const Axis& axis) {
  return axis.dates && axis.low > -719'000 && axis.high < 3'000'000 && axis.high - axis.low >= 2;
}

}  // namespace

double Axis::at(double v) const {
  if (scale == Scale::log) {
    return v > 0 ? std::log(v / low) / std::log(high / low) : NAN;
  }
  return (v - low) / (high - low);
}

double Axis::value(double position) const {
  return scale == Scale::log ? low * std::pow(high / low, position) : low + position * (high - low);
}

std::vector<Tick> ticksOf(const Axis& axis, int about) {
  about = std::max(about, 2);
  if (axis.scale == Scale::log) {
    std::vector<Tick> ticks = logTicks(axis, about);
    if (ticks.size() >= 2) {
      return ticks;
    }
  }
  if (areDates(axis)) {
    std::vector<Tick> ticks = dateTicks(axis, about);
    if (ticks.size() >= 2) {
      return ticks;
    }
  }
  std::vector<Tick> ticks = linearTicks(axis, about);
  for (; ticks.size() < 2 && about < kMostTicks / 4; about += 2) {
    ticks = linearTicks(axis, about);
  }
  return ticks;
}

std::string fixedText(double x, int decimals) {
  std::array<char, 400> buffer;
  const auto end = std::to_chars(buffer.begin(), buffer.end(), x, std::chars_format::fixed,
                                 std::clamp(decimals, 0, 20));
  std::string text(buffer.begin(), end.ptr);
  if (text.find('.') != std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') {
      text.pop_back();
    }
  }
  return text == "-0" ? "0" : text;
}

}  // namespace vexel::plots

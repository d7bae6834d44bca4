#include "stream/report.hpp"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

namespace stream {

namespace {

// The shortest text that reads back, in fixed notation up to 16 digits before the point.
std::string shortest(double x) {
  char buffer[64];
  const double size = std::fabs(x);
  const bool fixed = size == 0 || (size >= 1e-4 && size < 1e16);
  const auto format = fixed ? std::chars_format::fixed : std::chars_format::scientific;
  return {buffer, std::to_chars(buffer, buffer + sizeof buffer, x, format).ptr};
}

std::string jsonNumber(double x) {
  if (!std::isfinite(x)) {
    return std::string(R"({"float": ")") +
           (std::isnan(x) ? "undefined"
            : x < 0       ? "-infinity"
                          : "infinity") +
           "\"}";
  }
  const std::string text = shortest(x);
  return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
}

std::string sixDigits(double x) {
  char buffer[32];
  const bool whole = x == std::floor(x) && std::fabs(x) < 1e15;  // counts above all
  std::snprintf(buffer, sizeof buffer, whole ? "%.0f" : "%.6g", x);
  return std::isnan(x) ? "nan" : buffer;  // of either sign
}

std::string inFull(double x) { return std::isfinite(x) ? shortest(x) : sixDigits(x); }

std::string padded(const std::string& text, std::size_t width) {
  return std::string(width - std::min(width, text.size()), ' ') + text;
}

void printRecord(std::ostream& out, const Report& report) {
  std::size_t width = 0;
  for (const auto& [name, values] : report.columns) {
    width = std::max(width, sixDigits(values.front()).size());
  }
  for (const auto& [name, values] : report.columns) {
    out << name << std::string(10 - std::min<std::size_t>(name.size(), 10), ' ')
        << padded(sixDigits(values.front()), width) << '\n';
  }
}

}  // namespace

void printText(std::ostream& out, const Report& report) {
  if (report.layout == Report::Layout::record) {
    printRecord(out, report);
    return;
  }
  std::vector<std::size_t> widths;
  for (const auto& [name, values] : report.columns) {
    widths.push_back(report.layout == Report::Layout::table ? name.size() : 0);
    for (const double v : values) {
      widths.back() = std::max(widths.back(), inFull(v).size());
    }
  }
  const auto line = [&](auto text) {
    for (std::size_t c = 0; c < widths.size(); ++c) {
      out << (c > 0 ? "  " : "") << padded(text(report.columns[c]), widths[c]);
    }
    out << '\n';
  };
  if (report.layout == Report::Layout::table) {
    line([](const Report::Column& c) { return c.name; });
  }
  for (std::size_t i = 0; i < report.columns.front().values.size(); ++i) {
    line([&](const Report::Column& c) { return inFull(c.values[i]); });
  }
}

void printJson(std::ostream& out, const Report& report) {
  const bool record = report.layout == Report::Layout::record;
  out << '{';
  for (const auto& [name, values] : report.columns) {
    out << '"' << name << "\": " << (record ? "" : "[");
    for (std::size_t i = 0; i < values.size(); ++i) {
      out << (i > 0 ? ", " : "") << (name == "missing" ? inFull(values[i]) : jsonNumber(values[i]));
    }
    out << (record ? "" : "]") << (record && &name == &report.columns.back().name ? "" : ", ");
  }
  if (!record) {
    out << "\"missing\": " << report.missing;
  }
  out << "}\n";
}

}  // namespace stream

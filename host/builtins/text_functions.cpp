// Formatted output and text: printf, cat, WriteText.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "builtins/builtins.hpp"
#include "mathematics/evaluation.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {

namespace {

// One conversion "%-12.4f": flags, width and precision, at most 999 each.
struct Conversion {
  std::string flags;
  char type = 's';
};

// Bytes of UTF-8 that are no continuation: what %-10s pads to.
std::size_t displayed(const std::string& text) {
  std::size_t n = 0;
  for (const char c : text) {
    n += (static_cast<unsigned char>(c) & 0xC0U) != 0x80U ? 1U : 0U;
  }
  return n;
}

std::string formatString(const std::string& flags, std::string value) {
  const bool left = flags.find('-') != std::string::npos;
  std::size_t width = 0;
  std::size_t i = flags.find_first_of("123456789");
  const std::size_t point = flags.find('.');
  if (i != std::string::npos && (point == std::string::npos || i < point)) {
    width = std::stoul(flags.substr(i));
  }
  if (point != std::string::npos) {
    value = value.substr(0, point + 1 < flags.size() ? std::stoul(flags.substr(point + 1)) : 0);
  }
  const std::size_t have = displayed(value);
  const std::string padding(width > have ? width - have : 0, ' ');
  return left ? value + padding : padding + value;
}

// A number m*10^e in decimal digits, of which the first is not 0.
struct Digits {
  bool negative = false;
  std::string digits;
  long exponent = 0;  // of the first digit
};

Digits digitsOf(std::string_view number) {
  Digits d;
  d.negative = number.starts_with('-');
  const std::size_t e = std::min(number.find('e'), number.size());
  long point = 0;
  bool beforePoint = true;
  for (const char c : number.substr(0, e)) {
    if (c == '.') {
      beforePoint = false;
    } else if (c != '-') {
      point += beforePoint ? 1 : 0;
      d.digits += c;
    }
  }
  const std::size_t zeros = std::min(d.digits.find_first_not_of('0'), d.digits.size());
  d.digits.erase(0, zeros);
  d.exponent = point - 1 - static_cast<long>(zeros) +
               (e < number.size() ? std::stol(std::string(number.substr(e + 1))) : 0);
  return d;
}

// %e, %g and %f of what is too large or too small for a double: 1.000000e+400.
std::string formatBeyond(State& s, const Conversion& c, ALGEB value) {
  const std::size_t dot = c.flags.find('.');
  const long given = dot == std::string::npos   ? 6
                     : dot + 1 < c.flags.size() ? std::stol(c.flags.substr(dot + 1))
                                                : 0;
  const bool general = c.type == 'g' || c.type == 'G';
  const auto wanted = static_cast<std::size_t>(general ? std::max(given, 1L) : given + 1);
  Digits d = digitsOf(sourceText(s, roundToDigits(s, value, static_cast<int>(wanted))));
  d.digits.resize(wanted, '0');
  if (general && c.flags.find('#') == std::string::npos) {
    d.digits.erase(std::max<std::size_t>(d.digits.find_last_not_of('0') + 1, 1));
  }
  std::string digits = d.digits.substr(0, 1);
  if (d.digits.size() > 1) {
    digits += "." + d.digits.substr(1);
  }
  digits += (c.type == 'E' || c.type == 'G' ? "E" : "e") + std::string(d.exponent < 0 ? "-" : "+") +
            std::to_string(std::labs(d.exponent));
  const auto has = [&c](char flag) {
    return c.flags.substr(0, c.flags.find_first_of("123456789.")).find(flag) != std::string::npos;
  };
  const std::string sign = d.negative ? "-" : has('+') ? "+" : has(' ') ? " " : "";
  const std::string flags = c.flags.substr(0, dot);
  const std::string padded = formatString(flags, sign + digits);
  const std::size_t missing = padded.size() - sign.size() - digits.size();
  return has('0') && !has('-') ? sign + std::string(missing, '0') + digits : padded;
}

std::string formatNumber(State& s, const Conversion& c, ALGEB x) {
  const ALGEB value = isReal(x) ? x : evalf(s, x, 17);
  if (!isReal(value)) {
    raise(s, "expected a number, received: %1", x);
  }
  if (isFloat(value) && (isUndefined(s, value) || isInfinite(s, value))) {
    std::string flags = c.flags.substr(0, c.flags.find('.'));
    return formatString(flags, isUndefined(s, value) ? "undefined"
                               : value == s.infinity ? "infinity"
                                                     : "-infinity");
  }
  char buffer[1500];
  if (c.type == 'd' || c.type == 'i') {
    const ALGEB whole = toInteger(s, value, Rounding::nearest);
    std::int64_t i = 0;
    if (!fitsInt64(whole, &i)) {
      return formatString(c.flags, sourceText(s, whole));
    }
    std::snprintf(buffer, sizeof buffer, ("%" + c.flags + "ld").c_str(), static_cast<long>(i));
  } else {
    const double number = toDouble(s, value);
    const bool vanishes = number == 0 && sign(value) != 0 && c.type != 'f';
    if (std::isinf(number) || vanishes) {
      return formatBeyond(s, c, value);
    }
    std::snprintf(buffer, sizeof buffer, ("%" + c.flags + c.type).c_str(), number);
  }
  return buffer;
}

std::string formatted(State& s, ALGEB args) {
  if (isNull(args) || !is(argument(s, args, 1), Tag::string)) {
    raise(s, "expected a format, received: %1", args);
  }
  const std::string format(text(argument(s, args, 1)));
  std::string out;
  std::size_t next = 2;
  for (std::size_t i = 0; i < format.size(); ++i) {
    if (format[i] != '%') {
      out += format[i];
      continue;
    }
    if (i + 1 < format.size() && format[i + 1] == '%') {
      out += '%';
      ++i;
      continue;
    }
    Conversion c;
    for (++i; i < format.size() && std::string("-+ 0#").find(format[i]) != std::string::npos; ++i) {
      c.flags += format[i];
    }
    for (int part = 0; part < 2; ++part) {
      if (part == 1) {
        if (i >= format.size() || format[i] != '.') {
          break;
        }
        c.flags += format[i++];
      }
      for (int digits = 0; i < format.size() && format[i] >= '0' && format[i] <= '9' && digits < 3;
           ++digits) {
        c.flags += format[i++];
      }
    }
    c.type = i < format.size() ? format[i] : '\0';
    if (c.type == '\0' || std::string("sdifegEG").find(c.type) == std::string::npos) {
      raise(s, "invalid conversion in the format %1", argument(s, args, 1));
    }
    if (next > argumentCount(args)) {
      raise(s, "too few arguments for the format %1", argument(s, args, 1));
    }
    const ALGEB x = argument(s, args, next++);
    out += c.type == 's' ? formatString(c.flags, plainText(s, x)) : formatNumber(s, c, x);
  }
  if (next <= argumentCount(args)) {
    raise(s, "too many arguments for the format %1", argument(s, args, 1));
  }
  return out;
}

ALGEB writeText(State& s, ALGEB args) {
  if (isNull(args) || argumentCount(args) != 2 || !is(argument(s, args, 1), Tag::string)) {
    raise(s, "WriteText expects a file and a text, received: %1", args);
  }
  const std::string path(text(argument(s, args, 1)));
  const std::string contents = plainText(s, argument(s, args, 2));
  std::FILE* file = std::fopen(path.c_str(), "wb");
  const bool written =
      file != nullptr && std::fwrite(contents.data(), 1, contents.size(), file) == contents.size();
  if (file == nullptr || std::fclose(file) != 0 || !written) {
    raise(s, "unable to write the file %1", argument(s, args, 1));
  }
  return s.null;
}

}  // namespace

void defineTextFunctions(State& state) {
  defineFunction(state, "printf", [](State& s, ALGEB args) {
    s.output(formatted(s, args));
    return s.null;
  });
  defineFunction(state, "format",
                 [](State& s, ALGEB args) { return string(s, formatted(s, args)); });
  defineFunction(state, "cat", [](State& s, ALGEB args) {
    std::string all;
    for (std::size_t i = 1; !isNull(args) && i <= argumentCount(args); ++i) {
      all += plainText(s, argument(s, args, i));
      if (all.size() > (std::size_t{1} << 28U)) {
        raise(s, "text too long");
      }
    }
    return string(s, all);
  });
  defineFunction(state, "WriteText", writeText);
}

}  // namespace vexel

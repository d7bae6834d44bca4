// Files of separated values and dates in the language: what is read prints, is written and is read
// again as what it was; and functions of tables with whatever columns there are.

#include <algorithm>
#include <optional>
#include <vexel/session.hpp>

#include "cli/stream/table.hpp"
#include "files/stage.hpp"

namespace fuzz {

namespace {

namespace vx = vexel;

std::string quoted(vx::Kernel& kernel, const std::string& text) {
  return kernel.string(text).source();
}

// The value of a text of statements; nothing where one of them raises an error.
std::optional<vx::Value> valueOf(vx::Kernel& kernel, const std::string& text) {
  try {
    return kernel.eval(text);
  } catch (const vx::Error&) {
    return std::nullopt;
  }
}

// Prints it in every form.
void print(const std::optional<vx::Value>& value) {
  if (value) {
    try {
      value->source(), value->json(), vx::shortened(*value), vx::displayed(*value, true);
    } catch (const vx::Error&) {
    }
  }
}

std::string readOptions(Choices& choices) {
  std::string text;
  if (choices.below(4) == 3) {
    constexpr const char* kSeparators[] = {";", "\\t", " ", "|", ".", "-"};
    text += std::string(", separator = \"") + kSeparators[choices.below(6)] + '"';
  }
  if (choices.below(4) == 3) {
    text += ", decimal = \",\"";
  }
  if (choices.below(4) == 3) {
    constexpr const char* kMissing[] = {"\"-\"", "[-999, \"x\"]", "\"\"", "1", "[]"};
    text += std::string(", na = ") + kMissing[choices.below(5)];
  }
  if (choices.below(4) == 3) {
    text += choices.flag() ? ", header = false" : ", header = [\"a\", \"b\"]";
  }
  if (choices.below(4) == 3) {
    text += ", skip = " + std::to_string(choices.below(4));
  }
  if (choices.below(4) == 3) {
    constexpr const char* kTypes[] = {"number", "text",           "date",
                                      "auto",   "[number, text]", "[x = date]"};
    text += std::string(", types = ") + kTypes[choices.below(6)];
  }
  return text;
}

// One column as the command reads it, where both do.
void checkColumn(vx::Kernel& kernel, const std::string& column) {
  stream::Piece piece;
  try {
    stream::openTable("in.csv", {column, "", {}})->read(std::size_t{1} << 30, piece);
  } catch (const std::runtime_error&) {
    return;
  } catch (const std::invalid_argument&) {
    return;
  }
  const auto value = valueOf(kernel, "ReadCSV(\"in.csv\", " + column + ");");
  if (!value) {
    return;
  }
  const std::vector<double> numbers = value->numbers();
  if (!same(numbers, piece.values)) {
    fail("the language and the command read different columns: " + value->source());
  }
}

// What was written is read again as what it was, unless the headings were made up.
void checkWritten(vx::Kernel& kernel) {
  const auto read = valueOf(kernel, "WriteCSV(\"out.csv\", t): u := ReadCSV(\"out.csv\");");
  const std::string wanted = kernel.eval("t;").source();
  if (read && read->source() != wanted) {
    fail("written and read again:\n" + wanted + '\n' + read->source());
  }
  if (!read && kernel.eval("row_count(t) * nops(headings(t));").number() > 0) {
    fail("written and not read again: " + wanted);
  }
}

}  // namespace

void checkTable(Stage& stage, vx::Kernel& kernel, Choices& choices) {
  const std::string options = readOptions(choices);
  const std::size_t which = choices.below(3);
  const std::size_t calls = choices.below(4);
  Choices chosen = choices;  // the functions, from the same bytes
  stage.write("in.csv", rest(choices));
  checkColumn(kernel, std::to_string(which + 1));
  const auto t = valueOf(kernel, "t := ReadCSV(\"in.csv\"" + options + ");");
  print(valueOf(kernel, "csv_report();"));
  print(t);
  if (!t) {
    return;
  }
  if (options.empty()) {
    checkWritten(kernel);
  }
  std::vector<std::string> headings;
  const vx::Value list = kernel.eval("headings(t);");
  for (std::size_t i = 0; i < list.size() && i < 40; ++i) {
    headings.push_back(quoted(kernel, list[i].text()));
  }
  if (headings.empty()) {
    return;
  }
  for (std::size_t i = 0; i <= calls; ++i) {
    const auto column = [&] { return headings[chosen.below(headings.size())]; };
    const std::string a = column();
    const std::string b = column();
    const std::string texts[] = {
        "sort_by(t, " + a + ");",
        "sort_by(t, [" + a + ", " + b + "], descending = [true, false]);",
        "group(t, " + a + ");",
        "group(t, [" + a + ", " + b + "], g -> describe(g[" + b + "]));",
        "group(t, " + a + ", total = g -> sum(g[" + b + "]));",
        "join(t, t, " + a + ");",
        "join(t, head(t, 2), " + a + ", kind = full);",
        "filter(t, r -> r[" + a + "] = r[" + b + "]);",
        "t[" + a + "];",
        "t[[" + b + ", " + a + "]][1 .. 1];",
        "frame(t, z = t[" + a + "]);",
        "tally(t[" + a + "]);",
        "describe(t[" + a + "]);",
        "number(t[" + a + "], otherwise = undefined);",
        "date(t[" + a + "], otherwise = NULL);",
        "split(t[" + a + "], \" \");",
        "upper(t[" + a + "]), length(t[" + a + "]), trim(t[" + a + "]);",
        "replace(t[" + a + "], \"a\", \"bc\"), substring(t[" + a + "], 2, -2);",
        "median(t[" + a + "], weights = t[" + b + "], missing = omit);",
        "picture(plot(t[" + a + "], t[" + b + "]));",
        "rows(t), head(t, 1), tail(t, 1);"};
    print(valueOf(kernel, texts[chosen.below(std::size(texts))]));
  }
}

// Lines as dates, with a format or without: a day that is read is written as what it was.
void checkDates(Stage&, vx::Kernel& kernel, Choices& choices) {
  const bool formatted = choices.flag();
  const std::string all = rest(choices);
  const std::string format =
      formatted ? quoted(kernel, all.substr(0, std::min(all.find('\n'), all.size()))) : "";
  const std::string text =
      quoted(kernel, formatted ? all.substr(std::min(all.find('\n') + 1, all.size())) : all);
  if (!valueOf(kernel, "d := date(" + text + (formatted ? ", format = " + format : "") + ");")) {
    return;
  }
  kernel.eval("e := date(date_text(d)): f := date(d[year], d[month], d[day]): g := date(d[days]):");
  if (!kernel.eval("if e = d and f = d and g = d and e - d = 0 then true else false end;")
           .boolean()) {
    fail("dates there and back: " + text);
  }
  if (formatted) {
    print(valueOf(kernel, "date_text(d, " + format + ");"));
  }
  print(valueOf(kernel, "d + 1, d - 400, d[weekday], d[yearday], d[week];"));
}

}  // namespace fuzz

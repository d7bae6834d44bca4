// A column of a file through describe, quantile and tally: pieces and interrupted work give what
// the whole gives, and that is what the functions give for the numbers of the file.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <optional>
#include <vexel/names.hpp>
#include <vexel/ordering.hpp>
#include <vexel/statistics.hpp>

#include "cli/stream/table.hpp"
#include "cli/tools.hpp"
#include "files/stage.hpp"

namespace fuzz {

namespace {

namespace vx = vexel;
using Words = std::vector<std::string>;

constexpr const char* kColumns[] = {"", "1", "2", "x", "y", "3", "0", "x y"};
constexpr const char* kMissingTexts[] = {"-", "-999", "", "x", "1"};

struct Asked {
  std::string file;
  std::string command;
  vx::Missing missing = vx::Missing::omit;
  std::string column;
  std::string weights;
  std::string na;
  std::vector<double> q;
  vx::QuantileMethod method = vx::QuantileMethod::linear;
  bool hasNa = false;
  std::string rows;  // in a piece

  Words words() const {
    Words all{command, file, "--json", "--quiet"};
    const auto add = [&](const char* option, const std::string& value) {
      all.insert(all.end(), {option, value});
    };
    add("--missing", std::string(vx::nameOf(missing)));
    if (!column.empty()) {
      add("-c", column);
    }
    if (!weights.empty()) {
      add("-w", weights);
    }
    if (hasNa) {
      add("--na", na);
    }
    if (command == "quantile") {
      add("--method", std::string(vx::nameOf(method)));
      for (const double p : q) {
        char text[40];
        std::snprintf(text, sizeof text, "%.17g", p);
        add("-q", text);
      }
    }
    return all;
  }
};

Asked asked(Choices& choices, const char* file) {
  constexpr const char* kCommands[] = {"describe", "quantile", "tally"};
  Asked a;
  a.file = file;
  a.command = kCommands[choices.below(3)];
  a.missing = choices.missing();
  a.column = kColumns[choices.below(std::size(kColumns))];
  a.weights = choices.below(3) == 0 ? kColumns[choices.below(std::size(kColumns))] : "";
  a.method = choices.one<vx::QuantileMethod>(9);
  a.hasNa = choices.below(4) == 3;
  a.na = kMissingTexts[choices.below(std::size(kMissingTexts))];
  a.rows = std::to_string(1 + choices.below(7));
  a.q = {static_cast<double>(choices.byte()) / 255, 0.5, 1};
  return a;
}

Words with(Words words, const Words& more) {
  words.insert(words.end(), more.begin(), more.end());
  return words;
}

// The numbers behind "name": in a line of JSON, one or a list of them.
std::vector<double> numbersOf(const std::string& json, const std::string& name) {
  std::vector<double> numbers;
  std::size_t at = json.find('"' + name + "\": ");
  expect(at != std::string::npos, "the JSON has all its parts");
  at += name.size() + 4;
  const bool list = json[at] == '[';
  at += list ? 1 : 0;
  while (at < json.size() && json[at] != ']' && json[at] != '}') {
    if (json[at] == '{') {  // {"float": "infinity"}
      const std::string_view word = std::string_view(json).substr(at + 11);
      numbers.push_back(word.starts_with("undefined")  ? NAN
                        : word.starts_with("infinity") ? INFINITY
                                                       : -INFINITY);
      at = json.find('}', at) + 1;
    } else {
      char* end = nullptr;
      numbers.push_back(std::strtod(json.c_str() + at, &end));
      expect(end != json.c_str() + at, "the JSON has numbers where they belong");
      at = static_cast<std::size_t>(end - json.c_str());
    }
    if (!list) {
      break;
    }
    at += json[at] == ',' ? 2 : 0;
  }
  return numbers;
}

std::string shown(const Ran& ran) { return ran.out + ran.err; }

// The file as the command reads it; nothing where that is refused.
std::optional<stream::Piece> readPiece(const Asked& a) {
  stream::Piece piece;
  try {
    const stream::Columns columns{a.column, a.weights, a.hasNa ? Words{a.na} : Words{}};
    const auto table = stream::openTable(a.file, columns);
    table->read(std::size_t{1} << 30, piece);
  } catch (const stream::Unreadable&) {
    return std::nullopt;
  } catch (const std::invalid_argument&) {
    return std::nullopt;
  }
  return piece;
}

void requireSame(const std::vector<double>& a, const std::vector<double>& b, const char* what) {
  for (std::size_t i = 0; i < std::min(a.size(), b.size()); ++i) {
    expect(same(a[i], b[i]), what, a[i], b[i], static_cast<double>(i));
  }
  expect(a.size() == b.size(), what, static_cast<double>(a.size()), static_cast<double>(b.size()));
}

// What the functions give for the same numbers.
void checkNumbers(const Asked& a, const stream::Piece& piece, const std::string& json) {
  const vx::Data x = piece.values;
  const vx::Data w = a.weights.empty() ? vx::Data() : vx::Data(piece.weights);
  const auto number = [&](const char* name) { return numbersOf(json, name).at(0); };
  const double missing = number("missing");
  if (a.command == "describe") {
    const vx::Description d = vx::describe(x, {.weights = w, .missing = a.missing});
    expect(same(number("count"), d.count) && same(missing, static_cast<double>(d.missing)),
           "describe of a file: count", number("count"), d.count, missing);
    if (a.weights.empty()) {
      expect(d.count + missing == static_cast<double>(x.size()), "count + missing = rows", d.count,
             missing);
    }
    requireSame({number("mean"), number("std"), number("min"), number("q1"), number("median"),
                 number("q3"), number("max")},
                {d.mean, d.std, d.min, d.q1, d.median, d.q3, d.max}, "describe of a file");
    expect(std::isnan(number("skewness")) == std::isnan(d.skewness), "skewness", number("skewness"),
           d.skewness);
  } else if (a.command == "quantile") {
    requireSame(numbersOf(json, "q"), a.q, "probabilities");
    requireSame(numbersOf(json, "quantiles"),
                vx::quantile(x, a.q, {.weights = w, .method = a.method, .missing = a.missing}),
                "quantile of a file");
  } else {
    const auto t = vx::tally(x, {.weights = w, .missing = a.missing});
    requireSame(numbersOf(json, "values"), t.values, "tally of a file: values");
    requireSame(numbersOf(json, "counts"), t.counts, "tally of a file: counts");
    expect(missing == static_cast<double>(t.missing), "tally of a file: missing", missing,
           static_cast<double>(t.missing));
  }
}

// Ended after each piece, and taken up again.
Ran inTurns(const Stage& stage, const Words& words, const std::string& rows) {
  const Words turn = with(words, {"--rows", rows, "--state", "work", "--stop-after", "0"});
  Ran ran = stage.command(turn);
  for (int turns = 0; ran.err.find("stopped;") != std::string::npos; ++turns) {
    expect(turns < 200, "interrupted work comes to an end");
    ran = stage.command(turn);
  }
  return ran;
}

void checkColumn(const Stage& stage, const Asked& a) {
  const Words words = a.words();
  const Ran whole = stage.command(words);
  expect(whole.status >= 0 && whole.status <= 2, "status", whole.status);
  expect((whole.status == 0) == !whole.out.empty() && (whole.status != 0) == !whole.err.empty(),
         "a result or an error", whole.status);
  const auto requireEqual = [&](const Ran& other, const char* what) {
    if (other.status != whole.status || other.out != whole.out) {
      fail(a.command + ' ' + what + ":\n" + shown(whole) + shown(other));
    }
  };
  requireEqual(stage.command(with(words, {"--rows", a.rows})), "in pieces");
  const std::optional<stream::Piece> piece = readPiece(a);
  expect(piece.has_value() || whole.status != 0, "what is refused is refused twice");
  if (piece && piece->values.size() < 16) {
    requireEqual(inTurns(stage, words, a.rows), "interrupted");
  }
  if (whole.status == 0) {
    checkNumbers(a, *piece, whole.out);
  }
}

}  // namespace

void checkCsvColumn(Stage& stage, Choices& choices) {
  const Asked a = asked(choices, "in.csv");
  const std::string text = rest(choices);
  stage.write(a.file, text);
  checkColumn(stage, a);
  if (a.command == "tally") {
    const Ran file = stage.command(a.words());
    Words words = a.words();
    words[1] = "-";
    const Ran piped = stage.command(words, text);
    expect(file.status == piped.status && file.out == piped.out, "tally of standard input");
  }
}

// The head is the first line, which gets its size before it, or as it is.
void checkNpyColumn(Stage& stage, Choices& choices) {
  const Asked a = asked(choices, "in.npy");
  const bool sized = choices.below(4) != 3;
  std::string text = rest(choices);
  if (sized) {
    const std::size_t size = std::min(text.find('\n'), text.size());
    std::string head("\x93NUMPY\x01\x00", 8);
    head += static_cast<char>(size & 255U);
    head += static_cast<char>(size >> 8U & 255U);
    text.insert(0, head);
  }
  stage.write(a.file, text);
  checkColumn(stage, a);
}

// The file of interrupted work, with changes: it is refused, or the work goes on and ends.
void checkStateFile(Stage& stage, Choices& choices) {
  Asked a = asked(choices, "in.csv");
  a.missing = vx::Missing::omit;
  a.column = "x";
  a.weights = "";
  const Words words = with(a.words(), {"--rows", "2", "--state", "work"});
  stage.write(a.file, "x\n3\n1\nNA\n2.5\n1e300\n");
  const Ran whole = stage.command(words);
  const Words stopping = with(words, {"--stop-after", "0"});
  for (std::size_t turns = 1 + choices.below(3); turns > 0; --turns) {
    stage.command(stopping);
  }
  std::error_code none;
  if (!std::filesystem::exists("work", none)) {
    return;
  }
  const bool repaired = choices.flag();
  std::string bytes = *readAll("work");
  const std::string before = bytes;
  for (std::size_t n = 1 + choices.below(4); n > 0; --n) {
    const std::size_t at = choices.below(std::min<std::size_t>(bytes.size(), 60000));
    switch (choices.below(4)) {
      case 0:
        bytes.insert(at, 1, static_cast<char>(choices.byte()));
        break;
      case 1:
        bytes.erase(at, 1 + choices.below(8));
        break;
      default:
        bytes[at] = static_cast<char>(choices.byte());
    }
    if (bytes.empty()) {
      break;
    }
  }
  const std::size_t check = bytes.find("\ncheck ");
  if (repaired && check != std::string::npos && bytes.size() >= check + 23) {
    std::uint64_t hash = 0xCBF29CE484222325U;
    for (std::size_t i = 0; i <= check; ++i) {
      hash = (hash ^ static_cast<unsigned char>(bytes[i])) * 0x100000001B3U;
    }
    char text[20];
    std::snprintf(text, sizeof text, "%016llx", static_cast<unsigned long long>(hash));
    bytes.replace(check + 7, 16, text);
  }
  stage.write("work", bytes);
  const Ran ran = stage.command(words);
  if (ran.status != 0) {
    expect(!ran.err.empty() && ran.out.empty(), "a reason");
  } else if (!repaired && ran.out != whole.out) {
    fail("changed state is taken:\n" + shown(whole) + shown(ran));
  }
}

// Lines up to a zero are the arguments, what follows is the file.
void checkArguments(Stage& stage, Choices& choices) {
  const std::string all = rest(choices);
  const std::size_t end = std::min(all.find('\0'), all.size());
  const std::string text = all.substr(std::min(end + 1, all.size()));
  stage.write("in.csv", text);
  stage.write("in.vexel", text);
  stage.write("in.npy", text);
  Words words;
  for (std::size_t at = 0; at < end && words.size() < 40;) {
    const std::size_t stop = std::min(all.find('\n', at), end);
    words.push_back(all.substr(at, stop - at));
    std::replace(words.back().begin(), words.back().end(), '/', '_');  // nothing outside
    at = stop + 1;
  }
  const Ran ran = stage.command(words, text);
  expect(ran.status >= 0 && ran.status <= 2, "status", ran.status);
  expect(ran.status == 0 || !ran.err.empty() || !ran.out.empty(), "a reason", ran.status);
}

}  // namespace fuzz

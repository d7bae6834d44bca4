// Calls made from bytes: valid calls of entry points with arguments replaced, dropped and added,
// and statements that call built-in functions with arguments of any kind.
//
// Used by the fuzz target and, fed with pseudo-random bytes, by a test.  Sizes and counts stay
// small enough that no call takes long: the dictionary has no integers between 2^20 and 2^62.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>
#include <vexel/kernel.hpp>
#include <vexel/session.hpp>

#include "valid_calls.hpp"

// Bytes to choices; all choices are 0 when the bytes have run out.
class ByteSource {
 public:
  ByteSource(const std::uint8_t* data, std::size_t size) : data_(data), left_(size) {}
  bool empty() const { return left_ == 0; }
  std::size_t below(std::size_t n) {
    std::size_t x = next();
    if (n > 256) {
      x = x << 8U | next();
    }
    return x % n;
  }

 private:
  std::uint8_t next() {
    if (left_ == 0) {
      return 0;
    }
    --left_;
    return *data_++;
  }
  const std::uint8_t* data_;
  std::size_t left_;
};

class CallGrammar {
 public:
  explicit CallGrammar(vexel::Kernel& kernel) : kernel_(kernel) {
    read("/valid_calls.txt");
    makeDictionary();
    const std::vector<std::string> entries = kernel.entryPoints();
    for (std::string& name : vexel::knownNames(kernel)) {
      if (std::find(entries.begin(), entries.end(), name) == entries.end() && name != "quit") {
        builtins_.push_back(std::move(name));
      }
    }
    std::sort(builtins_.begin(), builtins_.end());
  }

  // The built-in functions, all but the one that ends the session; and texts of values of every
  // kind.
  const std::vector<std::string>& builtins() const { return builtins_; }
  const std::vector<std::string>& dictionary() const { return dictionary_; }

  // Takes the calls of another file, too.
  void read(const std::string& file) {
    const ValidCalls valid = readValidCalls(TEST_DATA_DIR + file);
    preparation_ += valid.preparation;
    for (const ValidCall& call : valid.calls) {
      calls_.push_back({call.entry(), splitArguments(call.text)});
    }
  }

  std::size_t size() const { return calls_.size(); }
  const std::string& entry(std::size_t call) const { return calls_[call].entry; }
  // Its arguments' text, which tells it from other calls of the same entry point.
  std::string pattern(std::size_t call) const {
    std::string text = calls_[call].entry;
    for (const std::string& argument : calls_[call].arguments) {
      text += "," + argument;
    }
    return text;
  }
  const std::string& preparation() const { return preparation_; }

  // The text of a call like the given one: numbers, samples and truth values of it are others now
  // and then, a whole argument rarely.
  std::string variation(std::size_t call, ByteSource& source) const {
    std::string text;
    for (const std::string& argument : calls_[call].arguments) {
      text += text.empty() ? "" : ", ";
      text += source.below(20) == 0 ? dictionary_[source.below(dictionary_.size())]
                                    : varied(argument, source);
    }
    if (source.below(40) == 0) {
      text += (text.empty() ? "" : ", ") + dictionary_[source.below(dictionary_.size())];
    }
    return calls_[call].entry + "(" + text + ")";
  }

  // Makes up to 8 calls on one state of the host.  Errors and interrupts are fine; crashes, hangs
  // and sanitizer reports are what this is for.  Returns how many calls were made.
  int run(ByteSource& source) {
    int made = 0;
    try {
      makeCalls(source, made);
    } catch (const vexel::Interrupted&) {
      // The caller's time limit.
    }
    return made;
  }

 private:
  void makeCalls(ByteSource& source, int& made) {
    kernel_.eval("Digits := 15: clear(_EnvStatisticsIterations):");
    kernel_.eval(preparation_);
    vexel::Value last = kernel_.null();
    for (; made < 8 && !source.empty(); ++made) {
      if (source.below(8) == 0) {
        callBuiltin(source);
        continue;
      }
      const Call& call = calls_[source.below(calls_.size())];
      std::vector<vexel::Value> args;
      for (const std::string& text : call.arguments) {
        args.push_back(source.below(3) == 0 ? other(source, last) : kernel_.eval(text));
      }
      switch (source.below(12)) {
        case 0:
          args.push_back(other(source, last));
          break;
        case 1:
          if (!args.empty()) {
            args.pop_back();
          }
          break;
        default:
          break;
      }
      try {
        last = kernel_.callValues(call.entry, args);
      } catch (const vexel::Error&) {
        last = kernel_.null();
      }
    }
  }

  void callBuiltin(ByteSource& source) {
    std::string text = builtins_[source.below(builtins_.size())] + "(";
    for (std::size_t n = source.below(5), i = 0; i < n; ++i) {
      text += (i > 0 ? ", " : "") + dictionary_[source.below(dictionary_.size())];
    }
    try {
      kernel_.eval(text + "):");
    } catch (const vexel::Error&) {
    }
  }

  struct Call {
    std::string entry;
    std::vector<std::string> arguments;
  };

  // "f(a, [b, c], g(d))" to {"a", "[b, c]", "g(d)"}.
  static std::vector<std::string> splitArguments(const std::string& call) {
    std::vector<std::string> arguments;
    const std::string inner = call.substr(call.find('(') + 1, call.rfind(')') - call.find('(') - 1);
    std::string current;
    int depth = 0;
    for (const char c : inner) {
      depth += (c == '(' || c == '[') ? 1 : (c == ')' || c == ']') ? -1 : 0;
      if (c == ',' && depth == 0) {
        arguments.push_back(current);
        current.clear();
      } else if (c != ' ' || !current.empty()) {
        current += c;
      }
    }
    if (!current.empty()) {
      arguments.push_back(current);
    }
    return arguments;
  }

  static std::string variedNumber(const std::string& number, ByteSource& source) {
    static const double factors[] = {0.5, 2.0, 0.1, 10.0, 1.3, 0.01, 100.0, 1e-6, 0.75};
    static const int steps[] = {1, -1, 2, 7, 40, 300, 3000};
    static const char* const specials[] = {"0", "1", "0.0", "1.0", "-1", "undefined", "infinity"};
    if (source.below(12) == 0) {
      return specials[source.below(std::size(specials))];
    }
    if (number.find_first_of(".e") == std::string::npos) {
      return std::to_string(std::stol(number) + steps[source.below(std::size(steps))]);
    }
    std::ostringstream out;
    out << std::strtod(number.c_str(), nullptr) * factors[source.below(std::size(factors))];
    return out.str();
  }

  static std::string variedWord(const std::string& word, ByteSource& source) {
    static const char* const samples[] = {"A", "B", "W", "N", "E", "J", "S",  "G",
                                          "R", "Z", "M", "D", "P", "Q", "P2", "Q2"};
    if (word == "true" || word == "false") {
      return word == "true" ? "false" : "true";
    }
    return word.size() == 1 && word != "x" && word != "y" && word != "w"
               ? samples[source.below(std::size(samples))]
               : word;
  }

  // A text with a third of its numbers, samples (names of one letter) and truth values replaced.
  static std::string varied(const std::string& text, ByteSource& source) {
    std::string result;
    for (std::size_t i = 0; i < text.size();) {
      const bool digit = std::isdigit(static_cast<unsigned char>(text[i])) != 0;
      const bool letter = std::isalpha(static_cast<unsigned char>(text[i])) != 0;
      std::size_t end = i + 1;
      if (digit) {
        while (end < text.size() &&
               (std::isdigit(static_cast<unsigned char>(text[end])) != 0 || text[end] == 'e' ||
                (text[end] == '.' && text.compare(end, 2, "..") != 0 && text[end - 1] != '.') ||
                (text[end] == '-' && text[end - 1] == 'e'))) {
          ++end;
        }
      } else if (letter) {
        while (end < text.size() &&
               (std::isalnum(static_cast<unsigned char>(text[end])) != 0 || text[end] == '_')) {
          ++end;
        }
      }
      const std::string token = text.substr(i, end - i);
      const bool width = digit && i > 1 && text[i - 1] == '[' && text[i - 2] != ' ' &&
                         std::isalpha(static_cast<unsigned char>(text[i - 2])) != 0;  // float[8]
      const bool changed = (digit || letter) && !width && source.below(3) == 0;
      result += !changed ? token : digit ? variedNumber(token, source) : variedWord(token, source);
      i = end;
    }
    return result;
  }

  vexel::Value other(ByteSource& source, const vexel::Value& last) {
    if (source.below(16) == 0) {
      return last;
    }
    return kernel_.eval(dictionary_[source.below(dictionary_.size())]);
  }

  void makeDictionary() {
    dictionary_ = {"undefined",
                   "infinity",
                   "-infinity",
                   "0",
                   "1",
                   "-1",
                   "2",
                   "3",
                   "7",
                   "50",
                   "100",
                   "1000",
                   "2^62",
                   "2^63",
                   "-2^63",
                   "2^64",
                   "10^30",
                   "-10^30",
                   "1/3",
                   "-1/7",
                   "0.0",
                   "-0.0",
                   "0.5",
                   "1.0",
                   "-2.5",
                   "1e300",
                   "-1e300",
                   "1e-300",
                   "5e-324",
                   "1e400",
                   "1e-400",
                   "Pi",
                   "sqrt(2)",
                   "foo",
                   "foo + 1",
                   "\"text\"",
                   "[]",
                   "[1]",
                   "[0.25, 2]",
                   "[[1]]",
                   "[1, [2, 3]]",
                   "[24, [0.0, 1.0]]",
                   "[[0, [24, [0.0, 1.0]]]]",
                   "NULL",
                   "0 .. 1",
                   "1 .. 0",
                   "-infinity .. 0",
                   "foo .. 3",
                   "x = 1",
                   "true",
                   "false",
                   "x -> x",
                   "x -> undefined",
                   "x -> 1/0",
                   "x -> error(\"no\")",
                   "() -> 1",
                   "x -> x + foo",
                   "x -> [x]",
                   "x -> x > 2",
                   "(x, y) -> x + y",
                   "x -> -x",
                   "x -> 0",
                   "sin",
                   "table([1 = 2])",
                   "Complex(1, 2)",
                   "E",
                   "A",
                   "M",
                   "Z",
                   "O",
                   "G",
                   "STATS_InitializeQRStream_HW(2, 1)",
                   "STATS_InitializeQRStream_HW(3, 2)"};
    const std::string types[] = {"anything",   "complex",  "integer[1]", "integer[2]", "integer[4]",
                                 "integer[8]", "float[8]", "complex[8]", "float[4]"};
    for (const std::string& type : types) {
      for (const char* rest : {"storage = rectangular", "storage = sparse", "order = row"}) {
        for (const char* shape : {"1..0", "1..1", "0..2", "-5..2", "1..64, [3, 1, 2, 3]",
                                  "1..3, 1..2", "2..1, 1..5", "1..2, 1..2, 1..2"}) {
          dictionary_.push_back("Array(" + std::string(shape) + ", datatype = " + type + ", " +
                                rest + ")");
        }
      }
    }
    dictionary_.insert(
        dictionary_.end(),
        {"Array([1.0, undefined, infinity, -infinity, 0.0], datatype = float[8])",
         "Array([1.0, undefined, 1e30], datatype = float[4])",
         "Array([2^63 - 1, -2^63, 0], datatype = integer[8])",
         "Array([-128, 127, 0, 1], datatype = integer[1])", "Array([foo, 1, NULL, undefined, 1/2])",
         "Array([1, 2, 3, 4], datatype = anything)",
         "Array(4611686018427387900..4611686018427387902, datatype = float[8])",
         "Array(2^63 - 3 .. 2^63 - 1, [3, 1, 2], datatype = float[8])",
         "Array(2^63 - 3 .. 2^63 - 1, [3, 1, 2], storage = sparse)",
         "Array(-2^63 .. 5 - 2^63, 1..0, datatype = float[8])",
         "Array(2^63 - 2 .. 2^63 - 1, 2^63 - 2 .. 2^63 - 1, [[1, 2], [3, 4]], datatype = "
         "integer[8])"});
  }

  vexel::Kernel& kernel_;
  std::string preparation_;
  std::vector<Call> calls_;
  std::vector<std::string> dictionary_;
  std::vector<std::string> builtins_;
};

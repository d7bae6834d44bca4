// Calls of every entry point with what they gave: values to 12 digits, errors, draws taken, arrays
// written to.
//
//   recorded_calls DIRECTORY             makes the calls of the record and compares
//   recorded_calls --record DIRECTORY    writes the record anew, after a change that was meant
//   recorded_calls --dump N              N calls of each kind with every bit of their values
//   ... LIBRARY                          with another build of the library
//
// The record is DIRECTORY/<entry point>.txt: a line with the call, a line with what came of it.
// Each call begins with the same samples and with a seed of its own.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <set>

#include "call_grammar.hpp"
#include "watchdog.hpp"

namespace {

constexpr int kTried = 60;  // calls of a kind, of which are recorded so many
constexpr int kValues = 9;
constexpr int kErrors = 3;
constexpr std::size_t kWholeArray = 10;  // longer ones are recorded by a few numbers

std::uint64_t hash(std::string_view text) {
  std::uint64_t h = 14695981039346656037U;
  for (const char c : text) {
    h = (h ^ static_cast<unsigned char>(c)) * 1099511628211U;
  }
  return h;
}

class Caller {
 public:
  explicit Caller(const char* library) {
    kernel_.loadLibrary(library);
    kernel_.onUserInfo([](int, const std::string&, const std::string&) {});
  }

  // What came of a call, whole; empty when it took too long.
  std::string outcome(const CallGrammar& grammar, const std::string& call) {
    kernel_.eval("Digits := 15: clear(_EnvStatisticsIterations):");
    kernel_.eval(grammar.preparation());
    kernel_.seed(hash(call));
    const std::map<std::string, std::string> before = samples();
    const std::uint64_t draws = kernel_.drawsTaken();
    std::string result;
    try {
      const Watchdog watchdog(2);
      result = kernel_.eval(call + ":").json();
    } catch (const vexel::Error& e) {
      result = "Error: " + e.message();
      for (const vexel::Value& argument : e.arguments()) {
        result += "; " + (argument.isNull() ? "NULL" : argument.json());
      }
    } catch (const vexel::Interrupted&) {
      return "";
    }
    for (const auto& [name, value] : samples()) {
      result += value == before.at(name) ? "" : "; " + name + " = " + value;
    }
    if (kernel_.drawsTaken() != draws) {
      result += "; draws: " + std::to_string(kernel_.drawsTaken() - draws);
    }
    for (const std::string usual = R"(, "order": "column", "storage": "rectangular")";;) {
      const std::size_t at = result.find(usual);
      if (at == std::string::npos) {
        break;
      }
      result.erase(at, usual.size());
    }
    // Addresses are never the same.
    for (std::size_t at = 0; (at = result.find("0x", at)) != std::string::npos; at += 2) {
      const std::size_t end = result.find_first_not_of("0123456789abcdef", at + 2);
      result.erase(at + 2, (end == std::string::npos ? result.size() : end) - at - 2);
    }
    return result;
  }

  vexel::Kernel& kernel() { return kernel_; }

 private:
  std::map<std::string, std::string> samples() {
    std::map<std::string, std::string> all;
    for (const char* name :
         {"A", "B", "W", "N", "E", "J", "S", "G", "R", "Z", "M", "O", "D", "P", "Q", "room"}) {
      all[name] = kernel_.eval(std::string(name) + ":").json();
    }
    return all;
  }

  vexel::Kernel kernel_;
};

std::size_t numberEnd(const std::string& text, std::size_t i) {
  for (const char* special :
       {"{\"float\": \"undefined\"}", "{\"float\": \"infinity\"}", "{\"float\": \"-infinity\"}"}) {
    if (text.compare(i, std::strlen(special), special) == 0) {
      return i + std::strlen(special);
    }
  }
  const auto digits = [&](std::size_t at) {
    while (at < text.size() && std::isdigit(static_cast<unsigned char>(text[at])) != 0) {
      ++at;
    }
    return at;
  };
  if (i > 0 && std::isalnum(static_cast<unsigned char>(text[i - 1])) != 0) {
    return i;
  }
  const std::size_t first = text[i] == '-' ? i + 1 : i;
  std::size_t end = digits(first);
  if (end == first) {
    return i;
  }
  if (text.compare(end, 1, ".") == 0 && digits(end + 1) > end + 1) {  // not the range 1..2
    end = digits(end + 1);
  }
  if (text.compare(end, 1, "e") == 0) {
    const std::size_t exponent =
        end + (end + 1 < text.size() && (text[end + 1] == '-' || text[end + 1] == '+') ? 2 : 1);
    end = digits(exponent) > exponent ? digits(exponent) : end;
  }
  return end;
}

std::string rounded(const std::string& number) {
  if (number.find_first_of(".e") == std::string::npos || number[0] == '{') {
    return number;
  }
  char text[40];
  std::snprintf(text, sizeof text, "%.12g", std::strtod(number.c_str(), nullptr));
  return text;
}

// A run of numbers by its length, its beginning, a sum that tells every change of a magnitude or
// place, and one that tells every change of a sign.
std::string shortRun(const std::vector<std::string>& run) {
  double magnitudes = 0.0;
  double signs = 0.0;
  for (std::size_t i = 0; i < run.size(); ++i) {
    const double weight = 1.0 + std::fmod(static_cast<double>(i) * 0.6180339887498949, 1.0);
    const double x = run[i][0] == '{' ? static_cast<double>(run[i].size())
                                      : std::strtod(run[i].c_str(), nullptr);
    magnitudes += weight * std::fabs(x);
    signs += run[i][0] == '-' ? weight : 0.0;
  }
  char text[120];
  std::snprintf(text, sizeof text, "%s, %s, %s ... %zu numbers, %.12g %.12g",
                rounded(run[0]).c_str(), rounded(run[1]).c_str(), rounded(run[2]).c_str(),
                run.size(), magnitudes, signs);
  return text;
}

// The text with floats to 12 digits, and long runs of numbers cut; of a long text the beginning, a
// hash of all but its numbers, and the run of these.
std::string shortened(const std::string& text) {
  constexpr std::size_t kLongText = 320;
  std::string result;
  std::string rest;
  std::vector<std::string> run;
  std::vector<std::string> all;
  const auto flush = [&] {
    if (run.size() > kWholeArray) {
      result += shortRun(run);
    } else {
      for (std::size_t i = 0; i < run.size(); ++i) {
        result += (i > 0 ? ", " : "") + rounded(run[i]);
      }
    }
    all.insert(all.end(), run.begin(), run.end());
    run.clear();
  };
  for (std::size_t i = 0; i < text.size();) {
    if (const std::size_t end = numberEnd(text, i); end > i) {
      run.push_back(text.substr(i, end - i));
      i = end;
      if (text.compare(i, 2, ", ") == 0 && numberEnd(text, i + 2) > i + 2) {
        i += 2;
        continue;
      }
      flush();
    } else {
      rest += text[i];
      result += text[i++];
    }
  }
  if (result.size() > kLongText && all.size() > kWholeArray) {
    std::size_t cut = kLongText / 4;  // not within a number
    cut = result.find_first_of(" ]}", cut);
    result =
        result.substr(0, cut) + " ... text " + std::to_string(hash(rest)) + ", " + shortRun(all);
  }
  return result;
}

// Equal but for the last of 12 digits, which the C library's functions may differ in.
bool agree(const std::string& a, const std::string& b) {
  std::size_t i = 0;
  std::size_t j = 0;
  while (i < a.size() && j < b.size()) {
    const std::size_t iEnd = numberEnd(a, i);
    const std::size_t jEnd = numberEnd(b, j);
    if (iEnd > i && jEnd > j && a[i] != '{' && b[j] != '{') {
      const double x = std::strtod(a.substr(i, iEnd - i).c_str(), nullptr);
      const double y = std::strtod(b.substr(j, jEnd - j).c_str(), nullptr);
      if (x != y && !(std::fabs(x - y) <= 1e-11 * std::fabs(x))) {
        return false;
      }
      i = iEnd;
      j = jEnd;
    } else if (a[i++] != b[j++]) {
      return false;
    }
  }
  return i == a.size() && j == b.size();
}

// Calls of one kind; each kind has its own random numbers, so that a new entry point changes none.
std::vector<std::string> callsLike(const CallGrammar& grammar, std::size_t kind, int count) {
  std::vector<std::string> calls;
  ByteSource nothing(nullptr, 0);
  std::mt19937_64 random(hash(grammar.pattern(kind)));
  std::set<std::string> seen;
  for (int i = 0; i < count; ++i) {
    std::vector<std::uint8_t> bytes(400);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
    ByteSource source(bytes.data(), bytes.size());
    std::string call = grammar.variation(kind, source);
    if (seen.insert(call).second) {
      calls.push_back(std::move(call));
    }
  }
  return calls;
}

void record(Caller& caller, const CallGrammar& grammar, const std::string& directory) {
  std::filesystem::remove_all(directory);
  std::filesystem::create_directories(directory);
  for (std::size_t kind = 0; kind < grammar.size(); ++kind) {
    std::ofstream out(directory + "/" + grammar.entry(kind) + ".txt", std::ios::app);
    int values = 0;
    int errors = 0;
    for (const std::string& call : callsLike(grammar, kind, kTried)) {
      const std::string text = shortened(caller.outcome(grammar, call));
      const bool wanted = text.starts_with("Error") ? ++errors <= kErrors : ++values <= kValues;
      if (wanted && !text.empty()) {
        out << call << "\n  " << text << "\n";
      }
    }
  }
}

void dump(Caller& caller, const CallGrammar& grammar, int count) {
  for (std::size_t kind = 0; kind < grammar.size(); ++kind) {
    for (const std::string& call : callsLike(grammar, kind, count)) {
      const std::string text = caller.outcome(grammar, call);
      std::printf("%s\n  %016llx %s\n", call.c_str(), static_cast<unsigned long long>(hash(text)),
                  text.substr(0, 200).c_str());
    }
  }
}

// How many calls differ from the record.
int compare(Caller& caller, const CallGrammar& grammar, const std::string& directory) {
  int different = 0;
  int made = 0;
  for (const auto& file : std::filesystem::directory_iterator(directory)) {
    std::ifstream in(file.path());
    for (std::string call, expected; std::getline(in, call) && std::getline(in, expected); ++made) {
      const std::string text = "  " + shortened(caller.outcome(grammar, call));
      if (!agree(text, expected)) {
        ++different;
        std::cout << call << "\n recorded" << expected << "\n      now" << text << "\n";
      }
    }
  }
  std::cout << made << " calls, " << different << " with another result\n";
  return made == 0 ? 1 : different;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  const std::string mode =
      !arguments.empty() && arguments[0].starts_with("--") ? arguments[0] : "--compare";
  arguments.erase(arguments.begin(), arguments.begin() + (mode == "--compare" ? 0 : 1));
  if (arguments.empty()) {
    std::cerr << "usage: recorded_calls [--record|--dump] DIRECTORY|COUNT [LIBRARY]\n";
    return 2;
  }
  Caller caller(arguments.size() > 1 ? arguments[1].c_str() : STATS_LIBRARY_PATH);
  CallGrammar grammar(caller.kernel());
  grammar.read("/more_calls.txt");
  if (mode == "--record") {
    record(caller, grammar, arguments[0]);
  } else if (mode == "--dump") {
    dump(caller, grammar, std::stoi(arguments[0]));
  } else {
    return compare(caller, grammar, arguments[0]) == 0 ? 0 : 1;
  }
  return 0;
}

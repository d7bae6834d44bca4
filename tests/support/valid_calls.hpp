// The calls of tests/reference/data/valid_calls.txt: at least one of every exported entry point.
#pragma once

#include <fstream>
#include <stdexcept>
#include <string>
#include <vector>

struct ValidCall {
  std::string text;  // "STATS_VexelMean_HW(A, W, true, 1)"
  bool fails;        // every call of this entry point ends in an error
  std::string entry() const { return text.substr(0, text.find('(')); }
};

struct ValidCalls {
  std::string preparation;  // statements that define what the calls use
  std::vector<ValidCall> calls;
};

inline ValidCalls readValidCalls(const std::string& path) {
  std::ifstream in(path);
  if (!in) {
    throw std::runtime_error("cannot read " + path);
  }
  ValidCalls result;
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("! ", 0) == 0) {
      result.preparation += line.substr(2) + "\n";
    } else if (line.rfind("? ", 0) == 0) {
      result.calls.push_back({line.substr(2), true});
    } else if (!line.empty()) {
      result.calls.push_back({line, false});
    }
  }
  return result;
}

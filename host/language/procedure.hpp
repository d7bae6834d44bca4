// Procedures of the language as objects.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "language/hardware.hpp"
#include "language/syntax.hpp"
#include "memory/heap.hpp"

namespace vexel {

struct LanguageProcedure : Foreign {
  std::shared_ptr<Program> program;  // owns the code
  const FunctionCode* code = nullptr;
  std::vector<ALGEB> captured;             // in the order of code->captures
  std::unique_ptr<HardwareCode> hardware;  // compiled at the first hardware call
  bool hardwareRefused = false;

  void mark(Marker& marker) override {
    for (const ALGEB x : captured) {
      marker.mark(x);
    }
  }
  void print(State&, std::string& out) const override { out += code->source; }
};

}  // namespace vexel

// The fixture of the tests of the values: a kernel without a library, and its state.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <vexel/kernel.hpp>

#include "values/errors.hpp"

namespace vexel {

struct StateTest : testing::Test {
  StateTest() {
    if (std::getenv("VEXEL_STRESS") != nullptr) {
      kernel.stress(true);
    }
  }

  // The whole, filled text of the host error that f raises; "no error" if it raises none.
  std::string error(const std::function<void()>& f) {
    try {
      f();
    } catch (const HostErrorToken&) {
      return pendingErrorText(state);
    }
    return "no error";
  }

  Kernel kernel;
  State& state = *kernel.vector();
  InsideHost inside;  // errors are tokens
};

}  // namespace vexel

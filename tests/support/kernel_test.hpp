// The fixture of all tests that go through the host: a kernel with the statistics library loaded,
// and short words for what tests say over and over.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>
#include <vexel/kernel.hpp>

class KernelTest : public testing::Test {
 protected:
  KernelTest() {
    kernel.loadLibrary(STATS_LIBRARY_PATH);
    if (std::getenv("VEXEL_STRESS") != nullptr) {
      kernel.stress(true);
    }
  }

  // --- calls ---
  template <typename... Args>
  vexel::Value call(std::string_view entry, Args&&... args) {
    return kernel.call(entry, std::forward<Args>(args)...);
  }
  vexel::Value eval(std::string_view text) { return kernel.eval(text); }
  static double number(const vexel::Value& v) { return v.number(); }
  static std::vector<double> numbers(const vexel::Value& v) { return v.numbers(); }

  // --- values ---
  vexel::Value array(std::initializer_list<double> x) { return kernel.array(x); }
  vexel::Value array(const std::vector<double>& x) {
    return kernel.array(std::span<const double>(x));
  }
  vexel::Value readOnlyArray(const std::vector<double>& x) {
    const V_INT bounds[] = {1, static_cast<V_INT>(x.size())};
    return kernel.array({RTABLE_FLOAT64, RTABLE_RECTANGULAR, RTABLE_COLUMN_MAJOR, 1, 1}, x.data(),
                        bounds);
  }
  vexel::Value none() { return kernel.array(std::initializer_list<double>{}); }  // "no weights"
  vexel::Value name(std::string_view text) { return kernel.name(text); }

  // The unfilled message of the error that f raises; "no error" if it raises none.
  template <typename F>
  static std::string hostError(F f) {
    try {
      f();
    } catch (const vexel::Error& e) {
      return e.message();
    }
    return "no error";
  }
  // The whole, filled text.
  template <typename F>
  static std::string hostErrorText(F f) {
    try {
      f();
    } catch (const vexel::Error& e) {
      return e.what();
    }
    return "no error";
  }
  // --- random draws ---
  void scriptUniforms(std::vector<double> v) { kernel.scriptRandom({}, v); }
  void script(std::vector<std::int32_t> integers, std::vector<double> doubles) {
    kernel.scriptRandom(integers, doubles);
  }

  static constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  static constexpr double kInf = std::numeric_limits<double>::infinity();

  vexel::Kernel kernel;
};

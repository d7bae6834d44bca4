// The fixture of the generators' tests: the library's own classes on the test's kernel, and a
// goodness-of-fit statistic.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "host_call.hpp"
#include "kernel/conversions.hpp"
#include "kernel/uniform_source.hpp"
#include "kernel_test.hpp"

class GeneratorTest : public KernelTest {
 protected:
  GeneratorTest() {
    STATS_VexelUtils_HW::Initialize(kernel.vector());
    STATS_VexelRandomStream_HW::Initialize(kernel.vector());
    kernel.seed(20240611);
  }

  void inHost(const std::function<void()>& f) { ::inHost(kernel, f); }

  vexel::Value list(const std::vector<vexel::Value>& elements) { return kernel.list(elements); }
  vexel::Value floats(const std::vector<double>& x) {
    std::vector<vexel::Value> elements;
    for (const double v : x) {
      elements.push_back(kernel.real(v));
    }
    return list(elements);
  }
  // A density or other function as a host procedure that counts its calls and fails from one of
  // them on.
  vexel::Value counted(const std::string& label, std::function<double(double)> f) {
    return kernel.function(label, std::function<double(double)>([this, f](double x) {
                             if (++calls >= failAt && failAt > 0) {
                               throw vexel::Error("planned", "planned", {});
                             }
                             return f(x);
                           }));
  }

  // How far x lies from the law with distribution function cdf: the chi-square statistic of 200
  // equal cells as a standard normal deviate (Wilson and Hilferty).  Above 5 once in 3e6 samples.
  static double misfit(const std::vector<double>& x, const std::function<double(double)>& cdf) {
    constexpr int kCells = 200;
    std::vector<double> count(kCells);
    for (const double v : x) {
      const double p = cdf(v);
      EXPECT_TRUE(p >= 0 && p <= 1) << v;
      ++count[static_cast<std::size_t>(std::min(p * kCells, kCells - 1.0))];
    }
    const double expected = static_cast<double>(x.size()) / kCells;
    double chi2 = 0;
    for (const double c : count) {
      chi2 += (c - expected) * (c - expected) / expected;
    }
    const double k = kCells - 1;
    return (std::cbrt(chi2 / k) - (1 - 2 / (9 * k))) / std::sqrt(2 / (9 * k));
  }

  long calls = 0;
  long failAt = 0;
};

// Functions that write down where they are called, and a fixture that runs workers with them.
#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "kernel/callback_adapters.hpp"
#include "kernel_test.hpp"

class RootTest : public KernelTest {
 protected:
  class Traced : public STATS_VexelCallbackAdapter_HW {
   public:
    Traced(RootTest& test, std::string name, std::function<double(double)> f)
        : STATS_VexelCallbackAdapter_HW(nullptr),
          test_(test),
          name_(std::move(name)),
          f_(std::move(f)) {}
    double Call(double x) override {
      std::ostringstream text;
      text << (test_.trace.empty() ? "" : " ") << name_ << '(' << x << ')';
      test_.trace += text.str();
      return f_(x);
    }

   private:
    RootTest& test_;
    std::string name_;
    std::function<double(double)> f_;
  };

  RootTest() {
    kernel.infoLevel("hints", 2);
    kernel.onUserInfo([this](int level, const std::string& channel, const std::string& text) {
      EXPECT_EQ(level, 2);
      EXPECT_EQ(channel, "hints");
      hints.push_back(text);
    });
  }

  Traced traced(std::string name, std::function<double(double)> f) {
    return Traced(*this, std::move(name), std::move(f));
  }

  // The worker's result; its host error leaves as vexel::Error.
  double run(const std::function<double()>& worker) {
    trace.clear();
    hints.clear();
    const vexel::Value procedure = kernel.function(
        "worker",
        [&](vexel::Kernel& k, std::span<const vexel::Value>) { return k.real(worker()); });
    return kernel.apply(procedure, {}).number();
  }
  std::string errorOf(const std::function<double()>& worker) {
    return hostError([&] { run(worker); });
  }

  std::string trace;               // the calls of the last run, "f(1) d(1) ..."
  std::vector<std::string> hints;  // the user information of the last run
};

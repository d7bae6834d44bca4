// What must hold for every exported entry point, found by sweeping over one valid call of each.

#include <set>

#include "kernel_test.hpp"
#include "valid_calls.hpp"

namespace {

const ValidCalls& validCalls() {
  static const ValidCalls calls = readValidCalls(TEST_DATA_DIR "/valid_calls.txt");
  return calls;
}

class EveryEntryPoint : public KernelTest {
 protected:
  void prepare() {
    kernel.seed(7);
    kernel.eval(validCalls().preparation);
  }

  // A known result that must not have changed, whatever happened before.
  void expectUsable(const std::string& after) {
    EXPECT_EQ(kernel
                  .eval("STATS_VexelMean_HW(Array([1.0, 2.0, 6.0], datatype = float[8]), "
                        "Array(1..0, datatype = float[8]), false, 0)")
                  .number(),
              3.0)
        << after;
    EXPECT_EQ(kernel.eval("STATS_VexelNormalProbability_HW(0, 0, 1)").number(), 0.5) << after;
  }

  std::string run(const std::string& text) {
    try {
      kernel.eval(text);
    } catch (const vexel::Error& e) {
      return e.what();
    }
    return {};
  }
};

TEST_F(EveryEntryPoint, HasAValidCallAndEveryCallNamesAnEntryPoint) {
  const auto exported = kernel.entryPoints();
  std::set<std::string> names(exported.begin(), exported.end());
  names.erase("STATS_StatsTerminate_HW");
  std::set<std::string> called;
  for (const ValidCall& call : validCalls().calls) {
    called.insert(call.entry());
  }
  EXPECT_EQ(names, called);
}

TEST_F(EveryEntryPoint, SucceedsOnItsValidCall) {
  for (const ValidCall& call : validCalls().calls) {
    prepare();
    const std::string error = run(call.text);
    EXPECT_EQ(!error.empty(), call.fails) << call.text << ": " << error;
  }
}

// Hosts see the same result whenever the collector chooses to run.
TEST_F(EveryEntryPoint, GivesTheSameResultUnderCollectorStress) {
  for (const ValidCall& call : validCalls().calls) {
    if (call.fails || call.text.find("QRStream") != std::string::npos) {
      continue;  // stream handles print as addresses
    }
    prepare();
    const std::string calm = kernel.eval(call.text).source();
    prepare();
    kernel.stress(true);
    const std::string stressed = kernel.eval(call.text).source();
    kernel.stress(false);
    EXPECT_EQ(calm, stressed) << call.text;
  }
}

// Memory does not grow with the number of calls (copies of arrays that are not float[8] do stay).
TEST_F(EveryEntryPoint, LeavesNothingBehind) {
  for (const ValidCall& call : validCalls().calls) {
    const bool convertsArrays =
        call.text.find("float[8]") == std::string::npos &&
        (call.text.find("(J") != std::string::npos || call.text.find("(G") != std::string::npos ||
         call.text.find("(R") != std::string::npos || call.text.find("(S") != std::string::npos);
    if (call.fails || convertsArrays || call.text.find("InitializeQRStream") != std::string::npos) {
      continue;
    }
    prepare();
    const std::string text = call.text + ":";
    auto liveAfter = [&](int calls) {
      for (int i = 0; i < calls; ++i) {
        kernel.eval(text);
      }
      kernel.collect();
      return kernel.liveObjects();
    };
    liveAfter(3);
    const auto before = liveAfter(3);
    const auto after = liveAfter(30);
    EXPECT_LE(after, before + 20) << call.text;
  }
}

}  // namespace

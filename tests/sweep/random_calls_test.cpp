// Entry points called with arguments of random kinds, sizes, types, orders and storages: no crash,
// no sanitizer report, and a host that still works.  The fuzz target explores further from the same
// grammar.

#include <cstdlib>
#include <random>

#include "call_grammar.hpp"
#include "kernel_test.hpp"
#include "watchdog.hpp"

namespace {

class RandomCalls : public KernelTest {};

TEST_F(RandomCalls, NeverHarmTheProcess) {
  kernel.onUserInfo([](int, const std::string&, const std::string&) {});
  CallGrammar grammar(kernel);
  const char* wanted = std::getenv("VEXEL_RANDOM_CALLS");
  const int calls = wanted != nullptr ? std::atoi(wanted) : 200000;
  const char* seedText = std::getenv("VEXEL_RANDOM_SEED");
  std::mt19937_64 random(seedText != nullptr ? std::strtoull(seedText, nullptr, 10) : 1);
  for (int made = 0; made < calls;) {
    std::vector<std::uint8_t> bytes(96);
    for (std::uint8_t& byte : bytes) {
      byte = static_cast<std::uint8_t>(random());
    }
    ByteSource source(bytes.data(), bytes.size());
    // An endless rejection (a density that is nowhere above its bound) is stopped as by Ctrl-C.
    const Watchdog watchdog(2);
    made += grammar.run(source);
  }
  kernel.eval("Digits := 15:");
  EXPECT_EQ(kernel
                .eval("STATS_VexelMean_HW(Array([1.0, 2.0, 6.0], datatype = float[8]), "
                      "Array(1..0, datatype = float[8]), false, 0)")
                .number(),
            3.0);
}

}  // namespace

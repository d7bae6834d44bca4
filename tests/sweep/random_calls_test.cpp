// Entry points and built-in functions called with arguments of random kinds, sizes, types, orders
// and storages: no crash, no sanitizer report, and a host that still works.  The fuzz target
// explores further from the same grammar.

#include <cstdlib>
#include <filesystem>
#include <random>

#include "call_grammar.hpp"
#include "kernel_test.hpp"
#include "watchdog.hpp"

namespace {

// In a folder of its own: some built-in functions write files.
class RandomCalls : public KernelTest {
 protected:
  RandomCalls() : before_(std::filesystem::current_path()) {
    const std::filesystem::path folder = std::filesystem::path(testing::TempDir()) / "random_calls";
    std::filesystem::create_directories(folder);
    std::filesystem::current_path(folder);
  }
  ~RandomCalls() override { std::filesystem::current_path(before_); }

  void expectUsable() {
    kernel.eval("Digits := 15:");
    EXPECT_EQ(kernel
                  .eval("STATS_VexelMean_HW(Array([1.0, 2.0, 6.0], datatype = float[8]), "
                        "Array(1..0, datatype = float[8]), false, 0)")
                  .number(),
              3.0);
  }

 private:
  std::filesystem::path before_;
};

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
  expectUsable();
}

// Each built-in function with each kind of value in each position, among as many as one too many.
TEST_F(RandomCalls, BuiltinsMeetEveryKindInEveryPosition) {
  CallGrammar grammar(kernel);
  std::vector<std::string> values;
  for (std::size_t i = 0; i < grammar.dictionary().size(); ++i) {
    const std::string& value = grammar.dictionary()[i];
    if (!value.starts_with("Array(") || i % 11 == 0 || i + 12 > grammar.dictionary().size()) {
      values.push_back(value);
    }
  }
  testing::internal::CaptureStdout();  // of print and printf
  for (const std::string& name : grammar.builtins()) {
    const Watchdog watchdog(20);  // for all calls of one function
    for (const char* others : {"1", "[2, 1]", "x -> x", "k = 1 .. 2"}) {
      for (int count = 0; count <= 4; ++count) {
        for (int position = 0; position < std::max(count, 1); ++position) {
          if (name == "gc" && count > 1) {
            continue;  // it looks at no argument, and a thousand collections take long
          }
          for (const std::string& value : values) {
            std::string text = name + "(";
            for (int i = 0; i < count; ++i) {
              text += (i > 0 ? ", " : "") + (i == position ? value : others);
            }
            try {
              kernel.eval(text + "):");
            } catch (const vexel::Error&) {
            } catch (const vexel::Interrupted&) {
              ADD_FAILURE() << text << " takes long";
            }
          }
        }
      }
    }
  }
  testing::internal::GetCapturedStdout();
  expectUsable();
}

}  // namespace

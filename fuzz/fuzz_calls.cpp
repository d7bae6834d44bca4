// Fuzz target over the C interface: bytes become calls of entry points with arguments of any kind.

#include <cstdio>

#include "call_grammar.hpp"
#include "watchdog.hpp"

namespace {

// Says at the end how many calls were made.
struct CallCount {
  long long made = 0;
  ~CallCount() { std::fprintf(stderr, "%lld calls\n", made); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static vexel::Kernel kernel;
  static CallGrammar grammar = [] {
    kernel.loadLibrary(STATS_LIBRARY_PATH);
    kernel.onUserInfo([](int, const std::string&, const std::string&) {});
    return CallGrammar(kernel);
  }();
  ByteSource source(data, size);
  const Watchdog watchdog(2);
  static CallCount calls;
  calls.made += grammar.run(source);
  return 0;
}

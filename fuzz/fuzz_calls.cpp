// Fuzz target over the C interface: bytes become calls of entry points with arguments of any kind.

#include "call_grammar.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static vexel::Kernel kernel;
  static CallGrammar grammar = [] {
    kernel.loadLibrary(STATS_LIBRARY_PATH);
    kernel.onUserInfo([](int, const std::string&, const std::string&) {});
    return CallGrammar(kernel);
  }();
  ByteSource source(data, size);
  grammar.run(source);
  return 0;
}

// Fuzz target over the language: whatever the text, the process survives and printing what a
// statement gave does too.

#include <string_view>
#include <vexel/kernel.hpp>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static vexel::Kernel kernel;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  // Loops and files are outside what this target looks for.
  for (const char* word :
       {"while", "for", "seq", "sum", "CSV", "WriteText", "quit", "Array", "randomize"}) {
    if (text.find(word) != std::string_view::npos) {
      return 0;
    }
  }
  try {
    const vexel::Value value = kernel.eval(text);
    value.source();
    value.json();
  } catch (const vexel::Error&) {
  } catch (const vexel::Interrupted&) {
  }
  return 0;
}

// Fuzz target over the language: whatever the text, the process survives, long computations stop
// when they are interrupted, and what was computed prints in every form.

#include <dlfcn.h>

#include <string>
#include <string_view>
#include <vexel/kernel.hpp>
#include <vexel/session.hpp>

#include "watchdog.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  if (text.find("WriteText") != std::string::npos || text.find("WriteCSV") != std::string::npos ||
      text.find("file") != std::string::npos) {
    return 0;  // leaves files
  }
  // The fuzzer keeps counters inside the library, which must not go away with the first kernel.
  static void* const pinned = dlopen(STATS_LIBRARY_PATH, RTLD_NOW);
  static_cast<void>(pinned);
  // A kernel for each input: what one left behind would make the next irreproducible.
  vexel::Kernel kernel;
  kernel.loadLibrary(STATS_LIBRARY_PATH);
  kernel.onUserInfo([](int, const std::string&, const std::string&) {});
  const Watchdog watchdog(1);
  try {
    vexel::Script script(kernel, text);
    vexel::Outcome outcome;
    while (script.next(outcome) && outcome.kind == vexel::Outcome::Kind::value) {
      outcome.value.source();
      outcome.value.json();
      vexel::shortened(outcome.value);
    }
  } catch (const vexel::Error&) {
  } catch (const vexel::Interrupted&) {
  }
  return 0;
}

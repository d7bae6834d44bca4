// Fuzz target over files and command lines: bytes become a file of separated values, an array in a
// file, the state of interrupted work or arguments, and what the command and the language make of
// it is held to what must be so.

#include "files/stage.hpp"
#include "watchdog.hpp"

namespace {

struct Count {
  long long made = 0;
  ~Count() { std::fprintf(stderr, "%lld files\n", made); }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static vexel::Kernel kernel;
  static fuzz::Stage stage;
  static Count count;
  ++count.made;
  kernel.onUserInfo([](int, const std::string&, const std::string&) {});
  fuzz::Choices choices(data, size);
  const Watchdog watchdog(2);
  try {
    switch (choices.below(8)) {
      case 0:
        fuzz::checkNpyColumn(stage, choices);
        break;
      case 1:
        fuzz::checkArguments(stage, choices);
        break;
      case 2:
        fuzz::checkStateFile(stage, choices);
        break;
      case 3:
        fuzz::checkDates(stage, kernel, choices);
        break;
      case 4:
      case 5:
        fuzz::checkTable(stage, kernel, choices);
        break;
      default:
        fuzz::checkCsvColumn(stage, choices);
    }
  } catch (const vexel::Interrupted&) {
  }
  stage.clear();
  return 0;
}

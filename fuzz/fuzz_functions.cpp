// Fuzz target over the functions in C++: bytes choose a function, its data and options, and what it
// gives is held to what must be so for every argument.

#include <ctime>
#include <exception>
#include <new>
#include <stdexcept>
#include <vexel/own_laws.hpp>

#include "functions/choices.hpp"

namespace {

// Says at the end how many there were, and how many of them the library refused.
struct Count {
  long long made = 0;
  long long refused = 0;
  ~Count() { std::fprintf(stderr, "%lld calls, %lld refused\n", made, refused); }
};

double processorSeconds() {
  timespec t{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
  return static_cast<double>(t.tv_sec) + 1e-9 * static_cast<double>(t.tv_nsec);
}

using Call = void (*)(fuzz::Choices&);
// The laws are most of the library; densities of one's own take longest.
constexpr Call kCalls[] = {
    fuzz::callLaw,   fuzz::callLaw,       fuzz::callLaw,       fuzz::callLaw,
    fuzz::callLaw,   fuzz::callStatistic, fuzz::callStatistic, fuzz::callOrder,
    fuzz::callOrder, fuzz::callSeries,    fuzz::callTest,      fuzz::callState,
    fuzz::callState, fuzz::callChance,    fuzz::callSequence,  fuzz::callRoot};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr double kMostSeconds = 2;
  static Count count;
  fuzz::Choices choices(data, size);
  const std::size_t which = choices.below(256);
  const Call call = which == 255 ? fuzz::callOwnLaw : kCalls[which % std::size(kCalls)];
  const double begun = processorSeconds();
  ++count.made;
  try {
    call(choices);
  } catch (const std::logic_error&) {  // std::invalid_argument, domain_error, length_error
    ++count.refused;
  } catch (const std::bad_alloc&) {
    ++count.refused;
  } catch (const std::exception& e) {
    fuzz::fail(std::string("an exception that no function documents: ") + e.what());
  }
  fuzz::expect(processorSeconds() - begun < kMostSeconds, "a call takes at most two seconds");
  return 0;
}

// Runs a fuzz target without a fuzzer: on the given files or those of the given folders, the
// regression test of inputs that once did harm and of those that reach most of the code, or on
// random bytes.
//
//   replay_functions FOLDER_OR_FILE...
//   replay_functions --random COUNT SEED [SIZE]
//
// An input that ends the process, or takes ten seconds of the processor, stays behind as
// harm-SEED-NUMBER, and the run can go on from the next seed.

#include <fcntl.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <string_view>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

// What runs, for a signal handler.
std::vector<std::uint8_t> input;
char harm[64];

void keepInput(int signal) {
  const int file = open(harm, O_WRONLY | O_CREAT | O_TRUNC, 0644);
  const bool kept = file >= 0 && write(file, input.data(), input.size()) >= 0;
  std::_Exit(kept ? 128 + signal : 127);
}

int runRandom(long long count, std::uint64_t seed, std::size_t most) {
  for (const int signal : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGPROF}) {
    std::signal(signal, keepInput);
  }
  constexpr itimerval kPatience{{0, 0}, {10, 0}};
  std::mt19937_64 random(seed);
  for (long long i = 0; i < count; ++i) {
    std::snprintf(harm, sizeof harm, "harm-%llu-%lld", static_cast<unsigned long long>(seed), i);
    input.resize(1 + random() % most);
    for (std::size_t k = 0; k < input.size(); k += 8) {
      const std::uint64_t word = random();
      for (std::size_t b = k; b < std::min(k + 8, input.size()); ++b) {
        input[b] = static_cast<std::uint8_t>(word >> 8 * (b - k));
      }
    }
    setitimer(ITIMER_PROF, &kPatience, nullptr);
    LLVMFuzzerTestOneInput(input.data(), input.size());
  }
  std::printf("%lld random inputs, seed %llu\n", count, static_cast<unsigned long long>(seed));
  return 0;
}

int replay(const std::filesystem::path& path) {
  if (!std::filesystem::is_directory(path)) {
    std::ifstream in(path, std::ios::binary);
    input.assign(std::istreambuf_iterator<char>(in), {});
    LLVMFuzzerTestOneInput(input.data(), input.size());
    return 1;
  }
  int inputs = 0;
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    inputs += replay(entry.path());
  }
  return inputs;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc >= 4 && std::string_view(argv[1]) == "--random") {
    return runRandom(std::atoll(argv[2]), std::strtoull(argv[3], nullptr, 10),
                     argc > 4 ? std::strtoull(argv[4], nullptr, 10) : 200);
  }
  int inputs = 0;
  for (int i = 1; i < argc; ++i) {
    inputs += replay(argv[i]);
  }
  std::printf("%d inputs\n", inputs);
  return inputs == 0 ? 1 : 0;
}

#include "stream/bar.hpp"

#include <unistd.h>

#include <algorithm>
#include <cstdio>

namespace stream {

namespace {

constexpr std::chrono::milliseconds kPatience{300};
constexpr int kWidth = 24;
constexpr const char* kClearLine = "\r\033[K";

}  // namespace

Bar::Bar(std::string title, bool quiet)
    : title_(std::move(title)), quiet_(quiet), on_(!quiet && isatty(STDERR_FILENO) != 0) {}

Bar::~Bar() {
  if (shown_) {
    std::fputs(kClearLine, stderr);
    std::fflush(stderr);
  }
}

void Bar::show(double share, int pass, int passes) {
  const auto now = Clock::now();
  if (first_ < 0) {
    first_ = share;
  }
  if (!on_ || now - last_ < kPatience) {
    return;
  }
  last_ = now;
  shown_ = true;
  const int full = static_cast<int>(std::clamp(share, 0.0, 1.0) * kWidth);
  std::fprintf(stderr, "%s%s [%s%s] %3.0f %%", kClearLine, title_.c_str(),
               std::string(static_cast<std::size_t>(full), '#').c_str(),
               std::string(static_cast<std::size_t>(kWidth - full), '.').c_str(), 100 * share);
  if (passes > 1) {
    std::fprintf(stderr, ", pass %d of %d", pass, passes);
  }
  if (share > first_ && share < 1) {
    const double seconds = std::chrono::duration<double>(now - start_).count();
    std::fprintf(stderr, ", %.0f s left", seconds * (1 - share) / (share - first_));
  }
  std::fflush(stderr);
}

void Bar::say(const std::string& line) {
  if (!quiet_) {
    std::fprintf(stderr, "%s%s\n", shown_ ? kClearLine : "", line.c_str());
  }
}

}  // namespace stream

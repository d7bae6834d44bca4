// A thread of its own writes the line, once a second from the third second on, so that a single
// long statement shows too.

#include "progress.hpp"

#include <unistd.h>

#include <csignal>
#include <cstdio>

namespace {

constexpr std::chrono::seconds kPatience{3};
constexpr const char* kClearLine = "\r\033[K";

}  // namespace

Progress::Progress(const std::string& source)
    : source_(source), start_(std::chrono::steady_clock::now()) {
  if (!source.empty() && isatty(STDERR_FILENO) != 0) {
    // Ctrl-C is the main thread's.
    sigset_t interrupts;
    sigset_t before;
    sigemptyset(&interrupts);
    sigaddset(&interrupts, SIGINT);
    pthread_sigmask(SIG_BLOCK, &interrupts, &before);
    watcher_ = std::thread([this] { watch(); });
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
  }
}

Progress::~Progress() {
  if (watcher_.joinable()) {
    {
      const std::lock_guard lock(mutex_);
      done_ = true;
    }
    ended_.notify_one();
    watcher_.join();
    clear();
  }
}

void Progress::atLine(int line) {
  const std::lock_guard lock(mutex_);
  line_ = line;
}

void Progress::clear() {
  const std::lock_guard lock(mutex_);
  if (shown_) {
    std::fputs(kClearLine, stderr);
    std::fflush(stderr);
    shown_ = false;
  }
}

void Progress::watch() {
  std::unique_lock lock(mutex_);
  auto next = start_ + kPatience;
  while (!ended_.wait_until(lock, next, [this] { return done_; })) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(next - start_).count();
    std::fprintf(stderr, "%s%s, line %d, %lld s\r", kClearLine, source_.c_str(), line_,
                 static_cast<long long>(seconds));
    std::fflush(stderr);
    shown_ = true;
    next += std::chrono::seconds(1);
  }
}

// Times a job and prints it for scripts/bench-peers: "job <tab> peer <tab> seconds".
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>

// The value is used, so that the work that gave it is done.
template <typename T>
void keep(const T& value) {
  asm volatile("" : : "r,m"(value) : "memory");
}

// The shortest of at least three runs, and of as many as 0.3 seconds hold; `count` operations a
// run.
template <typename F>
void measure(const char* job, const char* peer, double count, F run) {
  using Clock = std::chrono::steady_clock;
  double best = 1e300;
  double total = 0.0;
  for (int runs = 0; runs < 3 || total < 0.3; ++runs) {
    const auto start = Clock::now();
    run();
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    best = std::min(best, seconds);
    total += seconds;
  }
  std::printf("%s\t%s\t%.6g\n", job, peer, best / count);
  std::fflush(stdout);
}

// How far the work is, on standard error when that is a terminal, and what is to be told of it.
#pragma once

#include <chrono>
#include <string>

namespace stream {

class Bar {
 public:
  explicit Bar(std::string title, bool quiet);
  ~Bar();  // takes it away
  Bar(const Bar&) = delete;
  Bar& operator=(const Bar&) = delete;

  void show(double share, int pass, int passes);
  void say(const std::string& line);  // on a terminal or not, unless quiet

 private:
  using Clock = std::chrono::steady_clock;
  std::string title_;
  bool quiet_;
  bool on_;
  bool shown_ = false;
  double first_ = -1;  // share at the start: resumed work begins further on
  Clock::time_point start_ = Clock::now();
  Clock::time_point last_ = start_;
};

}  // namespace stream

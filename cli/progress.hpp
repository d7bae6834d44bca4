// A line on standard error that says how far a long script has come, when that is a terminal.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>

class Progress {
 public:
  // source is the script's name; nothing is ever shown when it is empty or standard error is no
  // terminal.
  explicit Progress(const std::string& source);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void atLine(int line);  // a statement begins
  void clear();           // something is about to be printed

 private:
  void watch();

  std::string source_;
  std::chrono::steady_clock::time_point start_;
  std::mutex mutex_;
  std::condition_variable ended_;
  int line_ = 1;
  bool done_ = false;
  bool shown_ = false;
  std::thread watcher_;  // last: it uses the others
};

// The file that ReadCSV reads.
#pragma once

#include <cstddef>
#include <cstdio>
#include <memory>
#include <string>

#include "kernels/csv_scanner.hpp"
#include "values/kernel_state.hpp"

namespace vexel {

// A file that can be read a second time: one that is no ordinary file is kept in memory.
class TextFile : public kernels::TextSource {
 public:
  TextFile(State& state, ALGEB name);
  std::size_t read(char* to, std::size_t room) override;
  void rewind();

 private:
  State& state_;
  ALGEB name_;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
  bool ordinary_ = false;
  bool begun_ = false;
  bool again_ = false;
  std::string kept_;
  std::size_t at_ = 0;  // in what is kept
};

}  // namespace vexel

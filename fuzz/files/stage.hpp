// Where the fuzz target of files and command lines plays: a folder of its own, and the command run
// in this process with its streams caught.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>
#include <vexel/kernel.hpp>

#include "../functions/choices.hpp"

namespace fuzz {

struct Ran {
  int status = 0;
  std::string out;
  std::string err;
};

class Stage {
 public:
  Stage();  // makes a folder and goes there
  ~Stage();
  Stage(const Stage&) = delete;
  Stage& operator=(const Stage&) = delete;

  void write(const std::string& name, std::string_view text) const;
  // vexel with these arguments, the first of them "describe", "quantile" or "tally"; for any
  // other what the command line says is read, and formatted or explained, but no script runs.
  Ran command(const std::vector<std::string>& arguments, std::string_view input = {}) const;
  void clear() const;  // removes what is in the folder

 private:
  std::filesystem::path before_;
  std::filesystem::path folder_;
};

// What is left of the bytes.
std::string rest(Choices& choices);

// Each takes an input apart and holds what comes of it to what must be so.
void checkCsvColumn(Stage& stage, Choices& choices);
void checkNpyColumn(Stage& stage, Choices& choices);
void checkArguments(Stage& stage, Choices& choices);
void checkStateFile(Stage& stage, Choices& choices);
void checkTable(Stage& stage, vexel::Kernel& kernel, Choices& choices);
void checkDates(Stage& stage, vexel::Kernel& kernel, Choices& choices);

}  // namespace fuzz

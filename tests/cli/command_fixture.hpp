// Runs the vexel command in a folder of its own.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

struct Outcome {
  int status;
  std::string out;     // standard output
  std::string errors;  // standard error
};

inline std::string contents(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

class CommandTest : public testing::Test {
 protected:
  CommandTest() {
    std::string name = (std::filesystem::temp_directory_path() / "vexel-XXXXXX").string();
    directory_ = mkdtemp(name.data());
  }
  ~CommandTest() override { std::filesystem::remove_all(directory_); }

  // Runs the command with arguments written as for the shell.
  Outcome run(const std::string& arguments, const std::string& input = "",
              const std::string& prefix = "") {
    const auto in = file("stdin", input);
    const auto errors = (directory_ / "stderr").string();
    const std::string line =
        prefix + VEXEL_COMMAND + " " + arguments + " < " + in + " 2> " + errors;
    Outcome result;
    FILE* pipe = popen(line.c_str(), "r");
    std::array<char, 4096> buffer;
    std::size_t count = 0;
    while ((count = fread(buffer.data(), 1, buffer.size(), pipe)) > 0) {
      result.out.append(buffer.data(), count);
    }
    result.status = WEXITSTATUS(pclose(pipe));
    result.errors = contents(errors);
    return result;
  }

  const std::filesystem::path& folder() const { return directory_; }

  // The path of a file with this text.
  std::string file(const std::string& name, const std::string& text) {
    std::ofstream(directory_ / name, std::ios::binary) << text;
    return (directory_ / name).string();
  }

 private:
  std::filesystem::path directory_;
};

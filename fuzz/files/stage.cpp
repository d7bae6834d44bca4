#include "files/stage.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <optional>
#include <sstream>

#include "cli/options.hpp"
#include "cli/stream/command.hpp"
#include "cli/tools.hpp"

namespace fuzz {

namespace fs = std::filesystem;

namespace {

// Standard output and error into texts.
class Caught {
 public:
  Caught() : out_(std::cout.rdbuf(outText.rdbuf())), err_(std::cerr.rdbuf(errText.rdbuf())) {}
  ~Caught() {
    std::cout.rdbuf(out_);
    std::cerr.rdbuf(err_);
    std::cout.clear();
    std::cerr.clear();
  }
  Caught(const Caught&) = delete;
  Caught& operator=(const Caught&) = delete;

  std::ostringstream outText;
  std::ostringstream errText;

 private:
  std::streambuf* out_;
  std::streambuf* err_;
};

// A file in the place of standard input, which the command may close.
class Input {
 public:
  explicit Input(const char* path) : before_(stdin) {
    stdin = std::fopen(path, "rb");
    handle_ = fileno(stdin);
  }
  ~Input() {
    if (fcntl(handle_, F_GETFD) >= 0) {
      std::fclose(stdin);
    }
    stdin = before_;
  }
  Input(const Input&) = delete;
  Input& operator=(const Input&) = delete;

 private:
  std::FILE* before_;
  int handle_;
};

// The command's handlers are for one run.
class Signals {
 public:
  Signals() {
    sigaction(SIGINT, nullptr, &before_[0]);
    sigaction(SIGTERM, nullptr, &before_[1]);
  }
  ~Signals() {
    sigaction(SIGINT, &before_[0], nullptr);
    sigaction(SIGTERM, &before_[1], nullptr);
  }
  Signals(const Signals&) = delete;
  Signals& operator=(const Signals&) = delete;

 private:
  struct sigaction before_[2]{};
};

int runCommand(std::vector<char*>& argv) {
  const int argc = static_cast<int>(argv.size()) - 1;
  if (const std::optional<int> status = runStreamCommand(argc, argv.data())) {
    return *status;
  }
  Options options;
  if (const std::optional<int> status = readCommandLine(argc, argv.data(), options)) {
    return *status;
  }
  return runTool(options).value_or(kSuccess);
}

}  // namespace

Stage::Stage() : before_(fs::current_path()) {
  std::string name = (fs::temp_directory_path() / "vexel-fuzz-XXXXXX").string();
  expect(mkdtemp(name.data()) != nullptr, "a folder for files");
  folder_ = name;
  fs::current_path(folder_);
}

Stage::~Stage() {
  std::error_code none;
  fs::current_path(before_, none);
  fs::remove_all(folder_, none);
}

void Stage::write(const std::string& name, std::string_view text) const {
  std::ofstream(folder_ / name, std::ios::binary | std::ios::trunc) << text;
}

Ran Stage::command(const std::vector<std::string>& arguments, std::string_view input) const {
  std::vector<std::string> texts{"vexel"};
  texts.insert(texts.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& text : texts) {
    argv.push_back(text.data());
  }
  argv.push_back(nullptr);
  write("standard-input", input);
  const Signals signals;
  const Input standard("standard-input");
  Caught caught;
  const int status = runCommand(argv);
  return {status, caught.outText.str(), caught.errText.str()};
}

void Stage::clear() const {
  std::error_code none;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder_)) {
    fs::remove_all(entry.path(), none);
  }
}

std::string rest(Choices& choices) {
  std::string text;
  while (!choices.empty()) {
    text += static_cast<char>(choices.byte());
  }
  return text;
}

}  // namespace fuzz

#include "stream/state_file.hpp"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "stream/table.hpp"

namespace stream {

namespace {

constexpr std::string_view kMagic = "vexel stream 2\n";

std::string checkOf(std::string_view text) {
  std::uint64_t hash = 0xCBF29CE484222325U;
  for (const char c : text) {
    hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  }
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "check %016llx\n", static_cast<unsigned long long>(hash));
  return buffer;
}

// The sizes in "states 221 61 9000".
std::vector<std::size_t> sizesIn(std::istringstream& line) {
  return {std::istream_iterator<std::size_t>(line), {}};
}

}  // namespace

void saveProgress(const std::string& path, const std::string& task, const Progress& progress) {
  std::string text = std::string(kMagic) + task + "pass " + std::to_string(progress.pass) +
                     "\npiece " + std::to_string(progress.pieces) + "\nstates";
  for (const Bytes& state : progress.states) {
    text += ' ' + std::to_string(state.size());
  }
  text += '\n';
  text += checkOf(text);
  const std::string fresh = path + ".new";
  std::ofstream out(fresh, std::ios::binary | std::ios::trunc);
  out << text;
  for (const Bytes& state : progress.states) {
    out.write(reinterpret_cast<const char*>(state.data()),
              static_cast<std::streamsize>(state.size()));
  }
  out.close();
  if (!out || std::rename(fresh.c_str(), path.c_str()) != 0) {
    std::remove(fresh.c_str());
    throw Unreadable("cannot write the state to " + path);
  }
}

void requireStateFile(const std::string& path) {
  std::error_code none;
  if (std::filesystem::is_directory(path, none)) {
    throw Unreadable("--state: " + path + " is a folder, a file is expected");
  }
  const std::string fresh = path + ".new";
  const bool writable = std::ofstream(fresh, std::ios::binary | std::ios::app).is_open();
  if (!writable) {
    throw Unreadable("--state: cannot write to " + path);
  }
  std::remove(fresh.c_str());
}

std::optional<Progress> loadProgress(const std::string& path, const std::string& task) {
  if (!std::filesystem::exists(path)) {
    return std::nullopt;
  }
  std::ifstream in(path, std::ios::binary);
  const std::string all(std::istreambuf_iterator<char>(in), {});
  if (!in || in.bad()) {
    throw Unreadable("cannot read " + path);
  }
  const auto refuse = [&](const char* why) {
    throw std::invalid_argument("--state: " + path + why);
  };
  const char* const damaged = " is damaged, or of another version";
  const std::size_t at = all.find("\ncheck ");
  if (!all.starts_with(kMagic) || at == std::string::npos) {
    refuse(damaged);
  }
  std::string_view left(all);
  const std::string_view head = left.substr(0, at + 1);
  left.remove_prefix(head.size());
  const std::string check = checkOf(head);
  if (!left.starts_with(check)) {
    refuse(damaged);
  }
  left.remove_prefix(check.size());
  if (!head.substr(kMagic.size()).starts_with(task + "pass ")) {
    refuse(" is of other work, or the files have changed");
  }
  std::istringstream lines{std::string(head.substr(kMagic.size() + task.size()))};
  std::string word;
  Progress progress;
  lines >> word >> progress.pass >> word >> progress.pieces >> word;
  for (const std::size_t size : sizesIn(lines)) {
    if (size > left.size()) {
      refuse(damaged);
    }
    progress.states.emplace_back(left.begin(), left.begin() + static_cast<std::ptrdiff_t>(size));
    left.remove_prefix(size);
  }
  if (!left.empty()) {
    refuse(damaged);
  }
  return progress;
}

}  // namespace stream

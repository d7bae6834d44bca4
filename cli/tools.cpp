#include "tools.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string_view>
#include <vexel/session.hpp>

#include "help.hpp"
#include "kernels/text_file.hpp"
#include "library_path.hpp"

namespace {

namespace fs = std::filesystem;

// Prints the formatted text, or writes it where it was read.
int format(const std::string& path, bool write) {
  const std::optional<std::string> text = readAll(path);
  if (!text) {
    std::cerr << "vexel: cannot read " << path << ": " << vexel::kernels::whyUnreadable(path)
              << '\n';
    return kBadUsage;
  }
  const std::optional<std::string> formatted = vexel::formatted(*text);
  if (!formatted) {
    std::cerr << "vexel: " << path << " has characters that are none of the language's\n";
    return kStatementFailed;
  }
  if (!write || path == "-") {
    std::cout << *formatted << std::flush;
    return kSuccess;
  }
  if (*formatted != *text && !(std::ofstream(path, std::ios::binary) << *formatted << std::flush)) {
    std::cerr << "vexel: cannot write " << path << '\n';
    return kBadUsage;
  }
  return kSuccess;
}

int formatAll(const Options& options) {
  int status = kSuccess;
  for (const Input& input : options.inputs) {
    if (input.kind == Input::Kind::text) {
      std::cerr << "vexel: --format takes files\n";
      return kBadUsage;
    }
    status = std::max(status, format(input.value, options.write));
  }
  return options.inputs.empty() ? format("-", false) : status;
}

// The first sentence of a script's first comment.
std::string purposeOf(const std::string& text) {
  std::istringstream in(text);
  std::string all;
  for (std::string line; std::getline(in, line) && line.starts_with('#');) {
    all += line.substr(std::min(line.find_first_not_of("# "), line.size())) + ' ';
  }
  const std::size_t end = std::min({all.find(". "), all.find(": "), all.find("? ")});
  return all.substr(0, end);
}

// Data are named by where they are, so that the text runs from anywhere.
std::string withPathsOf(std::string text, const fs::path& folder) {
  for (const std::string name : {"\"data/", "\"lds/"}) {
    for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos;) {
      text.replace(at, 1, "\"" + folder.string() + "/");
      at += folder.string().size() + name.size();
    }
  }
  return text;
}

int example(const std::string& name) {
  const std::string folder = findExamples();
  if (folder.empty()) {
    std::cerr << "vexel: the examples are not installed\n";
    return kBadUsage;
  }
  std::vector<fs::path> scripts;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder)) {
    if (entry.path().extension() == ".vexel") {
      scripts.push_back(entry.path());
    }
  }
  std::sort(scripts.begin(), scripts.end());
  for (const fs::path& script : scripts) {
    const std::string text = readAll(script.string()).value_or("");
    if (name.empty()) {
      std::string line = "  " + script.stem().string();
      line.resize(std::max<std::size_t>(line.size() + 1, 18), ' ');
      std::cout << line << purposeOf(text) << '\n';
    } else if (script.stem() == name || script.filename() == name) {
      std::cout << withPathsOf(text, folder) << std::flush;
      return kSuccess;
    }
  }
  if (!name.empty()) {
    std::cerr << "vexel: no example is called " << name << "; vexel --example lists them\n";
    return kBadUsage;
  }
  return kSuccess;
}

}  // namespace

std::optional<std::string> readAll(const std::string& path) {
  if (path == "-") {
    return std::string(std::istreambuf_iterator<char>(std::cin), {});
  }
  std::ifstream in(path, std::ios::binary);
  if (!in || fs::is_directory(path)) {
    return std::nullopt;
  }
  std::string text(std::istreambuf_iterator<char>(in), {});
  if (in.bad()) {
    return std::nullopt;
  }
  constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
  if (text.starts_with(kByteOrderMark)) {
    text.erase(0, kByteOrderMark.size());
  }
  return text;
}

std::optional<int> runTool(const Options& options) {
  if (options.format) {
    return formatAll(options);
  }
  if (options.explain) {
    return printHelp(helpTopic(*options.explain), {}) ? kSuccess : kStatementFailed;
  }
  if (options.example) {
    return example(*options.example);
  }
  return std::nullopt;
}

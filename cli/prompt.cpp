// The interactive prompt, on libedit.

#include "prompt.hpp"

#include <histedit.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <system_error>
#include <utility>
#include <vector>
#include <vexel/session.hpp>

#include "help.hpp"

namespace {

constexpr int kHistoryLength = 2000;

// $XDG_STATE_HOME/vexel/history, or the same under ~/.local/state; empty when there is no home.
std::filesystem::path historyFile() {
  std::filesystem::path directory;
  if (const char* state = std::getenv("XDG_STATE_HOME"); state != nullptr && *state != '\0') {
    directory = state;
  } else if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') {
    directory = std::filesystem::path(home) / ".local" / "state";
  } else {
    return {};
  }
  std::error_code ignored;
  std::filesystem::create_directories(directory / "vexel", ignored);
  return directory / "vexel" / "history";
}

// Opens the history file and locks it, as long as the result lives: other prompts write to it, too.
std::unique_ptr<std::FILE, int (*)(std::FILE*)> lockedHistory(const std::string& path,
                                                              const char* mode) {
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(
      path.empty() ? nullptr : std::fopen(path.c_str(), mode), std::fclose);
  if (file != nullptr && flock(fileno(file.get()), LOCK_EX) != 0) {
    file.reset();
  }
  return file;
}

// Drops the oldest lines of a history file that has grown beyond the limit; the first line, which
// names the format, stays.
void trimHistory(std::FILE* file) {
  constexpr std::size_t kMostLines = 10000;
  std::string text;
  char buffer[1 << 16];
  for (std::size_t n = 0; (n = std::fread(buffer, 1, sizeof buffer, file)) > 0;) {
    text.append(buffer, n);
  }
  auto excess =
      std::count(text.begin(), text.end(), '\n') - 1 - static_cast<std::ptrdiff_t>(kMostLines);
  if (excess <= 0) {
    return;
  }
  const std::size_t start = text.find('\n') + 1;
  std::size_t keep = start;
  for (; excess > 0; --excess) {
    keep = text.find('\n', keep) + 1;
  }
  text.erase(start, keep - start);
  std::rewind(file);
  if (std::fwrite(text.data(), 1, text.size(), file) == text.size() && std::fflush(file) == 0 &&
      ftruncate(fileno(file), static_cast<off_t>(text.size())) != 0) {
    return;  // what is left over is old lines, which do no harm
  }
}

bool isNamePart(char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; }

// The names that the prompt completes and lists.
class Names {
 public:
  explicit Names(vexel::Kernel& kernel) { refresh(kernel); }

  // Asks the kernel again: statements make names.
  void refresh(vexel::Kernel& kernel) {
    for (std::string& name : vexel::knownNames(kernel)) {
      names_.insert(std::move(name));
    }
    for (std::string& name : kernel.entryPoints()) {
      names_.insert(std::move(name));
    }
  }

  std::vector<std::string> startingWith(const std::string& prefix) const {
    std::vector<std::string> found;
    for (auto it = names_.lower_bound(prefix); it != names_.end() && it->starts_with(prefix);
         ++it) {
      found.push_back(*it);
    }
    return found;
  }

  std::vector<std::string> containing(const std::string& text) const {
    std::vector<std::string> found;
    std::copy_if(names_.begin(), names_.end(), std::back_inserter(found),
                 [&](const std::string& name) { return name.find(text) != std::string::npos; });
    return found;
  }

 private:
  std::set<std::string, std::less<>> names_;
};

// Files and folders whose path starts like this, folders with a slash behind.
std::vector<std::string> filesStartingWith(const std::string& prefix) {
  const std::size_t slash = prefix.rfind('/');
  const std::string folder = slash == std::string::npos ? "" : prefix.substr(0, slash + 1);
  std::vector<std::string> found;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder.empty() ? "." : folder, error), end;
       !error && entry != end; entry.increment(error)) {
    const std::string path = folder + entry->path().filename().string();
    if (path.starts_with(prefix) && (path.size() > folder.size())) {
      found.push_back(path + (entry->is_directory(error) ? "/" : ""));
    }
  }
  std::sort(found.begin(), found.end());
  return found;
}

// "exit", "exit();" and the like.
bool isExit(const std::string& text) {
  std::string word;
  std::copy_if(text.begin(), text.end(), std::back_inserter(word),
               [](char c) { return std::strchr(" \t\n();:", c) == nullptr; });
  return word == "exit" && text.find_first_not_of(" \t\n") == text.find("exit");
}

void printColumns(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    std::cout << "  " << name << '\n';
  }
  std::cout.flush();
}

struct EditLineEnd {
  void operator()(EditLine* e) const { el_end(e); }
};
struct HistoryEnd {
  void operator()(History* h) const { history_end(h); }
};

// The line editor with its history and completion.
class Editor {
 public:
  explicit Editor(Names& names)
      : names_(names),
        edit_(el_init("vexel", stdin, stdout, stderr)),
        history_(history_init()),
        file_(historyFile().string()) {
    el_set(edit_.get(), EL_CLIENTDATA, this);
    el_set(edit_.get(), EL_PROMPT, promptText);
    el_set(edit_.get(), EL_EDITOR, "emacs");
    el_set(edit_.get(), EL_SIGNAL, 0);
    history(history_.get(), &event_, H_SETSIZE, kHistoryLength);
    history(history_.get(), &event_, H_SETUNIQUE, 1);
    if (const auto file = lockedHistory(file_, "r+"); file != nullptr) {
      trimHistory(file.get());
      history(history_.get(), &event_, H_LOAD, file_.c_str());
    }
    el_set(edit_.get(), EL_HIST, ::history, history_.get());
    el_set(edit_.get(), EL_ADDFN, "vexel-complete", "complete a name", complete);
    el_set(edit_.get(), EL_BIND, "^I", "vexel-complete", nullptr);
    el_source(edit_.get(), nullptr);
  }
  ~Editor() = default;
  Editor(const Editor&) = delete;
  Editor& operator=(const Editor&) = delete;

  enum class Result { line, interrupted, end };

  // Reads one line with its newline; continued chooses the prompt of later lines.
  Result read(bool continued, std::string& line) {
    continued_ = continued;
    int count = 0;
    errno = 0;
    const char* text = el_gets(edit_.get(), &count);
    if (text == nullptr || count <= 0) {
      return errno == EINTR ? Result::interrupted : Result::end;
    }
    line.assign(text, static_cast<std::size_t>(count));
    return Result::line;
  }

  void remember(const std::string& statement) {
    if (history(history_.get(), &event_, H_ENTER, statement.c_str()) > 0) {  // not the last again
      appendToFile();
    }
  }

  void forgetLine() { el_reset(edit_.get()); }

 private:
  // At once: a terminal may be closed.
  void appendToFile() {
    if (const auto file = lockedHistory(file_, "a"); file != nullptr) {
      std::fseek(file.get(), 0, SEEK_END);
      // The number is of the entries to go back from the last one, which is written, too.
      history(history_.get(), &event_, H_NSAVE_FP, std::size_t{0}, file.get());
    }
  }

  static Editor& of(EditLine* e) {
    void* self = nullptr;
    el_get(e, EL_CLIENTDATA, &self);
    return *static_cast<Editor*>(self);
  }

  static char* promptText(EditLine* e) {
    static char first[] = "> ";
    static char later[] = "  ";
    return of(e).continued_ ? later : first;
  }

  // Completes the name before the cursor as far as all candidates agree; lists them when that adds
  // nothing.
  static unsigned char complete(EditLine* e, int /*key*/) {
    const LineInfo* info = el_line(e);
    const char* begin = info->cursor;
    while (begin > info->buffer && isNamePart(begin[-1])) {
      --begin;
    }
    const std::string_view before(info->buffer,
                                  static_cast<std::size_t>(info->cursor - info->buffer));
    const bool inText = std::count(before.begin(), before.end(), '"') % 2 != 0;
    if (inText) {
      begin = info->buffer + before.rfind('"') + 1;
    }
    const std::string prefix(begin, info->cursor);
    std::vector<std::string> found =
        inText ? filesStartingWith(prefix) : of(e).names_.startingWith(prefix);
    if (!inText && found.empty() && prefix.size() > 2) {  // a word from the middle of a name
      found = of(e).names_.containing(prefix);
      if (found.size() == 1) {
        el_deletestr(e, static_cast<int>(prefix.size()));
        return el_insertstr(e, found.front().c_str()) == 0 ? CC_REFRESH : CC_REFRESH_BEEP;
      }
      if (!found.empty()) {
        std::cout << '\n';
        printColumns(found);
        return CC_REDISPLAY;
      }
    }
    if ((prefix.empty() && !inText) || found.empty()) {
      return CC_REFRESH_BEEP;
    }
    // The names are sorted: what the first and the last share, all share.
    const auto common = std::mismatch(found.front().begin(), found.front().end(),
                                      found.back().begin(), found.back().end());
    const std::string addition(found.front().begin() + static_cast<std::ptrdiff_t>(prefix.size()),
                               common.first);
    if (!addition.empty() && el_insertstr(e, addition.c_str()) == 0) {
      return CC_REFRESH;
    }
    if (found.size() > 1) {
      std::cout << '\n';
      printColumns(found);
    }
    return CC_REDISPLAY;
  }

  Names& names_;
  std::unique_ptr<EditLine, EditLineEnd> edit_;
  std::unique_ptr<History, HistoryEnd> history_;
  HistEvent event_{};
  std::string file_;
  bool continued_ = false;
};

}  // namespace

void runPrompt(vexel::Kernel& kernel, Runner& runner, bool quiet) {
  Names names(kernel);
  Editor editor(names);
  if (!quiet) {
    std::cout << "vexel " VEXEL_VERSION "   ? and ?name explain, Tab completes, quit leaves\n";
  }
  runner.atPrompt(!quiet);
  std::string text;
  std::string line;
  while (!runner.finished()) {
    const Editor::Result result = editor.read(!text.empty(), line);
    vexel::Kernel::clearInterrupt();  // one that came while typing was for the line
    switch (result) {
      case Editor::Result::end:
        std::cout << '\n';
        return;
      case Editor::Result::interrupted:
        std::cout << '\n';
        text.clear();
        editor.forgetLine();
        continue;
      case Editor::Result::line:
        break;
    }
    if (text.empty() && line.starts_with('?')) {
      editor.remember(line);
      const std::string topic = helpTopic(line);
      printHelp(topic, topic.empty() ? std::vector<std::string>() : names.containing(topic));
      continue;
    }
    text += line;
    if (!vexel::isIncomplete(kernel, text)) {
      if (isExit(text)) {
        return;
      }
      if (text.find_first_not_of(" \t\n") != std::string::npos) {
        editor.remember(text);
        runner.run(text, "");
        names.refresh(kernel);
      }
      text.clear();
    }
  }
}

void serveStatements(vexel::Kernel& kernel, Runner& runner) {
  runner.acknowledge();
  std::string text;
  for (std::string line; !runner.finished() && std::getline(std::cin, line);) {
    text += line + "\n";
    if (!vexel::isIncomplete(kernel, text)) {
      runner.run(text, "standard input");
      text.clear();
    }
  }
  if (!runner.finished() && !text.empty()) {
    runner.run(text, "standard input");
  }
}

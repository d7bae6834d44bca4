#include "builtins/tables/text_file.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

#include "kernels/text_file.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

std::string unreadable(ALGEB name) {
  return "unable to read the file %1: " + kernels::whyUnreadable(std::string(text(name)));
}

}  // namespace

TextFile::TextFile(State& state, ALGEB name)
    : state_(state), name_(name), file_(nullptr, std::fclose) {
  if (!is(name, Tag::string)) {
    raise(state, "expected the name of a file, received: %1", name);
  }
  file_.reset(std::fopen(std::string(text(name)).c_str(), "rb"));
  if (!file_) {
    raise(state, unreadable(name), name);
  }
  std::setvbuf(file_.get(), nullptr, _IONBF, 0);  // blocks go straight to the scanner
  struct stat status {};
  ordinary_ = fstat(fileno(file_.get()), &status) == 0 && S_ISREG(status.st_mode);
}

std::size_t TextFile::read(char* to, std::size_t room) {
  lookAtInterrupt();
  if (again_ && !ordinary_) {
    const std::size_t n = std::min(room, kept_.size() - at_);
    std::memcpy(to, kept_.data() + at_, n);
    at_ += n;
    return n;
  }
  const std::size_t n = std::fread(to, 1, room, file_.get());
  if (n < room && std::ferror(file_.get()) != 0) {
    lookAtInterrupt();  // which may be what ended the reading
    raise(state_, unreadable(name_), name_);
  }
  if (const auto fault = begun_ ? "" : kernels::whyNoText({to, n}); !fault.empty()) {
    raise(state_, "unable to read the file %1: " + std::string(fault), name_);
  }
  begun_ = true;
  if (!ordinary_) {
    kept_.append(to, n);
  }
  return n;
}

void TextFile::rewind() {
  again_ = true;
  at_ = 0;
  if (ordinary_ && std::fseek(file_.get(), 0, SEEK_SET) != 0) {
    raise(state_, unreadable(name_), name_);
  }
}

}  // namespace vexel

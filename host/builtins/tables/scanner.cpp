#include "builtins/tables/scanner.hpp"

#include <sys/stat.h>

#include <algorithm>
#include <cstring>

#include "kernels/text_file.hpp"
#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 18;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

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

Scanner::Scanner(State& state, TextFile& file, char separator)
    : state_(state), file_(file), separator_(separator), buffer_(kBlock) {
  for (const char c : {separator, '\n', '\r'}) {
    classes_[static_cast<unsigned char>(c)] = Class::ends;
  }
  classes_[static_cast<unsigned char>('"')] = Class::quote;
  begin_ = at_ = end_ = buffer_.data();
  refill();
  const std::string_view start(at_, static_cast<std::size_t>(end_ - at_));
  if (const std::string_view fault = kernels::whyNoText(start); !fault.empty()) {
    raise(state, "unable to read the file %1: " + std::string(fault), file.name());
  }
  if (start.starts_with(kByteOrderMark)) {
    at_ += kByteOrderMark.size();  // which spreadsheets write first
  }
}

// Puts more of the file behind what is kept from begin_ on; false at the end of the file.
bool Scanner::refill() {
  const auto kept = static_cast<std::size_t>(end_ - begin_);
  const auto ahead = static_cast<std::size_t>(at_ - begin_);
  if (kept > buffer_.size() / 2) {
    std::vector<char> larger(2 * buffer_.size());
    std::memcpy(larger.data(), begin_, kept);
    buffer_.swap(larger);
  } else {
    std::memmove(buffer_.data(), begin_, kept);
  }
  const std::size_t n = file_.read(buffer_.data() + kept, buffer_.size() - kept);
  begin_ = buffer_.data();
  at_ = begin_ + ahead;
  end_ = begin_ + kept + n;
  return n > 0;
}

void Scanner::skipLines(std::size_t n) {
  for (; n > 0 && !atEnd(); --n) {
    for (;;) {
      begin_ = at_;
      if (atEnd()) {
        return;
      }
      begin_ = at_;
      const void* const lineEnd = std::memchr(at_, '\n', static_cast<std::size_t>(end_ - at_));
      at_ = lineEnd == nullptr ? end_ : static_cast<const char*>(lineEnd) + 1;
      if (lineEnd != nullptr) {
        break;
      }
    }
  }
}

void Scanner::malformed(const char* what) {
  raise(state_, what, newInteger(state_, static_cast<std::int64_t>(record_)),
        newInteger(state_, static_cast<std::int64_t>(column_ + 1)));
}

// Past blanks, and past line ends between records; false at the end of the file.
bool Scanner::skipToCell() {
  for (;;) {
    begin_ = at_;
    if (atEnd()) {
      return inRecord_;  // behind a last separator there is one more cell
    }
    if (!isBlank(*at_) && (inRecord_ || (*at_ != '\n' && *at_ != '\r'))) {
      return true;
    }
    ++at_;
  }
}

// At the separator or line end behind a cell, or at the end of the file.
void Scanner::finish(Cell& cell) {
  cell.endsRecord = at_ == end_ || *at_ != separator_;
  inRecord_ = !cell.endsRecord;
  at_ += at_ == end_ ? 0 : 1;
}

void Scanner::quotedCell(Cell& cell) {
  ++at_;
  begin_ = at_;
  unquoted_.clear();
  bool whole = true;  // no quote was doubled: the text lies as it is in the buffer
  for (;;) {
    if (atEnd()) {
      malformed("row %1, column %2 of the CSV file opens a quote that the file never closes");
    }
    const void* const found = std::memchr(at_, '"', static_cast<std::size_t>(end_ - at_));
    if (found == nullptr) {
      at_ = end_;
      continue;
    }
    at_ = static_cast<const char*>(found);
    const auto length = static_cast<std::size_t>(at_ - begin_);
    ++at_;
    if (atEnd() || *at_ != '"') {
      if (!whole) {
        unquoted_.append(begin_, length);
        begin_ = at_;
      }
      cell.text = {begin_, length};
      break;
    }
    whole = false;
    unquoted_.append(begin_, length + 1);
    ++at_;
    begin_ = at_;
  }
  const std::size_t length = cell.text.size();
  while (!atEnd() && isBlank(*at_)) {
    ++at_;
  }
  if (at_ != end_ && classes_[static_cast<unsigned char>(*at_)] != Class::ends) {
    malformed(
        "row %1, column %2 of the CSV file has a quote inside a cell without quotes or text behind "
        "the closing quote");
  }
  cell.text = whole ? std::string_view(begin_, length) : std::string_view(unquoted_);
  cell.quoted = true;
}

void Scanner::plainCell(Cell& cell) {
  for (;;) {
    while (at_ != end_ && classes_[static_cast<unsigned char>(*at_)] == Class::plain) {
      ++at_;
    }
    if (at_ != end_ || !refill()) {
      break;
    }
  }
  if (at_ != end_ && *at_ == '"') {
    malformed(
        "row %1, column %2 of the CSV file has a quote inside a cell without quotes or text behind "
        "the closing quote");
  }
  const char* last = at_;
  while (last != begin_ && isBlank(last[-1])) {
    --last;
  }
  cell.text = {begin_, static_cast<std::size_t>(last - begin_)};
  cell.quoted = false;
}

bool Scanner::next(Cell& cell) {
  const bool isFirst = !inRecord_;
  if (!skipToCell()) {
    return false;
  }
  record_ += isFirst ? 1U : 0U;
  column_ = isFirst ? 0 : column_ + 1;
  inRecord_ = true;
  if (at_ != end_ && *at_ == '"') {
    quotedCell(cell);
  } else {
    plainCell(cell);
  }
  finish(cell);
  return true;
}

}  // namespace vexel

#include "kernels/csv_scanner.hpp"

#include <cstring>

namespace vexel::kernels {

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 18;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

}  // namespace

Scanner::Scanner(TextSource& file, char separator)
    : file_(file), separator_(separator), buffer_(kBlock) {
  for (const char c : {separator, '\n', '\r'}) {
    classes_[static_cast<unsigned char>(c)] = Class::ends;
  }
  classes_[static_cast<unsigned char>('"')] = Class::quote;
  begin_ = at_ = end_ = buffer_.data();
  refill();
  if (std::string_view(at_, static_cast<std::size_t>(end_ - at_)).starts_with(kByteOrderMark)) {
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
      throw Malformed(true, record_, column_ + 1);
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
    throw Malformed(false, record_, column_ + 1);
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
    throw Malformed(false, record_, column_ + 1);
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

}  // namespace vexel::kernels

// NumPy's .npy files: a head that tells type, order and shape, then the elements.
//
// R. Kern, A simple file format for NumPy arrays (NEP 1): "\x93NUMPY", version, size of the head, a
// dictionary in Python's syntax.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string_view>
#include <utility>

#include "kernels/text_file.hpp"
#include "stream/table.hpp"

namespace stream {

namespace {

constexpr std::size_t kBuffer = std::size_t{1} << 22;  // of a read, unless a row is longer

template <typename T>
double element(const char* from, bool swapped) {
  char raw[sizeof(T)];
  std::memcpy(raw, from, sizeof(T));
  if (swapped) {
    std::reverse(raw, raw + sizeof(T));
  }
  T value;
  std::memcpy(&value, raw, sizeof(T));
  return static_cast<double>(value);
}

using Element = double (*)(const char*, bool);

struct Type {
  std::string_view name;
  std::size_t size;
  Element element;
};
constexpr Type kTypes[] = {{"f8", 8, element<double>},        {"f4", 4, element<float>},
                           {"i8", 8, element<std::int64_t>},  {"i4", 4, element<std::int32_t>},
                           {"i2", 2, element<std::int16_t>},  {"i1", 1, element<std::int8_t>},
                           {"u8", 8, element<std::uint64_t>}, {"u4", 4, element<std::uint32_t>},
                           {"u2", 2, element<std::uint16_t>}, {"u1", 1, element<std::uint8_t>},
                           {"b1", 1, element<std::uint8_t>}};

class File {
 public:
  explicit File(const std::string& path) : path_(path), handle_(open(path.c_str(), O_RDONLY)) {
    struct stat status {};
    if (handle_ < 0 || fstat(handle_, &status) != 0 || !S_ISREG(status.st_mode)) {
      errno = handle_ < 0 ? errno : 0;  // no ordinary file
      const std::string why = vexel::kernels::whyUnreadable(path);
      if (handle_ >= 0) {
        close(handle_);
      }
      throw Unreadable("cannot read " + path + ": " + why);
    }
    size_ = static_cast<std::uint64_t>(status.st_size);
  }
  ~File() { close(handle_); }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  std::uint64_t size() const { return size_; }

  void read(std::uint64_t from, char* to, std::size_t n) const {
    while (n > 0) {
      const ssize_t got = pread(handle_, to, n, static_cast<off_t>(from));
      if (got < 0 && errno == EINTR) {
        continue;
      }
      if (got <= 0) {
        throw Unreadable(got < 0 ? "cannot read " + path_ : path_ + " ends too early");
      }
      to += got;
      from += static_cast<std::uint64_t>(got);
      n -= static_cast<std::size_t>(got);
    }
  }

 private:
  std::string path_;
  int handle_;
  std::uint64_t size_ = 0;
};

// The dictionary of the head; what is behind a key.
class Head {
 public:
  Head(const std::string& path, std::string text) : path_(path), text_(std::move(text)) {}

  std::string_view behind(std::string_view key) const {
    const std::size_t at = text_.find("'" + std::string(key) + "':");
    if (at == std::string::npos) {
      refuse();
    }
    std::string_view rest = std::string_view(text_).substr(at + key.size() + 3);
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    return rest;
  }
  std::string_view type() const {
    const std::string_view rest = behind("descr");
    const std::size_t end = rest.find('\'', 1);
    if (!rest.starts_with('\'') || end == std::string_view::npos) {
      throw std::invalid_argument(path_ + ": records are not read, only numbers");
    }
    return rest.substr(1, end - 1);
  }
  std::vector<std::uint64_t> shape() const {
    std::string_view rest = behind("shape");
    std::vector<std::uint64_t> sizes;
    const std::size_t end = rest.find(')');
    if (!rest.starts_with('(') || end == std::string_view::npos) {
      refuse();
    }
    rest = rest.substr(1, end - 1);
    while (!rest.empty()) {
      std::uint64_t size = 0;
      const auto [stop, error] = std::from_chars(rest.data(), rest.data() + rest.size(), size);
      if (error != std::errc()) {
        refuse();
      }
      sizes.push_back(size);
      rest.remove_prefix(static_cast<std::size_t>(stop - rest.data()));
      rest.remove_prefix(std::min(rest.find_first_not_of(", "), rest.size()));
    }
    return sizes;
  }
  [[noreturn]] void refuse() const { throw Unreadable(path_ + " is no .npy file"); }

 private:
  std::string path_;
  std::string text_;
};

class NpyTable : public Table {
 public:
  NpyTable(const std::string& path, const Columns& wanted) : path_(path), file_(path) {
    const Head head(path, headText());
    const std::string_view type = head.type();
    const auto found = std::find_if(std::begin(kTypes), std::end(kTypes), [&](const Type& t) {
      return type.size() == 3 && type.substr(1) == t.name;
    });
    if (found == std::end(kTypes)) {
      throw std::invalid_argument(
          path + ": elements must be integers, floats of 4 or 8 bytes or booleans, got " +
          std::string(type));
    }
    type_ = *found;
    swapped_ = type[0] == (std::endian::native == std::endian::little ? '>' : '<');
    const auto shape = head.shape();
    if (shape.size() != 1 && shape.size() != 2) {
      throw std::invalid_argument(path + ": dimensions must be one or two, got " +
                                  std::to_string(shape.size()));
    }
    rows_ = shape[0];
    columns_ = shape.size() == 2 ? shape[1] : 1;
    byColumns_ = head.behind("fortran_order").starts_with("True") && shape.size() == 2;
    const std::uint64_t room = (file_.size() - begin_) / type_.size;
    if (columns_ > 0 && rows_ > room / columns_) {
      throw Unreadable(path + " ends too early");
    }
    choose(path, wanted, {}, columns_);
  }

  void read(std::size_t rows, Piece& piece) override {
    const auto n = static_cast<std::size_t>(std::min<std::uint64_t>(rows, rows_ - row_));
    take(column, n, piece.values);
    piece.weights.clear();
    if (weights != npos) {
      take(weights, n, piece.weights);
    }
    row_ += n;
  }

  double share() const override {
    return rows_ > 0 ? static_cast<double>(row_) / static_cast<double>(rows_) : 1;
  }

 private:
  std::string headText() {
    char start[12] = {};
    if (file_.size() < sizeof start) {
      throw Unreadable(path_ + " is no .npy file");
    }
    file_.read(0, start, sizeof start);
    const auto byte = [&](int i) { return std::uint64_t{static_cast<unsigned char>(start[i])}; };
    const bool isLong = byte(6) > 1;
    const std::uint64_t size =
        isLong ? byte(8) | byte(9) << 8 | byte(10) << 16 | byte(11) << 24 : byte(8) | byte(9) << 8;
    const std::uint64_t from = isLong ? 12 : 10;
    if (std::string_view(start, 6) != "\x93NUMPY" || byte(6) < 1 || byte(6) > 3 ||
        size > std::min<std::uint64_t>(file_.size() - from, 1 << 20)) {
      throw Unreadable(path_ + " is no .npy file");
    }
    begin_ = from + size;
    std::string text(size, '\0');
    file_.read(from, text.data(), text.size());
    return text;
  }

  // Rows row_ to row_ + n of a column.
  void take(std::size_t which, std::size_t n, std::vector<double>& values) {
    values.resize(n);
    if (n == 0) {
      return;  // of no rows the size may be anything
    }
    const std::size_t stride = byColumns_ ? type_.size : columns_ * type_.size;
    const std::uint64_t first =
        begin_ + (byColumns_ ? which * rows_ * type_.size : which * type_.size);
    // The last row is read to the element only: behind it the file may end.
    const std::size_t atOnce = std::max<std::size_t>(1, kBuffer / stride);
    for (std::size_t i = 0; i < n; i += atOnce) {
      const std::size_t count = std::min(atOnce, n - i);
      buffer_.resize((count - 1) * stride + type_.size);
      file_.read(first + (row_ + i) * stride, buffer_.data(), buffer_.size());
      for (std::size_t k = 0; k < count; ++k) {
        values[i + k] = type_.element(buffer_.data() + k * stride, swapped_);
      }
    }
  }

  std::string path_;
  File file_;
  Type type_{};
  bool swapped_ = false;
  bool byColumns_ = false;
  std::uint64_t begin_ = 0;  // of the elements
  std::uint64_t rows_ = 0;
  std::uint64_t columns_ = 1;
  std::uint64_t row_ = 0;  // the next one
  std::vector<char> buffer_;
};

}  // namespace

std::unique_ptr<Table> openNpy(const std::string& path, const Columns& wanted) {
  return std::make_unique<NpyTable>(path, wanted);
}

}  // namespace stream

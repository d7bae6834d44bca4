// CSV files through libcsv: a line of headings, unless it is one of data, then rows.  Blank lines
// are left out.

#include <csv.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <limits>
#include <string_view>

#include "kernels/cell_number.hpp"
#include "kernels/first_row.hpp"
#include "kernels/text_file.hpp"
#include "stream/table.hpp"

namespace stream {

namespace {

using vexel::kernels::trimmed;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr std::size_t kBlock = std::size_t{1} << 18;

// What other systems write for a missing number, beyond what every reader here takes.
constexpr std::string_view kForeignMissing[] = {"#N/A",     "#N/A N/A", "#NA",  "-1.#IND",
                                                "-1.#QNAN", "-NaN",     "-nan", "1.#IND",
                                                "1.#QNAN",  "<NA>",     "None"};

// The parser of libcsv.  Strict: a quote within an unquoted cell, or text behind a closing one, is
// malformed, and so is a file that ends within quotes.
class Parser {
 public:
  explicit Parser(char separator) {
    if (csv_init(&parser_, CSV_APPEND_NULL | CSV_STRICT | CSV_STRICT_FINI) != 0) {
      throw std::bad_alloc();
    }
    csv_set_delim(&parser_, static_cast<unsigned char>(separator));
    csv_set_blk_size(&parser_, std::size_t{1} << 16);
  }
  ~Parser() { csv_free(&parser_); }
  Parser(const Parser&) = delete;
  Parser& operator=(const Parser&) = delete;
  csv_parser* get() { return &parser_; }

 private:
  csv_parser parser_{};
};

class CsvTable : public Table {
 public:
  CsvTable(const std::string& path, const Columns& wanted)
      : path_(path == "-" ? "standard input" : path),
        wanted_(wanted),
        file_(path == "-" ? stdin : std::fopen(path.c_str(), "rb"), std::fclose),
        parser_(wanted.separatorUsed()) {
    struct stat status {};
    if (!file_ || fstat(fileno(file_.get()), &status) != 0 || S_ISDIR(status.st_mode)) {
      throw Unreadable("cannot read " + path_ + ": " + vexel::kernels::whyUnreadable(path_));
    }
    size_ = S_ISREG(status.st_mode) ? static_cast<double>(status.st_size) : 0;
    while (row_ == 0 && parseBlock()) {
    }
    if (row_ == 0) {
      throw std::invalid_argument(path_ + " is empty");
    }
  }

  void read(std::size_t rows, Piece& piece) override {
    while (pending_.values.size() < rows && parseBlock()) {
    }
    const std::size_t n = std::min(rows, pending_.values.size());
    hand(pending_.values, piece.values, n);
    hand(pending_.weights, piece.weights, weights == npos ? 0 : n);
  }

  double share() const override { return size_ > 0 ? std::min(1.0, bytes_ / size_) : 0; }

 private:
  static void hand(std::vector<double>& from, std::vector<double>& to, std::size_t n) {
    const auto end = from.begin() + static_cast<std::ptrdiff_t>(n);
    to.assign(from.begin(), end);
    from.erase(from.begin(), end);
  }

  // False when there is nothing more.
  bool parseBlock() {
    if (ended_) {
      return false;
    }
    block_.resize(kBlock);
    const std::size_t n = std::fread(block_.data(), 1, kBlock, file_.get());
    if (std::ferror(file_.get()) != 0) {
      throw Unreadable("cannot read " + path_);
    }
    std::string_view text(block_.data(), n);
    if (const std::string_view fault = vexel::kernels::whyNoText(text); !fault.empty()) {
      throw Unreadable("cannot read " + path_ + ": " + std::string(fault));
    }
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    if (bytes_ == 0 && text.starts_with(kByteOrderMark)) {
      text.remove_prefix(kByteOrderMark.size());
    }
    bytes_ += static_cast<double>(n);
    ended_ = n == 0;
    const bool parsed = ended_ ? csv_fini(parser_.get(), &onCell, &onRow, this) == 0
                               : csv_parse(parser_.get(), text.data(), text.size(), &onCell, &onRow,
                                           this) == text.size();
    if (fault_.empty() && !parsed) {
      fault_ = place(cell_) + (ended_ ? ": a quote is opened that the file never closes"
                                      : ": a quote stands inside a cell without quotes, or text "
                                        "behind the closing one");
    }
    if (!fault_.empty()) {
      throw std::invalid_argument(fault_);
    }
    return true;
  }

  std::string place(std::size_t cell) const {
    return path_ + ", row " + std::to_string(row_ + 1) + ", column " + std::to_string(cell + 1);
  }

  // Nothing may be thrown through libcsv: what is wrong waits until it has returned.
  template <typename Take>
  static void within(void* self, Take take) {
    auto& table = *static_cast<CsvTable*>(self);
    try {
      if (table.fault_.empty()) {
        take(table);
      }
    } catch (const std::exception& e) {
      table.fault_ = e.what();
    }
  }
  static void onCell(void* text, std::size_t size, void* self) {
    within(self, [&](CsvTable& table) {
      table.take({static_cast<const char*>(text), text == nullptr ? 0 : size});
    });
  }
  static void onRow(int, void* self) {
    within(self, [](CsvTable& table) { table.endRow(); });
  }

  void take(std::string_view cell) {
    const std::size_t at = cell_++;
    if (row_ == 0) {
      first_.emplace_back(trimmed(cell));
      return;
    }
    if (at >= first_.size() && !trimmed(cell).empty()) {
      throw std::invalid_argument(place(at) + ": more cells than " +
                                  (isWithoutHeadings ? "in the first row" : "there are headings"));
    }
    if (at == column) {
      value_ = number(cell, at);
    }
    if (at == weights) {
      weight_ = number(cell, at);
    }
  }

  double number(std::string_view cell, std::size_t at) const {
    double value = kNan;
    if (!isNumber(cell, value)) {
      throw std::invalid_argument(place(at) + ": cells must be numbers, got \"" +
                                  std::string(cell.substr(0, 40)) +
                                  (cell.size() > 40 ? "...\"" : "\""));
    }
    return value;
  }

  bool isNumber(std::string_view cell, double& value) const {
    const bool isOne = vexel::kernels::cellNumber(cell, value, wanted_.decimal);
    if ((!isOne && holds(kForeignMissing, cell)) || holds(wanted_.missing, cell)) {
      value = kNan;
      return true;
    }
    return isOne;
  }

  template <typename Texts>
  static bool holds(const Texts& texts, std::string_view cell) {
    return std::find(std::begin(texts), std::end(texts), trimmed(cell)) != std::end(texts);
  }

  void endRow() {
    if (row_ == 0) {
      endFirstRow();
    }
    if (row_ > 0 || isWithoutHeadings) {
      pending_.values.push_back(value_);
      if (weights != npos) {
        pending_.weights.push_back(weight_);
      }
    }
    ++row_;
    cell_ = 0;
    value_ = weight_ = kNan;  // what a short row leaves out is missing
  }

  void endFirstRow() {
    vexel::kernels::FirstRow row;
    for (const std::string& cell : first_) {
      double value = kNan;
      const bool isMissing = holds(wanted_.missing, cell);
      const bool isText = !isMissing && !vexel::kernels::cellNumber(cell, value, wanted_.decimal);
      row.add(cell, isText, isMissing ? kNan : value);
    }
    requireSeparator(row.otherSeparator());
    isWithoutHeadings = !wanted_.headings.value_or(!row.isData());
    headingRows = isWithoutHeadings ? 0 : 1;
    if (!wanted_.headings && !row.note().empty()) {
      note = path_ + ": " + row.note() +
             (isWithoutHeadings ? " (--headings reads it as headings)"
                                : " (--no-headings reads them as data)");
    }
    chooseColumns();
    if (isWithoutHeadings) {
      value_ = number(first_[column], column);
      weight_ = weights == npos ? kNan : number(first_[weights], weights);
    }
  }

  void chooseColumns() {
    if (!isWithoutHeadings) {
      choose(path_, wanted_, first_, first_.size());
      const bool isNamed = wanted_.column.find_first_not_of("0123456789") != std::string::npos;
      note = isNamed ? "" : note;  // who names a heading knows of it
      return;
    }
    try {
      choose(path_, wanted_, {}, first_.size());
    } catch (const std::invalid_argument& e) {
      throw std::invalid_argument(e.what() + (note.empty() ? "" : "\n" + note));
    }
  }

  // At other separators than those of the file its cells make no sense.
  void requireSeparator(char other) const {
    const char own = wanted_.separatorUsed();
    if (wanted_.separator == '\0' && other != '\0' && other != own) {
      const bool isTab = other == '\t';
      throw std::invalid_argument(path_ + ": row 1 has " + (isTab ? "tabs" : "semicolons") +
                                  " in its cells; --separator " + (isTab ? "tab" : "';'") +
                                  " separates at them, --separator " + (own == ',' ? "," : "';'") +
                                  " leaves them");
    }
  }

  std::string path_;
  Columns wanted_;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
  double size_ = 0;
  double bytes_ = 0;  // read
  Parser parser_;
  std::vector<char> block_;
  bool ended_ = false;
  std::vector<std::string> first_;  // the cells of the first row
  std::size_t row_ = 0;             // from 0
  std::size_t cell_ = 0;            // of the row, from 0
  double value_ = kNan;
  double weight_ = kNan;
  Piece pending_;      // parsed, not handed out
  std::string fault_;  // found while libcsv was at work
};

}  // namespace

std::unique_ptr<Table> openCsv(const std::string& path, const Columns& wanted) {
  return std::make_unique<CsvTable>(path, wanted);
}

}  // namespace stream

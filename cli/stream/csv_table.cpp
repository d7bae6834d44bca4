// CSV files: a line of headings, unless it is one of data, then rows.

#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <limits>
#include <string_view>

#include "kernels/cell_number.hpp"
#include "kernels/csv_scanner.hpp"
#include "kernels/first_row.hpp"
#include "kernels/text_file.hpp"
#include "stream/table.hpp"

namespace stream {

namespace {

using vexel::kernels::trimmed;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

// What other systems write for a missing number, beyond what every reader here takes.
constexpr std::string_view kForeignMissing[] = {"#N/A",     "#N/A N/A", "#NA",  "-1.#IND",
                                                "-1.#QNAN", "-NaN",     "-nan", "1.#IND",
                                                "1.#QNAN",  "<NA>",     "None"};

class File : public vexel::kernels::TextSource {
 public:
  explicit File(const std::string& path)
      : name_(path == "-" ? "standard input" : path),
        file_(path == "-" ? stdin : std::fopen(path.c_str(), "rb"), std::fclose) {
    struct stat status {};
    if (!file_ || fstat(fileno(file_.get()), &status) != 0 || S_ISDIR(status.st_mode)) {
      throw Unreadable("cannot read " + name_ + ": " + vexel::kernels::whyUnreadable(path));
    }
    size_ = S_ISREG(status.st_mode) ? static_cast<double>(status.st_size) : 0;
  }

  std::size_t read(char* to, std::size_t room) override {
    const std::size_t n = std::fread(to, 1, room, file_.get());
    if (std::ferror(file_.get()) != 0) {
      throw Unreadable("cannot read " + name_);
    }
    if (const auto fault = bytes_ > 0 ? "" : vexel::kernels::whyNoText({to, n}); !fault.empty()) {
      throw Unreadable("cannot read " + name_ + ": " + std::string(fault));
    }
    bytes_ += static_cast<double>(n);
    return n;
  }

  const std::string& name() const { return name_; }
  double share() const { return size_ > 0 ? std::min(1.0, bytes_ / size_) : 0; }

 private:
  std::string name_;
  std::unique_ptr<std::FILE, int (*)(std::FILE*)> file_;
  double size_ = 0;
  double bytes_ = 0;  // read
};

class CsvTable : public Table {
 public:
  CsvTable(const std::string& path, const Columns& wanted)
      : file_(path), wanted_(wanted), scanner_(file_, wanted.separatorUsed()) {
    Cell cell;
    while (!cell.endsRecord && next(cell)) {
      first_.emplace_back(trimmed(cell.text));
    }
    if (first_.empty()) {
      throw std::invalid_argument(file_.name() + " is empty");
    }
    judgeFirstRow();
  }

  void read(std::size_t rows, Piece& piece) override {
    piece.values.clear();
    piece.weights.clear();
    if (isWithoutHeadings && !isFirstGiven_ && rows > 0) {
      give(firstValue_, firstWeight_, piece);
      isFirstGiven_ = true;
    }
    Cell cell;
    while (piece.values.size() < rows && next(cell)) {
      take(cell.text);
      if (cell.endsRecord) {
        give(value_, weight_, piece);
        value_ = weight_ = kNan;  // what a short row leaves out is missing
      }
    }
  }

  double share() const override { return file_.share(); }

 private:
  using Cell = vexel::kernels::Scanner::Cell;

  bool next(Cell& cell) {
    try {
      return scanner_.next(cell);
    } catch (const vexel::kernels::Malformed& e) {
      throw std::invalid_argument(place(e.record, e.column) +
                                  (e.isUnclosed ? ": a quote is opened that the file never closes"
                                                : ": a quote stands inside a cell without quotes, "
                                                  "or text behind the closing one"));
    }
  }

  std::string place(std::size_t record, std::size_t at) const {
    return file_.name() + ", row " + std::to_string(record) + ", column " + std::to_string(at);
  }

  void take(std::string_view cell) {
    const std::size_t at = scanner_.column();
    if (at >= first_.size() && !trimmed(cell).empty()) {
      throw std::invalid_argument(place(scanner_.record(), at + 1) + ": more cells than " +
                                  (isWithoutHeadings ? "in the first row" : "there are headings"));
    }
    if (at == column) {
      value_ = number(cell, at);
    }
    if (at == weights) {
      weight_ = number(cell, at);
    }
  }

  void give(double value, double weight, Piece& piece) const {
    piece.values.push_back(value);
    if (weights != npos) {
      piece.weights.push_back(weight);
    }
  }

  double number(std::string_view cell, std::size_t at) const {
    double value = kNan;
    if (!isNumber(cell, value)) {
      throw std::invalid_argument(
          place(scanner_.record(), at + 1) + ": cells must be numbers, got \"" +
          std::string(cell.substr(0, 40)) + (cell.size() > 40 ? "...\"" : "\""));
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

  void judgeFirstRow() {
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
      note = file_.name() + ": " + row.note() +
             (isWithoutHeadings ? " (--headings reads it as headings)"
                                : " (--no-headings reads them as data)");
    }
    chooseColumns();
    if (isWithoutHeadings) {
      firstValue_ = number(first_[column], column);
      firstWeight_ = weights == npos ? kNan : number(first_[weights], weights);
    }
  }

  void chooseColumns() {
    if (!isWithoutHeadings) {
      choose(file_.name(), wanted_, first_, first_.size());
      const bool isNamed = wanted_.column.find_first_not_of("0123456789") != std::string::npos;
      note = isNamed ? "" : note;  // who names a heading knows of it
      return;
    }
    try {
      choose(file_.name(), wanted_, {}, first_.size());
    } catch (const std::invalid_argument& e) {
      throw std::invalid_argument(e.what() + (note.empty() ? "" : "\n" + note));
    }
  }

  // At other separators than those of the file its cells make no sense.
  void requireSeparator(char other) const {
    const char own = wanted_.separatorUsed();
    if (wanted_.separator == '\0' && other != '\0' && other != own) {
      const bool isTab = other == '\t';
      throw std::invalid_argument(file_.name() + ": row 1 has " + (isTab ? "tabs" : "semicolons") +
                                  " in its cells; --separator " + (isTab ? "tab" : "';'") +
                                  " separates at them, --separator " + (own == ',' ? "," : "';'") +
                                  " leaves them");
    }
  }

  File file_;
  Columns wanted_;
  vexel::kernels::Scanner scanner_;
  std::vector<std::string> first_;  // the cells of the first row
  double firstValue_ = kNan;        // of them, where they are data
  double firstWeight_ = kNan;
  bool isFirstGiven_ = false;
  double value_ = kNan;  // of the row that is read
  double weight_ = kNan;
};

}  // namespace

std::unique_ptr<Table> openCsv(const std::string& path, const Columns& wanted) {
  return std::make_unique<CsvTable>(path, wanted);
}

}  // namespace stream

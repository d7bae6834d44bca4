#include "builtins/tables/csv_columns.hpp"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "kernels/cell_number.hpp"
#include "values/arrays.hpp"
#include "values/dates.hpp"
#include "values/objects.hpp"

namespace vexel {

namespace {

constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

bool isUsualMissing(std::string_view cell) {
  return cell.size() <= 4 && kernels::isMissingCell(cell);
}

std::uint64_t hashOf(std::string_view text) {
  std::uint64_t hash = 0x9E3779B97F4A7C15U ^ text.size();
  const auto stir = [&hash](std::uint64_t word) {
    hash = (hash ^ word) * 0xFF51AFD7ED558CCDU;
    hash ^= hash >> 32;
  };
  for (; text.size() >= 8; text.remove_prefix(8)) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data(), 8);
    stir(word);
  }
  std::uint64_t rest = 0;
  if (!text.empty()) {
    std::memcpy(&rest, text.data(), text.size());
  }
  stir(rest);
  return hash;
}

}  // namespace

bool CellRules::isMissing(std::string_view cell) const {
  if (!ownMissing) {
    return isUsualMissing(cell);
  }
  return cell.empty() ||
         std::find(missingTexts.begin(), missingTexts.end(), cell) != missingTexts.end();
}

bool CellRules::isMissingText(Scanner::Cell cell) const {
  if (cell.quoted) {
    return false;
  }
  if (cell.text.empty() || !ownMissing) {
    return cell.text.empty() || cell.text == "NA";
  }
  double value = 0;
  return isMissing(cell.text) ||
         (!missingNumbers.empty() && number(cell.text, value) && std::isnan(value));
}

bool CellRules::number(std::string_view cell, double& value) const {
  cell = kernels::trimmed(cell);  // within quotes
  if (!kernels::plainNumber(cell, decimal, value)) {
    if (isMissing(cell)) {
      value = kMissing;
      return true;
    }
    if (isUsualMissing(cell)) {  // but none of the own words
      return false;
    }
    if (!kernels::cellNumber(cell, value, decimal)) {
      return false;
    }
  }
  if (!missingNumbers.empty() &&
      std::find(missingNumbers.begin(), missingNumbers.end(), value) != missingNumbers.end()) {
    value = kMissing;
  }
  return true;
}

std::string_view TextPool::keep(std::string_view text) {
  constexpr std::size_t kBlock = std::size_t{1} << 16;
  if (text.size() > free_ || blocks_.empty()) {
    free_ = std::max(kBlock, text.size());
    blocks_.push_back(std::make_unique_for_overwrite<char[]>(free_));
    blockEnd_ = blocks_.back().get() + free_;
  }
  char* const at = blockEnd_ - free_;
  std::memcpy(at, text.data(), text.size());
  free_ -= text.size();
  return {at, text.size()};
}

void TextPool::grow() {
  std::vector<std::uint32_t> larger(2 * slots_.size(), 0);
  const std::size_t mask = larger.size() - 1;
  for (std::uint32_t number = 1; number <= texts_.size(); ++number) {
    std::size_t at = hashes_[number - 1] & mask;
    while (larger[at] != 0) {
      at = (at + 1) & mask;
    }
    larger[at] = number;
  }
  slots_.swap(larger);
}

std::uint32_t TextPool::number(std::string_view text) {
  const std::uint64_t hash = hashOf(text);
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = hash & mask;
  for (; slots_[at] != 0; at = (at + 1) & mask) {
    const std::uint32_t found = slots_[at];
    if (hashes_[found - 1] == hash && texts_[found - 1] == text) {
      return found;
    }
  }
  if (texts_.size() >= std::numeric_limits<std::uint32_t>::max() - 1) {
    throw std::bad_alloc();
  }
  texts_.push_back(keep(text));
  hashes_.push_back(hash);
  const auto number = static_cast<std::uint32_t>(texts_.size());
  slots_[at] = number;
  if (2 * texts_.size() > slots_.size()) {
    grow();
  }
  return number;
}

void CsvColumn::becomeText(const Scanner::Cell& cell, std::size_t record) {
  turning_ = {1, record, std::string(cell.text.substr(0, 60))};
  numbers_ = static_cast<std::size_t>(
      std::count_if(values_.begin(), values_.end(), [](double v) { return !std::isnan(v); }));
  again_ = values_.size();
  codes_.assign(again_, 0);
  values_ = {};
  pool_ = std::make_unique<TextPool>();
  kind_ = ColumnKind::text;
}

bool CsvColumn::add(const Scanner::Cell& cell, std::size_t record, const CellRules& rules) {
  double value = kMissing;
  bool good = true;
  switch (kind_) {
    case ColumnKind::left:
      return true;
    case ColumnKind::automatic:
      if (rules.number(cell.text, value)) {
        values_.push_back(value);
        return true;
      }
      becomeText(cell, record);
      break;
    case ColumnKind::number:
      good = rules.number(cell.text, value);
      values_.push_back(good ? value : kMissing);
      break;
    case ColumnKind::date:
      if (const auto days = daysOfText(kernels::trimmed(cell.text))) {
        value = static_cast<double>(*days);
      } else {
        good = rules.isMissing(kernels::trimmed(cell.text));
      }
      values_.push_back(value);
      break;
    default:
      break;
  }
  if (kind_ == ColumnKind::text) {
    if (pool_ == nullptr) {
      pool_ = std::make_unique<TextPool>();
    }
    codes_.push_back(rules.isMissingText(cell) ? 0 : pool_->number(cell.text));
    if (numbers_ > 0 && kernels::plainNumber(cell.text, rules.decimal, value)) {
      ++numbers_;
    }
  }
  if (!good && unreadable.count++ == 0) {
    unreadable.firstRow = record;
    unreadable.firstCell = cell.text.substr(0, 60);
  }
  return good;
}

void CsvColumn::addMissing() {
  if (isText()) {
    codes_.push_back(0);
  } else if (!isLeft()) {
    values_.push_back(kMissing);
  }
}

void CsvColumn::addAgain(const Scanner::Cell& cell, std::size_t row, const CellRules& rules) {
  if (row < again_) {
    codes_[row] = rules.isMissingText(cell) ? 0 : pool_->number(cell.text);
  }
}

ALGEB CsvColumn::array(State& state) {
  const bool objects = isText() || kind_ == ColumnKind::date;
  const RTableSettings settings{objects ? RTABLE_DAG : RTABLE_FLOAT64, RTABLE_RECTANGULAR,
                                RTABLE_COLUMN_MAJOR, 1, 0};
  const V_INT bounds[] = {1, static_cast<V_INT>(size())};
  const ALGEB result = newArray(state, settings, objects ? nullptr : values_.data(), bounds);
  if (!objects) {
    values_ = {};
    return result;
  }
  auto* const cells = static_cast<ALGEB*>(arrayOf(result).data);
  if (isText()) {
    Handles texts(state);
    texts.push(state.null);
    for (std::uint32_t i = 1; pool_ != nullptr && i <= pool_->size(); ++i) {
      texts.push(string(state, pool_->text(i)));
    }
    for (std::size_t i = 0; i < codes_.size(); ++i) {
      cells[i] = texts[codes_[i]];
    }
    pool_.reset();
    codes_ = {};
    return result;
  }
  for (std::size_t i = 0; i < values_.size(); ++i) {
    cells[i] =
        std::isnan(values_[i]) ? state.null : newDate(state, static_cast<std::int64_t>(values_[i]));
  }
  values_ = {};
  return result;
}

}  // namespace vexel

#include "stream/table.hpp"

#include <algorithm>
#include <charconv>
#include <filesystem>

namespace stream {

namespace {

// The number of a column, from 1, in a text of digits; 0 for any other.
std::size_t numberIn(const std::string& text) {
  std::size_t number = 0;
  const char* last = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), last, number);
  return error == std::errc() && end == last ? number : 0;
}

std::string firstOf(const std::vector<std::string>& headings, std::size_t count) {
  std::string shown;
  for (std::size_t i = 0; i < std::min<std::size_t>(headings.size(), 8); ++i) {
    shown += (i > 0 ? ", " : "") + headings[i];
  }
  return headings.empty() ? "columns 1 to " + std::to_string(count)
                          : shown + (headings.size() > 8 ? ", ..." : "");
}

std::size_t find(const std::string& path, const std::string& wanted,
                 const std::vector<std::string>& headings, std::size_t count) {
  const auto first = std::find(headings.begin(), headings.end(), wanted);
  if (first != headings.end()) {
    if (std::find(first + 1, headings.end(), wanted) != headings.end()) {
      throw std::invalid_argument(path + " has several columns " + wanted +
                                  "; name one by its number");
    }
    return static_cast<std::size_t>(first - headings.begin());
  }
  if (const std::size_t number = numberIn(wanted); number >= 1 && number <= count) {
    return number - 1;
  }
  throw std::invalid_argument(path + " has no column " + wanted + ", it has " +
                              firstOf(headings, count));
}

}  // namespace

void Table::choose(const std::string& path, const Columns& wanted,
                   const std::vector<std::string>& headings, std::size_t count) {
  if (!wanted.column.empty()) {
    column = find(path, wanted.column, headings, count);
  } else if (count != 1) {
    throw std::invalid_argument("--column: one has to be chosen of " + path + ", which has " +
                                firstOf(headings, count));
  }
  if (!wanted.weights.empty()) {
    weights = find(path, wanted.weights, headings, count);
  }
}

std::unique_ptr<Table> openTable(const std::string& path, const Columns& wanted) {
  std::string ending = std::filesystem::path(path).extension().string();
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  if (path == "-" || ending == ".csv") {
    return openCsv(path, wanted);
  }
  if (ending == ".npy") {
    return openNpy(path, wanted);
  }
  throw Unreadable("files must be .csv or .npy, got " + path);
}

}  // namespace stream

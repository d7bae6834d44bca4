// Radix sort, least significant digit first, of records by an unsigned key.
//
// Stable; O(n) for each digit in which the keys differ (digits that are the same in all keys are
// skipped).  Digits have 11 bits: 2048 open output streams still fit the first two cache levels,
// and a 64-bit key needs six passes instead of the eight of bytes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace nag2 {

inline constexpr int kDigitBits = 11;
inline constexpr std::size_t kDigitValues = std::size_t{1} << kDigitBits;

template <typename Key>
inline constexpr int kDigits = (static_cast<int>(8 * sizeof(Key)) + kDigitBits - 1) / kDigitBits;

template <typename Key>
constexpr std::size_t digit(Key key, int place) {
  return static_cast<std::size_t>(static_cast<std::uint64_t>(key) >> (place * kDigitBits)) &
         (kDigitValues - 1);
}

// Sorts records by keyOf(record); scratch has as many elements.  Returns the span of the two that
// holds the result.
template <typename Key, typename Record, typename KeyOfRecord>
std::span<Record> radixSort(std::span<Record> records, std::span<Record> scratch,
                            KeyOfRecord keyOf) {
  constexpr int places = kDigits<Key>;
  std::vector<std::array<std::size_t, kDigitValues>> counts(places);
  for (const Record& record : records) {
    const Key key = keyOf(record);
    for (int place = 0; place < places; ++place) {
      ++counts[static_cast<std::size_t>(place)][digit(key, place)];
    }
  }
  for (int place = 0; place < places; ++place) {
    auto& count = counts[static_cast<std::size_t>(place)];
    if (records.empty() || count[digit(Key{keyOf(records[0])}, place)] == records.size()) {
      continue;
    }
    std::size_t start = 0;
    for (std::size_t& c : count) {
      start += std::exchange(c, start);
    }
    for (const Record& record : records) {
      scratch[count[digit(Key{keyOf(record)}, place)]++] = record;
    }
    std::swap(records, scratch);
  }
  return records;
}

}  // namespace nag2

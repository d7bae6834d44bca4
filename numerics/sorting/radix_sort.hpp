// Stable radix sort, most significant digit first, of records by an unsigned key.
//
// Each level spreads a range of records over buckets by the leading bits of key - smallest key, so
// crowded exponents or a common offset cost nothing, and goes on in each bucket until insertion
// sort takes over.  Every level settles at least three bits of the key: the depth is at most 22 and
// the cost O(n) a level; evenly spread keys need two or three levels, each in a smaller cache.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "kernels/watch.hpp"

namespace nag2 {

// Measured on 10^7 random doubles and integers: more buckets lose in address translation what they
// save in levels, longer insertion sorts lose to one more level.
inline constexpr int kMostBits = 10;
inline constexpr int kFewBits = 7;
inline constexpr std::size_t kInsertionLimit = 24;
// Buckets are chosen so that about this many records share one.
inline constexpr std::size_t kRecordsPerBucket = 4;

template <typename Record, typename KeyOfRecord>
void insertionSortByKey(Record* records, std::size_t n, KeyOfRecord keyOf) {
  for (std::size_t j = 1; j < n; ++j) {
    const Record moving = records[j];
    const auto key = keyOf(moving);
    std::size_t i = j;
    for (; i > 0 && keyOf(records[i - 1]) > key; --i) {
      records[i] = records[i - 1];
    }
    records[i] = moving;
  }
}

template <int MaxBits, typename Record, typename KeyOfRecord>
void spreadAndSort(Record* records, Record* scratch, std::size_t n, bool intoScratch,
                   KeyOfRecord keyOf);

// Sorts records[0..n-1] by keyOf(record); the result is left in scratch, which has as much room, if
// intoScratch, else in records.
template <typename Record, typename KeyOfRecord>
void radixSort(Record* records, Record* scratch, std::size_t n, bool intoScratch,
               KeyOfRecord keyOf) {
  if (n <= kInsertionLimit) {
    insertionSortByKey(records, n, keyOf);
    if (intoScratch) {
      std::copy_n(records, n, scratch);
    }
  } else if (n / kRecordsPerBucket < (std::size_t{1} << kFewBits)) {
    spreadAndSort<kFewBits>(records, scratch, n, intoScratch, keyOf);
  } else {
    spreadAndSort<kMostBits>(records, scratch, n, intoScratch, keyOf);
  }
}

// One level: MaxBits bounds the table of bucket ends, which lives on the stack.
template <int MaxBits, typename Record, typename KeyOfRecord>
void spreadAndSort(Record* records, Record* scratch, std::size_t n, bool intoScratch,
                   KeyOfRecord keyOf) {
  std::uint64_t smallest = keyOf(records[0]);
  std::uint64_t largest = smallest;
  vexel::kernels::forEach(n, [&](std::size_t i) {
    const std::uint64_t key = keyOf(records[i]);
    smallest = std::min(smallest, key);
    largest = std::max(largest, key);
  });
  if (smallest == largest) {
    if (intoScratch) {
      std::copy_n(records, n, scratch);
    }
    return;
  }
  const int width = static_cast<int>(std::bit_width(largest - smallest));
  const int bits =
      std::min({MaxBits, width, static_cast<int>(std::bit_width(n / kRecordsPerBucket))});
  const int shift = width - bits;
  const auto bucketOf = [&](const Record& record) {
    return static_cast<std::size_t>((keyOf(record) - smallest) >> shift);
  };
  const std::size_t buckets = static_cast<std::size_t>((largest - smallest) >> shift) + 1;

  std::array<std::size_t, std::size_t{1} << MaxBits> ends{};
  vexel::kernels::forEach(n, [&](std::size_t i) { ++ends[bucketOf(records[i])]; });
  std::size_t start = 0;
  for (std::size_t b = 0; b < buckets; ++b) {
    start += std::exchange(ends[b], start);
  }
  vexel::kernels::forEach(
      n, [&](std::size_t i) { scratch[ends[bucketOf(records[i])]++] = records[i]; });
  // The ranges have changed sides; shift 0 means that each bucket holds one key.
  constexpr std::size_t kWorthALook = std::size_t{1} << 16;
  if (n > kWorthALook) {
    vexel::kernels::poll();
  }
  start = 0;
  for (std::size_t b = 0; b < buckets; ++b) {
    const std::size_t size = ends[b] - start;
    if (shift == 0) {
      if (!intoScratch) {
        std::copy_n(scratch + start, size, records + start);
      }
    } else if (size > 0) {
      radixSort(scratch + start, records + start, size, !intoScratch, keyOf);
    }
    start = ends[b];
  }
}

// The same for bare keys.  Keys of at most 32 bits take the least significant digit first: three
// passes at most, without branches, and digits that all keys share are skipped.
template <typename Key>
void radixSortKeys(Key* keys, Key* scratch, std::size_t n) {
  constexpr int kDigitBits = 11;
  constexpr std::size_t kDigitValues = std::size_t{1} << kDigitBits;
  constexpr std::size_t kPlaces = (8 * sizeof(Key) + kDigitBits - 1) / kDigitBits;
  constexpr std::size_t kFewKeys = 2000;  // fewer do not pay for clearing the tables
  if (sizeof(Key) > 4 || n < kFewKeys) {
    radixSort(keys, scratch, n, false, [](Key key) { return key; });
    return;
  }
  const auto digit = [](Key key, std::size_t place) {
    return (static_cast<std::size_t>(key) >> (place * kDigitBits)) & (kDigitValues - 1);
  };
  std::array<std::array<std::size_t, kDigitValues>, kPlaces> counts{};
  vexel::kernels::forEach(n, [&](std::size_t i) {
    for (std::size_t place = 0; place < kPlaces; ++place) {
      ++counts[place][digit(keys[i], place)];
    }
  });
  Key* from = keys;
  Key* to = scratch;
  for (std::size_t place = 0; place < kPlaces; ++place) {
    std::array<std::size_t, kDigitValues>& starts = counts[place];
    if (starts[digit(from[0], place)] == n) {
      continue;
    }
    std::size_t start = 0;
    for (std::size_t& s : starts) {
      start += std::exchange(s, start);
    }
    vexel::kernels::forEach(n,
                            [&](std::size_t i) { to[starts[digit(from[i], place)]++] = from[i]; });
    std::swap(from, to);
  }
  if (from != keys) {
    std::copy_n(from, n, keys);
  }
}

}  // namespace nag2

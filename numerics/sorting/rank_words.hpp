// The stable order of machine numbers by sorting words that hold key and position.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>

#include "kernels/large_pages.hpp"
#include "kernels/watch.hpp"
#include "numerics/sorting/radix_sort.hpp"
#include "numerics/sorting/sort_in_steps.hpp"
#include "numerics/sorting/sort_keys.hpp"
#include "numerics/sorting/two_threads.hpp"
#include "numerics/sorting/vector_sort.hpp"
#include "numerics/sorting/word_blocks.hpp"

namespace nag2 {

// Sorts words with vector instructions, in steps where somebody watches.
inline void sortWordsByVectors(std::uint64_t* words, std::size_t n, bool watched,
                               SortProgress& progress) {
  if (!watched || n <= kSortStep) {
    vectorSort(words, n, false);
    return;
  }
  // As signed integers of the same order.
  auto* const x = reinterpret_cast<std::int64_t*>(words);
  const auto turn = [](std::int64_t v) { return v ^ std::numeric_limits<std::int64_t>::min(); };
  std::transform(x, x + n, x, turn);
  vectorSortWatched(x, n, false, true, progress);
  std::transform(x, x + n, x, turn);
}

// Sorts words; scratch has as much room, or is null when vector instructions do the work.
inline void sortWords(std::uint64_t* words, std::uint64_t* scratch, std::size_t n) {
  if (scratch != nullptr) {
    radixSortKeys(words, scratch, n);
  } else if (vectorSortServes(n)) {
    SortProgress progress(n);
    sortWordsByVectors(words, n, vexel::kernels::currentWatcher != nullptr, progress);
  } else {
    std::sort(words, words + n);
  }
}

// The positions of equal elements, in their order.
class TiedPositions {
 public:
  TiedPositions(const std::uint64_t* words, std::size_t size, std::uint64_t mask)
      : words_(words), size_(size), mask_(mask) {}
  std::size_t size() const { return size_; }
  std::size_t operator[](std::size_t i) const { return words_[i] & mask_; }

 private:
  const std::uint64_t* words_;
  std::size_t size_;
  std::uint64_t mask_;
};

// The words of numbers: the key's distance from the smallest in the high bits, the position in the
// low ones, which makes any sort stable.  Where the two need more than 64 bits the distance loses
// its last bits, at most as many as a position has; they decide among the words that agree in the
// rest.
template <typename T>
class RankWords {
 public:
  RankWords(const T* x, std::size_t n, bool descending)
      : x_(x),
        n_(n),
        two_(n >= kWorthAThread && vectorSortServes(n) && haveTwoProcessors()),
        words_(std::make_unique_for_overwrite<std::uint64_t[]>(n)) {
    vexel::kernels::useLargePages(words_.get(), n * sizeof(std::uint64_t));
    if (!vectorSortServes(n)) {
      scratch_ = std::make_unique_for_overwrite<std::uint64_t[]>(n);
    }
    shape_.flip = descending ? ~std::uint64_t{0} : 0;
    shape_.positionBits = static_cast<int>(std::bit_width(n - 1));
    int width = 8 * static_cast<int>(sizeof(T));
    if (width + shape_.positionBits > 64) {
      const KeyRange range = rangeOfAll();
      shape_.smallest = range.smallest;
      width = static_cast<int>(std::bit_width(range.largest - range.smallest));
    }
    shape_.lostBits = std::max(0, width + shape_.positionBits - 64);
  }

  // Calls visit(first, TiedPositions) for each run of equal elements in sorted order, and
  // expect(position) some elements before a position's turn.
  template <typename Visit, typename Expect>
  void inOrder(Visit visit, Expect expect) {
    if (two_) {
      const std::size_t middle = partAll();
      onSides(middle, [&](std::size_t begin, std::size_t end, SortProgress& progress,
                          bool watched) { sortSide(begin, end, watched, progress); });
    } else {
      makeAll();
      sortWords(words_.get(), scratch_.get(), n_);
    }
    visitWords(0, n_, visit, expect, [this](std::size_t i) {
      vexel::kernels::poll(static_cast<double>(i) / static_cast<double>(n_));
    });
  }

  // The same, with two threads calling at a time where that pays.
  template <typename Visit, typename Expect>
  void anywhere(Visit visit, Expect expect) {
    if (!two_) {
      inOrder(visit, expect);
      return;
    }
    onSides(partAll(),
            [&](std::size_t begin, std::size_t end, SortProgress& progress, bool watched) {
              sortSide(begin, end, watched, progress);
              visitWords(begin, end, visit, expect, [&](std::size_t) { progress.done(0); });
            });
  }

 private:
  // Below this many elements a second thread costs more than it saves.
  static constexpr std::size_t kWorthAThread = std::size_t{1} << 17;
  static constexpr std::size_t kBlock = 1024;
  static constexpr std::size_t kAhead = 16;  // elements between expectation and visit

  static std::uint64_t lowBits(int bits) { return (std::uint64_t{1} << bits) - 1; }
  std::size_t position(std::uint64_t word) const { return word & lowBits(shape_.positionBits); }
  bool agree(std::uint64_t a, std::uint64_t b) const { return (a ^ b) >> shape_.positionBits == 0; }
  std::uint64_t distance(std::size_t i) const {
    return keyAsWord(x_[i], shape_.flip) - shape_.smallest;
  }
  // The word that orders element i among those that agree with it.
  std::uint64_t tieBreaker(std::size_t i) const {
    return (distance(i) & lowBits(shape_.lostBits)) << shape_.positionBits | i;
  }

  // work(half, begin, end) for stretches of both halves, or of the one whole.
  template <typename Work>
  void onHalves(Work work) {
    const auto half = [&](int which, std::size_t from, std::size_t to) {
      vexel::kernels::inStretches(to - from, [&](std::size_t begin, std::size_t end) {
        work(which, from + begin, from + end);
      });
    };
    if (two_) {
      runBoth([&] { half(0, 0, n_ / 2); }, [&] { half(1, n_ / 2, n_); });
    } else {
      half(0, 0, n_);
    }
  }

  KeyRange rangeOfAll() {
    std::array<KeyRange, 2> ranges{KeyRange{~std::uint64_t{0}, 0}, KeyRange{~std::uint64_t{0}, 0}};
    onHalves([&](int half, std::size_t begin, std::size_t end) {
      KeyRange& range = ranges[static_cast<std::size_t>(half)];
      const KeyRange here = rangeOfKeys(x_ + begin, end - begin, shape_.flip);
      range = {std::min(range.smallest, here.smallest), std::max(range.largest, here.largest)};
    });
    return {std::min(ranges[0].smallest, ranges[1].smallest),
            std::max(ranges[0].largest, ranges[1].largest)};
  }

  void makeAll() {
    vexel::kernels::inStretches(n_, [&](std::size_t begin, std::size_t end) {
      makeWords(x_ + begin, end - begin, begin, shape_, words_.get() + begin);
    });
    vexel::kernels::poll(0);
  }

  // Makes the words on two threads, those below a middling one first; gives their number.  Words
  // that agree are on the same side.
  std::size_t partAll() {
    std::array<std::uint64_t, 255> some;
    for (std::size_t i = 0; i < some.size(); ++i) {
      some[i] = distance(i * (n_ / some.size()));
    }
    std::nth_element(some.begin(), some.begin() + some.size() / 2, some.end());
    const std::uint64_t middling = some[some.size() / 2] >> shape_.lostBits << shape_.lostBits;
    const std::uint64_t key = shape_.smallest + middling;
    std::array<std::size_t, 2> below{};
    onHalves([&](int half, std::size_t begin, std::size_t end) {
      below[static_cast<std::size_t>(half)] +=
          countKeysBelow(x_ + begin, end - begin, shape_.flip, key);
    });
    std::uint64_t* const all = words_.get();
    const std::size_t middle = below[0] + below[1];
    std::array<std::uint64_t*, 2> front{all, all + below[0]};
    std::array<std::uint64_t*, 2> back{all + middle, all + middle + (n_ / 2 - below[0])};
    const std::uint64_t pivot = shape_.word(middling, 0);
    onHalves([&](int half, std::size_t begin, std::size_t end) {
      std::array<std::uint64_t, kBlock> block;
      std::uint64_t*& lower = front[static_cast<std::size_t>(half)];
      std::uint64_t*& upper = back[static_cast<std::size_t>(half)];
      for (std::size_t i = begin; i < end; i += kBlock) {
        const std::size_t size = std::min(kBlock, end - i);
        makeWords(x_ + i, size, i, shape_, block.data());
        const std::size_t parted = partWords(block.data(), size, pivot, lower, upper);
        lower += parted;
        upper += size - parted;
      }
    });
    return middle;
  }

  // work(begin, end, progress, watched) for both sides, the second on this thread.
  template <typename Work>
  void onSides(std::size_t middle, Work work) {
    const bool watched = vexel::kernels::currentWatcher != nullptr;
    SortProgress progress(n_ - middle);
    runBoth(
        [&] {
          try {
            work(0, middle, progress, watched);
          } catch (const SortStopped&) {
          }
        },
        [&] { work(middle, n_, progress, watched); });
  }

  void sortSide(std::size_t begin, std::size_t end, bool watched, SortProgress& progress) {
    sortWordsByVectors(words_.get() + begin, end - begin, watched, progress);
  }

  template <typename Visit, typename Expect, typename Look>
  void visitWords(std::size_t begin, std::size_t end, Visit& visit, Expect& expect, Look look) {
    std::uint64_t* const words = words_.get();
    for (std::size_t polled = begin; begin < end;) {
      if (begin - polled >= kPassStep) {
        look(begin);
        polled = begin;
      }
      expect(position(words[std::min(begin + kAhead, end - 1)]));
      std::size_t size = 1;
      while (begin + size < end && agree(words[begin], words[begin + size])) {
        ++size;
      }
      if (size > 1 && shape_.lostBits > 0) {
        visitAgreeing(begin, size, visit);
      } else {
        visit(begin, tied(begin, size));
      }
      begin += size;
    }
  }

  // Words that agree but for the bits that were lost.
  template <typename Visit>
  void visitAgreeing(std::size_t begin, std::size_t size, Visit& visit) {
    std::uint64_t* const group = words_.get() + begin;
    std::transform(group, group + size, group,
                   [&](std::uint64_t word) { return tieBreaker(position(word)); });
    if (!std::is_sorted(group, group + size)) {
      sortWords(group, scratch_.get(), size);
    }
    for (std::size_t from = 0; from < size;) {
      std::size_t to = from + 1;
      while (to < size && agree(group[from], group[to])) {
        ++to;
      }
      visit(begin + from, tied(begin + from, to - from));
      from = to;
    }
  }

  TiedPositions tied(std::size_t begin, std::size_t size) const {
    return {words_.get() + begin, size, lowBits(shape_.positionBits)};
  }

  const T* x_;
  std::size_t n_;
  bool two_;
  WordShape shape_;
  std::unique_ptr<std::uint64_t[]> words_;
  std::unique_ptr<std::uint64_t[]> scratch_;
};

// Calls visit(first, TiedPositions) for each run of equal elements in sorted order, first being the
// number of elements before it.  NaNs are equal to one another and the largest.
template <typename T, typename Visit>
void visitSorted(const T* x, std::size_t n, bool descending, Visit visit) {
  if (n > 0) {
    RankWords<T>(x, n, descending).inOrder(visit, [](std::size_t) {});
  }
}

// The same where the order of the calls does not matter: two threads may call at a time.
// expect(position) is called some elements before the turn of a position.
template <typename T, typename Visit, typename Expect>
void visitSortedAnywhere(const T* x, std::size_t n, bool descending, Visit visit, Expect expect) {
  if (n > 0) {
    RankWords<T>(x, n, descending).anywhere(visit, expect);
  }
}

}  // namespace nag2

// What may happen during any function: memory that runs out at any allocation, and other threads.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <thread>

#include "jobs.hpp"

namespace {

thread_local std::int64_t allocationsLeft = -1;  // counts down; the one that finds 0 fails
thread_local std::int64_t allocations = 0;
std::atomic<std::int64_t> alive{0};

[[maybe_unused]] void* allocate(std::size_t size, std::size_t alignment) {
  ++allocations;
  if (allocationsLeft >= 0 && allocationsLeft-- == 0) {
    throw std::bad_alloc();
  }
  alignment = std::max(alignment, alignof(std::max_align_t));
  void* const p = std::aligned_alloc(alignment, (size + alignment) / alignment * alignment);
  if (p == nullptr) {
    throw std::bad_alloc();
  }
  ++alive;
  return p;
}

[[maybe_unused]] void release(void* p) noexcept {
  if (p != nullptr) {
    --alive;
    std::free(p);
  }
}

std::vector<std::uint64_t> bitsOf(const std::vector<double>& v) {
  std::vector<std::uint64_t> bits;
  for (const double x : v) {
    bits.push_back(std::bit_cast<std::uint64_t>(x));
  }
  return bits;
}

}  // namespace

#ifndef __SANITIZE_THREAD__  // which has its own, before anything else runs
void* operator new(std::size_t size) { return allocate(size, 0); }
void* operator new[](std::size_t size) { return allocate(size, 0); }
void* operator new(std::size_t size, std::align_val_t a) {
  return allocate(size, static_cast<std::size_t>(a));
}
void* operator new[](std::size_t size, std::align_val_t a) {
  return allocate(size, static_cast<std::size_t>(a));
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return allocate(size, 0);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void operator delete(void* p) noexcept { release(p); }
void operator delete[](void* p) noexcept { release(p); }
void operator delete(void* p, std::size_t) noexcept { release(p); }
void operator delete[](void* p, std::size_t) noexcept { release(p); }
void operator delete(void* p, std::align_val_t) noexcept { release(p); }
void operator delete[](void* p, std::align_val_t) noexcept { release(p); }
void operator delete(void* p, std::size_t, std::align_val_t) noexcept { release(p); }
#endif
void operator delete[](void* p, std::size_t, std::align_val_t) noexcept { release(p); }

namespace {

class EveryFunction : public testing::TestWithParam<Job> {};

TEST_P(EveryFunction, SurvivesMemoryThatRunsOutAnywhere) {
  const Job& job = GetParam();
  const auto expected = bitsOf(job.run());  // and what is built once is built
  allocations = 0;
  job.run();
  const std::int64_t count = allocations;
  // All of the first points, then fewer.
  for (std::int64_t i = 0; i < count; i += 1 + i / 200) {
    const std::int64_t before = alive;
    allocationsLeft = i;
    try {
      const std::vector<double> result = job.run();  // what can do without that memory does
      allocationsLeft = -1;
      EXPECT_EQ(bitsOf(result), expected) << "allocation " << i << " of " << count;
    } catch (const std::bad_alloc&) {
      allocationsLeft = -1;
    }
    EXPECT_EQ(alive, before) << "allocation " << i << " of " << count;
  }
  EXPECT_EQ(bitsOf(job.run()), expected);
}

INSTANTIATE_TEST_SUITE_P(All, EveryFunction, testing::ValuesIn(jobs()), [](const auto& job) {
  std::string name = job.param.name;
  std::replace(name.begin(), name.end(), ' ', '_');
  return name;
});

TEST(Functions, GiveTheSameBitsInEightThreadsAtOnce) {
  const std::vector<Job> all = jobs();
  std::vector<std::vector<std::uint64_t>> alone;
  for (const Job& job : all) {
    alone.push_back(bitsOf(job.run()));
  }
  std::atomic<int> differences = 0;
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      for (std::size_t i = 0; i < all.size(); ++i) {
        const std::size_t k = (i + 3 * t) % all.size();
        differences += bitsOf(all[k].run()) != alone[k] ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(differences, 0);
}

}  // namespace

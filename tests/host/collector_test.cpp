// What the collector keeps, what it frees, and that memory stays bounded.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>
#include <vexel/kernel.hpp>

#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {
namespace {

// Overwrites dead stack below the caller, where stale handles would keep objects alive.
__attribute__((noinline)) void scrubStack() {
  volatile char waste[262144];
  for (volatile char& c : waste) {
    c = 0;
  }
}

std::size_t residentBytes() {
  std::ifstream in("/proc/self/statm");
  std::size_t total = 0;
  std::size_t resident = 0;
  in >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

class CoreCollectorTest : public testing::Test {
 protected:
  std::size_t liveNow() {
    scrubStack();
    kernel.collect();
    return kernel.liveObjects();
  }

  Kernel kernel;
  State& state = *kernel.vector();
};

__attribute__((noinline)) void makeGarbage(State& state) {
  for (int i = 0; i < 1000; ++i) {
    newFloat(state, 0.5 + i);
    newList(state, 10);
    newTable(state);
    VexelAlloc(&state, 200);
    string(state, std::to_string(i));
    name(state, "unused" + std::to_string(i));
  }
}

TEST_F(CoreCollectorTest, GarbageGoes) {
  const std::size_t before = liveNow();
  makeGarbage(state);
  EXPECT_GT(kernel.liveObjects(), before + 5000);
  EXPECT_LT(liveNow(), before + 50);  // a few stale words on the stack are allowed
  EXPECT_EQ(state.heap.check(), "");
}

// Fills every kind of container with fresh floats and checks them after collections at every
// allocation with freed memory overwritten.
TEST_F(CoreCollectorTest, StressKeepsWhatIsReachable) {
  kernel.stress(true);
  constexpr int n = 60;
  ALGEB list = newList(state, n);
  ALGEB table = newTable(state);
  const RTableSettings dense{RTABLE_DAG, RTABLE_RECTANGULAR, 0, 1, 0};
  const RTableSettings sparse{RTABLE_DAG, RTABLE_SPARSE, 0, 1, 0};
  const V_INT bounds[] = {1, n};
  ALGEB array = RTableCreate(&state, &dense, nullptr, bounds);
  ALGEB few = RTableCreate(&state, &sparse, nullptr, bounds);
  auto** block = static_cast<ALGEB*>(VexelAlloc(&state, n * V_INT{sizeof(ALGEB)}));
  Handles handles(state);
  ALGEB nested = state.null;
  for (int i = 1; i <= n; ++i) {
    const V_INT index[] = {i};
    VexelListAssign(&state, list, i, newFloat(state, i + 0.25));
    VexelTableAssign(&state, table, newFloat(state, i + 0.5),
                     newPair(state, Tag::range, immediate(i), newFloat(state, i + 0.125)));
    RTableData e{};
    e.dag = newInteger(state, kLargestImmediate - i + 2 * n);
    RTableAssign(&state, array, index, e);
    e.dag = string(state, "s" + std::to_string(i));
    RTableAssign(&state, few, index, e);
    block[i - 1] = newFloat(state, i + 0.75);
    handles.push(newComplex(state, immediate(i), newFloat(state, i)));
    nested = newPair(state, Tag::equation, newFloat(state, -i), nested);
    setNameValue(state, name(state, "v" + std::to_string(i)), newFloat(state, i + 0.0625));
  }
  ASSERT_EQ(state.heap.check(), "");
  for (int i = n; i >= 1; --i) {
    const V_INT index[] = {i};
    ASSERT_EQ(doubleOf(VexelListSelect(&state, list, i)), i + 0.25);
    ALGEB range = VexelTableSelect(&state, table, newFloat(state, i + 0.5));
    ASSERT_EQ(doubleOf(operand(range, 2)), i + 0.125);
    ASSERT_EQ(RTableSelect(&state, array, index).dag,
              newInteger(state, kLargestImmediate - i + 2 * n));
    ASSERT_EQ(text(RTableSelect(&state, few, index).dag), "s" + std::to_string(i));
    ASSERT_EQ(doubleOf(block[i - 1]), i + 0.75);
    ASSERT_EQ(doubleOf(operand(handles[static_cast<std::size_t>(i - 1)], 2)), i);
    ASSERT_EQ(doubleOf(operand(nested, 1)), -i);
    nested = operand(nested, 2);
    ASSERT_EQ(doubleOf(nameValue(name(state, "v" + std::to_string(i)))), i + 0.0625);
  }
}

// A pointer into an array's data, or into a block, keeps it, even one to its end.
TEST_F(CoreCollectorTest, PointersIntoDataKeepIt) {
  kernel.stress(true);
  std::vector<double> x(1000, 1.5);
  auto* data = static_cast<double*>(RTableDataBlock(&state, kernel.array(x).handle()));
  auto* small = static_cast<char*>(VexelAlloc(&state, 24)) + 20;
  auto* large = static_cast<char*>(VexelAlloc(&state, 100000)) + 99999;
  *small = *large = 'k';
  data += 1000;
  for (int i = 0; i < 100; ++i) {
    newFloat(state, i + 0.1);
    VexelAlloc(&state, 24);
  }
  EXPECT_EQ(data[-1000], 1.5);
  EXPECT_EQ(*small, 'k');
  EXPECT_EQ(*large, 'k');
}

TEST_F(CoreCollectorTest, BlocksAreClearedAndAligned) {
  for (V_INT size : {0, 1, 7, 8, 31, 4000, 4096, 100000}) {
    auto* p = static_cast<unsigned char*>(VexelAlloc(&state, size));
    EXPECT_EQ(reinterpret_cast<Word>(p) % 16, 0U);
    for (V_INT i = 0; i < size; ++i) {
      ASSERT_EQ(p[i], 0);
    }
    std::memset(p, 0xFF, static_cast<std::size_t>(size));
    ASSERT_EQ(state.heap.check(), "");
    p[size] ^= 1;
    ASSERT_EQ(state.heap.check(), "memory was written past the end of a block");
    p[size] ^= 1;
  }
}

// A write outside a block or an array, or through a handle that is no more, ends the process at one
// of the next collections in stress mode.
TEST_F(CoreCollectorTest, StressFindsWildWrites) {
  const auto spoil = [this](void* p) {
    kernel.stress(true);
    *static_cast<volatile char*>(p) = 1;
    kernel.collect();
    std::_Exit(0);  // not to look for leaks
  };
  auto* block = static_cast<char*>(VexelAlloc(&state, 100));
  auto* large = static_cast<char*>(VexelAlloc(&state, 10000));
  const Value array = kernel.array({1.0, 2.0});
  auto* data = static_cast<char*>(RTableDataBlock(&state, array.handle()));
  EXPECT_DEATH(spoil(block + 100), "past the end of a block");
  EXPECT_DEATH(spoil(large + 10000), "past the end of a block");
  EXPECT_DEATH(spoil(data + 16), "outside the elements of an array");
  EXPECT_DEATH(spoil(data - 1), "outside the elements of an array");
  EXPECT_EXIT(spoil(data + 15), testing::ExitedWithCode(0), "");

  const auto writeLate = [this] {
    kernel.stress(true);
    // Handles that the stack scan cannot read; a stale word may still keep one list or another.
    volatile Word hidden[50];
    [&]() __attribute__((noinline)) {
      for (volatile Word& h : hidden) {
        h = ~reinterpret_cast<Word>(newList(state, 3));
      }
    }
    ();
    liveNow();
    for (const volatile Word& h : hidden) {
      words(reinterpret_cast<ALGEB>(~h))[2] = 0;
    }
    for (int i = 0; i < 100; ++i) {
      kernel.collect();
    }
    std::_Exit(0);  // not to look for leaks
  };
  EXPECT_DEATH(writeLate(), "after it was collected");
}

TEST_F(CoreCollectorTest, ProtectionIsCounted) {
  kernel.stress(true);
  volatile Word hidden = 0;  // a handle that the stack scan cannot read
  [&]() __attribute__((noinline)) {
    ALGEB x = newList(state, 3);
    VexelGcProtect(&state, x);
    VexelGcProtect(&state, x);
    hidden = ~reinterpret_cast<Word>(x);
  }
  ();
  const auto alive = [&] {
    liveNow();
    return is(reinterpret_cast<ALGEB>(~hidden), Tag::list);
  };
  EXPECT_TRUE(alive());
  VexelGcAllow(&state, reinterpret_cast<ALGEB>(~hidden));
  EXPECT_TRUE(alive());
  VexelGcAllow(&state, reinterpret_cast<ALGEB>(~hidden));
  VexelGcAllow(&state, immediate(3));
  scrubStack();
#if !defined(__SANITIZE_ADDRESS__)  // whose larger frames keep stale handles
  EXPECT_FALSE(alive());
#endif
}

struct Tracked {
  VKernelVector kv;
  ALGEB held;
  int* marks;
  int* disposals;
};

Tracked& tracked(VKernelVector kv, ALGEB x) {
  return *static_cast<Tracked*>(VexelToPointer(kv, x));
}

VKernelVector hookVector = nullptr;

void markTracked(ALGEB x) {
  Tracked& t = tracked(hookVector, x);
  ++*t.marks;
  VexelGcMark(t.kv, t.held);
}

void disposeTracked(ALGEB x) {
  Tracked& t = tracked(hookVector, x);
  EXPECT_EQ(VexelPointerType(hookVector, x), 77);
  ++*t.disposals;
  delete &t;
}

// An object with hooks around a list; the handle does not stay on the stack.
__attribute__((noinline)) void makeTracked(State& state, Handles& root, int* marks,
                                           int* disposals) {
  const ALGEB list = newList(state, 5);
  auto* t = new Tracked{&state, list, marks, disposals};
  ALGEB x = ToVexelPointer(&state, t, 77);
  root.push(x);
  VexelPointerSetMarkFunction(&state, x, markTracked);
  VexelPointerSetDisposeFunction(&state, x, disposeTracked);
}

// Makes such an object, sees it kept, and lets go of it; in a frame of its own, so that no handle
// stays behind in the caller's.
__attribute__((noinline)) void holdAndRelease(Kernel& kernel, int* marks, int* disposals) {
  State& state = *kernel.vector();
  Handles root(state);
  makeTracked(state, root, marks, disposals);
  scrubStack();
  kernel.collect();
  EXPECT_GE(*marks, 1);
  EXPECT_TRUE(is(tracked(&state, root[0]).held, Tag::list));
}

TEST(CorePointerTest, MarkRunsWhileReachableAndDisposeOnce) {
  int marks = 0;
  int disposals = 0;
  int atTheEnd = 0;
  {
    Kernel kernel;
    State& state = *kernel.vector();
    hookVector = &state;
    kernel.stress(true);
    Handles kept(state);
    holdAndRelease(kernel, &marks, &disposals);
    makeTracked(state, kept, &marks, &atTheEnd);
    scrubStack();
    kernel.collect();
    kernel.collect();
    EXPECT_EQ(disposals, 1);
    EXPECT_EQ(atTheEnd, 0);
  }
  EXPECT_EQ(disposals, 1);
  EXPECT_EQ(atTheEnd, 1);
}

// A dispose function may ask for a float, a text or a name that is about to go, and keep it.
__attribute__((noinline)) void makeRememberer(State& state) {
  ALGEB x = ToVexelPointer(&state, nullptr, 78);
  newFloat(state, 123.456);
  newList(state, std::vector{string(state, "dying"), name(state, "dying")});
  VexelPointerSetDisposeFunction(&state, x, [](ALGEB) {
    State& s = *hookVector;
    const ALGEB found[] = {newFloat(s, 123.456), string(s, "dying"), name(s, "dying")};
    setNameValue(s, name(s, "remembered"), newList(s, found));
  });
}

TEST_F(CoreCollectorTest, WhatADisposeFunctionAsksForStays) {
  hookVector = &state;
  makeRememberer(state);
  for (int i = 0; i < 3; ++i) {
    scrubStack();
    kernel.collect();
    makeGarbage(state);
  }
  EXPECT_EQ(kernel.eval("remembered;").source(), "[123.456, \"dying\", dying]");
  EXPECT_EQ(kernel.eval("part(remembered, 1);").handle(), newFloat(state, 123.456));
  EXPECT_EQ(state.heap.check(), "");
}

TEST_F(CoreCollectorTest, EqualFloatsAreOneObjectHoweverManyComeAndGo) {
  Handles kept(state);
  const auto value = [](std::size_t i) { return std::sqrt(static_cast<double>(i)) - 50.0; };
  const auto expectOne = [&] {
    for (std::size_t i = 0; i < kept.size(); ++i) {
      ASSERT_EQ(newFloat(state, value(i)), kept[i]) << i;
    }
  };
  for (const std::size_t n : {100UL, 20000UL, 300UL, 50000UL, 1UL}) {
    kept.resize(std::min(n, kept.size()));
    kernel.collect();
    expectOne();
    while (kept.size() < n) {
      kept.push(newFloat(state, value(kept.size())));
      newFloat(state, -1e6 - static_cast<double>(kept.size()));
    }
    expectOne();
    kernel.collect();
    expectOne();
  }
}

TEST_F(CoreCollectorTest, DeepStructuresCostNoStack) {
  const InsideHost inside;
  ALGEB x = state.null;
  for (int i = 0; i < 1'000'000; ++i) {
    x = newPair(state, Tag::equation, immediate(i), x);
  }
  kernel.collect();
  EXPECT_EQ(operand(x, 1), immediate(999'999));
  EXPECT_THROW(sourceText(state, x), HostErrorToken);
  EXPECT_EQ(state.error.message, "nested too deeply to print");
}

TEST_F(CoreCollectorTest, MemoryStaysBoundedInLongCalculations) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "freed memory stays resident under this sanitizer";
#endif
  const Value square = kernel.function(
      "square", [](Kernel& k, std::span<const Value> a) { return k.real(a[0].number() * 2); });
  const auto run = [&](int n) {
    double sum = 0;
    for (int i = 0; i < n; ++i) {
      ALGEB r = EvalVexelProcedure(&state, square.handle(), ToVexelFloat(&state, i + 0.5));
      sum += VexelToFloat64(&state, r);
    }
    return sum;
  };
  run(1'000'000);
  const std::size_t before = residentBytes();
  EXPECT_GT(run(2'000'000), 0);
  EXPECT_LT(residentBytes(), before + (std::size_t{16} << 20));
  // Arrays count with their data.
  std::vector<double> x(1'000'000);
  for (int i = 0; i < 500; ++i) {
    kernel.array(x);
  }
  EXPECT_LT(residentBytes(), before + (std::size_t{100} << 20));
}

// Lets the n-th allocation fail, for every n until the work gets through.
TEST_F(CoreCollectorTest, EveryFailedAllocationIsAHostError) {
  int failures = 0;
  for (int n = 0;; ++n) {
    kernel.failAllocation(n);
    std::string message;
    try {
      const std::string tag = std::to_string(n);
      const Value list = kernel.list(std::vector<Value>{kernel.real(n + 0.1), kernel.string(tag)});
      const Value array = kernel.array({1.0, 2.0});
      const Value name = kernel.name("name" + tag);
      kernel.range(list, array);
      kernel.failAllocation(-1);
    } catch (const Error& e) {
      message = e.message();
    }
    ASSERT_EQ(state.heap.check(), "");
    if (message.empty()) {
      break;
    }
    ASSERT_EQ(message, "not enough memory");
    ++failures;
  }
  EXPECT_EQ(failures, 7);  // float, string, list, array and its data, name, range
}

TEST_F(CoreCollectorTest, TablesGrowShrinkAndKeepTheirOrder) {
  ALGEB t = newTable(state);
  for (int i = 0; i < 1000; ++i) {
    table(t).assign(immediate(i % 300), immediate(i));
  }
  EXPECT_EQ(table(t).size(), 300U);
  for (int i = 0; i < 290; ++i) {
    table(t).erase(immediate(i));
  }
  EXPECT_EQ(table(t).find(immediate(3)), nullptr);
  EXPECT_EQ(table(t).find(immediate(295)), immediate(895));
  const auto entries = table(t).entries();
  ASSERT_EQ(entries.size(), 10U);
  EXPECT_EQ(entries.front().first, immediate(290));
}

}  // namespace
}  // namespace vexel

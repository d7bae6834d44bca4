// The embedding API: what of C++ it takes, memory of the program's, errors of the C interface.

#include <gmock/gmock.h>
#include <vexelc/vexelc.h>

#include <array>
#include <optional>

#include "kernel_test.hpp"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class EmbeddingTest : public KernelTest {};

enum class Direction : std::uint8_t { up = 3 };

TEST_F(EmbeddingTest, TakesWhatStandsForNumbersTextsAndRowsOfThem) {
  const double row[3] = {1, 2.5, 3};
  const char* const noText = nullptr;
  const std::pair<vexel::Value, const char*> cases[] = {
      {kernel.toValue(true), "true"},
      {kernel.toValue(nullptr), "NULL"},
      {kernel.toValue(noText), "NULL"},
      {kernel.toValue(UINT64_MAX), "18446744073709551615"},
      {kernel.toValue(INT64_MIN), "-9223372036854775808"},
      {kernel.toValue(std::int8_t{-7}), "-7"},
      {kernel.toValue(Direction::up), "3"},
      {kernel.toValue(1.5F), "1.5"},
      {kernel.toValue(0.25L), "0.25"},
      {kernel.toValue("text"), "\"text\""},
      {kernel.toValue(std::string_view("text").substr(1)), "\"ext\""},
      {kernel.toValue(row), "Array(1..3, [1.0, 2.5, 3.0], datatype = float[8])"},
      {kernel.toValue(std::array<float, 2>{1, 2}), "Array(1..2, [1.0, 2.0], datatype = float[4])"},
      {kernel.toValue(std::vector<int>{4, -5}), "Array(1..2, [4, -5], datatype = integer[4])"},
      {kernel.toValue(std::vector<std::uint8_t>{255}), "Array(1..1, [255], datatype = integer[8])"},
      {kernel.toValue(std::vector<double>()), "Array(1..0, [], datatype = float[8])"},
      {kernel.toValue(std::vector<std::string>{"a", "b"}), "[\"a\", \"b\"]"},
      {kernel.list({kernel.integer(1), kernel.string("b")}), "[1, \"b\"]"},
  };
  for (const auto& [value, source] : cases) {
    EXPECT_EQ(value.source(), source);
  }
  EXPECT_THAT(hostError([&] { kernel.toValue(std::vector<std::uint64_t>{UINT64_MAX}); }),
              HasSubstr("2^63"));
  // Braces stand for arrays of floats, none of them for an empty one.
  EXPECT_EQ(kernel.call("STATS_VexelMean_HW", {1.0, 2.0, 6.0}, {}, false, 0).number(), 3.0);
  EXPECT_EQ(kernel.call("count", row).integer(), 3);
  // Alike with and without braces among them.  One argument is the argument sequence itself.
  const vexel::Value pair = kernel.sequence(std::vector{kernel.integer(1), kernel.integer(2)});
  const vexel::Value arguments = kernel.function(
      "arguments",
      [](vexel::Kernel& k, std::span<const vexel::Value> args) { return k.list(args); });
  EXPECT_EQ(kernel.call("arguments", pair).source(), "[1, 2]");
  EXPECT_EQ(kernel.call("arguments", 0.5F, "a", pair, Direction::up, nullptr, true, -7L).source(),
            "[0.5, \"a\", (1, 2), 3, NULL, true, -7]");
  EXPECT_EQ(kernel.call("arguments", 0.5, {}, pair, -7, false).source(),
            "[0.5, Array(1..0, [], datatype = float[8]), (1, 2), -7, false]");
}

// Names are remembered from call to call; what they mean is not.
TEST_F(EmbeddingTest, CallsByNameFollowTheName) {
  const auto answer = [&](int i) {
    return kernel.function(
        "answer", [i](vexel::Kernel& k, std::span<const vexel::Value>) { return k.integer(i); });
  };
  answer(1);
  EXPECT_EQ(kernel.call("answer").integer(), 1);
  answer(2);
  EXPECT_EQ(kernel.call("answer").integer(), 2);
  kernel.eval("answer := () -> 3:");
  EXPECT_EQ(kernel.call("answer").integer(), 3);
  kernel.collect();
  EXPECT_EQ(kernel.call("answer").integer(), 3);
  kernel.eval("other := () -> 4:");
  EXPECT_EQ(kernel.call("other").integer(), 4);
  kernel.eval("clear(other):");
  kernel.collect();
  EXPECT_THAT(hostError([&] { kernel.call("other"); }), HasSubstr("no function"));
}

TEST_F(EmbeddingTest, WrapsMemoryAsItIs) {
  std::vector<std::int32_t> counts = {3, 1, 2, 6, 5, 4};
  const vexel::Value matrix = kernel.wrap(counts, 2, 3);
  EXPECT_EQ(matrix.source(),
            "Array(1..2, 1..3, [[3, 1, 2], [6, 5, 4]], datatype = integer[4], order = row)");
  EXPECT_EQ(matrix.data<std::int32_t>().data(), counts.data());
  EXPECT_EQ(kernel.wrap(counts, 2, 3, RTABLE_COLUMN_MAJOR).data<const std::int32_t>()[3], 6);
  EXPECT_THAT(hostError([&] { kernel.wrap(counts, 2, 4); }), HasSubstr("rows times columns"));
  EXPECT_THAT(hostError([&] { (void)matrix.data(); }), HasSubstr("dense array of %1"));

  // Constant memory is worked on in a copy, or not at all.
  const std::vector<double> constant = {3, 1, 2};
  const vexel::Value fixed = kernel.wrap(constant);
  EXPECT_EQ(kernel.call("STATS_VexelMedian_HW", fixed, {}, false, true).number(), 2.0);
  EXPECT_THAT(hostError([&] { kernel.call("STATS_VexelCumulative_HW", fixed, {}, fixed, 0); }),
              HasSubstr("read-only"));
  EXPECT_THAT(hostError([&] { (void)fixed.data(); }), HasSubstr("read-only"));
  kernel.function("change", [&](vexel::Kernel& k, std::span<const vexel::Value>) {
    RTableData seven;
    seven.float64 = 7;
    const V_INT first = 1;
    RTableAssign(k.vector(), fixed.handle(), &first, seven);
    return k.null();
  });
  EXPECT_NE(hostError([&] { kernel.call("change"); }), "no error");
  EXPECT_THAT(constant, ElementsAre(3, 1, 2));
}

// Wherever the program stands: outside of the kernel's calls, or in a function that it calls.
TEST_F(EmbeddingTest, TextsThatLeaveEndThemselvesOnly) {
  for (const char* text : {"1: exit(3): 2", "quit: 2"}) {
    kernel.eval(text);
    EXPECT_EQ(kernel.eval("1 + 1").number(), 2) << text;
  }
}

TEST_F(EmbeddingTest, AnErrorOfTheCInterfaceIsAnError) {
  const VKernelVector kv = kernel.vector();
  const vexel::Value text = kernel.string("text");
  const auto misuse = [&] { VexelToFloat64(kv, text.handle()); };
  EXPECT_THAT(hostErrorText(misuse), HasSubstr("text"));
  EXPECT_THAT(hostErrorText([&] { VexelRaiseError1(kv, "no %1", text.handle()); }),
              HasSubstr("no \"text\""));
  std::optional<std::string> caught;
  kernel.function("inner", [&](vexel::Kernel& k, std::span<const vexel::Value>) {
    caught = hostErrorText(misuse);
    misuse();
    return k.null();
  });
  EXPECT_THAT(hostErrorText([&] { kernel.call("inner"); }), HasSubstr("text"));
  EXPECT_THAT(caught.value_or(""), HasSubstr("text"));
  // One that the interface traps goes nowhere.
  V_BOOL failed = 0;
  VexelTrapError(
      kv,
      [](void* v) {
        VexelRaiseError(static_cast<VKernelVector>(v), "no");
        return static_cast<void*>(nullptr);
      },
      kv, &failed);
  EXPECT_EQ(failed, 1);
  vexel::Kernel::interrupt();
  EXPECT_THROW(VexelEval(kv, text.handle()), vexel::Interrupted);
}

}  // namespace

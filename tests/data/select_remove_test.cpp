// Elements selected or removed by a range, a predicate, or for having no value.

#include <algorithm>
#include <string>
#include <vector>

#include "arrays_test.hpp"

namespace {

using SelectRemoveTest = ArraysTest;

TEST_F(SelectRemoveTest, InRangeIsClosedBelowAndOpenAbove) {
  for (int type = RTABLE_DAG; type <= RTABLE_FLOAT32; ++type) {
    for (const int storage : {RTABLE_RECTANGULAR, RTABLE_SPARSE}) {
      const vexel::Value data = make(type, {1, 2, 3, 0}, 0, storage);
      const auto split = [&](int mode) {
        return call("STATS_VexelSelectRemoveInRange_HW", data, 1, 3, mode);
      };
      EXPECT_EQ(elements(split(1), type, 0), (std::vector<double>{1, 2}));
      EXPECT_EQ(elements(split(2), type, 0), (std::vector<double>{3, 0}));
      EXPECT_EQ(elements(split(7)[0], type, 0), (std::vector<double>{1, 2}));
      EXPECT_EQ(elements(split(7)[1], type, 0), (std::vector<double>{3, 0}));
    }
    const vexel::Value empty = make(type, {}, 4);
    EXPECT_EQ(
        elements(call("STATS_VexelSelectRemoveInRange_HW", empty, 0, 1, 0)[1], type, 4).size(), 0U);
  }
  const vexel::Value data = array({kNaN, 1, kInf, -kInf});
  EXPECT_TRUE(same(numbers(call("STATS_VexelSelectRemoveInRange_HW", data, 0, kInf, 2)),
                   {kNaN, kInf, -kInf}));
  // Complex elements must be real and have a value: 1.0, 1.0 + 2.0 I, q, 1.0 + q I.
  const vexel::Value complexes = make(RTABLE_COMPLEX_DAG, {1, 1, 1, 1});
  const auto assign = [&](V_INT index, const vexel::Value& re, const vexel::Value& im) {
    RTableData e{};
    e.complexdag.re = re.handle();
    e.complexdag.im = im.handle();
    RTableAssign(kernel.vector(), complexes.handle(), &index, e);
  };
  assign(2, kernel.real(1.0), kernel.real(2.0));
  assign(3, name("q"), kernel.integer(0));
  assign(4, kernel.real(1.0), name("q"));
  const vexel::Value halves = call("STATS_VexelSelectRemoveInRange_HW", complexes, 0, 5, 0);
  EXPECT_EQ(halves[0].size(), 1U);
  EXPECT_EQ(halves[1].size(), 3U);
}

TEST_F(SelectRemoveTest, SelectRemoveHandsElementsAndExtrasToThePredicate) {
  std::vector<std::string> seen;
  const vexel::Value predicate =
      kernel.function("p", [&](vexel::Kernel& k, std::span<const vexel::Value> a) {
        std::string call;
        for (const auto& v : a) {
          call += v.text() + " ";
        }
        seen.push_back(call);
        return k.boolean(a[0].text().front() == '2');
      });
  for (const int type : {RTABLE_INTEGER8, RTABLE_INTEGER64, RTABLE_FLOAT32}) {
    seen.clear();
    const vexel::Value r =
        call("STATS_VexelSelectRemove_HW", make(type, {1, 2, 3}, 0), predicate, 0, 8, 9);
    EXPECT_EQ(elements(r[0], type, 0), (std::vector<double>{2}));
    EXPECT_EQ(elements(r[1], type, 0), (std::vector<double>{1, 3}));
    ASSERT_EQ(seen.size(), 3U);
    EXPECT_EQ(seen[0].substr(seen[0].size() - 5), " 8 9 ");
  }
  const auto withResult = [&](const char* body) {
    const vexel::Value p = eval(body);
    return hostError([&] { call("STATS_VexelSelectRemove_HW", array({1, 2}), p, 1); });
  };
  EXPECT_NE(withResult("x -> 2.5;"), "no error");
  EXPECT_EQ(withResult("x -> error(\"stop\");"), "stop");
  // A predicate that changes the array: each element is taken as it was when it was tested.
  const vexel::Value data = array({1, 2, 3, 4});
  const vexel::Value writer =
      kernel.function("w", [&](vexel::Kernel& k, std::span<const vexel::Value>) {
        std::fill_n(static_cast<double*>(RTableDataBlock(k.vector(), data.handle())), 4, 9.0);
        return k.boolean(true);
      });
  EXPECT_EQ(numbers(call("STATS_VexelSelectRemove_HW", data, writer, 1)),
            (std::vector<double>{1, 9, 9, 9}));
}

TEST_F(SelectRemoveTest, NonNumericAndNullEntries) {
  const auto split = [&](const vexel::Value& x, bool inf, bool nan, bool first) {
    return call("STATS_VexelSelectRemoveNonNumeric_HW", x, inf, nan, first);
  };
  const vexel::Value floats = make(RTABLE_FLOAT64, {1, kNaN, kInf, -kInf}, 0);
  EXPECT_TRUE(same(numbers(split(floats, false, true, true)), {kNaN}));
  EXPECT_EQ(numbers(split(floats, true, false, true)), (std::vector<double>{kInf, -kInf}));
  EXPECT_EQ(split(floats, false, false, true).size(), 0U);
  EXPECT_EQ(elements(split(floats, true, true, false)[1], RTABLE_FLOAT64),
            (std::vector<double>{1}));
  // Integers come back whole in the group of the non-numeric.
  const vexel::Value whole = split(make(RTABLE_INTEGER16, {4, 5}, 3), true, true, false);
  EXPECT_EQ(elements(whole[0], RTABLE_INTEGER16, 3), (std::vector<double>{4, 5}));
  EXPECT_EQ(whole[1].size(), 0U);
  const vexel::Value mixed = objects({kernel.integer(1), name("x"), kernel.null(), name("Pi")});
  EXPECT_EQ(split(mixed, false, false, true).size(), 2U);
  EXPECT_EQ(call("STATS_VexelRemoveNULL_HW", mixed).size(), 3U);
  EXPECT_EQ(elements(call("STATS_VexelRemoveNULL_HW", make(RTABLE_FLOAT32, {4, 5}, 3)),
                     RTABLE_FLOAT32, 3),
            (std::vector<double>{4, 5}));
}

TEST_F(SelectRemoveTest, MessagesToTheLetter) {
  const vexel::Value v = array({1, 2, 3});
  const vexel::Value p = eval("x -> true;");
  expectRefusals({
      {"VexelSelectRemove expects at least 3 arguments",
       [&] { call("STATS_VexelSelectRemove_HW", v, p); }},
      {"invalid selecting function, expected a procedure that always returns true or false, "
       "received: %1",
       [&] { call("STATS_VexelSelectRemove_HW", 1, 2, 1); }},
      {"invalid data sample, expected: one-dimensional array, received %1",
       [&] { call("STATS_VexelSelectRemove_HW", 1, p, 1); }},
      {"VexelSelectRemoveInRange expects 4 arguments",
       [&] { call("STATS_VexelSelectRemoveInRange_HW", v); }},
      {"VexelSelectRemoveNonNumeric expects 4 arguments, received: %1",
       [&] { call("STATS_VexelSelectRemoveNonNumeric_HW", v); }},
      {"VexelRemoveNULL expects 1 argument, received: %1",
       [&] { call("STATS_VexelRemoveNULL_HW", v, v); }},
  });
}

}  // namespace

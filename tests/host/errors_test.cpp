// Host errors, traps, interrupts and the embedding API's view of them.

#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "embedding/kernel_impl.hpp"
#include "state_test.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"
#include "values/text.hpp"

namespace vexel {
namespace {

class CoreErrorsTest : public StateTest {
 public:
  // Runs f under VexelTrapError; whether it raised.
  bool trapped(const std::function<void()>& f) {
    V_BOOL failed = 7;
    VexelTrapError(
        &state,
        [](void* data) -> void* {
          (*static_cast<const std::function<void()>*>(data))();
          return nullptr;
        },
        const_cast<std::function<void()>*>(&f), &failed);
    return failed != 0;
  }

  // Defines a function with that body and calls it: the error as the embedding program sees it.
  std::string errorOf(const std::function<void()>& body) {
    const Value f = kernel.function("", [&](Kernel& k, std::span<const Value>) {
      body();
      return k.null();
    });
    try {
      kernel.apply(f, {});
    } catch (const Error& e) {
      return e.what();
    }
    return "no error";
  }
};

TEST_F(CoreErrorsTest, MessagesAreFilledWithPrintedArguments) {
  ALGEB x = name(state, "x");
  const ALGEB row[] = {immediate(1), x, state.null};
  const struct {
    const char* message;
    ALGEB first, second;
    const char* filled;
  } kCases[] = {
      {"received: %1", sequenceOf(state, row), nullptr, "received: 1, x, NULL"},
      {"received: %1", newList(state, row), nullptr, "received: [1, x, NULL]"},
      {"%2 before %1", x, string(state, "a\"\n"), "\"a\\\"\\n\" before x"},
      {"%1%1", newFloat(state, 2), nullptr, "2.02.0"},
      {"%3 and 100%", x, x, "%3 and 100%"},
      {"%1", newPair(state, Tag::range, immediate(0), newFloat(state, 1.5)), nullptr, "0 .. 1.5"},
      {"%1", newPair(state, Tag::equation, x, immediate(-1)), nullptr, "x = -1"},
      {"%1", state.null, nullptr, "NULL"},
      {"%1", state.trueValue, nullptr, "true"},
      {"%1", newPower(state, immediate(2), divide(state, immediate(1), immediate(2))), nullptr,
       "2^(1/2)"},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(errorOf([&] { VexelRaiseError2(&state, c.message, c.first, c.second); }), c.filled);
  }
  // Arguments that are too long or too deep are shortened.
  ALGEB deep = state.null;
  for (int i = 0; i < 2000; ++i) {
    const ALGEB one[] = {deep};
    deep = newList(state, one);
  }
  EXPECT_LT(errorOf([&] { VexelRaiseError1(&state, "deep: %1", deep); }).size(), 2500U);
  ALGEB wide = newList(state, 1'000'000);
  EXPECT_LT(errorOf([&] { VexelRaiseError1(&state, "wide: %1", wide); }).size(), 2500U);
}

TEST_F(CoreErrorsTest, ErrorsCarryTheirArguments) {
  try {
    kernel.impl().run([&] { VexelRaiseError2(&state, "%1 or %2", immediate(3), state.null); });
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.message(), "%1 or %2");
    ASSERT_EQ(e.arguments().size(), 2U);
    EXPECT_EQ(e.arguments()[0].integer(), 3);
    EXPECT_TRUE(e.arguments()[1].isNull());
  }
}

TEST_F(CoreErrorsTest, TrapsNestAndCatchWhatIsRaisedInside) {
  EXPECT_FALSE(trapped([] {}));
  bool inner = false;
  bool continued = false;
  EXPECT_TRUE(trapped([&] {
    inner = trapped([&] { VexelRaiseError(&state, "inner"); });
    continued = true;
    VexelRaiseError(&state, "outer");
  }));
  EXPECT_TRUE(inner);
  EXPECT_TRUE(continued);
}

// A destructor that runs a trap while an error is on its way leaves that error as it was.
TEST_F(CoreErrorsTest, TrapsDuringUnwindingKeepTheError) {
  struct Cleanup {
    CoreErrorsTest& test;
    ~Cleanup() {
      test.trapped([this] { VexelRaiseError(&test.state, "in the destructor"); });
    }
  };
  EXPECT_EQ(errorOf([&] {
              const Cleanup cleanup{*this};
              VexelRaiseError1(&state, "first %1", newFloat(state, 1.25));
            }),
            "first 1.25");
}

TEST_F(CoreErrorsTest, StandardExceptionsBecomeHostErrors) {
  EXPECT_EQ(errorOf([] { throw std::runtime_error("broken"); }), "broken");
  EXPECT_EQ(errorOf([] { throw std::bad_alloc(); }), "not enough memory");
  EXPECT_EQ(errorOf([] { throw std::length_error("vector::reserve"); }), "not enough memory");
  EXPECT_EQ(errorOf([&] { throw Error("a 1", "a %1", {kernel.integer(1)}); }), "a 1");
  EXPECT_TRUE(trapped([&] {
    const Value f = kernel.function(
        "", [](Kernel&, std::span<const Value>) -> Value { throw std::domain_error("no value"); });
    EvalVexelProcedure(&state, f.handle(), state.null);
  }));
}

TEST_F(CoreErrorsTest, InterruptsPassThroughTraps) {
  bool returned = false;
  const Value f = kernel.function("", [&](Kernel& k, std::span<const Value>) {
    Kernel::interrupt();
    trapped([&] { VexelRandomInt32(&state); });
    returned = true;
    return k.null();
  });
  EXPECT_THROW(kernel.apply(f, {}), Interrupted);
  EXPECT_FALSE(returned);
  EXPECT_NO_THROW(VexelRandomInt32(&state));  // the flag is taken back
  Kernel::interrupt();
  EXPECT_THROW(kernel.apply(f, {}), Interrupted);
}

TEST_F(CoreErrorsTest, EndlessRecursionRaises) {
  const Value f = kernel.function(
      "again", [](Kernel& k, std::span<const Value> args) { return k.callValues("again", args); });
  const Value one[] = {kernel.integer(1)};
  try {
    kernel.apply(f, one);
    FAIL();
  } catch (const Error& e) {
    EXPECT_EQ(e.message(), "too many levels of recursion");
  }
}

TEST_F(CoreErrorsTest, ConversionsAcceptWhatTheyShould) {
  ALGEB big = numberFromText(state, "9223372036854775808");
  const std::pair<std::function<void()>, const char*> kRefused[] = {
      {[&] { VexelToInteger32(&state, newFloat(state, 2)); },
       "an integer of 32 bits expected, received 2.0"},
      {[&] { VexelToInteger32(&state, immediate(2147483648)); },
       "an integer of 32 bits expected, received 2147483648"},
      {[&] { VexelToV_INT(&state, big); },
       "an integer of 64 bits expected, received 9223372036854775808"},
      {[&] { VexelToV_BOOL(&state, newFloat(state, 1)); }, "true or false expected, received 1.0"},
      {[&] { VexelToFloat64(&state, state.null); }, "a number expected, received NULL"},
      {[&] { VexelToFloat64(&state, state.trueValue); }, "a number expected, received true"},
      {[&] { VexelToFloat64(&state, name(state, "x")); }, "a number expected, received x"},
      {[&] { VexelEvalhf(&state, numberFromText(state, "1e400")); },
       "1e+400 is outside the range of hardware floats"},
      {[&] { VexelListSelect(&state, newList(state, 2), 3); }, "index 3 out of range"},
      {[&] { VexelListSelect(&state, immediate(1), 1); }, "a list expected, received 1"},
      {[&] { VexelExpseqSelect(&state, state.null, 1); }, "index 1 out of range"},
      {[&] { VexelExpseqSelect(&state, immediate(1), 2); }, "index 2 out of range"},
      {[&] { VexelListAlloc(&state, -1); }, "a count of elements expected, received -1"},
      {[&] { VexelTableSelect(&state, newTable(state), immediate(4)); },
       "the table has no entry 4"},
      {[&] { VexelNew(&state, 8, 3); }, "objects of type 8 and length 3 cannot be made"},
      {[&] { VexelToPointer(&state, immediate(0)); }, "a pointer expected, received 0"},
      {[&] { ToVexelRelation(&state, ">", immediate(0), immediate(0)); },
       "a relation expected, received \">\""},
      {[&] { VexelAssign(&state, immediate(0), immediate(0)); }, "a name expected, received 0"},
      {[&] { VexelAlloc(&state, -1); }, "not enough memory"},
      {[&] { VexelAlloc(&state, V_INT{1} << 45); }, "not enough memory"},
      {[&] { EvalVexelProcedure(&state, immediate(5), state.null); }, "5 cannot be called"},
  };
  for (const auto& [f, message] : kRefused) {
    const std::string error = errorOf(f);
    EXPECT_EQ(error, message);
  }
  EXPECT_EQ(VexelToV_BOOL(&state, state.trueValue), 1);
  EXPECT_EQ(VexelToV_BOOL(&state, immediate(-3)), -3);
  EXPECT_EQ(VexelToV_INT(&state, newInteger(state, INT64_MIN)), INT64_MIN);
  EXPECT_EQ(VexelEvalhf(&state, name(state, "Pi")), 3.141592653589793);
  EXPECT_TRUE(IsVexelInteger8(&state, immediate(-128)));
  EXPECT_FALSE(IsVexelInteger8(&state, immediate(128)));
  EXPECT_TRUE(IsVexelInteger32(&state, immediate(INT32_MIN)));
  EXPECT_FALSE(IsVexelInteger32(&state, newFloat(state, 1)));
  EXPECT_TRUE(IsVexelUnnamedZero(&state, newFloat(state, -0.0)));
  EXPECT_FALSE(IsVexelUnnamedZero(&state, state.null));
  EXPECT_TRUE(IsVexelNumeric(&state, state.undefined));
  EXPECT_FALSE(IsVexelNumeric(&state, ToVexelComplex(&state, 1, 0)));
  EXPECT_TRUE(IsVexelNULL(&state, VexelListSelect(&state, VexelListAlloc(&state, 1), 1)));
}

TEST_F(CoreErrorsTest, AssignmentReturnsWhatUndoesIt) {
  ALGEB x = name(state, "x");
  EXPECT_EQ(VexelAssign(&state, x, immediate(5)), x);
  EXPECT_TRUE(IsVexelAssignedName(&state, x));
  ALGEB old = VexelAssign(&state, x, immediate(6));
  EXPECT_EQ(old, immediate(5));
  VexelAssign(&state, x, old);
  EXPECT_EQ(VexelEval(&state, x), immediate(5));
  VexelAssign(&state, x, x);
  EXPECT_FALSE(IsVexelAssignedName(&state, x));
}

TEST_F(CoreErrorsTest, SequencesAreNotFlattened) {
  EXPECT_EQ(ToVexelExpressionSequence(&state, 0), state.null);
  EXPECT_EQ(ToVexelExpressionSequence(&state, 1, immediate(4)), immediate(4));
  ALGEB four =
      ToVexelExpressionSequence(&state, 4, immediate(1), state.null, immediate(3), state.null);
  EXPECT_EQ(VexelNumArgs(&state, four), 4);
  EXPECT_TRUE(IsVexelNULL(&state, VexelExpseqSelect(&state, four, 2)));
  EXPECT_EQ(VexelNumArgs(&state, state.null), 0);
  EXPECT_EQ(VexelNumArgs(&state, immediate(9)), 1);
  // A one-element sequence object stands for its element when it is an argument sequence.
  ALGEB one = NewVexelExpressionSequence(&state, 1);
  VexelExpseqAssign(&state, one, 1, newFloat(state, 2.5));
  const Value twice = kernel.function("", [](double v) { return 2 * v; });
  EXPECT_EQ(EvalVexelProcedure(&state, twice.handle(), one), newFloat(state, 5));
  const double args[] = {0, 1.5};
  EXPECT_EQ(EvalhfVexelProc(&state, twice.handle(), 1, args), 3);
}

TEST(ValueTest, MayBeDroppedAndAskedAfterItsKernelIsGone) {
  Value left;
  std::vector<Value> copies;
  try {
    Kernel kernel;
    left = kernel.array({1, 2});
    kernel.call("sin", left);
  } catch (const Error& e) {
    EXPECT_STREQ(e.what(),
                 "expected a number or an expression, received: Array(1..2, [1.0, 2.0], datatype = "
                 "float[8])");
    copies = e.arguments();
    EXPECT_EQ(copies.size(), 1);
  }
  const Value copy = left;
  EXPECT_EQ(copy.kernel(), nullptr);
  EXPECT_FALSE(copy.isArray());
  EXPECT_EQ(copy.size(), 0);
  EXPECT_THROW(copy.number(), Error);
  EXPECT_THROW(copy.text(), Error);
  EXPECT_THROW(copy[0], Error);
}

TEST_F(CoreErrorsTest, RandomStreamHasKnownValues) {
  // From an independent program in Python integers.
  static constexpr struct {
    std::uint64_t seed;
    std::int32_t integer;
    double real;
  } kCases[] = {{0, 1394040161, 0.38223929651167354},
                {1, -809119617, 0.7471047161582188},
                {~std::uint64_t{0}, 1456273614, 0.9004750408188128}};
  for (const auto& [seed, integer, real] : kCases) {
    kernel.seed(seed);
    const std::uint64_t before = kernel.drawsTaken();
    EXPECT_EQ(VexelRandomInt32(&state), integer);
    EXPECT_EQ(VexelRandomDouble01(&state), real);
    EXPECT_EQ(kernel.drawsTaken(), before + 2);
  }
  const std::int32_t integers[] = {-5};
  const double doubles[] = {0.25};
  kernel.scriptRandom(integers, doubles);
  EXPECT_EQ(VexelRandomDouble01(&state), 0.25);
  EXPECT_EQ(VexelRandomInt32(&state), -5);
  EXPECT_EQ(errorOf([&] { VexelRandomInt32(&state); }), "no scripted random integers left");
  kernel.unscriptRandom();
  EXPECT_NO_THROW(VexelRandomInt32(&state));
}

}  // namespace
}  // namespace vexel

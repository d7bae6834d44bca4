// Conversion of every kind of host value, calls of host procedures on doubles, start and stop.

#include "kernel/conversions.hpp"

#include <gmock/gmock.h>

#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

#include "host_call.hpp"
#include "kernel/callback_adapters.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/interrupt.hpp"
#include "kernel/nag_call.hpp"
#include "kernel_test.hpp"
#include "kernels/lookout.hpp"

extern "C" ALGEB STATS_StatsInitialize_HW(VKernelVector kv);
extern "C" ALGEB STATS_StatsTerminate_HW(VKernelVector kv);

namespace {

using Utils = STATS_VexelUtils_HW;

class ConversionsTest : public KernelTest {
 protected:
  ConversionsTest() { STATS_StatsInitialize_HW(kernel.vector()); }
  ~ConversionsTest() override { STATS_StatsTerminate_HW(kernel.vector()); }
  ConversionsTest(const ConversionsTest&) = delete;
  ConversionsTest& operator=(const ConversionsTest&) = delete;

  double callOn(const std::string& procedure, std::vector<double> args, bool inHardware) {
    const vexel::Value proc = eval(procedure);
    args.insert(args.begin(), 0.0);  // the first argument is args[1]
    Utils::VexelCallbackArgs call{proc.handle(), inHardware, static_cast<int>(args.size()) - 1,
                                  args.data()};
    return Utils::EvalfVexelProc(&call);
  }
};

TEST_F(ConversionsTest, NumbersConvertInBothForms) {
  static constexpr struct {
    const char* text;
    double value;
  } kCases[] = {
      {"3", 3.0},          {"1/3", 1.0 / 3.0},        {"2^100", 0x1p100},
      {"0.1", 0.1},        {"1e400", kInf},           {"-infinity", -kInf},
      {"undefined", kNaN}, {"Pi", 3.141592653589793}, {"sqrt(2)", 1.4142135623730951},
  };
  for (const auto& [text, expected] : kCases) {
    const vexel::Value x = eval(text);
    double tolerant = -1.0;
    EXPECT_THAT(Utils::VexelDAGToDouble(x.handle()), testing::NanSensitiveDoubleEq(expected))
        << text;
    EXPECT_EQ(Utils::VexelDAGToDouble(x.handle(), &tolerant), 1) << text;
    EXPECT_THAT(tolerant, testing::NanSensitiveDoubleEq(expected)) << text;
  }
}

TEST_F(ConversionsTest, WhatHasNoValueRaisesOrGivesZero) {
  for (const char* text : {"unset", "\"text\"", "[1, 2]", "1 .. 2", "x = 1", "Array([1.0])"}) {
    const vexel::Value x = eval(text);
    double tolerant = -1.0;
    EXPECT_EQ(hostErrorText([&] { inHost(kernel, [&] { Utils::VexelDAGToDouble(x.handle()); }); }),
              "unable to evaluate " + x.source() + " to floating-point");
    EXPECT_EQ(Utils::VexelDAGToDouble(x.handle(), &tolerant), 0) << text;
    EXPECT_EQ(tolerant, 0.0) << text;
  }
}

TEST_F(ConversionsTest, FloatsAreRecognisedByTheirTag) {
  EXPECT_TRUE(STATS_IsVexelFloat_HW(eval("1.5").handle()));
  EXPECT_FALSE(STATS_IsVexelFloat_HW(eval("1").handle()));
  EXPECT_FALSE(STATS_IsVexelFloat_HW(eval("2^100").handle()));
  EXPECT_FALSE(STATS_IsVexelFloat_HW(nullptr));
  EXPECT_TRUE(std::isnan(STATS_FloatUndefined_HW(kernel.vector())));
}

TEST_F(ConversionsTest, ProceduresAreCalledInHardwareThenInSoftware) {
  EXPECT_EQ(callOn("(x, y) -> x - 2*y", {7.0, 2.0}, true), 3.0);
  EXPECT_EQ(callOn("(x, y) -> x - 2*y", {7.0, 2.0}, false), 3.0);
  EXPECT_EQ(callOn("x -> 1/3", {0.0}, false), 1.0 / 3.0);
  // Beyond the doubles in between, finite in the end.
  EXPECT_EQ(callOn("x -> (10.0^400*x)/10.0^399", {2.0}, true), 20.0);
  EXPECT_EQ(hostErrorText([&] { inHost(kernel, [&] { callOn("x -> [x]", {1.5}, true); }); }),
            "unable to evaluate [1.5] to floating-point");
  EXPECT_EQ(hostErrorText([&] { inHost(kernel, [&] { callOn("x -> undefined", {1.5}, true); }); }),
            "unable to evaluate Float(undefined) to floating-point");
  EXPECT_EQ(hostErrorText([&] {
              inHost(kernel, [&] { callOn("proc(x) error(\"mine: %1\", x) end", {1.5}, true); });
            }),
            "mine: 1.5");
}

TEST_F(ConversionsTest, AdaptersCallProceduresAndFunctions) {
  const vexel::Value third = eval("x -> x/3");
  const vexel::Value symbolic = eval("x -> sqrt(2)");
  STATS_VexelProcAdapter_HW adapter(kernel.vector(), third.handle());
  EXPECT_EQ(adapter.Call(1.5), 0.5);
  adapter.Reset(symbolic.handle());
  EXPECT_NEAR(adapter.Call(1.5), 1.4142135623730951, 1e-9);
  STATS_VexelCFuncAdapter_HW function(kernel.vector(), [](double x) { return 2 * x; });
  EXPECT_EQ(function.Call(1.5), 3.0);
  STATS_VexelStaticProcAdapter_HW::Reset(third.handle());
  EXPECT_EQ(STATS_VexelStaticProcAdapter_HW::Call(6.0), 2.0);
}

// A call within another one; nothing on the stack holds its procedure afterwards.
[[gnu::noinline]] void useTripling(vexel::Kernel& kernel) {
  const STATS_StaticProcScope_HW inner(kernel.vector(), kernel.eval("x -> 3*x").handle());
}

TEST_F(ConversionsTest, TheStaticProcedureIsHeldUntilTheOutermostCallEnds) {
  inHost(kernel, [&] {
    const STATS_StaticProcScope_HW outer(kernel.vector(), eval("x -> 2*x").handle());
    useTripling(kernel);
    kernel.collect();
    eval("seq(proc(x) i end, i = 1 .. 300):");  // takes what has become free
    EXPECT_EQ(STATS_VexelStaticProcAdapter_HW::Call(2.0), 6.0);
  });
}

TEST_F(ConversionsTest, HostVariablesSetTheLimits) {
  EXPECT_EQ(STATS_IterationLimit_HW(kernel.vector()), 100);
  eval("_EnvStatisticsIterations := 7: Digits := 20:");
  EXPECT_EQ(STATS_IterationLimit_HW(kernel.vector()), 7);
  EXPECT_EQ(STATS_HostDigits_HW(kernel.vector()), 20);
  EXPECT_EQ(STATS_GetVexelDigits_HW(), 15);
}

TEST_F(ConversionsTest, StandardExceptionsBecomeHostErrors) {
  const auto error = [&](const auto& exception) {
    return hostError([&] {
      inHost(kernel,
             [&] { STATS_RunEntry_HW(kernel.vector(), [&]() -> ALGEB { throw exception; }); });
    });
  };
  EXPECT_EQ(error(std::length_error("too long")), "too long");
  EXPECT_EQ(error(std::runtime_error(std::string(300, 'x'))), std::string(255, 'x'));
  EXPECT_EQ(error(std::bad_alloc()), "not enough memory");
}

TEST_F(ConversionsTest, InterruptsAreLookedForOnceInTenMillionOperations) {
  const STATS_InterruptWatch_HW watch(kernel.vector());
  vexel::kernels::Lookout lookout;
  const auto isInterrupted = [&](std::int64_t operations) {
    try {
      inHost(kernel, [&] {
        vexel::Kernel::interrupt();
        lookout.done(operations);
        vexel::Kernel::clearInterrupt();
      });
    } catch (const vexel::Interrupted&) {
      return true;
    }
    return false;
  };
  for (int round = 0; round < 2; ++round) {
    EXPECT_FALSE(isInterrupted(5000000));
    EXPECT_FALSE(isInterrupted(4999999));
    EXPECT_TRUE(isInterrupted(1));
  }
  const STATS_InterruptWatch_HW nobody(nullptr);
  lookout.done(20000000);  // the watch without a host leaves the one before
}

TEST_F(ConversionsTest, StartAndStopMayRepeat) {
  const VKernelVector kv = kernel.vector();
  EXPECT_EQ(STATS_StatsInitialize_HW(kv), ToVexelBoolean(kv, 1));
  EXPECT_EQ(STATS_StatsTerminate_HW(kv), ToVexelBoolean(kv, 1));
  EXPECT_EQ(STATS_StatsTerminate_HW(kv), ToVexelBoolean(kv, 1));
  EXPECT_EQ(STATS_StatsInitialize_HW(kv), ToVexelBoolean(kv, 1));
  EXPECT_EQ(Utils::VexelDAGToDouble(eval("1/4").handle()), 0.25);

  vexel::Kernel other;
  STATS_StatsInitialize_HW(other.vector());
  EXPECT_EQ(Utils::gVKernelVector, kv) << "started while it was started";
  STATS_StatsTerminate_HW(kv);
  STATS_StatsInitialize_HW(other.vector());
  EXPECT_EQ(Utils::gVKernelVector, other.vector());
}

TEST(MachineNumbers, ConvertWithoutSurprises) {
  constexpr std::int32_t kIndefinite = std::numeric_limits<std::int32_t>::min();
  static constexpr struct {
    double d;
    std::int32_t i;
  } kCases[] = {
      {2.9, 2},
      {-2.9, -2},
      {2147483647.9, 2147483647},
      {-2147483648.9, kIndefinite},
      {2147483648.0, kIndefinite},
      {-1e300, kIndefinite},
      {std::numeric_limits<double>::quiet_NaN(), kIndefinite},
  };
  for (const auto& [d, i] : kCases) {
    EXPECT_EQ(STATS_DoubleToInteger_HW(d), i) << d;
  }
  for (const auto& [type, tail] : {std::pair{0, Nag_LowerTail},
                                   {1, Nag_LowerTail},
                                   {2, Nag_UpperTail},
                                   {3, Nag_TwoTailSignif},
                                   {4, Nag_TwoTailConfid},
                                   {5, Nag_LowerTail}}) {
    EXPECT_EQ(STATS_ToNag_TailProbability_HW(static_cast<STATS_PROBABILITY_TYPE_HW>(type)), tail);
  }
}

}  // namespace

// Faults injected into the valid call of every entry point: the host raises at its k-th operation,
// or its k-th allocation fails, once or from then on.  After each the host works, its state is what
// it was and nothing is kept.
//
// The host's functions are intercepted: this program's definitions come before the shared
// library's, count the call and hand it on.

#include <dlfcn.h>

#include <cfenv>
#include <cstdarg>
#include <cstdlib>
#include <iostream>
#include <random>

#include "call_grammar.hpp"
#include "embedding/kernel_impl.hpp"
#include "kernel_test.hpp"
#include "valid_calls.hpp"
#include "watchdog.hpp"

namespace {

struct HostFault {
  std::int64_t countdown = -1;  // operations that still succeed; -1: no fault planned
  bool lasting = false;         // every later operation fails, too
  bool raised = false;
};
HostFault fault;

void countOperation(VKernelVector kv) {
  if (fault.countdown < 0) {
    return;
  }
  if (fault.countdown > 0) {
    --fault.countdown;
    return;
  }
  if (!fault.raised || fault.lasting) {
    fault.raised = true;
    VexelRaiseError(kv, "injected fault");
  }
}

}  // namespace

#define INTERCEPT(Result, name, parameters, arguments)                            \
  Result name parameters {                                                        \
    using Function = Result(*) parameters;                                        \
    static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, #name)); \
    countOperation(kv);                                                           \
    return next arguments;                                                        \
  }

extern "C" {

// Every operation that may raise, except VexelTrapError itself and what mark functions call.
INTERCEPT(ALGEB, VexelExpseqSelect, (VKernelVector kv, ALGEB seq, V_INT i), (kv, seq, i))
INTERCEPT(ALGEB, NewVexelExpressionSequence, (VKernelVector kv, V_INT n), (kv, n))
INTERCEPT(void, VexelExpseqAssign, (VKernelVector kv, ALGEB seq, V_INT i, ALGEB x), (kv, seq, i, x))
INTERCEPT(double, VexelToFloat64, (VKernelVector kv, ALGEB x), (kv, x))
INTERCEPT(int32_t, VexelToInteger32, (VKernelVector kv, ALGEB x), (kv, x))
INTERCEPT(V_INT, VexelToV_INT, (VKernelVector kv, ALGEB x), (kv, x))
INTERCEPT(V_BOOL, VexelToV_BOOL, (VKernelVector kv, ALGEB x), (kv, x))
INTERCEPT(ALGEB, ToVexelFloat, (VKernelVector kv, double d), (kv, d))
INTERCEPT(ALGEB, ToVexelInteger, (VKernelVector kv, V_INT i), (kv, i))
INTERCEPT(ALGEB, ToVexelInteger64, (VKernelVector kv, int64_t i), (kv, i))
INTERCEPT(ALGEB, ToVexelComplex, (VKernelVector kv, double re, double im), (kv, re, im))
INTERCEPT(ALGEB, ToVexelComplexFloat, (VKernelVector kv, ALGEB re, ALGEB im), (kv, re, im))
INTERCEPT(ALGEB, ToVexelName, (VKernelVector kv, const char* text, V_BOOL global),
          (kv, text, global))
INTERCEPT(ALGEB, ToVexelRelation, (VKernelVector kv, const char* op, ALGEB lhs, ALGEB rhs),
          (kv, op, lhs, rhs))
INTERCEPT(void, RTableGetSettings, (VKernelVector kv, RTableSettings* s, ALGEB x), (kv, s, x))
INTERCEPT(ALGEB, RTableCreate,
          (VKernelVector kv, const RTableSettings* s, const void* data, const V_INT* bounds),
          (kv, s, data, bounds))
INTERCEPT(ALGEB, RTableCopy, (VKernelVector kv, const RTableSettings* s, ALGEB x), (kv, s, x))
INTERCEPT(void*, RTableDataBlock, (VKernelVector kv, ALGEB x), (kv, x))
INTERCEPT(V_INT, RTableNumElements, (VKernelVector kv, ALGEB x), (kv, x))
INTERCEPT(V_INT, RTableNumDimensions, (VKernelVector kv, ALGEB x), (kv, x))
INTERCEPT(V_INT, RTableLowerBound, (VKernelVector kv, ALGEB x, V_INT dim), (kv, x, dim))
INTERCEPT(V_INT, RTableUpperBound, (VKernelVector kv, ALGEB x, V_INT dim), (kv, x, dim))
INTERCEPT(RTableData, RTableSelect, (VKernelVector kv, ALGEB x, const V_INT* index), (kv, x, index))
INTERCEPT(void, RTableAssign, (VKernelVector kv, ALGEB x, const V_INT* index, RTableData value),
          (kv, x, index, value))
INTERCEPT(ALGEB, VexelListAlloc, (VKernelVector kv, V_INT n), (kv, n))
INTERCEPT(ALGEB, VexelListSelect, (VKernelVector kv, ALGEB list, V_INT i), (kv, list, i))
INTERCEPT(void, VexelListAssign, (VKernelVector kv, ALGEB list, V_INT i, ALGEB x), (kv, list, i, x))
INTERCEPT(ALGEB, VexelTableAlloc, (VKernelVector kv), (kv))
INTERCEPT(V_BOOL, VexelTableHasEntry, (VKernelVector kv, ALGEB table, ALGEB key), (kv, table, key))
INTERCEPT(ALGEB, VexelTableSelect, (VKernelVector kv, ALGEB table, ALGEB key), (kv, table, key))
INTERCEPT(void, VexelTableAssign, (VKernelVector kv, ALGEB table, ALGEB key, ALGEB x),
          (kv, table, key, x))
INTERCEPT(ALGEB, VexelNew, (VKernelVector kv, V_INT type, V_INT length), (kv, type, length))
INTERCEPT(ALGEB, VexelNumericAdd, (VKernelVector kv, ALGEB a, ALGEB b), (kv, a, b))
INTERCEPT(ALGEB, VexelEval, (VKernelVector kv, ALGEB x), (kv, x))
INTERCEPT(double, VexelEvalhf, (VKernelVector kv, ALGEB x), (kv, x))
INTERCEPT(double, EvalhfVexelProc, (VKernelVector kv, ALGEB proc, int n, const double* args),
          (kv, proc, n, args))
INTERCEPT(ALGEB, EvalVexelProcedure, (VKernelVector kv, ALGEB proc, ALGEB args), (kv, proc, args))
INTERCEPT(ALGEB, EvalVexelStatement, (VKernelVector kv, const char* text), (kv, text))
INTERCEPT(ALGEB, VexelAssign, (VKernelVector kv, ALGEB name, ALGEB value), (kv, name, value))
INTERCEPT(void*, VexelAlloc, (VKernelVector kv, V_INT size), (kv, size))
INTERCEPT(ALGEB, ToVexelPointer, (VKernelVector kv, void* address, V_INT type), (kv, address, type))
INTERCEPT(int32_t, VexelRandomInt32, (VKernelVector kv), (kv))
INTERCEPT(double, VexelRandomDouble01, (VKernelVector kv), (kv))

// The two with a variable number of arguments; the library passes at most eight.
#define ELEMENTS(n)                                        \
  ALGEB x[8] = {};                                         \
  va_list args;                                            \
  va_start(args, n);                                       \
  for (int i = 0; i < static_cast<int>(n) && i < 8; ++i) { \
    x[i] = va_arg(args, ALGEB);                            \
  }                                                        \
  va_end(args)

ALGEB EvalVexelProc(VKernelVector kv, ALGEB proc, int n, ...) {
  using Function = ALGEB (*)(VKernelVector, ALGEB, int, ...);
  static const auto next = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "EvalVexelProc"));
  ELEMENTS(n);
  countOperation(kv);
  return next(kv, proc, n, x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7]);
}

ALGEB ToVexelExpressionSequence(VKernelVector kv, V_INT n, ...) {
  using Function = ALGEB (*)(VKernelVector, V_INT, ...);
  static const auto next =
      reinterpret_cast<Function>(dlsym(RTLD_NEXT, "ToVexelExpressionSequence"));
  ELEMENTS(n);
  countOperation(kv);
  return next(kv, n, x[0], x[1], x[2], x[3], x[4], x[5], x[6], x[7]);
}

}  // extern "C"

namespace {

struct Fault {
  bool allocation;  // else the host raises
  bool lasting;
};

class InjectedFaults : public KernelTest {
 protected:
  struct Outcome {
    bool injected = false;  // false: the call ended before the fault's turn
    std::string error;
  };

  void prepare() {
    kernel.seed(7);
    kernel.eval(calls_.preparation);
    kernel.eval("Digits := 15:");  // root finders leave it raised when the procedure fails
  }

  void plan(Fault kind, std::int64_t k) {
    if (kind.allocation) {
      kernel.failAllocation(k, kind.lasting);
    } else {
      fault = {k, kind.lasting, false};
    }
  }

  void planNone() {
    kernel.failAllocation(-1);
    fault = {};
  }

  Outcome run(const ValidCall& call, Fault kind, std::int64_t k) {
    prepare();
    Outcome outcome;
    plan(kind, k);
    try {
      kernel.eval(call.text);
    } catch (const vexel::Error& e) {
      outcome.error = e.what();
    }
    outcome.injected = kind.allocation ? !outcome.error.empty() : fault.raised;
    planNone();
    return outcome;
  }

  std::size_t live() {
    prepare();
    kernel.collect();
    return kernel.liveObjects();
  }

  // How many objects n runs leave behind.
  std::int64_t kept(const ValidCall& call, Fault kind, std::int64_t k, int n) {
    run(call, kind, k);
    const std::size_t before = live();
    for (int i = 0; i < n; ++i) {
      run(call, kind, k);
    }
    return static_cast<std::int64_t>(live()) - static_cast<std::int64_t>(before);
  }

  void expectUnharmed(const std::string& after) {
    EXPECT_EQ(kernel
                  .eval("STATS_VexelMean_HW(Array([1.0, 2.0, 6.0], datatype = float[8]), "
                        "Array(1..0, datatype = float[8]), false, 0)")
                  .number(),
              3.0)
        << after;
    EXPECT_EQ(std::fegetround(), FE_TONEAREST) << after;
    EXPECT_EQ(kernel.impl().state.heap.check(), "") << after;
  }

  // Every k of one call, up to the given number; the number of faults that were injected.
  std::int64_t sweep(const ValidCall& call, Fault kind, std::int64_t most) {
    constexpr std::int64_t kNever = std::int64_t{1} << 60;
    constexpr int kRepeats = 8;
    const char* message = kind.allocation ? "not enough memory" : "injected fault";
    // Streams and copies of some arrays belong to the script from a successful call on.
    const std::int64_t keptBySuccess =
        std::max(std::int64_t{0}, kept(call, kind, kNever, kRepeats));
    std::size_t liveBefore = live();
    int notInjected = 0;
    for (std::int64_t k = 0; k < most; ++k) {
      const std::string what = call.text + ", fault " + std::to_string(k);
      const Outcome outcome = run(call, kind, k);
      // A failed allocation inside a trap may go unseen; three such runs mean the end of the call.
      notInjected = outcome.injected ? 0 : notInjected + 1;
      if (notInjected == (kind.allocation ? 3 : 1)) {
        return k + 1 - notInjected;
      }
      // A trap may turn a fault into a message of the library's own.
      const bool expected = outcome.error.empty() ||
                            outcome.error.find(message) != std::string::npos ||
                            outcome.error.find("unable to evaluate") != std::string::npos;
      EXPECT_TRUE(expected) << what << ": " << outcome.error;
      expectUnharmed(what);
      const std::size_t liveAfter = live();
      // What the stack still seems to refer to does not grow with the number of runs.
      if (liveAfter > liveBefore && kept(call, kind, k, kRepeats) >= keptBySuccess + kRepeats) {
        ADD_FAILURE() << what << ": objects are kept (" << outcome.error << ")";
      }
      liveBefore = std::max(liveBefore, live());
    }
    return most;
  }

  void sweepAll(Fault kind) {
    const char* wanted = std::getenv("VEXEL_FAULTS");
    const std::int64_t most = wanted != nullptr ? std::atoll(wanted) : 25;
    std::int64_t injected = 0;
    for (const ValidCall& call : calls_.calls) {
      if (!call.fails) {
        injected += sweep(call, kind, most);
      }
    }
    std::cout << injected << " faults injected into " << calls_.calls.size() << " calls\n";
    EXPECT_GT(injected, static_cast<std::int64_t>(calls_.calls.size()));
  }

 private:
  const ValidCalls calls_ = readValidCalls(TEST_DATA_DIR "/valid_calls.txt");
};

TEST_F(InjectedFaults, HostRaisesOnce) { sweepAll({.allocation = false, .lasting = false}); }
TEST_F(InjectedFaults, HostRaisesFromThenOn) { sweepAll({.allocation = false, .lasting = true}); }
TEST_F(InjectedFaults, AllocationFails) { sweepAll({.allocation = true, .lasting = false}); }
TEST_F(InjectedFaults, AllocationFailsFromThenOn) {
  sweepAll({.allocation = true, .lasting = true});
}

// Calls with arguments of all kinds, a fault somewhere on their way.
TEST_F(InjectedFaults, InRandomCalls) {
  constexpr std::size_t kLatest = 200;
  kernel.onUserInfo([](int, const std::string&, const std::string&) {});
  CallGrammar grammar(kernel);
  const char* wanted = std::getenv("VEXEL_RANDOM_CALLS");
  const int calls = wanted != nullptr ? std::atoi(wanted) : 10000;
  std::mt19937_64 random(2);
  for (int made = 0; made < calls;) {
    std::vector<std::uint8_t> bytes(96);
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<std::uint8_t>(random()); });
    ByteSource source(bytes.data(), bytes.size());
    const Watchdog watchdog(2);
    const auto k = static_cast<std::int64_t>(random() % kLatest);
    plan({.allocation = random() % 2 == 0, .lasting = random() % 2 == 0}, k);
    try {
      made += grammar.run(source);
    } catch (const vexel::Error&) {
      ++made;  // the fault came while the arguments were made
    }
    planNone();
    if (random() % 16 == 0) {
      expectUnharmed("random calls up to " + std::to_string(made));
    }
  }
}

}  // namespace

// How a row of the distributions' table becomes an exported entry point: count, convert each
// argument by its kind from first to last, call the worker of that name, pack by the result's kind.
#pragma once

#include <cmath>
#include <cstdint>
#include <tuple>

#include "distributions/random_sample.hpp"
#include "kernel/conversions.hpp"
#include "kernel/entry_frame.hpp"
#include "kernel/host_arrays.hpp"
#include "kernel/host_settings.hpp"
#include "kernel/nag_call.hpp"

namespace distribution_rows {

// Kinds of arguments: what the worker takes and how it comes out of argument i.
struct real {
  using Type = double;
  static Type convert(const Arguments& arg, V_INT i) { return arg.real(i); }
};
struct whole {  // converted to a double first, so 2.7 is taken, as 2
  using Type = std::int32_t;
  static Type convert(const Arguments& arg, V_INT i) {
    return STATS_DoubleToInteger_HW(arg.real(i));
  }
};
struct flag {
  using Type = int;
  static Type convert(const Arguments& arg, V_INT i) { return arg.boolean(i) ? 1 : 0; }
};

// Kinds of results.
struct Float {
  template <typename T>
  static ALGEB pack(VKernelVector kv, T x) {
    return STATS_DoubleToVexelFloat_HW(kv, static_cast<double>(x));
  }
};
struct Integer {
  static ALGEB pack(VKernelVector kv, std::int32_t i) { return ToVexelInteger(kv, i); }
};

// Kinds of tolerances that a worker gets after its arguments.
struct AtDigits {
  static double value(VKernelVector kv) { return STATS_HostTolerance_HW(kv); }
};
struct PastDigits {  // 1e-13, whatever the host's Digits
  static double value(VKernelVector) { return std::pow(0.1, 13.0); }
};

// Arguments first, first + 1, ... by their kinds.  Braces fix the order of conversions, which may
// run host code.
template <typename... Kind>
std::tuple<typename Kind::Type...> convertFrom(const Arguments& arg, V_INT first) {
  auto next = [i = first]() mutable { return i++; };
  return std::tuple<typename Kind::Type...>{Kind::convert(arg, next())...};
}

template <typename Result, typename... Kind, typename Worker>
ALGEB callWorker(VKernelVector kv, ALGEB args, const char* countMessage, Worker worker) {
  const Arguments arg(kv, args, sizeof...(Kind), countMessage);
  return Result::pack(kv, std::apply(worker, convertFrom<Kind...>(arg, 1)));
}

// The worker gets a tolerance as its last argument.
template <typename Tolerance, typename... Kind, typename Worker>
ALGEB callTolerant(VKernelVector kv, ALGEB args, const char* countMessage, Worker worker) {
  const Arguments arg(kv, args, sizeof...(Kind), countMessage);
  const auto values = convertFrom<Kind...>(arg, 1);
  const double tol = Tolerance::value(kv);
  return STATS_DoubleToVexelFloat_HW(
      kv, std::apply([&](auto... x) { return worker(x..., tol); }, values));
}

// The same at the host's Digits, and the host rounds the result to as many.
template <typename... Kind, typename Worker>
ALGEB callRounded(VKernelVector kv, ALGEB args, const char* countMessage, Worker worker) {
  const ALGEB result = callTolerant<AtDigits, Kind...>(kv, args, countMessage, worker);
  return STATS_RoundedTo_HW(kv, result, STATS_HostDigits_HW(kv));
}

// fill(data, n, values...) writes the variates.  Everything is converted before the array is made.
template <typename... Kind, typename Fill>
ALGEB makeSample(VKernelVector kv, ALGEB args, const char* countMessage, Fill fill) {
  const Arguments arg(kv, args, sizeof...(Kind) + 1, countMessage);
  const std::int32_t n = arg.integer32(1);
  const auto values = convertFrom<Kind...>(arg, 2);
  const ALGEB sample = STATS_CreateRandomSample_HW(kv, n, ToVexelNULL(kv));
  double* const data = STATS_FloatBlock_HW(kv, sample);
  std::apply([&](auto... x) { fill(data, n, x...); }, values);
  return sample;
}

}  // namespace distribution_rows

// The macros exist because exported symbols need names.
#define ENTRY(Op, Result, countMessage, ...)                                                       \
  STATS_ENTRY(STATS_Vexel##Op##_HW) {                                                              \
    using namespace distribution_rows;                                                             \
    return callWorker<Result, __VA_ARGS__>(kv, args, countMessage,                                 \
                                           [kv](auto... x) { return STATS_##Op##_HW(kv, x...); }); \
  }
#define TOLERANT(Op, Tolerance, countMessage, ...)                                      \
  STATS_ENTRY(STATS_Vexel##Op##_HW) {                                                   \
    using namespace distribution_rows;                                                  \
    return callTolerant<Tolerance, __VA_ARGS__>(                                        \
        kv, args, countMessage, [kv](auto... x) { return STATS_##Op##_HW(kv, x...); }); \
  }
#define ROUNDED(Op, countMessage, ...)                                                      \
  STATS_ENTRY(STATS_Vexel##Op##_HW) {                                                       \
    using namespace distribution_rows;                                                      \
    return callRounded<__VA_ARGS__>(kv, args, countMessage,                                 \
                                    [kv](auto... x) { return STATS_##Op##_HW(kv, x...); }); \
  }
#define SAMPLE(D, countMessage, ...)                                                    \
  STATS_ENTRY(STATS_Vexel##D##RandomSample_HW) {                                        \
    using namespace distribution_rows;                                                  \
    return makeSample<__VA_ARGS__>(kv, args, countMessage,                              \
                                   [kv](double* data, std::int32_t size, auto... x) {   \
                                     for (std::int32_t k = 0; k < size; ++k) {          \
                                       data[k] = STATS_##D##RandomVariate_HW(kv, x...); \
                                     }                                                  \
                                   });                                                  \
  }
// The same for distributions that have a faster way to the same variates.
#define FAST_SAMPLE(D, countMessage, ...)                                              \
  STATS_ENTRY(STATS_Vexel##D##RandomSample_HW) {                                       \
    using namespace distribution_rows;                                                 \
    return makeSample<__VA_ARGS__>(kv, args, countMessage,                             \
                                   [kv](double* data, std::int32_t size, auto... x) {  \
                                     STATS_##D##RandomSample_HW(kv, data, size, x...); \
                                   });                                                 \
  }

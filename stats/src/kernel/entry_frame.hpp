// The frame of exported entry points: export, count, select, convert, pack.
//
//   STATS_ENTRY(STATS_VexelMean_HW) {           // defines the exported function; kv and args
//     const Arguments arg(kv, args, 4, "expected 4 arguments, received: %1");
//     ...
//     return STATS_DoubleToVexelFloat_HW(kv, result);
//   }
//
// An exception of the standard library that leaves the body (no memory, most of all) becomes a host
// error here; the host's own errors pass untouched.  Kernels that the body calls may be
// interrupted.
#pragma once

#include <vexelc/vexelc.h>

#include <exception>
#include <new>
#include <span>
#include <string_view>

#include "kernel/conversions.hpp"
#include "kernel/interrupt.hpp"

// Runs body and turns standard exceptions into host errors.  The host error is raised after the
// handler has ended, so that nothing is in flight when the host's error unwinds.
template <typename Body>
ALGEB STATS_RunEntry_HW(VKernelVector kv, Body body);

#define STATS_EXPORT extern "C" __attribute__((visibility("default")))

// NOLINTBEGIN(bugprone-macro-parentheses): Name is a declarator
#define STATS_ENTRY(Name)                                                                   \
  static ALGEB Name##_body([[maybe_unused]] VKernelVector kv, [[maybe_unused]] ALGEB args); \
  STATS_EXPORT ALGEB Name(VKernelVector kv, ALGEB args);                                    \
  STATS_EXPORT ALGEB Name(VKernelVector kv, ALGEB args) {                                   \
    return STATS_RunEntry_HW(kv, [=] { return Name##_body(kv, args); });                    \
  }                                                                                         \
  static ALGEB Name##_body([[maybe_unused]] VKernelVector kv, [[maybe_unused]] ALGEB args)
// NOLINTEND(bugprone-macro-parentheses)

// An argument sequence whose count has been checked.  Positions count from 1; conversions happen
// when they are asked for, so the order of calls is the order of conversions.
class Arguments {
 public:
  // Raises countMessage, with the whole sequence for its %1, unless there are count arguments.
  Arguments(VKernelVector kv, ALGEB args, V_INT count, const char* countMessage)
      : Arguments(kv, args) {
    if (count_ != count) {
      VexelRaiseError1(kv, countMessage, args);
    }
  }
  Arguments(VKernelVector kv, ALGEB args) : kv_(kv), args_(args), count_(VexelNumArgs(kv, args)) {}

  V_INT count() const { return count_; }
  ALGEB all() const { return args_; }
  ALGEB operator[](V_INT i) const { return VexelExpseqSelect(kv_, args_, i); }
  double real(V_INT i) const { return STATS_VexelUtils_HW::VexelDAGToDouble((*this)[i]); }
  bool boolean(V_INT i) const { return VexelToV_BOOL(kv_, (*this)[i]) != 0; }
  V_INT integer(V_INT i) const { return VexelToV_INT(kv_, (*this)[i]); }
  std::int32_t integer32(V_INT i) const { return VexelToInteger32(kv_, (*this)[i]); }

 private:
  VKernelVector kv_;
  ALGEB args_;
  V_INT count_;
};

template <typename Body>
ALGEB STATS_RunEntry_HW(VKernelVector kv, Body body) {
  // The text must outlive the exception object.
  bool noMemory = false;
  char text[256];
  try {
    const STATS_InterruptWatch_HW watch(kv);
    return body();
  } catch (const std::bad_alloc&) {
    noMemory = true;
  } catch (const std::exception& e) {
    text[std::string_view(e.what()).copy(text, sizeof text - 1)] = '\0';
  }
  VexelRaiseError(kv, noMemory ? "not enough memory" : text);
}

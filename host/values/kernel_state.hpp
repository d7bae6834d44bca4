// Everything one kernel knows: the record behind a kernel vector.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "memory/handle.hpp"
#include "memory/memory.hpp"
#include "values/language.hpp"
#include "values/random_stream.hpp"

namespace vexel {

// The host error that is being raised or was caught last.
struct PendingError {
  std::string message;           // with %1, %2 unfilled
  std::vector<ALGEB> arguments;  // roots
  int line = 0;                  // of the statement in the running text, 0 when unknown; the
  int column = 0;                // language fills them
  TextPlace raised;              // of the innermost statement or call, in whatever text
  bool inProcedure = false;      // it left a procedure of the language
  bool isRaised = false;         // it may be on its way: no trap has caught it
};

// Expressions that were found to mention no name with a value, so that evaluating them changes
// nothing.  They stand until a name gets one; a collection, which may give their addresses to
// others, forgets them.
struct SettledExpressions {
  std::unordered_set<ALGEB> expressions;
  std::uint64_t at = 0;                // namesGivenValues when they were found
  std::uint64_t namesGivenValues = 0;  // how often a name without a value got one
};

}  // namespace vexel

struct _VKernelVectorDesc final : vexel::Memory {
  _VKernelVectorDesc();
  ~_VKernelVectorDesc() override;
  _VKernelVectorDesc(const _VKernelVectorDesc&) = delete;
  _VKernelVectorDesc& operator=(const _VKernelVectorDesc&) = delete;

  vexel::RandomStream random;
  vexel::PendingError error;
  std::string lastError;  // what last_error() tells: the text, filled
  vexel::SettledExpressions settled;
  std::unique_ptr<vexel::Language> language;

  // Objects that exist once.
  ALGEB null = nullptr;  // the empty sequence
  ALGEB trueValue = nullptr;
  ALGEB falseValue = nullptr;
  ALGEB undefined = nullptr;  // the one NaN
  ALGEB infinity = nullptr;
  ALGEB minusInfinity = nullptr;
  ALGEB digitsName = nullptr;
  ALGEB piName = nullptr;

  // The stream of the functions on laws, which the built-in functions make from the last seed.
  std::shared_ptr<void> functionStream;
  std::uint64_t functionStreamSeeding = 0;

  // Information channels.
  std::unordered_map<std::string, int> infoLevels;
  std::function<void(int, const std::string&, const std::string&)> userInfo;

  bool strict = false;  // calling a name that is not defined is an error

  // Throws the pending error as the embedding API's, where no call into the host would catch it.
  std::function<void()> raiseOutside;

  // Where print and the like write; standard output unless replaced.
  std::function<void(std::string_view)> output;

  void markRoots(vexel::Marker& marker) override;
  [[noreturn]] void raiseNoMemory() override;

  // The value of "Digits", at least 1.
  int digits() const;
};

// The C interface: evaluation, errors, output, random numbers.

#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <exception>

#include "values/errors.hpp"
#include "values/numbers.hpp"
#include "values/objects.hpp"

namespace {

// Keeps the error that is on its way while a trap inside a destructor handles one of its own.
class SavedError {
 public:
  explicit SavedError(VKernelVector kv) : kv_(kv), error_(kv->error), arguments_(*kv) {
    for (ALGEB x : error_.arguments) {
      arguments_.push(x);
    }
  }
  ~SavedError() { kv_->error = std::move(error_); }
  SavedError(const SavedError&) = delete;
  SavedError& operator=(const SavedError&) = delete;

 private:
  VKernelVector kv_;
  vexel::PendingError error_;
  vexel::Handles arguments_;
};

void* trap(VKernelVector kv, void* (*fn)(void* data), void* data, V_BOOL* failed) {
  const vexel::InsideHost inside;
  *failed = 0;
  try {
    return fn(data);
  } catch (const vexel::HostErrorToken&) {
    *failed = 1;
    kv->error.arguments.clear();
    kv->error.isRaised = false;
    return nullptr;
  }
}

}  // namespace

extern "C" {

ALGEB VexelEval(VKernelVector kv, ALGEB x) {
  vexel::lookAtInterrupt();
  return kv->language->evaluate(*kv, x);
}

double VexelEvalhf(VKernelVector kv, ALGEB x) {
  vexel::lookAtInterrupt();
  if (vexel::isDoubleFloat(x)) {
    return vexel::doubleOf(x);
  }
  if (!vexel::isReal(x)) {
    return kv->language->evaluateHardware(*kv, x);
  }
  const double d = vexel::toDouble(*kv, x);
  if (!std::isfinite(d) || (d == 0.0 && !vexel::isZero(x))) {
    vexel::raise(*kv, "%1 is outside the range of hardware floats", x);
  }
  return d;
}

double EvalhfVexelProc(VKernelVector kv, ALGEB proc, int n, const double* args) {
  return vexel::applyHardware(*kv, proc, n, args);
}

ALGEB EvalVexelProc(VKernelVector kv, ALGEB proc, int n, ...) {
  vexel::Handles elements(*kv);
  va_list args;
  va_start(args, n);
  for (int i = 0; i < n; ++i) {
    elements.push(va_arg(args, ALGEB));
  }
  va_end(args);
  return vexel::apply(*kv, proc, elements.span());
}

ALGEB EvalVexelProcedure(VKernelVector kv, ALGEB proc, ALGEB args) {
  return vexel::apply(*kv, proc, args);
}

ALGEB EvalVexelStatement(VKernelVector kv, const char* text) {
  return kv->language->runStatements(*kv, text);
}

ALGEB VexelAssign(VKernelVector kv, ALGEB name, ALGEB value) {
  if (!vexel::is(name, vexel::Tag::name)) {
    vexel::raise(*kv, "a name expected, received %1", name);
  }
  ALGEB old = vexel::nameValue(name);
  vexel::setNameValue(*kv, name, value == name ? nullptr : value);
  return old == nullptr ? name : old;
}

void* VexelTrapError(VKernelVector kv, void* (*fn)(void* data), void* data, V_BOOL* failed) {
  if (kv->error.isRaised && std::uncaught_exceptions() > 0) [[unlikely]] {
    const SavedError onItsWay(kv);
    return trap(kv, fn, data, failed);
  }
  return trap(kv, fn, data, failed);
}

void VexelRaiseError(VKernelVector kv, const char* message) { vexel::raise(*kv, message); }

void VexelRaiseError1(VKernelVector kv, const char* message, ALGEB arg1) {
  vexel::raise(*kv, message, arg1);
}

void VexelRaiseError2(VKernelVector kv, const char* message, ALGEB arg1, ALGEB arg2) {
  vexel::raise(*kv, message, arg1, arg2);
}

void VexelUserInfo(VKernelVector kv, int level, const char* channel, const char* text) {
  const auto known = kv->infoLevels.find(channel);
  if (known == kv->infoLevels.end() || known->second < level) {
    return;
  }
  if (kv->userInfo) {
    kv->userInfo(level, channel, text);
  } else {
    std::fprintf(stderr, "%s: %s\n", channel, text);
  }
}

int32_t VexelRandomInt32(VKernelVector kv) { return kv->random.nextInteger(*kv); }

double VexelRandomDouble01(VKernelVector kv) { return kv->random.nextDouble(*kv); }

}  // extern "C"

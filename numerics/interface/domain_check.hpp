// Checks of a distribution function's arguments, with the messages a user reads.
#pragma once

#include <nag2/nag2.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace nag2 {

// The arguments of one call.  Each check gives false when the argument is outside its domain, after
// the first such argument has been put into the failure record; later ones are not reported.
class DomainCheck {
 public:
  DomainCheck(const char* function, NagError* fail) : function_(function), fail_(fail) {}

  bool number(const char* what, double value) {
    return !std::isnan(value) || reject(what, "a number", value);
  }
  bool positive(const char* what, double value) {
    return value > 0.0 || reject(what, "greater than 0", value);
  }
  bool nonNegative(const char* what, double value) {
    return (value >= 0.0 && std::isfinite(value)) ||
           reject(what, "finite and greater than or equal to 0", value);
  }
  bool probability(const char* what, double value) {
    return (value >= 0.0 && value <= 1.0) || reject(what, "between 0 and 1", value);
  }
  bool atLeastZero(const char* what, int64_t value) {
    return value >= 0 || rejectInteger(what, "greater than or equal to 0", value);
  }
  bool atMost(const char* what, int64_t value, const char* limitName, int64_t limit) {
    return value <= limit || rejectAbove(what, value, limitName, limit);
  }
  bool positiveLimit(const char* what, int value) {
    return value > 0 || rejectInteger(what, "greater than 0", value);
  }
  bool oneOfTwoTails(Nag_TailProbability tail) {
    return tail == Nag_LowerTail || tail == Nag_UpperTail ||
           rejectInteger("the tail", "the lower or the upper one", tail);
  }
  bool anyTail(Nag_TailProbability tail) {
    return (tail >= Nag_LowerTail && tail <= Nag_TwoTailConfid) ||
           rejectInteger("the tail", "one of the four known ones", tail);
  }

  // Result of a computation: clamped to [0, 1]; a NaN, which no valid argument should give, is
  // reported as a failure to converge.
  double clamped(double p) { return std::isnan(p) ? computed(p) : std::clamp(p, 0.0, 1.0); }
  // A quantile: a NaN is reported likewise.
  double computed(double x) {
    if (std::isnan(x)) {
      reportNoValue();
    }
    return x;
  }
  double notConverged(double tolerance, int maxIter);

 private:
  bool reject(const char* what, const char* constraint, double value);
  bool rejectInteger(const char* what, const char* constraint, int64_t value);
  bool rejectAbove(const char* what, int64_t value, const char* limitName, int64_t limit);
  void reportNoValue();
  void report(int code, const char* message);

  const char* function_;
  NagError* fail_;
};

}  // namespace nag2

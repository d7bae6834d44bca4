// Checks of a distribution function's arguments, with the messages a user reads.
#pragma once

#include <nag2/nag2.h>

#include <cstdint>

namespace nag2 {

// The arguments of one call.  Each check gives false when the argument is outside its domain, after
// the first such argument has been put into the failure record; later ones are not reported.
class DomainCheck {
 public:
  DomainCheck(const char* function, NagError* fail) : function_(function), fail_(fail) {}

  bool number(const char* what, double value);       // not a NaN
  bool positive(const char* what, double value);     // > 0
  bool nonNegative(const char* what, double value);  // >= 0 and finite
  bool probability(const char* what, double value);  // 0 <= value <= 1
  bool atLeastZero(const char* what, int64_t value);
  bool atMost(const char* what, int64_t value, const char* limitName, int64_t limit);
  bool positiveLimit(const char* what, int value);  // > 0
  bool oneOfTwoTails(Nag_TailProbability tail);
  bool anyTail(Nag_TailProbability tail);

  // Result of a computation: clamped to [0, 1]; a NaN, which no valid argument should give, is
  // reported as a failure to converge.
  double clamped(double p);
  // A quantile: a NaN is reported likewise.
  double computed(double x);
  double notConverged(double tolerance, int maxIter);

 private:
  bool reject(const char* what, const char* constraint, double value);
  bool rejectInteger(const char* what, const char* constraint, int64_t value);
  void report(int code, const char* message);

  const char* function_;
  NagError* fail_;
};

}  // namespace nag2

// Checks of a distribution function's arguments, with the messages a user reads.

#include "domain_check.hpp"

#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <limits>

#include "failure.hpp"

namespace nag2 {

void DomainCheck::report(int code, const char* message) {
  setFailure(fail_, code, function_, message);
}

bool DomainCheck::reject(const char* what, const char* constraint, double value) {
  char text[NAG2_MESSAGE_LENGTH];
  std::snprintf(text, sizeof text, "on entry, %s must be %s, received: %.17g", what, constraint,
                value);
  // The shortest digits that give the value back: 0.1, not 0.10000000000000001.
  for (int digits = 1; digits < 17; ++digits) {
    char number[40];
    std::snprintf(number, sizeof number, "%.*g", digits, value);
    double back = 0.0;
    if (std::sscanf(number, "%lf", &back) == 1 && back == value) {
      std::snprintf(text, sizeof text, "on entry, %s must be %s, received: %s", what, constraint,
                    number);
      break;
    }
  }
  report(NAG2_DOMAIN, text);
  return false;
}

bool DomainCheck::rejectInteger(const char* what, const char* constraint, int64_t value) {
  char text[NAG2_MESSAGE_LENGTH];
  std::snprintf(text, sizeof text, "on entry, %s must be %s, received: %" PRId64, what, constraint,
                value);
  report(NAG2_DOMAIN, text);
  return false;
}

bool DomainCheck::number(const char* what, double value) {
  return !std::isnan(value) || reject(what, "a number", value);
}

bool DomainCheck::positive(const char* what, double value) {
  return value > 0.0 || reject(what, "greater than 0", value);
}

bool DomainCheck::nonNegative(const char* what, double value) {
  return (value >= 0.0 && std::isfinite(value)) ||
         reject(what, "finite and greater than or equal to 0", value);
}

bool DomainCheck::probability(const char* what, double value) {
  return (value >= 0.0 && value <= 1.0) || reject(what, "between 0 and 1", value);
}

bool DomainCheck::atLeastZero(const char* what, int64_t value) {
  return value >= 0 || rejectInteger(what, "greater than or equal to 0", value);
}

bool DomainCheck::atMost(const char* what, int64_t value, const char* limitName, int64_t limit) {
  if (value <= limit) {
    return true;
  }
  char constraint[120];
  std::snprintf(constraint, sizeof constraint, "less than or equal to %s = %" PRId64, limitName,
                limit);
  return rejectInteger(what, constraint, value);
}

bool DomainCheck::positiveLimit(const char* what, int value) {
  return value > 0 || rejectInteger(what, "greater than 0", value);
}

bool DomainCheck::oneOfTwoTails(Nag_TailProbability tail) {
  return tail == Nag_LowerTail || tail == Nag_UpperTail ||
         rejectInteger("the tail", "the lower or the upper one", tail);
}

bool DomainCheck::anyTail(Nag_TailProbability tail) {
  return (tail >= Nag_LowerTail && tail <= Nag_TwoTailConfid) ||
         rejectInteger("the tail", "one of the four known ones", tail);
}

double DomainCheck::computed(double x) {
  if (std::isnan(x)) {
    report(NAG2_NO_CONVERGENCE, "no accurate value could be computed for these arguments");
  }
  return x;
}

double DomainCheck::clamped(double p) {
  return std::isnan(p) ? computed(p) : std::clamp(p, 0.0, 1.0);
}

double DomainCheck::notConverged(double tolerance, int maxIter) {
  char text[NAG2_MESSAGE_LENGTH];
  std::snprintf(text, sizeof text,
                "the sum has not reached the tolerance %g within the iteration limit %d", tolerance,
                maxIter);
  report(NAG2_NO_CONVERGENCE, text);
  return std::numeric_limits<double>::quiet_NaN();
}

}  // namespace nag2

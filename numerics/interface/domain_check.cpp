// Checks of a distribution function's arguments, with the messages a user reads.

#include "numerics/interface/domain_check.hpp"

#include <cinttypes>
#include <cstdio>
#include <limits>

#include "numerics/interface/failure.hpp"

namespace nag2 {

void DomainCheck::report(int code, const char* message) {
  setFailure(fail_, code, function_, message);
}

bool DomainCheck::reject(const char* what, const char* constraint, double value) {
  char text[NAG2_MESSAGE_LENGTH];
  std::snprintf(text, sizeof text, "on entry, %s must be %s, received: %.17g", what, constraint,
                value);
  if (std::isnan(value)) {  // "nan" whatever its sign bit
    std::snprintf(text, sizeof text, "on entry, %s must be %s, received: nan", what, constraint);
  }
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

bool DomainCheck::rejectAbove(const char* what, int64_t value, const char* limitName,
                              int64_t limit) {
  char constraint[120];
  std::snprintf(constraint, sizeof constraint, "less than or equal to %s = %" PRId64, limitName,
                limit);
  return rejectInteger(what, constraint, value);
}

void DomainCheck::reportNoValue() {
  report(NAG2_NO_CONVERGENCE, "no accurate value could be computed for these arguments");
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

// Filling a caller's failure record.

#include "numerics/interface/failure.hpp"

#include <cstdio>

namespace nag2 {

void setFailure(NagError* fail, int code, const char* function, const char* message) {
  if (fail == nullptr) {
    return;
  }
  fail->code = code;
  std::snprintf(fail->message, sizeof fail->message, "%s", message);
  if (fail->print != 0) {
    std::fprintf(stderr, "%s: %s\n", function, fail->message);
  }
  if (fail->handler != nullptr) {
    fail->handler(fail->message, code, function);
  }
}

}  // namespace nag2

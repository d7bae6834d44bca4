// Filling a caller's failure record.
#pragma once

#include <nag2/nag2.h>

namespace nag2 {

// Puts code and message into *fail, prints the message if the record asks for it and calls its
// handler with the function's name.  NULL drops the report.
void setFailure(NagError* fail, int code, const char* function, const char* message);

}  // namespace nag2

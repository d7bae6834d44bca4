// The functions that a loaded shared object exports.
#pragma once

#include <string>
#include <vector>

namespace vexel {

// Names of the defined functions in the dynamic symbol table of a handle from dlopen.
std::vector<std::string> exportedFunctions(void* library);

}  // namespace vexel

// The kernel vector of the uniform source.

#include "kernel/uniform_source.hpp"

VKernelVector STATS_VexelRandomStream_HW::gVKernelVector = nullptr;

// Random permutation of an array's elements.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// Permutes n elements of size bytes in place, every permutation equally likely.
//
// Fisher-Yates from the last element down (R. Durstenfeld, Algorithm 235, CACM 7, 1964).  Each
// index is the top bits of one integer of the host's stream, drawn again while too large; one bit
// more than needed is taken where the bound is a power of two, so about half of those draws are
// lost. Draw order is part of the interface.
void STATS_Shuffle_HW(VKernelVector kv, char* data, std::uint32_t n, std::uint32_t size);

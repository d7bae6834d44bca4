// Ranking elements of any ordered type, and moving rows to ranked positions.
#pragma once

#include <vexelc/vexelc.h>

#include <cstdint>

// Fills ranks[0..n-1] with the 0-based rank of each of the n contiguous elements of block: stable,
// NaNs after every number and in their input order (before every number when descending).
// Ascending when the flag is exactly 1.  Raises "unable to compare complex numbers", and for n of
// 2^31 or more.
void STATS_RankSortDataBlock_HW(VKernelVector kv, const void* block, std::uint32_t* ranks, V_INT n,
                                int dataType, int ascending);

// The n elements in the order of those ranks, written to sorted (n elements of room, apart from
// block).
void STATS_SortDataBlock_HW(VKernelVector kv, const void* block, char* sorted, V_INT n,
                            int dataType, int ascending);

// Moves nRows rows to the positions that ranks name: row i goes to position ranks[i] - rankBase, or
// that many places from the end when not forward.  A row is rowElements consecutive elements;
// strides and starts count elements.
//
// used, unless null, has a cell per row and is set to 1 for every position written; with
// checkDuplicates a position named twice raises "duplicate rank: %1" (its row has been overwritten
// by then).  Raises "invalid rank: %1" outside the rows.
void STATS_RankOrderDataBlock_HW(VKernelVector kv, const char* source, V_INT sourceStride,
                                 V_INT sourceStart, char* target, V_INT targetStride,
                                 V_INT targetStart, V_INT nRows, V_INT rankBase, V_INT rowElements,
                                 int elementSize, const std::uint32_t* ranks, std::uint32_t* used,
                                 bool forward, bool checkDuplicates);

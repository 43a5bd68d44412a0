// How the rows of a work are cut into the blocks that its workers take one by one.
#pragma once

#include <cstdint>
#include <vector>

namespace prismo::mp {

// Ways to split, by the numbers that callers use; any other number gives no blocks at all.
enum SplitType : int32_t {
  kEqualBlocks = 0,
  kShrinkingBlocks = 1,
  kShrinkingEvenBlocks = 2,  // even heights, for patterns of two rows; an odd last row is left out
};

// The row counts of the blocks of `rows` rows (zero or less for inverted ranges) for `threads` threads, at
// least 1. `block_rows` matters to equal blocks only; below 1 it means rows / threads.
//
// Blocks are handed out from the end of the list, so the largest ones, which stand last, cover the first
// rows, and small ones even out the threads' finish. With few rows some blocks have none: part of the
// contract, as is that a work with such a block never completes. Throws std::bad_alloc, also for an absurd
// number of blocks.
std::vector<int32_t> SplitRows(int32_t rows, int32_t threads, int32_t block_rows, int32_t type);

}  // namespace prismo::mp

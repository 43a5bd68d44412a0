#include "mp/block_split.h"

#include <algorithm>
#include <new>

namespace prismo::mp {
namespace {

using Blocks = std::vector<int32_t>;

// Far more blocks than a frame has rows; a list beyond would rather exhaust the memory than serve anybody.
constexpr int32_t kMaxBlocks = 1 << 24;

void Append(Blocks& blocks, int32_t count, int32_t rows) {
  blocks.insert(blocks.end(), static_cast<size_t>(count), rows);
}

Blocks SplitEqually(int32_t rows, int32_t threads, int32_t block_rows) {
  if (block_rows < 1) block_rows = std::max(1, rows / threads);
  const int32_t count = rows / block_rows;
  if (count < 1) return {};
  if (count > kMaxBlocks) throw std::bad_alloc();
  Blocks blocks(static_cast<size_t>(count), block_rows);
  blocks.back() += rows % block_rows;
  return blocks;
}

// Blocks whose heights are multiples of `unit`: for each thread one of an eighth of its share, one of a
// quarter, and one of the rest, in which some threads get a unit more.
Blocks SplitShrinking(int32_t rows, int32_t threads, int32_t unit) {
  const auto share = [&](int32_t of, int32_t parts) { return of / (unit * parts) * unit; };
  Blocks blocks;
  blocks.reserve(3 * static_cast<size_t>(threads));
  int32_t rest = rows;
  for (const int32_t block : {share(rows, 8 * threads), share(rows, 4 * threads)}) {
    if (block <= 0) continue;
    Append(blocks, threads, block);
    rest -= block * threads;
  }
  const int32_t block = share(rest, threads);
  const int32_t larger = std::max(0, (rest - block * threads) / unit);
  Append(blocks, threads - larger, block);
  Append(blocks, larger, block + unit);
  return blocks;
}

}  // namespace

std::vector<int32_t> SplitRows(int32_t rows, int32_t threads, int32_t block_rows, int32_t type) {
  switch (type) {
    case kEqualBlocks:
      return SplitEqually(rows, threads, block_rows);
    case kShrinkingBlocks:
      return SplitShrinking(rows, threads, 1);
    case kShrinkingEvenBlocks:
      return SplitShrinking(rows, threads, 2);
    default:
      return {};
  }
}

}  // namespace prismo::mp

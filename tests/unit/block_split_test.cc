#include "mp/block_split.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <new>
#include <numeric>
#include <vector>

namespace prismo::mp {
namespace {

using Blocks = std::vector<int32_t>;

Blocks HandOut(const Blocks& blocks) { return {blocks.rbegin(), blocks.rend()}; }

// The rules once more, written as sums over 64 bits and loops that hand out rows one block at a time.
Blocks Model(int64_t rows, int64_t threads, int64_t block_rows, int32_t type) {
  Blocks list;
  const auto append = [&](int64_t times, int64_t height) {
    for (int64_t i = 0; i < times; ++i) list.push_back(static_cast<int32_t>(height));
  };
  if (type == 0) {
    int64_t height = block_rows;
    if (height < 1) height = rows / threads;
    if (height < 1) height = 1;
    int64_t left = rows;
    while (left >= height) {
      append(1, height);
      left -= height;
    }
    if (left > 0 && !list.empty()) list.back() += static_cast<int32_t>(left);
  } else if (type == 1) {
    const int64_t a = rows / (8 * threads), b = rows / (4 * threads);
    int64_t left = rows;
    if (a > 0) append(threads, a), left -= a * threads;
    if (b > 0) append(threads, b), left -= b * threads;
    const int64_t c = left / threads;
    const int64_t e = left - c * threads;
    append(e >= 1 ? threads - e : threads, c);
    if (e >= 1) append(e, c + 1);
  } else if (type == 2) {
    const int64_t a = rows / (16 * threads) * 2, b = rows / (8 * threads) * 2;
    int64_t left = rows;
    if (a > 0) append(threads, a), left -= a * threads;
    if (b > 0) append(threads, b), left -= b * threads;
    const int64_t c = left / (2 * threads) * 2;
    const int64_t e = left - c * threads;
    append(e / 2 >= 1 ? threads - e / 2 : threads, c);
    if (e / 2 >= 1) append(e / 2, c + 2);
  }
  return list;
}

TEST(BlockSplit, ShrinkingBlocksOfAThousandRowsOnFourThreads) {
  const Blocks blocks = SplitRows(1000, 4, 0, kShrinkingBlocks);
  EXPECT_EQ(HandOut(blocks), (Blocks{157, 157, 157, 157, 62, 62, 62, 62, 31, 31, 31, 31}));
}

TEST(BlockSplit, EvenBlocksLeaveAnOddLastRowOut) {
  const Blocks blocks = SplitRows(1001, 4, 0, kShrinkingEvenBlocks);
  EXPECT_EQ(HandOut(blocks), (Blocks{158, 158, 158, 158, 62, 62, 62, 62, 30, 30, 30, 30}));
  EXPECT_EQ(std::accumulate(blocks.begin(), blocks.end(), 0), 1000);
}

TEST(BlockSplit, RemainderOfEqualBlocksGoesToTheTopOfTheFrame) {
  EXPECT_EQ(HandOut(SplitRows(10, 4, 3, kEqualBlocks)), (Blocks{4, 3, 3}));
  EXPECT_EQ(HandOut(SplitRows(11, 4, 0, kEqualBlocks)), (Blocks{3, 2, 2, 2, 2}));
  EXPECT_EQ(HandOut(SplitRows(1, 1, 0, kEqualBlocks)), (Blocks{1}));
}

TEST(BlockSplit, LargerRemainderBlocksComeFirst) {
  EXPECT_EQ(HandOut(SplitRows(7, 4, 0, kShrinkingBlocks)), (Blocks{2, 2, 2, 1}));
  EXPECT_EQ(HandOut(SplitRows(12, 4, 0, kShrinkingEvenBlocks)), (Blocks{4, 4, 2, 2}));
}

TEST(BlockSplit, FewRowsGiveBlocksWithoutRows) {
  EXPECT_EQ(HandOut(SplitRows(3, 4, 0, kShrinkingBlocks)), (Blocks{1, 1, 1, 0}));
  EXPECT_EQ(HandOut(SplitRows(6, 4, 0, kShrinkingEvenBlocks)), (Blocks{2, 2, 2, 0}));
}

TEST(BlockSplit, NothingToHandOut) {
  EXPECT_EQ(SplitRows(10, 4, 11, kEqualBlocks), Blocks{});
  EXPECT_EQ(SplitRows(0, 4, 0, kEqualBlocks), Blocks{});
  EXPECT_EQ(SplitRows(-5, 4, 0, kEqualBlocks), Blocks{});
  EXPECT_EQ(SplitRows(-5, 4, 3, kEqualBlocks), Blocks{});
  EXPECT_EQ(SplitRows(10, 4, 0, 3), Blocks{});
  EXPECT_EQ(SplitRows(10, 4, 0, -1), Blocks{});
}

TEST(BlockSplit, BlockRowsBelowOneMeansTheThreadsShare) {
  EXPECT_EQ(SplitRows(10, 4, -1, kEqualBlocks), SplitRows(10, 4, 0, kEqualBlocks));
  EXPECT_EQ(SplitRows(10, 4, INT32_MIN, kEqualBlocks), SplitRows(10, 4, 0, kEqualBlocks));
}

TEST(BlockSplit, EveryCombinationFollowsTheRules) {
  for (int32_t type = -1; type <= 3; ++type) {
    for (int32_t threads = 1; threads <= 16; ++threads) {
      for (int32_t rows = -70; rows <= 600; ++rows) {
        ASSERT_EQ(SplitRows(rows, threads, 0, type), Model(rows, threads, 0, type))
            << "type " << type << ", threads " << threads << ", rows " << rows;
      }
    }
  }
  for (int32_t threads : {1, 3, 16}) {
    for (int32_t rows = -10; rows <= 130; ++rows) {
      for (int32_t block_rows = -2; block_rows <= 140; ++block_rows) {
        ASSERT_EQ(SplitRows(rows, threads, block_rows, 0), Model(rows, threads, block_rows, 0))
            << "threads " << threads << ", rows " << rows << ", block rows " << block_rows;
      }
    }
  }
}

TEST(BlockSplit, RowsAreAllCoveredOrTheLastOneIsOdd) {
  for (int32_t threads = 1; threads <= 16; ++threads) {
    for (int32_t rows = 0; rows <= 3000; rows += 7) {
      const auto total = [&](int32_t type) {
        const Blocks blocks = SplitRows(rows, threads, 0, type);
        return std::accumulate(blocks.begin(), blocks.end(), 0);
      };
      EXPECT_EQ(total(kEqualBlocks), rows);
      EXPECT_EQ(total(kShrinkingBlocks), rows);
      EXPECT_EQ(total(kShrinkingEvenBlocks), rows / 2 * 2);
    }
  }
}

// A work with such a block never completes, so when there is one is part of the contract.
TEST(BlockSplit, ABlockWithoutRowsAppearsExactlyBelowOneUnitPerThread) {
  const auto has_empty = [](const Blocks& blocks) {
    for (const int32_t rows : blocks) {
      if (rows < 1) return true;
    }
    return false;
  };
  for (int32_t threads = 1; threads <= 16; ++threads) {
    for (int32_t rows = -3; rows <= 300; ++rows) {
      EXPECT_EQ(has_empty(SplitRows(rows, threads, 0, kShrinkingBlocks)), rows < threads);
      EXPECT_EQ(has_empty(SplitRows(rows, threads, 0, kShrinkingEvenBlocks)), rows < 2 * threads);
    }
  }
}

TEST(BlockSplit, ExtremeRowCounts) {
  for (const int32_t rows : {INT32_MAX, INT32_MAX - 1, INT32_MIN, INT32_MIN + 1}) {
    for (const int32_t threads : {1, 16}) {
      for (const int32_t type : {0, 1, 2}) {
        EXPECT_EQ(SplitRows(rows, threads, INT32_MAX / 2, type), Model(rows, threads, INT32_MAX / 2, type));
        EXPECT_EQ(SplitRows(rows, threads, 0, type), Model(rows, threads, 0, type));
      }
    }
  }
  EXPECT_THROW(SplitRows(INT32_MAX, 1, 1, kEqualBlocks), std::bad_alloc);
}

}  // namespace
}  // namespace prismo::mp

// What a submitted work looks like from its callback, and which rows it is handed.
#include <cstdint>
#include <deque>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "PrismoUtl.h"
#include "engine/fresh_pool.h"
#include "engine/pool_tools.h"
#include "platform/process.h"

namespace prismo::mp {
namespace {

class Submit : public FreshPool {};

// The record as the first callback found it.
MPWork seen;

void Remember(MPWork* work) {
  seen = *work;
  Drain(work);
}

const auto* const kSrc = reinterpret_cast<const uint8_t*>(0x1000);
auto* const kDst = reinterpret_cast<uint8_t*>(0x2000);

TEST_F(Submit, ExecWork0PassesItsArguments) {
  SetMPCount(1);
  ASSERT_EQ(
      ExecWork0(&Remember, 3, 14, 5, 24, 7, 8, kSrc, 100, 200, 2, 400, kDst, 300, 400, 4, 1200, 77, 20, 0),
      0u);
  EXPECT_EQ(seen.WorkID, 1u);
  EXPECT_EQ(seen.Callback, &Remember);
  EXPECT_EQ(seen.Type, 0);
  EXPECT_EQ(seen.Src, kSrc);
  EXPECT_EQ(seen.SrcWidth, 100u);
  EXPECT_EQ(seen.SrcHeight, 200u);
  EXPECT_EQ(seen.SrcStride, 400u);
  EXPECT_EQ(seen.SrcBytesPerPixel, 2u);
  EXPECT_EQ(seen.Dst, kDst);
  EXPECT_EQ(seen.DstWidth, 300u);
  EXPECT_EQ(seen.DstHeight, 400u);
  EXPECT_EQ(seen.DstStride, 1200u);
  EXPECT_EQ(seen.DstBytesPerPixel, 4u);
  EXPECT_EQ(seen.Param, 77u);
  EXPECT_EQ(seen.FirstX, 3);
  EXPECT_EQ(seen.LastX, 14);
  EXPECT_EQ(seen.FirstY, 5);
  EXPECT_EQ(seen.LastY, 24);
  EXPECT_EQ(seen.DstX, 7);
  EXPECT_EQ(seen.DstY, 8);
  EXPECT_EQ(seen.CurrentY, 5);
  EXPECT_EQ(seen.WorkToDo, 1);
  EXPECT_EQ(seen.AccessCounter, 1);
  EXPECT_EQ(seen.Status, 0u);
  EXPECT_NE(seen.BlockList, nullptr);
  EXPECT_EQ(seen.NextBlock, 0);
  EXPECT_NE(seen.Lock, nullptr);
  EXPECT_NE(seen.DoneEvent, nullptr);
}

TEST_F(Submit, ExecWork1SpansTheWholeWidth) {
  SetMPCount(1);
  ASSERT_EQ(ExecWork1(&Remember, 2, 41, kSrc, 64, 50, 1, 64, kDst, 4, 256, 9, 0, 2), 0u);
  EXPECT_EQ(seen.FirstX, 0);
  EXPECT_EQ(seen.LastX, 63);
  EXPECT_EQ(seen.FirstY, 2);
  EXPECT_EQ(seen.LastY, 41);
  EXPECT_EQ(seen.DstX, 0);
  EXPECT_EQ(seen.DstY, 2);
  EXPECT_EQ(seen.Src, kSrc);
  EXPECT_EQ(seen.SrcWidth, 64u);
  EXPECT_EQ(seen.SrcHeight, 50u);
  EXPECT_EQ(seen.SrcBytesPerPixel, 1u);
  EXPECT_EQ(seen.SrcStride, 64u);
  EXPECT_EQ(seen.Dst, kDst);
  EXPECT_EQ(seen.DstWidth, 64u);
  EXPECT_EQ(seen.DstHeight, 50u);
  EXPECT_EQ(seen.DstBytesPerPixel, 4u);
  EXPECT_EQ(seen.DstStride, 256u);
  EXPECT_EQ(seen.Param, 9u);
  EXPECT_EQ(seen.Type, 2);
}

TEST_F(Submit, ExecWork2UsesOneFormatForBothSides) {
  SetMPCount(1);
  ASSERT_EQ(ExecWork2(&Remember, 0, 49, kSrc, 64, 50, 3, 192, kDst, 1, 10, 0), 0u);
  EXPECT_EQ(seen.SrcBytesPerPixel, 3u);
  EXPECT_EQ(seen.DstBytesPerPixel, 3u);
  EXPECT_EQ(seen.SrcStride, 192u);
  EXPECT_EQ(seen.DstStride, 192u);
  EXPECT_EQ(seen.LastX, 63);
  EXPECT_EQ(seen.Param, 1u);
  EXPECT_EQ(seen.WorkToDo, 5);
  EXPECT_EQ(seen.NextBlock, 4);
}

TEST_F(Submit, StartWorkNamesRowsBeforeColumns) {
  SetMPCount(1);
  MPWork* work = nullptr;
  ASSERT_EQ(StartWork(&work, &Remember, 5, 24, 3, 14, 7, 8, kSrc, 100, 200, 2, 400, kDst, 300, 400, 4, 1200,
                      77, 20, 0),
            0u);
  ASSERT_NE(work, nullptr);
  EXPECT_EQ(WaitWorkDone(work), 0u);
  EXPECT_EQ(seen.FirstY, 5);
  EXPECT_EQ(seen.LastY, 24);
  EXPECT_EQ(seen.FirstX, 3);
  EXPECT_EQ(seen.LastX, 14);
  EXPECT_EQ(seen.DstX, 7);
  EXPECT_EQ(seen.DstY, 8);
  EXPECT_EQ(seen.SrcWidth, 100u);
  EXPECT_EQ(seen.SrcBytesPerPixel, 2u);
  EXPECT_EQ(seen.SrcStride, 400u);
  EXPECT_EQ(seen.DstStride, 1200u);
  EXPECT_EQ(seen.Param, 77u);
  EXPECT_EQ(WaitWorkDone(work), UTL_STS_INVALID_PARAMETER) << "the handle outlived the work";
}

TEST_F(Submit, WorksAreNumberedForTheLifeOfThePool) {
  for (uint32_t id = 1; id <= 5; ++id) {
    ASSERT_EQ(ExecWork2(&Remember, 0, 49, kSrc, 64, 50, 3, 192, kDst, 1, 10, 0), 0u);
    EXPECT_EQ(seen.WorkID, id);
  }
  TerminateMPThreads();
  ASSERT_EQ(ExecWork2(&Remember, 0, 49, kSrc, 64, 50, 3, 192, kDst, 1, 10, 0), 0u);
  EXPECT_EQ(seen.WorkID, 1u);
}

TEST_F(Submit, StatusOfTheCallbackIsTheResult) {
  const MPWorkCallback set_status = [](MPWork* work) {
    ForEachBlock(work, [&](int32_t, int32_t) { work->Status = 0x1234; });
  };
  SetMPCount(1);
  EXPECT_EQ(ExecWork2(set_status, 0, 49, kSrc, 64, 50, 3, 192, kDst, 1, 10, 0), 0x1234u);
}

TEST(HandOut, BlocksFollowOneAnotherFromTheTop) {
  TestPool pool(1);
  std::vector<std::pair<int32_t, int32_t>> blocks;
  int32_t to_do = -1;
  const Body body = [&](MPWork* work) {
    ForEachBlock(work, [&](int32_t first, int32_t count) {
      blocks.emplace_back(first, count);
      to_do = work->WorkToDo;
    });
  };
  ASSERT_EQ(pool.Exec(body, 100, 1), 0u);
  EXPECT_EQ(blocks, (std::vector<std::pair<int32_t, int32_t>>{{0, 63}, {63, 25}, {88, 12}}));
  EXPECT_EQ(to_do, 1) << "blocks are counted when they are finished";
  blocks.clear();
  ASSERT_EQ(pool.Exec(body, 1, 0), 0u);
  EXPECT_EQ(blocks, (std::vector<std::pair<int32_t, int32_t>>{{0, 1}}));
}

TEST(HandOut, ThreadsInTheSplitAreThoseThatRun) {
  TestPool pool(4, 4);
  std::atomic<int32_t> blocks{0};
  const Body body = [&](MPWork* work) { ForEachBlock(work, [&](int32_t, int32_t) { ++blocks; }); };
  ASSERT_EQ(pool.Exec(body, 1000, 1), 0u);
  EXPECT_EQ(blocks, 12);
  pool->SetThreadCount(3);
  blocks = 0;
  ASSERT_EQ(pool.Exec(body, 1000, 1), 0u);
  EXPECT_EQ(blocks, 9);
}

TEST(HandOut, EveryRowOnceOnAnyNumberOfThreads) {
  for (int32_t threads = 1; threads <= 16; ++threads) {
    TestPool pool(threads);
    for (const uint32_t rows : {32u, 33u, 100u, 1001u}) {
      for (const uint32_t type : {0u, 1u, 2u}) {
        RowCounts counts(rows);
        ASSERT_EQ(pool.Exec(counts.CountingBody(), rows, type), 0u);
        EXPECT_TRUE(type == 2 ? counts.Exactly(0, rows / 2 * 2) : counts.All())
            << threads << " threads, " << rows << " rows, type " << type;
      }
    }
  }
}

TEST(HandOut, AllThreadsWorkOnOneWork) {
  TestPool pool(4);
  Gate all_in;
  std::atomic<int32_t> inside{0};
  const Body body = [&](MPWork* work) {
    if (++inside == 4) all_in.Open();
    all_in.Pass();
    Drain(work);
  };
  EXPECT_EQ(pool.Exec(body, 100), 0u);
}

TEST(HandOut, ThreadsAreKept) {
  TestPool pool(3);
  std::mutex lock;
  std::set<uint32_t> threads;
  const Body body = [&](MPWork* work) {
    {
      std::lock_guard guard(lock);
      threads.insert(platform::ThreadId());
    }
    Drain(work);
  };
  for (int i = 0; i < 300; ++i) ASSERT_EQ(pool.Exec(body, 60), 0u);
  EXPECT_LE(threads.size(), 3u);
  EXPECT_EQ(threads.count(platform::ThreadId()), 0u) << "the submitter did more than wait";
}

TEST(HandOut, OutputsMayBeNull) {
  TestPool pool(1);
  std::atomic<int32_t> blocks{0};
  const Body body = [&](MPWork* work) {
    for (int32_t first = 1; MPWorkTakeBlock(work, first, nullptr, nullptr); first = 0) ++blocks;
  };
  EXPECT_EQ(pool.Exec(body, 100), 0u);
  EXPECT_EQ(blocks, 3);
}

TEST(HandOut, FirstMayBeAnyNonZeroNumber) {
  TestPool pool(1);
  std::atomic<int32_t> to_do{-1};
  const Body body = [&](MPWork* work) {
    int32_t first_row, row_count;
    MPWorkTakeBlock(work, -7, &first_row, &row_count);
    to_do = work->WorkToDo;
    while (MPWorkTakeBlock(work, 0, &first_row, &row_count)) {
    }
  };
  EXPECT_EQ(pool.Exec(body, 100), 0u);
  EXPECT_EQ(to_do, 3);
}

// Row counts round the edge of 32 bits are no rows, or more than there is memory for.
TEST(HandOut, AbsurdRowCountsEndSomehow) {
  TestPool pool(1);
  const auto exec = [&](uint32_t first_y, uint32_t last_y, uint32_t block_rows, uint32_t type) {
    const Body body = [](MPWork* work) { ForEachBlock(work, [](int32_t, int32_t) {}); };
    WorkRequest request = Request(body, 1, type, block_rows);
    request.geometry.first_y = first_y;
    request.geometry.last_y = last_y;
    pool->SetTimeout(10);
    return Code(NoThrow(Status::kFailure, [&] { return pool->ExecWork(request); }));
  };
  for (const uint32_t type : {0u, 1u, 2u}) {
    EXPECT_EQ(exec(0, 0x7FFFFFFF, 0, type), UTL_STS_TIMEOUT);           // -2^31 rows
    EXPECT_EQ(exec(0x80000000, 0x7FFFFFFF, 0, type), UTL_STS_TIMEOUT);  // 2^32 rows
    EXPECT_EQ(exec(0, 0xFFFFFFFF, 0, type), UTL_STS_TIMEOUT);           // none
    EXPECT_EQ(exec(10, 5, 0, type), UTL_STS_TIMEOUT);
    EXPECT_EQ(exec(0, 0x7FFFFFFE, 0, type), 0u);           // all there can be
    EXPECT_EQ(exec(0x7FFFFFF0, 0x8000000F, 0, type), 0u);  // across the edge
  }
  EXPECT_EQ(exec(0, 0x7FFFFFFE, 1, 0), UTL_STS_FAILURE);
}

TEST(HandOut, UnknownTypesAndTooLargeBlocksAreNeverJoined) {
  TestPool pool(2);
  std::atomic<int32_t> calls{0};
  const Body body = [&](MPWork* work) {
    ++calls;
    Drain(work);
  };
  for (const uint32_t type : {3u, 4u, 0x80000000u, 0xFFFFFFFFu}) {
    const Stopwatch watch;
    EXPECT_EQ(pool.ExecWithin(30, body, 100, type), UTL_STS_TIMEOUT);
    EXPECT_GE(watch.Elapsed().count(), 30);
  }
  EXPECT_EQ(pool.ExecWithin(30, body, 100, 0, 101), UTL_STS_TIMEOUT);
  EXPECT_EQ(pool.ExecWithin(30, body, 100, 0, 0x7FFFFFFF), UTL_STS_TIMEOUT);
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(pool.Exec(body, 100, 0, 100), 0u);
  EXPECT_EQ(pool.Exec(body, 100, 0, 0xFFFFFFFF), 0u) << "below 1 means the default";
  EXPECT_EQ(pool->QueuedWorks(), 0u);
  EXPECT_EQ(pool->TimedOutWorks(), 0u);
}

TEST(HandOut, ABlockWithoutRowsMakesTheCallTimeOut) {
  std::deque<RowCounts> frames;  // outlive the pool, whose workers may be late
  for (const int32_t threads : {1, 2, 4, 16}) {
    TestPool pool(threads);
    for (const uint32_t type : {1u, 2u}) {
      const int32_t enough = static_cast<int32_t>(type) * threads;
      for (int32_t rows = std::max(1, enough - 2); rows < enough; ++rows) {
        RowCounts& counts = frames.emplace_back(static_cast<size_t>(rows));
        const Stopwatch watch;
        EXPECT_EQ(pool.ExecWithin(30, counts.CountingBody(), static_cast<uint32_t>(rows), type),
                  UTL_STS_TIMEOUT)
            << rows << " rows on " << threads;
        EXPECT_GE(watch.Elapsed().count(), 30);
        // All others were converted.
        EXPECT_TRUE(type == 1 ? counts.All() : counts.Exactly(0, static_cast<size_t>(rows) / 2 * 2));
      }
      RowCounts& counts = frames.emplace_back(static_cast<size_t>(enough));
      EXPECT_EQ(pool.Exec(counts.CountingBody(), static_cast<uint32_t>(enough), type), 0u);
      EXPECT_TRUE(counts.All());
    }
    // Their records do not stay for ever.
    EXPECT_TRUE(Eventually([&] {
      pool.Exec(kDrain, 100);
      return pool->TimedOutWorks() == 0 && Work::Live() == 0;
    }));
  }
}

// A callback that does by hand what MPWorkTakeBlock does.
TEST_F(Submit, CallbacksMayTakeTheirBlocksThroughTheFields) {
  SetMPCount(1);
  static int32_t rows = 0;
  const auto by_hand = [](MPWork* work) {
    for (; work->NextBlock >= 0 && work->Status == 0; --work->NextBlock, --work->WorkToDo) {
      rows += work->BlockList[work->NextBlock];
      work->CurrentY += work->BlockList[work->NextBlock];
    }
    --work->AccessCounter;
  };
  EXPECT_EQ(ExecWork1(by_hand, 0, 99, nullptr, 16, 100, 1, 16, nullptr, 1, 16, 0, 7, 0), 0u);
  EXPECT_EQ(rows, 100);
}

}  // namespace
}  // namespace prismo::mp

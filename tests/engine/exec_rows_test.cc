// Row jobs of the library's own conversions on the pool.
#include <atomic>
#include <cstdint>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "PrismoUtl.h"
#include "bayer/bilinear_job.h"
#include "engine/fresh_pool.h"
#include "mp/engine.h"
#include "support/pool.h"

namespace prismo::mp {
namespace {

struct CountRows {
  std::atomic<int32_t>* rows;
  int32_t throw_at;

  void Rows(RowRange range) const {
    for (int32_t row = range.first; row < range.first + range.count; ++row) {
      if (row == throw_at) throw std::runtime_error("as asked");
      rows[row].fetch_add(1);
    }
  }
};

WorkGeometry Geometry(uint32_t rows, uint32_t type) {
  return WholeWidth(0, rows - 1, nullptr, 64, rows, 1, 64, nullptr, 4, 256, 0, 0, type);
}

class ExecRowsTest : public FreshPool {};

TEST_F(ExecRowsTest, EveryRowOnce) {
  for (const int32_t threads : test::ThreadCounts()) {
    ASSERT_TRUE(test::StartPool(threads));
    for (const uint32_t type : {0u, 1u, 2u}) {
      std::vector<std::atomic<int32_t>> rows(1000);
      ASSERT_EQ(RunOnPool(Geometry(1000, type), CountRows{rows.data(), -1}, LogFunction::kMono8ToBGRA_WK),
                Status::kSuccess);
      for (const auto& row : rows) ASSERT_EQ(row.load(), 1);
    }
  }
}

TEST_F(ExecRowsTest, AnExceptionFailsTheCallButNotThePool) {
  std::vector<std::atomic<int32_t>> rows(1000);
  EXPECT_EQ(RunOnPool(Geometry(1000, 1), CountRows{rows.data(), 500}, LogFunction::kMono8ToBGRA_WK),
            Status::kFailure);
  EXPECT_EQ(RunOnPool(Geometry(1000, 1), CountRows{rows.data(), -1}, LogFunction::kMono8ToBGRA_WK),
            Status::kSuccess);
}

TEST_F(ExecRowsTest, AskingForSeveralThreadsMakesNoPool) {
  EXPECT_FALSE(HasSeveralThreads());
  EXPECT_TRUE(IsMPMngrNULL());
  for (const int32_t threads : test::ThreadCounts()) {
    ASSERT_TRUE(test::StartPool(threads));
    EXPECT_EQ(HasSeveralThreads(), threads > 1);
  }
}

TEST_F(ExecRowsTest, WhatTakesTheTimeOfABilinearDemosaic) {
  using enum simd::TimeGoesTo;
  EXPECT_EQ(TimeOnPool(), kBoth);
  for (const int32_t threads : test::ThreadCounts()) {
    ASSERT_TRUE(test::StartPool(threads));
    EXPECT_EQ(TimeOnPool(), threads > 1 ? kMemory : kBoth);
  }
}

TEST_F(ExecRowsTest, LoggingMakesNoPool) {
  LogSkipped(LogFunction::kMono8ToBGRA_MP, {0, 5});
  LogStartedWithoutPool(LogFunction::kBGR8PToBGR_MP);
  EXPECT_TRUE(IsMPMngrNULL());
}

}  // namespace
}  // namespace prismo::mp

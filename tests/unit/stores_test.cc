// Which stores a conversion takes, and where.
#include "simd/stores.h"

#include <gtest/gtest.h>

#include <vector>

#include "platform/cpu_caches.h"
#include "simd/targets.h"

namespace prismo::simd {
namespace {

using enum TimeGoesTo;

class Stores : public testing::Test {
 protected:
  ~Stores() override { SetTarget(before_); }

  bool SocketWide() const { return cache_ > size_t{48} << 20; }

  const size_t cache_ = platform::LastLevelCacheBytes();

 private:
  const Target before_ = CurrentTarget();
};

TEST_F(Stores, ArithmeticThatBytePermutesMakeQuickLeavesTheTimeToTheMemory) {
  for (const Target target : SupportedTargets()) {
    SetTarget(target);
    const TimeGoesTo same = target == Target::kAvx512Vbmi ? kMemory : kArithmetic;
    for (size_t bytes = 0; bytes <= 2 * cache_; bytes += cache_ / 32) {
      const Traffic traffic{bytes / 4, bytes / 4 * 3};
      EXPECT_EQ(PlanStores(traffic, 1, kBoth), PlanStores(traffic, 1, same)) << Name(target) << ' ' << bytes;
    }
  }
}

TEST_F(Stores, ResultsThatNoCacheHoldsAreStreamed) {
  for (const TimeGoesTo time : {kMemory, kBoth, kArithmetic}) {
    EXPECT_EQ(PlanStores({0, 1}, 1, time), StorePlan(StoreKind::kCached));
    EXPECT_EQ(PlanStores({cache_, cache_}, 1, time), StorePlan(StoreKind::kStreaming));
  }
  EXPECT_EQ(StoreKindFor({0, 1}), StoreKind::kCached);
  EXPECT_EQ(StoreKindFor({cache_, cache_}), StoreKind::kStreaming);
}

TEST_F(Stores, BetweenHalfACacheAndAllOfItWhatHalfHasNoRoomForIsStreamed) {
  if (SocketWide()) GTEST_SKIP() << "the cache is that of a whole socket";
  const size_t part = cache_ / 16;
  EXPECT_EQ(PlanStores({4 * part, 4 * part}), StorePlan(StoreKind::kCached));
  EXPECT_EQ(PlanStores({4 * part, 8 * part}), StorePlan::Streaming(8));
  EXPECT_EQ(PlanStores({2 * part, 8 * part}), StorePlan::Streaming(4));
  EXPECT_EQ(PlanStores({2 * part, 8 * part + 1}), StorePlan::Streaming(5));
  EXPECT_EQ(PlanStores({8 * part, 8 * part}), StorePlan(StoreKind::kStreaming));
  EXPECT_EQ(PlanStores({14 * part, part}), StorePlan(StoreKind::kStreaming));
  EXPECT_EQ(PlanStores({2 * part, 15 * part}), StorePlan(StoreKind::kStreaming));
}

TEST_F(Stores, WhereStreamingHasTimeAllIsStreamedFromHalfACacheOn) {
  if (SocketWide()) GTEST_SKIP() << "the cache is that of a whole socket";
  EXPECT_EQ(PlanStores({cache_ / 4, cache_ / 4}, 1, kArithmetic), StorePlan(StoreKind::kCached));
  EXPECT_EQ(PlanStores({cache_ / 4, cache_ / 4 + 64}, 1, kArithmetic), StorePlan(StoreKind::kStreaming));
  EXPECT_EQ(StoreKindFor({cache_ / 4, cache_ / 4 + 64}), StoreKind::kStreaming);
}

TEST_F(Stores, SpreadsStreamedPiecesEvenly) {
  for (size_t parts = 0; parts <= StorePlan::kParts; ++parts) {
    const StorePlan plan = StorePlan::Streaming(parts);
    size_t streamed = 0;
    for (size_t piece = 0; piece < 4 * StorePlan::kParts; ++piece) {
      streamed += plan.OfPiece(piece) == StoreKind::kStreaming;
      EXPECT_EQ(streamed, (piece + 1) * parts / StorePlan::kParts) << parts << ' ' << piece;
    }
  }
}

// Wherever a block of a target begins, its pieces are those of the whole target.
TEST_F(Stores, PiecesAreThoseOfTheWholeTarget) {
  constexpr size_t kUnitPixels = 7;
  const StorePlan plan = StorePlan::Streaming(7, 75);  // ten units a piece
  ASSERT_EQ(plan.PieceUnits(kUnitPixels), 10u);
  for (size_t begin = 0; begin < 35; ++begin) {
    for (size_t end = begin; end < 70; ++end) {
      std::vector<size_t> units;
      ForEachPiece(plan, begin, end, kUnitPixels, [&](StoreKind kind, size_t first, size_t count) {
        ASSERT_GT(count, 0u);
        for (size_t unit = first; unit < first + count; ++unit) {
          EXPECT_EQ(kind, plan.OfPiece(unit / 10));
          EXPECT_EQ(kind, plan.OfRow(unit, kUnitPixels));
          units.push_back(unit);
        }
      });
      ASSERT_EQ(units.size(), end - begin);
      for (size_t i = 0; i < units.size(); ++i) ASSERT_EQ(units[i], begin + i);
    }
  }
}

TEST_F(Stores, LongRowsArePiecesByThemselves) {
  EXPECT_EQ(StorePlan::Streaming(8, 100).PieceUnits(101), 1u);
  EXPECT_EQ(StorePlan::Streaming(8, 100).PieceUnits(0), 100u);
}

TEST_F(Stores, OneKindIsOnePiece) {
  for (const StoreKind kind : {StoreKind::kCached, StoreKind::kStreaming}) {
    int pieces = 0;
    ForEachPiece(kind, 3, 1000, 10, [&](StoreKind given, size_t first, size_t count) {
      EXPECT_EQ(given, kind);
      EXPECT_EQ(first, 3u);
      EXPECT_EQ(count, 997u);
      ++pieces;
    });
    EXPECT_EQ(pieces, 1);
  }
}

}  // namespace
}  // namespace prismo::simd

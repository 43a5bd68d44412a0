// Which stores a conversion takes.
#include <gtest/gtest.h>

#include "platform/cpu_caches.h"
#include "simd/targets.h"

namespace prismo::simd {
namespace {

using enum TimeGoesTo;

class StoreKinds : public testing::Test {
 protected:
  ~StoreKinds() override { SetTarget(before_); }

  const size_t cache_ = platform::LastLevelCacheBytes();

 private:
  const Target before_ = CurrentTarget();
};

TEST_F(StoreKinds, ArithmeticThatBytePermutesMakeQuickLeavesTheTimeToTheMemory) {
  for (const Target target : SupportedTargets()) {
    SetTarget(target);
    const TimeGoesTo same = target == Target::kAvx512Vbmi ? kMemory : kArithmetic;
    for (size_t bytes = 0; bytes <= 2 * cache_; bytes += cache_ / 32) {
      EXPECT_EQ(StoreKindFor(bytes, 1, kBoth), StoreKindFor(bytes, 1, same)) << Name(target) << ' ' << bytes;
    }
  }
}

TEST_F(StoreKinds, ResultsThatNoCacheHoldsAreStreamed) {
  for (const TimeGoesTo time : {kMemory, kBoth, kArithmetic}) {
    EXPECT_EQ(StoreKindFor(1, 1, time), StoreKind::kCached);
    EXPECT_EQ(StoreKindFor(2 * cache_, 1, time), StoreKind::kStreaming);
  }
}

TEST_F(StoreKinds, NearlyTheWholeCacheOfAFewCoresOrHalfOfIt) {
  if (cache_ > size_t{48} << 20) GTEST_SKIP() << "the cache is that of a whole socket";
  EXPECT_EQ(StoreKindFor(cache_ / 10 * 9, 1, kMemory), StoreKind::kCached);
  EXPECT_EQ(StoreKindFor(cache_, 1, kMemory), StoreKind::kStreaming);
  EXPECT_EQ(StoreKindFor(cache_ / 10 * 4, 1, kArithmetic), StoreKind::kCached);
  EXPECT_EQ(StoreKindFor(cache_ / 10 * 6, 1, kArithmetic), StoreKind::kStreaming);
}

}  // namespace
}  // namespace prismo::simd

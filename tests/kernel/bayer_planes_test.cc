#include <gtest/gtest.h>

#include <vector>

#include "kernel/planes_checks.h"

namespace prismo::test {
namespace {

using BayerPlanes = PlanesTest;

TEST_F(BayerPlanes, EveryWidthEqualsTheReference) {
  PRISMO_TRACE_SEED();
  ASSERT_TRUE(StartPool(1));
  uint32_t i = 0;
  for (const BayerPlanesRoutine& routine : BayerPlanesRoutines()) {
    for (const uint32_t width : Widths(2)) {
      const uint32_t height = (routine.on == On::kPool ? 4 : 2) + 2 * (i % 3);
      CheckBayer(routine, width, height, i % 2, 1, kPatterns[i % std::size(kPatterns)]);
      if (HasFailure()) return;
      ++i;
    }
  }
}

TEST_F(BayerPlanes, PoolPadsOnlyTheOuterRowsForEveryDivision) {
  PRISMO_TRACE_SEED();
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads));
    for (const BayerPlanesRoutine& routine : BayerPlanesRoutines()) {
      if (routine.on != On::kPool) continue;
      for (uint32_t height = static_cast<uint32_t>(2 + 2 * threads); height <= 70; height += 6) {
        CheckBayer(routine, 6 + height % 8, height, height % 4 < 2, threads, Pattern::kRandom);
        if (HasFailure()) return;
      }
    }
  }
}

TEST_F(BayerPlanes, OddSizesStayInsideTheFrame) {
  PRISMO_TRACE_SEED();
  ASSERT_TRUE(StartPool(1));
  for (const BayerPlanesRoutine& routine : BayerPlanesRoutines()) {
    for (uint32_t width = 2; width <= 9; ++width) {
      for (uint32_t height = routine.on == On::kPool ? 4 : 2; height <= 9; ++height) {
        CheckBayer(routine, width, height, (width + height) % 3 == 0, 1, Pattern::kRandom);
        if (HasFailure()) return;
      }
    }
    CheckBayer(routine, 131, 7, true, 1, Pattern::kRandom);
  }
}

TEST_F(BayerPlanes, ShortFramesTimeOutOnThePool) {
  PRISMO_TRACE_SEED();
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads, kShortTimeout));
    for (uint32_t height = 2; height < static_cast<uint32_t>(2 + 2 * threads); height += 2) {
      const std::vector<uint8_t> raw = MakeSamples(Pattern::kRandom, 6, height, 8, random_);
      std::vector<uint8_t> planes(6 * 8 * 3), expected(6 * 8 * 3);
      reference::BayerPlanes({raw.data(), 6, height, Phase::kGb}, false,
                             {&expected[0], &expected[6 * 8], &expected[2 * 6 * 8]});
      EXPECT_EQ(ByrGB8ToBGRFS_MP(&planes[0], &planes[6 * 8], &planes[2 * 6 * 8], raw.data(), 6, height, 0),
                18u);
      EXPECT_EQ(planes, expected);
    }
  }
}

TEST_F(BayerPlanes, TwoByTwoIsCorners) {
  const std::vector<uint8_t> raw{10, 20, 30, 40};
  std::vector<uint8_t> b(4), g(4), r(4);
  EXPECT_EQ(ByrBG8ToBGRFS_SP(b.data(), g.data(), r.data(), raw.data(), 2, 2, 0), 0u);
  EXPECT_EQ(b, (std::vector<uint8_t>{10, 10, 10, 10}));
  EXPECT_EQ(g, (std::vector<uint8_t>{25, 20, 30, 25}));
  EXPECT_EQ(r, (std::vector<uint8_t>{40, 40, 40, 40}));
}

TEST_F(BayerPlanes, GreenOfTheTopRowIgnoresTheSampleBelow) {
  std::vector<uint8_t> raw(16, 0);
  raw[1] = 10, raw[3] = 31, raw[4 + 2] = 200;
  std::vector<uint8_t> b(16), g(16), r(16);
  EXPECT_EQ(ByrBG8ToBGRFS_SP(b.data(), g.data(), r.data(), raw.data(), 4, 4, 0), 0u);
  EXPECT_EQ(g[2], 20);
}

TEST_F(BayerPlanes, RefusalsComeInOrder) {
  std::vector<uint8_t> src(64, 3), b(64, 9), g(64, 9), r(64, 9);
  const std::vector<uint8_t> before = b;
  for (const BayerPlanesRoutine& routine : BayerPlanesRoutines()) {
    SCOPED_TRACE(routine.name);
    for (const uint8_t pad : kOffOn) {
      EXPECT_EQ(routine.call(nullptr, g.data(), r.data(), src.data(), 4, 4, pad), 13u);
      EXPECT_EQ(routine.call(b.data(), nullptr, r.data(), src.data(), 4, 4, pad), 13u);
      EXPECT_EQ(routine.call(b.data(), g.data(), nullptr, src.data(), 4, 4, pad), 13u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), nullptr, 4, 4, pad), 13u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), src.data(), 0, 4, pad), 0u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), src.data(), 4, 0, pad), 0u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), src.data(), 1, 0, pad), 0u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), src.data(), 65536, 65536, pad), 0u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), src.data(), 1, 4, pad), 13u);
      EXPECT_EQ(routine.call(b.data(), g.data(), r.data(), src.data(), 4, 1, pad), 13u);
    }
  }
  EXPECT_TRUE(IsMPMngrNULL());
  EXPECT_EQ(b, before);
  EXPECT_EQ(g, before);
  EXPECT_EQ(r, before);
}

}  // namespace
}  // namespace prismo::test

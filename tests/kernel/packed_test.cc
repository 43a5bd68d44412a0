#include <gtest/gtest.h>

#include <vector>

#include "kernel/packed_checks.h"

namespace prismo::test {
namespace {

class Packed : public PackedTest {};

TEST_F(Packed, EveryWidthEqualsTheReference) { SweepWidths(PackedRoutines()); }
TEST_F(Packed, LongRunsEqualTheReference) { SweepLongRuns(PackedRoutines()); }
TEST_F(Packed, EveryShiftEqualsTheReference) { SweepShifts(PackedRoutines()); }
TEST_F(Packed, PoolLeavesTheLastRowOfSomeOddHeights) { SweepHeights(PackedRoutines()); }
TEST_F(Packed, FramesOfTooFewRowsTimeOutOnThePool) { CheckShortFrames(PackedRoutines()); }
TEST_F(Packed, RefusalsComeInOrder) { ExpectRefusals(PackedRoutines()); }

TEST_F(Packed, RgbWord) {
  const std::vector<uint8_t> rgb{0x10, 0x20, 0x30};
  std::vector<uint8_t> out(4);
  EXPECT_EQ(RGB8PToBGRA_SP(out.data(), rgb.data(), 1, 1), 0u);
  EXPECT_EQ(out, (std::vector<uint8_t>{0x30, 0x20, 0x10, 0xFF}));
}

TEST_F(Packed, TenBitsToBytes) {
  const uint16_t rgb[] = {1023, 512, 4};
  std::vector<uint8_t> out(3);
  EXPECT_EQ(RGBNToBGR_SP(out.data(), rgb, 1, 1, 2, 0), 0u);
  EXPECT_EQ(out, (std::vector<uint8_t>{1, 128, 255}));
}

TEST_F(Packed, PadOfWidthThreeIsThreeBytesAndOfWidthFourNone) {
  std::vector<uint8_t> src(24);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<uint8_t>(i + 1);
  std::vector<uint8_t> out(24, 99);
  EXPECT_EQ(BGR8PToBGR_SP(out.data(), src.data(), 3, 2, 1), 0u);
  for (uint32_t i = 0; i < 24; ++i) EXPECT_EQ(out[i], i % 12 < 9 ? i / 12 * 9 + i % 12 + 1 : 0);
  EXPECT_EQ(BGR8PToBGR_SP(out.data(), src.data(), 4, 2, 1), 0u);
  EXPECT_EQ(out, src);
}

TEST_F(Packed, BgraLosesAlphaAndIsPadded) {
  const std::vector<uint8_t> src{1, 2, 3, 200, 4, 5, 6, 100};
  std::vector<uint8_t> out(8, 99);
  EXPECT_EQ(BGRA8ToBGR_SP(out.data(), src.data(), 1, 2, 1), 0u);
  EXPECT_EQ(out, (std::vector<uint8_t>{1, 2, 3, 0, 4, 5, 6, 0}));
  EXPECT_EQ(BGRA8ToBGRA_SP(out.data(), src.data(), 1, 2), 0u);
  EXPECT_EQ(out, src);  // alpha is copied, not set
}

// The bits above the low 8 of a shifted word go to the next channels, those of red to alpha.
TEST_F(Packed, ExcessBitsSpillOnThePoolOnly) {
  ASSERT_TRUE(StartPool(1));
  std::vector<uint16_t> bgr(6, 0);
  bgr[0] = 0x0412, bgr[1] = 0x0301, bgr[2] = 0x7F00;
  uint32_t out[2];
  EXPECT_EQ(BGRNToBGRA_MP(out, bgr.data(), 1, 2, 0, 0), 0u);
  EXPECT_EQ(out[0], 0x0412u | 0x030100u | 0x7F000000u | 0xFF000000u);
  EXPECT_EQ(BGRNToBGRA_SP(out, bgr.data(), 1, 2, 0), 0u);
  EXPECT_EQ(out[0], 0xFF000112u);
  EXPECT_EQ(RGBNToBGRA_MP(out, bgr.data(), 1, 2, 0, 0), 0u);
  EXPECT_EQ(out[0], 0x7F00u | 0x030100u | 0x04120000u | 0xFF000000u);
}

TEST_F(Packed, UnpaddedBgrNeverTouchesThePool) {
  const std::vector<uint8_t> src(5 * 40 * 3, 7);
  std::vector<uint8_t> out(16 * 40);
  for (const int32_t mode : {0, 1, 2}) {
    SetProcMode(mode);
    EXPECT_FALSE(UsesPool([&] { EXPECT_EQ(BGR8PToBGR_MP(out.data(), src.data(), 5, 40, 0), 0u); }));
    EXPECT_FALSE(UsesPool([&] { EXPECT_EQ(BGR8PToBGR_MP(out.data(), src.data(), 4, 40, 1), 0u); }));
    EXPECT_TRUE(UsesPool([&] { EXPECT_EQ(BGR8PToBGR_MP(out.data(), src.data(), 5, 40, 1), 0u); }));
  }
}

}  // namespace
}  // namespace prismo::test

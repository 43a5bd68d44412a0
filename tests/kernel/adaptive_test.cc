#include <gtest/gtest.h>

#include <vector>

#include "bayer/acpi_rows.h"
#include "kernel/bayer_checks.h"

namespace prismo::test {
namespace {

using reference::AdaptiveCounts;
using reference::Mosaic;
using reference::Output;
using reference::Phase;

class Adaptive : public PoolTest {
 protected:
  Adaptive() : random_(Seed()) {}

  static std::vector<BayerRoutine> RoutinesOn(On on) {
    std::vector<BayerRoutine> routines;
    for (const BayerRoutine& routine : AdaptiveRoutines()) {
      if (routine.on == on) routines.push_back(routine);
    }
    return routines;
  }

  void CheckCaller(const BayerRoutine& routine, const BayerFrame& frame, Output output) {
    CheckOnTargets(routine, frame, output, random_, [&](const Mosaic& mosaic, Output layout, void* dst) {
      reference::Adaptive(mosaic, layout, dst, &counts_);
      return 0u;
    });
  }

  void CheckPool(const BayerRoutine& routine, const BayerFrame& frame, Output output, int32_t threads) {
    SCOPED_TRACE(Describe(routine, frame, output));
    const ConversionCheck check =
        CheckOf(routine, frame, output, random_, [&](const Mosaic& mosaic, Output layout, void* dst) {
          return reference::PooledAdaptive(mosaic, layout, dst, threads);
        });
    check.Run([&](void* dst, const void* src) {
      return routine.call(dst, src, frame.width, frame.height, 0, output == Output::kPad);
    });
  }

  Random random_;
  AdaptiveCounts counts_;
};

TEST_F(Adaptive, EqualsTheReference) {
  PRISMO_TRACE_SEED();
  uint32_t i = 0;
  for (const BayerRoutine& routine : RoutinesOn(On::kCaller)) {
    for (const Output output : OutputsOf(routine.bgra)) {
      for (const uint32_t width : Widths(2)) {
        const uint32_t height = 2 + 2 * (i % 5);
        CheckCaller(routine, {width, height, kPatterns[i % std::size(kPatterns)]}, output);
        if (HasFailure()) return;
        ++i;
      }
    }
  }
  // All the cases of the rules have been met.
  EXPECT_GT(counts_.along_column, 1000u);
  EXPECT_GT(counts_.along_row, 1000u);
  EXPECT_GT(counts_.green_tie, 1000u);
  EXPECT_GT(counts_.green_below_0, 100u);
  EXPECT_GT(counts_.green_above_255, 100u);
  EXPECT_GT(counts_.anti_diagonal, 1000u);
  EXPECT_GT(counts_.main_diagonal, 1000u);
  EXPECT_GT(counts_.diagonal_tie, 1000u);
  EXPECT_GT(counts_.colour_below_0, 100u);
  EXPECT_GT(counts_.colour_above_255, 100u);
}

TEST_F(Adaptive, TallFramesOfEveryPatternEqualTheReference) {
  PRISMO_TRACE_SEED();
  for (const BayerRoutine& routine : RoutinesOn(On::kCaller)) {
    for (const Pattern pattern : kPatterns)
      CheckCaller(routine, {38, 54, pattern}, OutputsOf(routine.bgra).back());
  }
}

// Wide rows are converted in strips, which meet where a row's stores are aligned.
TEST_F(Adaptive, WideFramesEqualTheReference) {
  PRISMO_TRACE_SEED();
  ASSERT_TRUE(StartPool(2));
  uint32_t i = 0;
  for (const BayerRoutine& routine : AdaptiveRoutines()) {
    for (const Output output : OutputsOf(routine.bgra)) {
      for (const uint32_t width : {kStripColumns, kStripColumns + 2, 4098u, 2 * kStripColumns - 2,
                                   2 * kStripColumns, 3 * kStripColumns + 2}) {
        CheckCaller(routine, {width, 8, kPatterns[i++ % std::size(kPatterns)]}, output);
        if (HasFailure()) return;
      }
    }
  }
}

// And a few hundred rows at a time.
TEST_F(Adaptive, WideTallFramesEqualTheReference) {
  PRISMO_TRACE_SEED();
  ASSERT_TRUE(StartPool(2));
  uint32_t i = 0;
  for (const On on : {On::kCaller, On::kPool}) {
    for (const bool bgra : {false, true}) {
      const std::vector<BayerRoutine> routines = RoutinesOn(on);
      const auto routine = std::find_if(routines.begin(), routines.end(),
                                        [&](const BayerRoutine& r) { return r.bgra == bgra; });
      ASSERT_NE(routine, routines.end());
      CheckCaller(*routine, {kStripColumns + 4, 520, kPatterns[i++ % std::size(kPatterns)]},
                  OutputsOf(bgra).back());
      if (HasFailure()) return;
    }
  }
}

TEST_F(Adaptive, EveryWidthOnThePoolEqualsTheReference) {
  PRISMO_TRACE_SEED();
  ASSERT_TRUE(StartPool(2));
  const std::vector<BayerRoutine> routines = RoutinesOn(On::kPool);
  uint32_t i = 0;
  for (const uint32_t width : Widths(2)) {
    const BayerRoutine& routine = routines[i % routines.size()];
    CheckCaller(routine, {width, 8 + 2 * (i % 5), kPatterns[i % std::size(kPatterns)]},
                OutputsOf(routine.bgra)[i % OutputsOf(routine.bgra).size()]);
    if (HasFailure()) return;
    ++i;
  }
}

TEST_F(Adaptive, RefusalsComeInOrder) {
  for (const BayerRoutine& routine : AdaptiveRoutines()) ExpectRefusals(routine);
}

TEST_F(Adaptive, FramesOfFourRowsOrColumnsAreBilinear) {
  PRISMO_TRACE_SEED();
  for (const BayerRoutine& routine : RoutinesOn(On::kCaller)) {
    for (const BayerFrame& frame :
         {BayerFrame{4, 12}, BayerFrame{2, 12}, BayerFrame{20, 4}, BayerFrame{20, 2}}) {
      CheckOnTargets(routine, frame, OutputsOf(routine.bgra).front(), random_,
                     [](const Mosaic& mosaic, Output layout, void* dst) {
                       reference::Bilinear(mosaic, layout, dst);
                       return 0u;
                     });
    }
  }
}

TEST_F(Adaptive, FlatFramesStayFlat) {
  for (const uint8_t level : std::vector<uint8_t>{0, 1, 127, 255}) {
    const std::vector<uint8_t> raw(10 * 8, level);
    for (const BayerRoutine& routine : RoutinesOn(On::kCaller)) {
      std::vector<uint8_t> out(10 * 8 * (routine.bgra ? 4 : 3), 9);
      EXPECT_EQ(routine.call(out.data(), raw.data(), 10, 8, 0, 0), 0u);
      for (size_t i = 0; i < out.size(); ++i) {
        ASSERT_EQ(out[i], routine.bgra && i % 4 == 3 ? 255 : level) << routine.name;
      }
    }
  }
}

// Columns that alternate between two levels: every gradient is 0, and the tie takes all four neighbours.
TEST_F(Adaptive, AlternatingColumnsTie) {
  std::vector<uint8_t> raw(12 * 8);
  for (size_t i = 0; i < raw.size(); ++i) raw[i] = i % 2 ? 200 : 100;
  std::vector<uint8_t> out(12 * 8 * 3);
  EXPECT_EQ(ByrBG8ToBGR_SP_ACPI(out.data(), raw.data(), 12, 8, 0), 0u);
  EXPECT_EQ(out[(2 * 12 + 2) * 3 + 1], 150);
  EXPECT_EQ(out[(3 * 12 + 3) * 3 + 1], 150);
}

// An edge between two columns: green follows the columns on both sides of it.
TEST_F(Adaptive, GreenFollowsAVerticalEdge) {
  std::vector<uint8_t> raw(12 * 8);
  for (size_t i = 0; i < raw.size(); ++i) raw[i] = i % 12 < 6 ? 40 : 220;
  std::vector<uint8_t> out(12 * 8 * 3);
  EXPECT_EQ(ByrBG8ToBGR_SP_ACPI(out.data(), raw.data(), 12, 8, 0), 0u);
  for (size_t y = 2; y < 6; ++y) {
    for (size_t x = 2; x < 10; ++x) EXPECT_EQ(out[(y * 12 + x) * 3 + 1], x < 6 ? 40 : 220) << x << ", " << y;
  }
}

TEST_F(Adaptive, OvershootIsClamped) {
  std::vector<uint8_t> raw(8 * 8, 0);
  const auto at = [&](size_t x, size_t y) -> uint8_t& { return raw[y * 8 + x]; };
  at(2, 2) = at(2, 1) = at(2, 3) = at(3, 2) = 255;  // own, N, S, E; the samples two away are 0, W too
  std::vector<uint8_t> out(8 * 8 * 4);
  EXPECT_EQ(ByrBG8ToBGRA_SP_ACPI(out.data(), raw.data(), 8, 8), 0u);
  EXPECT_EQ(out[(2 * 8 + 2) * 4 + 1], 255);  // (2 * 510 + 510) / 4 = 382
}

TEST_F(Adaptive, SumsBelowZeroBecomeZero) {
  std::vector<uint8_t> raw(8 * 8, 0);
  const auto at = [&](size_t x, size_t y) -> uint8_t& { return raw[y * 8 + x]; };
  at(3, 2) = 5, at(2, 0) = 1;  // E and the sample two above (2, 2): V = 1 < H = 5, (0 - 1) >> 2 = -1
  std::vector<uint8_t> out(8 * 8 * 4);
  EXPECT_EQ(ByrBG8ToBGRA_SP_ACPI(out.data(), raw.data(), 8, 8), 0u);
  EXPECT_EQ(out[(2 * 8 + 2) * 4 + 1], 0);
}

TEST_F(Adaptive, PoolEqualsTheCallerFormForEveryDivision) {
  PRISMO_TRACE_SEED();
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads));
    uint32_t i = 0;
    for (const BayerRoutine& routine : RoutinesOn(On::kPool)) {
      for (const Output output : OutputsOf(routine.bgra)) {
        for (uint32_t height = static_cast<uint32_t>(4 + 2 * threads); height <= 80; height += 6) {
          CheckPool(routine, {2 + 2 * (i % 23), height, kPatterns[i % 7]}, output, threads);
          if (HasFailure()) return;
          ++i;
        }
      }
    }
  }
}

// The greens of the middle rows may be there, their red and blue are not; short frames have the right pixels.
TEST_F(Adaptive, ShortFramesTimeOutOnThePool) {
  PRISMO_TRACE_SEED();
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads, kShortTimeout));
    for (const BayerRoutine& routine : RoutinesOn(On::kPool)) {
      for (uint32_t height = 2; height < static_cast<uint32_t>(4 + 2 * threads); height += 2) {
        const uint32_t width = routine.source == Phase::kBg ? 2 : 12;
        CheckPool(routine, {width, height, Pattern::kRandom}, OutputsOf(routine.bgra).back(), threads);
      }
    }
  }
}

// On two threads the green work of six rows ends in a block without rows, and nothing comes after it: of the
// middle rows there are the greens and nothing else.
TEST_F(Adaptive, GreensAloneOnEveryTarget) {
  constexpr uint32_t kWidth = 150, kHeight = 6, kUntouched = 7;
  const std::vector<uint8_t> frame(kWidth * kHeight, 100);
  ASSERT_TRUE(StartPool(2, 100));
  const ScopedTarget restore;
  for (const simd::Target target : simd::SupportedTargets()) {
    simd::SetTarget(target);
    for (const uint32_t pixel_bytes : {3u, 4u}) {
      SCOPED_TRACE(testing::Message() << simd::Name(target) << ", " << pixel_bytes << " bytes per pixel");
      std::vector<uint8_t> image(frame.size() * pixel_bytes, kUntouched);
      ASSERT_EQ(pixel_bytes == 4 ? ByrRG8ToBGRA_MP_ACPI(image.data(), frame.data(), kWidth, kHeight)
                                 : ByrRG8ToBGR_MP_ACPI(image.data(), frame.data(), kWidth, kHeight, 0),
                UTL_STS_TIMEOUT);
      for (uint32_t y = 2; y < kHeight - 2; ++y) {
        for (uint32_t x = 2; x < kWidth - 2; ++x) {
          const uint8_t* const pixel = &image[(y * kWidth + x) * pixel_bytes];
          ASSERT_EQ(pixel[1], 100) << "green at " << x << ',' << y;
          ASSERT_EQ(pixel[0], kUntouched) << "blue at " << x << ',' << y;
          ASSERT_EQ(pixel[2], kUntouched) << "red at " << x << ',' << y;
        }
      }
    }
  }
}

}  // namespace
}  // namespace prismo::test

#include <gtest/gtest.h>

#include <vector>

#include "kernel/bayer_checks.h"

namespace prismo::test {
namespace {

using reference::Mosaic;
using reference::Output;
using reference::Phase;

uint32_t Caller(const Mosaic& mosaic, Output output, void* dst) {
  reference::Bilinear(mosaic, output, dst);
  return 0;
}

std::vector<BayerRoutine> RoutinesOn(On on, bool words) {
  std::vector<BayerRoutine> routines;
  for (const BayerRoutine& routine : BilinearRoutines()) {
    if (routine.on == on && routine.words == words) routines.push_back(routine);
  }
  return routines;
}

// Each width with one height and one pattern, which go round with different periods.
void Sweep(const std::vector<BayerRoutine>& routines, std::vector<BayerFrame> depths) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  uint32_t i = 0;
  for (const BayerRoutine& routine : routines) {
    for (const Output output : OutputsOf(routine.bgra)) {
      for (const uint32_t width : Widths(2)) {
        BayerFrame frame = depths[i % depths.size()];
        frame.width = width;
        frame.height = 2 + 2 * (i % 3);
        frame.pattern = kPatterns[i % std::size(kPatterns)];
        ++i;
        CheckOnTargets(routine, frame, output, random, Caller);
        if (testing::Test::HasFailure()) return;
      }
    }
  }
}

TEST(Bilinear, BytesEqualTheReference) { Sweep(RoutinesOn(On::kCaller, false), {{0, 0}}); }

TEST(Bilinear, WordsEqualTheReference) {
  Sweep(RoutinesOn(On::kCaller, true),
        {{0, 0, {}, 10, 2}, {0, 0, {}, 12, 4}, {0, 0, {}, 16, 8}, {0, 0, {}, 14, 6}});
}

// Averages of wide words overflow 16 bits; only the low byte of the shifted sum is kept.
TEST(Bilinear, WordsBeyondTheDepthEqualTheReferenceWithEveryShift) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  for (const BayerRoutine& routine : RoutinesOn(On::kCaller, true)) {
    const Output output = OutputsOf(routine.bgra).back();
    for (uint32_t shift = 0; shift <= 40; ++shift) {
      for (const uint32_t width : {2u, 38u, 70u}) {
        const Pattern pattern = shift % 2 ? Pattern::kWorst : Pattern::kRandom;
        CheckOnTargets(routine, {width, 4, pattern, 16, static_cast<uint8_t>(shift)}, output, random, Caller);
        if (testing::Test::HasFailure()) return;
      }
    }
    for (const uint8_t shift : std::vector<uint8_t>{62, 63, 128, 254, 255}) {
      CheckOnTargets(routine, {36, 4, Pattern::kRandom, 16, shift}, output, random, Caller);
    }
  }
}

TEST(Bilinear, TallFramesEqualTheReference) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  for (const BayerRoutine& routine : BilinearRoutines()) {
    if (routine.on != On::kCaller) continue;
    for (const Output output : OutputsOf(routine.bgra)) {
      const BayerFrame frame{46, 62, Pattern::kRandom, routine.words ? 12u : 8u, uint8_t{4}};
      CheckOnTargets(routine, frame, output, random, Caller);
    }
  }
}

class BilinearSmall : public PoolTest {};

TEST_F(BilinearSmall, RefusalsComeInOrder) {
  for (const BayerRoutine& routine : BilinearRoutines()) ExpectRefusals(routine);
}

TEST_F(BilinearSmall, TwoByTwoFrameIsFourCorners) {
  const std::vector<uint8_t> raw{10, 20, 30, 40};
  std::vector<uint8_t> out(16);
  EXPECT_EQ(ByrBG8ToBGRA_SP(out.data(), raw.data(), 2, 2), 0u);
  EXPECT_EQ(out, (std::vector<uint8_t>{10, 25, 40, 255, 10, 20, 40, 255, 10, 30, 40, 255, 10, 25, 40, 255}));
}

TEST_F(BilinearSmall, PadOfWidthTwoIsTwoZeroBytesAndOfWidthFourNone) {
  const std::vector<uint8_t> raw(16, 5);
  std::vector<uint8_t> out(16, 9);
  EXPECT_EQ(ByrRG8ToBGR_SP(out.data(), raw.data(), 2, 2, 1), 0u);
  EXPECT_EQ(out, (std::vector<uint8_t>{5, 5, 5, 5, 5, 5, 0, 0, 5, 5, 5, 5, 5, 5, 0, 0}));
  out.assign(48, 9);
  EXPECT_EQ(ByrRG8ToBGR_SP(out.data(), raw.data(), 4, 4, 7), 0u);
  EXPECT_EQ(out, std::vector<uint8_t>(48, 5));
}

TEST_F(BilinearSmall, SamplesAreCutToAByteNotSaturated) {
  std::vector<uint16_t> raw(4 * 4, 1023);
  std::vector<uint8_t> out(4 * 4 * 4);
  EXPECT_EQ(ByrBGNToBGRA_SP(out.data(), raw.data(), 4, 4, 2), 0u);
  EXPECT_EQ(out, std::vector<uint8_t>(64, 255));
  raw[2 * 4 + 2] = 1024;  // blue
  EXPECT_EQ(ByrBGNToBGRA_SP(out.data(), raw.data(), 4, 4, 2), 0u);
  EXPECT_EQ(out[(2 * 4 + 2) * 4], 0);
  std::fill(raw.begin(), raw.end(), uint16_t{4095});
  EXPECT_EQ(ByrGBNToBGRA_SP(out.data(), raw.data(), 4, 4, 4), 0u);
  EXPECT_EQ(out, std::vector<uint8_t>(64, 255));
}

TEST_F(BilinearSmall, AveragesTruncate) {
  std::vector<uint8_t> raw(4 * 4, 0);
  raw[4 + 0] = 1, raw[4 + 2] = 1, raw[1] = 1, raw[2 * 4 + 1] = 2;  // around the red pixel (1, 1)
  raw[3] = 2;                                                      // beside the blue pixel (2, 0)
  std::vector<uint8_t> out(4 * 4 * 3);
  EXPECT_EQ(ByrBG8ToBGR_SP(out.data(), raw.data(), 4, 4, 0), 0u);
  EXPECT_EQ(out[(4 + 1) * 3 + 1], 1);  // (1 + 1 + 1 + 2) / 4
  EXPECT_EQ(out[2 * 3 + 1], 1);        // (1 + 2) / 2
}

using BilinearPool = PoolTest;

TEST_F(BilinearPool, EqualsTheCallerFormForEveryDivision) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads));
    for (const BayerRoutine& routine : BilinearRoutines()) {
      if (routine.on != On::kPool) continue;
      for (const Output output : OutputsOf(routine.bgra)) {
        for (uint32_t height = static_cast<uint32_t>(2 + 2 * threads); height <= 78; height += 4) {
          const BayerFrame frame{14 + height % 6, height, Pattern::kRandom, routine.words ? 16u : 8u,
                                 uint8_t{2}};
          SCOPED_TRACE(Describe(routine, frame, output));
          const ConversionCheck check =
              CheckOf(routine, frame, output, random, [&](const Mosaic& mosaic, Output layout, void* dst) {
                Caller(mosaic, layout, dst);
                return reference::PooledBilinear(mosaic, layout, dst, threads);
              });
          check.Run([&](void* dst, const void* src) {
            return routine.call(dst, src, frame.width, frame.height, frame.shift, output == Output::kPad);
          });
          if (HasFailure()) return;
        }
      }
    }
  }
}

// Every pixel is right, but a work with an empty block never counts as finished.
TEST_F(BilinearPool, ShortFramesAreConvertedAndTimeOut) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  for (const int32_t threads : ThreadCounts()) {
    ASSERT_TRUE(StartPool(threads, kShortTimeout));
    for (const BayerRoutine& routine : BilinearRoutines()) {
      if (routine.on != On::kPool || routine.words != routine.bgra) continue;
      for (uint32_t height = 2; height < static_cast<uint32_t>(2 + 2 * threads); height += 2) {
        const Output output = OutputsOf(routine.bgra).back();
        const BayerFrame frame{10, height, Pattern::kRandom, routine.words ? 12u : 8u, uint8_t{4}};
        SCOPED_TRACE(Describe(routine, frame, output));
        const ConversionCheck check =
            CheckOf(routine, frame, output, random, [](const Mosaic& mosaic, Output layout, void* dst) {
              Caller(mosaic, layout, dst);
              return 18u;
            });
        check.Run([&](void* dst, const void* src) {
          return routine.call(dst, src, frame.width, frame.height, frame.shift, 1);
        });
      }
    }
  }
}

}  // namespace
}  // namespace prismo::test

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "kernel/packed_checks.h"

namespace prismo::test {
namespace {

using reference::Excess;
using reference::Output;
using reference::PackedFrame;

class Mono : public PackedTest {};

TEST_F(Mono, EveryWidthEqualsTheReference) { SweepWidths(MonoRoutines()); }
TEST_F(Mono, LongRunsEqualTheReference) { SweepLongRuns(MonoRoutines()); }
TEST_F(Mono, EveryShiftEqualsTheReference) { SweepShifts(MonoRoutines()); }
TEST_F(Mono, PoolLeavesTheLastRowOfSomeOddHeights) { SweepHeights(MonoRoutines()); }
TEST_F(Mono, FramesOfTooFewRowsTimeOutOnThePool) { CheckShortFrames(MonoRoutines()); }
TEST_F(Mono, RefusalsComeInOrder) { ExpectRefusals(MonoRoutines()); }

TEST_F(Mono, GreyWords) {
  const std::vector<uint8_t> bytes{0, 128, 255};
  uint32_t words[3];
  EXPECT_EQ(Mono8ToBGRA_SP(words, bytes.data(), 3, 1, 0), 0u);
  EXPECT_EQ(words[0], 0xFF000000u);
  EXPECT_EQ(words[1], 0xFF808080u);
  EXPECT_EQ(words[2], 0xFFFFFFFFu);
}

TEST_F(Mono, WordsAreCutToAByteOnTheCaller) {
  const uint16_t words[] = {1023, 0x0400};
  uint32_t out[2];
  EXPECT_EQ(MonoNToBGRA_SP(out, words, 2, 1, 2, 0), 0u);
  EXPECT_EQ(out[0], 0xFFFFFFFFu);
  EXPECT_EQ(out[1], 0xFF000000u);
  const uint16_t word = 0x0FFF;
  uint8_t bgr[3] = {};
  EXPECT_EQ(MonoNToBGR_SP(bgr, &word, 1, 1, 4, 0), 0u);
  EXPECT_EQ(bgr[0], 0xFF);
  EXPECT_EQ(bgr[1], 0xFF);
  EXPECT_EQ(bgr[2], 0xFF);
}

TEST_F(Mono, HighByteOfSixteenBits) {
  const uint16_t word = 0x12AB;
  uint32_t out = 0;
  EXPECT_EQ(ConvMono16ToBGRA(&out, &word, 1, 1), 0u);
  EXPECT_EQ(out, 0xFF121212u);
}

TEST_F(Mono, PadOfWidthFiveIsOneByteAndOfWidthFourNone) {
  const std::vector<uint8_t> src(10, 3);
  std::vector<uint8_t> out(32, 9);
  EXPECT_EQ(Mono8ToBGR_SP(out.data(), src.data(), 5, 2, 1), 0u);
  for (uint32_t i = 0; i < 32; ++i) EXPECT_EQ(out[i], i % 16 == 15 ? 0 : 3);
  out.assign(32, 9);
  EXPECT_EQ(Mono8ToBGR_SP(out.data(), src.data(), 4, 2, 1), 0u);
  for (uint32_t i = 0; i < 32; ++i) EXPECT_EQ(out[i], i < 24 ? 3 : 9);
}

// Beyond the depth of the format the grey table goes on: 0xFF000000 + i * 0x010101.
TEST_F(Mono, WordsBeyondTheDepthOnThePool) {
  ASSERT_TRUE(StartPool(1));
  const uint16_t words[] = {256, 257, 512, 0xFFFF, 0x8000, 255};
  uint32_t out[6];
  EXPECT_EQ(MonoNToBGRA_MP(out, words, 3, 2, 0), 0u);
  for (uint32_t i = 0; i < 6; ++i) EXPECT_EQ(out[i], 0xFF000000u + words[i] * 0x010101u);
  EXPECT_EQ(MonoNToBGRA_MP(out, words, 3, 2, 2), 0u);
  for (uint32_t i = 0; i < 6; ++i) EXPECT_EQ(out[i], 0xFF000000u + (words[i] >> 2) * 0x010101u);
}

TEST_F(Mono, NegativeProductsAreEmptyOnTheCaller) {
  const std::vector<uint8_t> src(64, 3);
  std::vector<uint8_t> dst(64, 9);
  const std::vector<uint8_t> before = dst;
  for (const PackedRoutine& routine : MonoRoutines()) {
    if (routine.on != On::kCaller) continue;
    EXPECT_EQ(routine.call(dst.data(), src.data(), 65536, 32768, 0, 1), 0u) << routine.name;
    EXPECT_EQ(routine.call(dst.data(), src.data(), 0xFFFFFFFFu, 1, 0, 1), 0u) << routine.name;
  }
  EXPECT_EQ(dst, before);
}

TEST_F(Mono, NullPointersDoNotBuildTheTables) {
  uint8_t byte = 0;
  SetLUTReady(0);
  EXPECT_EQ(Mono8ToBGRA_SP(nullptr, &byte, 1, 1, 0), 13u);
  EXPECT_EQ(MonoNToBGRA_MP(&byte, nullptr, 1, 1, 2), 13u);
  EXPECT_EQ(ConvMono10ToBGRA(nullptr, &byte, 1, 1), 13u);
  EXPECT_EQ(GetLUTReady(), 0);
}

TEST_F(Mono, EmptyFramesBuildTheTablesOnTheCallerOnly) {
  uint32_t out[4] = {1, 2, 3, 4};
  const uint16_t src[4] = {};
  const auto builds = [&](auto&& call) {
    SetLUTReady(0);
    EXPECT_EQ(call(), 0u);
    return GetLUTReady() != 0;
  };
  EXPECT_TRUE(builds([&] { return Mono8ToBGRA_SP(out, src, 0, 4, 0); }));
  EXPECT_TRUE(builds([&] { return MonoNToBGRA_SP(out, src, 4, 0, 2, 0); }));
  EXPECT_TRUE(builds([&] { return ConvMono8ToBGRA(out, src, 0, 0); }));
  EXPECT_FALSE(builds([&] { return Mono8ToBGRA_MP(out, src, 0, 4); }));
  EXPECT_FALSE(builds([&] { return MonoNToBGRA_MP(out, src, 4, 0, 2); }));
  EXPECT_FALSE(builds([&] { return Mono8ToBGR_SP(out, src, 0, 4, 0); }));
  EXPECT_TRUE(IsMPMngrNULL());
  EXPECT_EQ(out[0], 1u);
}

TEST_F(Mono, UsersOfTheTablesBuildThem) {
  ASSERT_TRUE(StartPool(1));
  uint32_t out[8];
  const uint16_t src[8] = {};
  const auto builds = [&](auto&& call) {
    SetLUTReady(0);
    EXPECT_EQ(call(), 0u);
    return GetLUTReady() == 1;
  };
  EXPECT_TRUE(builds([&] { return Mono8ToBGRA_SP(out, src, 4, 2, 0); }));
  EXPECT_TRUE(builds([&] { return MonoNToBGRA_SP(out, src, 4, 2, 2, 0); }));
  EXPECT_TRUE(builds([&] { return Mono8ToBGRA_MP(out, src, 4, 2); }));
  EXPECT_TRUE(builds([&] { return MonoNToBGRA_MP(out, src, 4, 2, 2); }));
  EXPECT_TRUE(builds([&] { return ConvMono8ToBGRA(out, src, 4, 2); }));
  EXPECT_TRUE(builds([&] { return ConvMono10ToBGRA(out, src, 4, 2); }));
  EXPECT_TRUE(builds([&] { return ConvMono12ToBGRA(out, src, 4, 2); }));
  EXPECT_TRUE(builds([&] { return ConvMono16ToBGRA(out, src, 4, 2); }));
  EXPECT_TRUE(builds([&] { return ConvMonoNToBGRA(out, src, 4, 2, 3); }));
  EXPECT_FALSE(builds([&] { return Mono8ToBGR_MP(out, src, 4, 2, 0); }));
  EXPECT_FALSE(builds([&] { return MonoNToBGR_SP(out, src, 4, 2, 2, 0); }));
}

TEST_F(Mono, TablesThatWereNeverBuiltLookUpZeros) {
  PRISMO_NEEDS_FRESH_PROCESS();
  ASSERT_TRUE(StartPool(1));
  SetLUTReady(1);
  const std::vector<uint16_t> src(16, 0x0123);
  std::vector<uint8_t> out(64, 9);
  const std::vector<uint8_t> zeros(64, 0);
  const auto converted = [&](auto&& call) {
    out.assign(64, 9);
    EXPECT_EQ(call(), 0u);
    return out;
  };
  EXPECT_EQ(converted([&] { return Mono8ToBGRA_SP(out.data(), src.data(), 4, 4, 0); }), zeros);
  EXPECT_EQ(converted([&] { return MonoNToBGRA_SP(out.data(), src.data(), 4, 4, 2, 0); }), zeros);
  EXPECT_EQ(converted([&] { return Mono8ToBGRA_MP(out.data(), src.data(), 4, 4); }), zeros);
  EXPECT_EQ(converted([&] { return ConvMono16ToBGRA(out.data(), src.data(), 4, 4); }), zeros);
  PrepareLUT();
  EXPECT_EQ(converted([&] { return ConvMono16ToBGRA(out.data(), src.data(), 4, 4); })[0], 1);
  SetLUTReady(0);  // does not clear them
  SetLUTReady(1);
  EXPECT_EQ(converted([&] { return ConvMono16ToBGRA(out.data(), src.data(), 4, 4); })[0], 1);
}

class MonoToMono : public PackedTest {};

TEST_F(MonoToMono, EqualsTheReference) {
  PRISMO_TRACE_SEED();
  struct Depth {
    uint32_t format;
    uint8_t shift;
  };
  for (const Depth& depth : {Depth{PRISMO_MONO10, 2}, Depth{PRISMO_MONO12, 4}, Depth{PRISMO_MONO16, 8}}) {
    for (const bool pad : {false, true}) {
      for (const uint32_t width : Widths()) {
        SCOPED_TRACE(testing::Message()
                     << "width " << width << " shift " << int{depth.shift} << " pad " << pad);
        const uint32_t height = 1 + width % 3;
        ConversionCheck check(MakeSamples(Pattern::kRandom, width, height, 16, random_), 2,
                              reference::PlanePitch(width, pad) * height,
                              {reference::PlanePitch(width, pad), 1}, random_);
        check.Expect([&](void* dst, const void* src) {
          reference::ReduceToMono8({src, width, true, depth.shift}, pad, dst, height);
          return 0u;
        });
        ForEachTarget([&] {
          check.Run([&](void* dst, const void* src) {
            return MonoNToMono8(dst, src, depth.format, static_cast<int32_t>(width),
                                static_cast<int32_t>(height), pad ? 0x80 : 0);
          });
        });
        if (HasFailure()) return;
      }
    }
  }
}

TEST_F(MonoToMono, PadOfWidthFive) {
  const std::vector<uint16_t> src(10, 0x03FF);
  std::vector<uint8_t> out(17, 9);
  EXPECT_EQ(MonoNToMono8(out.data(), src.data(), PRISMO_MONO10, 5, 2, 1), 0u);
  EXPECT_EQ(out,
            (std::vector<uint8_t>{255, 255, 255, 255, 255, 0, 0, 0, 255, 255, 255, 255, 255, 0, 0, 0, 9}));
}

TEST_F(MonoToMono, Refusals) {
  const std::vector<uint16_t> src(10, 0x03FF);
  std::vector<uint8_t> out(16, 9);
  const std::vector<uint8_t> before = out;
  EXPECT_EQ(MonoNToMono8(nullptr, src.data(), PRISMO_MONO10, 5, 2, 1), 13u);
  EXPECT_EQ(MonoNToMono8(out.data(), nullptr, PRISMO_MONO10, 5, 2, 1), 13u);
  for (const uint32_t format : {PRISMO_MONO8, PRISMO_BAYER_GR10, PRISMO_MONO8_PADDED, 0u}) {
    EXPECT_EQ(MonoNToMono8(out.data(), src.data(), format, 5, 2, 1), 13u);
  }
  EXPECT_EQ(MonoNToMono8(out.data(), src.data(), PRISMO_MONO10, 0, 2, 1), 0u);
  EXPECT_EQ(MonoNToMono8(out.data(), src.data(), PRISMO_MONO12, 5, 0, 1), 0u);
  EXPECT_EQ(MonoNToMono8(out.data(), src.data(), PRISMO_MONO16, 5, 0, 0), 0u);
  EXPECT_EQ(out, before);
  SetLUTReady(0);
  EXPECT_EQ(MonoNToMono8(out.data(), src.data(), PRISMO_MONO12, 5, 2, 1), 0u);
  EXPECT_EQ(GetLUTReady(), 0);
  EXPECT_TRUE(IsMPMngrNULL());
}

}  // namespace
}  // namespace prismo::test

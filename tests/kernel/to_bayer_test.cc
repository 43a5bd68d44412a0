// Bayer frames made of colour pictures, on every instruction set.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "PrismoUtl.h"
#include "reference/synthesis.h"
#include "support/conversion_check.h"
#include "support/generators.h"
#include "support/targets.h"

namespace prismo::test {
namespace {

using Function = uint32_t (*)(void*, const void*, const int32_t*, int32_t, uint32_t, int32_t,
                              uint8_t) noexcept;

struct Routine {
  Function function;
  reference::BayerDepths depths;

  size_t SourceBytes() const { return depths.from > 8 ? 2 : 1; }
  size_t OutBytes() const { return depths.to > 8 ? 2 : 1; }
};

constexpr Routine kRoutines[] = {{&ToBayer8to8, {8, 8}},     {&ToBayer8to10, {8, 10}},
                                 {&ToBayer8to12, {8, 12}},   {&ToBayer10to8, {10, 8}},
                                 {&ToBayer10to10, {10, 10}}, {&ToBayer10to12, {10, 12}}};

struct Frame {
  uint32_t width, height, samples_per_pixel;
  bool pad;

  size_t PitchBytes(size_t sample_bytes) const {
    const size_t bytes = size_t{width} * samples_per_pixel * sample_bytes;
    return pad ? (bytes + 3) / 4 * 4 : bytes;
  }
};

// Channels may lie up to `reach` samples beside the picture.
void CheckFrame(const Routine& routine, const Frame& frame, const int32_t (&channels)[4], Random& random,
                size_t reach = 0) {
  SCOPED_TRACE(testing::Message() << routine.depths.from << " to " << routine.depths.to << " bits, "
                                  << frame.width << " x " << frame.height << " x " << frame.samples_per_pixel
                                  << (frame.pad ? " padded" : "") << ", channels " << channels[0] << " "
                                  << channels[1] << " " << channels[2] << " " << channels[3]);
  const size_t sample_bytes = routine.SourceBytes();
  // Words of any value: what does not fit the frame's samples is cut off. No padding follows the last row.
  const size_t before = reach * sample_bytes;
  const size_t picture = frame.PitchBytes(sample_bytes) * (frame.height - 1) +
                         size_t{frame.width} * frame.samples_per_pixel * sample_bytes;
  const size_t out_row = routine.OutBytes() * frame.width;
  ConversionCheck check(RandomBytes(picture + 2 * before, random), sample_bytes, out_row * frame.height,
                        {out_row, routine.OutBytes()}, random);
  check.Expect([&](void* dst, const void* src) {
    reference::MakeBayer(routine.depths, dst, static_cast<const uint8_t*>(src) + before, channels,
                         frame.width, frame.height, frame.samples_per_pixel, frame.pad);
    return UTL_STS_SUCCESS;
  });
  check.Run([&](void* dst, const void* src) {
    return routine.function(dst, static_cast<const uint8_t*>(src) + before, channels,
                            static_cast<int32_t>(frame.width), frame.height,
                            static_cast<int32_t>(frame.samples_per_pixel), frame.pad ? 0x80 : 0);
  });
}

constexpr int32_t kSites[][4] = {{2, 1, 1, 0}, {0, 1, 1, 2}, {1, 0, 2, 1},
                                 {1, 2, 0, 1}, {0, 0, 0, 0}, {2, 0, 1, 2}};

TEST(ToBayer, EveryWidthOnEveryTarget) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  ForEachTarget([&] {
    for (const Routine& routine : kRoutines) {
      for (const uint32_t samples : {3u, 4u}) {
        for (uint32_t width = 2; width <= 146; width += 2) {
          CheckFrame(routine, {width, 2 + width % 3 * 2, samples, width % 4 == 0}, kSites[width / 2 % 6],
                     random);
        }
        CheckFrame(routine, {1236, 4, samples, false}, {3 % static_cast<int32_t>(samples), 1, 2, 0}, random);
        CheckFrame(routine, {2050, 4, samples, true}, {1, 0, 2, 1}, random);
        CheckFrame(routine, {5124, 2, samples, false}, {2, 1, 1, 0}, random);  // at several places by turns
        if (HasFailure()) return;
      }
    }
  });
}

TEST(ToBayer, PixelsOfAnySize) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  ForEachTarget([&] {
    for (const Routine& routine : kRoutines) {
      for (const uint32_t samples : {1u, 2u, 5u, 7u}) {
        for (const uint32_t width : {2u, 6u, 70u}) {
          for (const bool pad : {false, true})
            CheckFrame(routine, {width, 4, samples, pad}, {0, 0, 0, 0}, random);
        }
      }
      if (HasFailure()) return;
    }
  });
}

TEST(ToBayer, ChannelsBesideThePixel) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  ForEachTarget([&] {
    for (const Routine& routine : kRoutines) {
      for (const uint32_t samples : {0u, 1u, 3u, 4u}) {
        CheckFrame(routine, {66, 4, samples, false}, {-1, 5, 3, -7}, random, 8);
        CheckFrame(routine, {66, 4, samples, true}, {0, 1, 2, 4}, random, 8);
        CheckFrame(routine, {66, 4, samples, true}, {0, -1, 2, 1}, random, 8);
      }
      if (HasFailure()) return;
    }
  });
}

TEST(ToBayer, KnownValues) {
  const int32_t channels[4] = {0, 0, 0, 0};
  const uint8_t bytes[4] = {255, 0, 1, 128};
  const uint16_t words[4] = {1023, 3, 4, 0xFFFF};
  uint16_t wide[4];
  uint8_t narrow[4];
  EXPECT_EQ(ToBayer8to12(wide, bytes, channels, 2, 2, 1, 0), UTL_STS_SUCCESS);
  EXPECT_EQ(std::vector<uint16_t>(wide, wide + 4), (std::vector<uint16_t>{4080, 0, 16, 2048}));
  EXPECT_EQ(ToBayer10to8(narrow, words, channels, 2, 2, 1, 0), UTL_STS_SUCCESS);
  EXPECT_EQ(std::vector<uint8_t>(narrow, narrow + 4), (std::vector<uint8_t>{255, 0, 1, 255}));
  EXPECT_EQ(ToBayer10to12(wide, words, channels, 2, 2, 1, 0), UTL_STS_SUCCESS);
  EXPECT_EQ(std::vector<uint16_t>(wide, wide + 4), (std::vector<uint16_t>{4092, 12, 16, 0xFFFC}));
}

// Negative pixel sizes walk backwards.
TEST(ToBayer, NegativePixelSize) {
  const uint8_t bytes[4] = {1, 2, 3, 4};
  const int32_t channels[4] = {0, 0, 0, 0};
  uint8_t dst[4] = {};
  EXPECT_EQ(ToBayer8to8(dst, bytes + 3, channels, 2, 2, -1, 0), UTL_STS_SUCCESS);
  EXPECT_EQ(std::vector<uint8_t>(dst, dst + 4), (std::vector<uint8_t>{4, 3, 2, 1}));
}

TEST(ToBayer, RefusesNullOddAndEmpty) {
  const int32_t channels[4] = {0, 1, 2, 0};
  for (const Routine& routine : kRoutines) {
    uint16_t src[64] = {}, dst[16] = {7, 7};
    const auto run = [&](void* to, const void* from, int32_t width, uint32_t height) {
      return routine.function(to, from, channels, width, height, 3, 0);
    };
    EXPECT_EQ(run(nullptr, src, 2, 2), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(run(dst, nullptr, 2, 2), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(run(dst, src, 3, 2), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(run(dst, src, -3, 2), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(run(dst, src, 2, 5), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(run(dst, src, 0, 2), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(run(dst, src, 2, 0), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(run(dst, src, 65536, 65536), UTL_STS_INVALID_PARAMETER);
    EXPECT_EQ(run(dst, src, -2, 2), UTL_STS_SUCCESS);
    EXPECT_EQ(dst[0], 7);
  }
  EXPECT_EQ(ToBayer(), UTL_STS_INVALID_PARAMETER);
}

}  // namespace
}  // namespace prismo::test

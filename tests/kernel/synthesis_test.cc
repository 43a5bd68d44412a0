#include "reference/synthesis.h"

#include <gtest/gtest.h>

#include <vector>

#include "reference/pictures.h"
#include "support/conversion_check.h"
#include "support/generators.h"
#include "support/pool.h"
#include "support/sweeps.h"
#include "support/targets.h"

namespace prismo::test {
namespace {

struct BayerMaker {
  const char* name;
  reference::BayerDepths depths;
  uint32_t (*call)(void*, const void*, const int32_t*, int32_t, uint32_t, int32_t, uint8_t);
};

const BayerMaker kBayerMakers[] = {
    {"ToBayer8to8", {8, 8}, ToBayer8to8},       {"ToBayer8to10", {8, 10}, ToBayer8to10},
    {"ToBayer8to12", {8, 12}, ToBayer8to12},    {"ToBayer10to8", {10, 8}, ToBayer10to8},
    {"ToBayer10to10", {10, 10}, ToBayer10to10}, {"ToBayer10to12", {10, 12}, ToBayer10to12},
};

class ToBayerTest : public PoolTest {
 protected:
  ToBayerTest() : random_(Seed()) {}

  void Check(const BayerMaker& maker, const int32_t (&channels)[4], uint32_t width, uint32_t height,
             uint32_t samples_per_pixel, bool pad, uint32_t bits) {
    SCOPED_TRACE(testing::Message() << maker.name << ' ' << width << " x " << height << ", "
                                    << samples_per_pixel << " samples, pad " << pad << ", bits " << bits);
    const size_t sample_bytes = maker.depths.from > 8 ? 2 : 1;
    size_t row_bytes = width * samples_per_pixel * sample_bytes;
    if (pad) row_bytes = (row_bytes + 3) / 4 * 4;
    // The last row ends with its pixels: nothing behind them may be read.
    const size_t src_bytes = row_bytes * (height - 1) + width * samples_per_pixel * sample_bytes;
    std::vector<uint8_t> src = MakeSamples(Pattern::kRandom, src_bytes / sample_bytes, 1, bits, random_);
    const size_t out_bytes = maker.depths.to > 8 ? 2 : 1;
    ConversionCheck check(std::move(src), sample_bytes, size_t{width} * height * out_bytes,
                          {width * out_bytes, out_bytes}, random_);
    check.Expect([&](void* dst, const void* s) {
      reference::MakeBayer(maker.depths, dst, s, channels, width, height, samples_per_pixel, pad);
      return 0u;
    });
    ForEachTarget([&] {
      check.Run([&](void* dst, const void* s) {
        return maker.call(dst, s, channels, static_cast<int32_t>(width), height,
                          static_cast<int32_t>(samples_per_pixel), pad ? 0x80 : 0);
      });
    });
  }

  Random random_;
};

TEST_F(ToBayerTest, EqualsTheReference) {
  PRISMO_TRACE_SEED();
  constexpr int32_t kTables[][4] = {{2, 1, 1, 0}, {0, 1, 1, 2}, {1, 0, 2, 1}, {1, 2, 0, 1}};
  uint32_t i = 0;
  for (const BayerMaker& maker : kBayerMakers) {
    for (const uint32_t samples : {3u, 4u}) {
      for (const uint32_t width : Widths(2)) {
        // Words may hold more than their 10 bits.
        const uint32_t bits = maker.depths.from == 8 ? 8 : i % 2 ? 10 : 16;
        Check(maker, kTables[i % 4], width, 2 + 2 * (i % 2), samples, i / 2 % 2, bits);
        if (HasFailure()) return;
        ++i;
      }
    }
  }
}

TEST_F(ToBayerTest, OneSampleAPixelAndAnyChannel) {
  PRISMO_TRACE_SEED();
  for (const BayerMaker& maker : kBayerMakers) {
    const uint32_t bits = maker.depths.from;
    Check(maker, {0, 0, 0, 0}, 6, 4, 1, true, bits);
    Check(maker, {4, 3, 2, 1}, 10, 6, 5, true, bits);
    Check(maker, {5, 0, 0, 5}, 10, 6, 6, false, bits);
  }
}

TEST_F(ToBayerTest, Refusals) {
  std::vector<uint8_t> src(256, 3), dst(256, 9);
  const std::vector<uint8_t> before = dst;
  const int32_t table[4] = {2, 1, 1, 0};
  for (const BayerMaker& maker : kBayerMakers) {
    SCOPED_TRACE(maker.name);
    EXPECT_EQ(maker.call(nullptr, src.data(), table, 4, 4, 3, 0), 13u);
    EXPECT_EQ(maker.call(dst.data(), nullptr, table, 4, 4, 3, 0), 13u);
    EXPECT_EQ(maker.call(dst.data(), src.data(), table, 3, 4, 3, 0), 13u);
    EXPECT_EQ(maker.call(dst.data(), src.data(), table, 4, 5, 3, 0), 13u);
    EXPECT_EQ(maker.call(dst.data(), src.data(), table, 0, 4, 3, 0), 13u);
    EXPECT_EQ(maker.call(dst.data(), src.data(), table, 4, 0, 3, 0), 13u);
    EXPECT_EQ(maker.call(dst.data(), src.data(), table, 65536, 65536, 3, 0), 13u);
  }
  EXPECT_EQ(ToBayer(), 13u);
  EXPECT_EQ(dst, before);
}

TEST_F(ToBayerTest, Samples) {
  const std::vector<uint8_t> bytes(4 * 3, 255);
  const std::vector<uint16_t> words{1023, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3};
  const int32_t table[4] = {0, 0, 0, 0};
  uint16_t out[4];
  EXPECT_EQ(ToBayer8to12(out, bytes.data(), table, 2, 2, 3, 0), 0u);
  EXPECT_EQ(out[0], 4080);
  uint8_t byte[4];
  EXPECT_EQ(ToBayer10to8(byte, words.data(), table, 2, 2, 3, 0), 0u);
  EXPECT_EQ(byte[0], 255);
  EXPECT_EQ(byte[1], 0);
}

constexpr uint32_t kRawTargets[] = {PRISMO_MONO8,  PRISMO_MONO10, PRISMO_MONO12, PRISMO_MONO16, PRISMO_RGB8,
                                    PRISMO_BGR8,   PRISMO_RGB10,  PRISMO_RGB12,  PRISMO_BGR10,  PRISMO_BGR12,
                                    PRISMO_YUV444, PRISMO_YUV422, PRISMO_YUV411};
constexpr uint32_t kBayerTargets[] = {PRISMO_BAYER_GR8,  PRISMO_BAYER_RG8,  PRISMO_BAYER_GB8,
                                      PRISMO_BAYER_BG8,  PRISMO_BAYER_GR10, PRISMO_BAYER_RG10,
                                      PRISMO_BAYER_GB10, PRISMO_BAYER_BG10, PRISMO_BAYER_GR12,
                                      PRISMO_BAYER_RG12, PRISMO_BAYER_GB12, PRISMO_BAYER_BG12};

class ToRawTest : public PoolTest {
 protected:
  ToRawTest() : random_(Seed()) {}

  static uint32_t GroupPixels(uint32_t target) {
    return target == PRISMO_YUV411 ? 4 : target == PRISMO_YUV422 ? 2 : 1;
  }

  Random random_;
};

TEST_F(ToRawTest, EqualsTheReference) {
  PRISMO_TRACE_SEED();
  uint32_t i = 0;
  for (const uint32_t target : kRawTargets) {
    for (const uint32_t pixel_bytes : {3u, 4u}) {
      for (const bool pad : {false, true}) {
        for (const uint32_t width : Widths(GroupPixels(target))) {
          if (width > 40 && width % 3) continue;
          const uint32_t height = 1 + i++ % 3;
          SCOPED_TRACE(testing::Message() << std::hex << target << std::dec << ' ' << width << " x " << height
                                          << ", " << pixel_bytes << " bytes, pad " << pad);
          const size_t pitch = width * pixel_bytes + (pad ? reference::PadBytes(width * pixel_bytes) : 0);
          const size_t src_bytes = pitch * (height - 1) + width * pixel_bytes;
          const size_t dst_bytes = reference::RawBytes(target, width, height);
          ConversionCheck check(RandomBytes(src_bytes, random_), 1, dst_bytes, {dst_bytes / height, 1},
                                random_);
          check.Expect([&](void* dst, const void* src) {
            return reference::MakeRaw(target, dst, src, pixel_bytes, width, height, pad) ? 0u : 13u;
          });
          const uint32_t source = pixel_bytes == 3 ? PRISMO_BGR8 : PRISMO_BGRA8;
          ForEachTarget([&] {
            check.Run([&](void* dst, const void* src) {
              return ToRaw(dst, src, target, source, width, height, pad ? 8 : 0);
            });
          });
          if (HasFailure()) return;
        }
      }
    }
  }
}

// Every colour, to the targets whose values depend on rounding in double precision.
TEST_F(ToRawTest, EveryColourEqualsTheFormulas) {
  constexpr uint32_t kStep = kSanitized ? 41 : 1;
  constexpr uint32_t kPixels = 65536;
  std::vector<uint8_t> src(kPixels * 3), expected(kPixels * 3), actual(kPixels * 3);
  for (uint32_t blue = 0; blue < 256; blue += kStep) {
    for (uint32_t i = 0; i < kPixels; ++i) {
      src[3 * i] = static_cast<uint8_t>(blue);
      src[3 * i + 1] = static_cast<uint8_t>(i);
      src[3 * i + 2] = static_cast<uint8_t>(i >> 8);
    }
    for (const uint32_t target : {PRISMO_MONO8, PRISMO_MONO16, PRISMO_YUV444}) {
      const size_t bytes = reference::RawBytes(target, 256, 256);
      expected.assign(bytes, 1);
      reference::MakeRaw(target, expected.data(), src.data(), 3, 256, 256, false);
      const ScopedTarget restore;
      for (const simd::Target simd_target : simd::SupportedTargets()) {
        simd::SetTarget(simd_target);
        actual.assign(bytes, 1);
        ASSERT_EQ(ToRaw(actual.data(), src.data(), target, PRISMO_BGR8, 256, 256, 0), 0u);
        ASSERT_TRUE(SameBytes(expected, actual, {bytes / 256, bytes / kPixels}))
            << std::hex << target << ", blue " << blue << ", x is green, y is red";
      }
    }
  }
}

// The chroma of two and of four pixels comes from sums, not from sums of chroma.
TEST_F(ToRawTest, ChromaOfGroups) {
  PRISMO_TRACE_SEED();
  constexpr uint32_t kWidth = 1024, kHeight = kSanitized ? 16 : 256;
  const std::vector<uint8_t> src = RandomBytes(size_t{3} * kWidth * kHeight, random_);
  for (const uint32_t target : {PRISMO_YUV422, PRISMO_YUV411}) {
    std::vector<uint8_t> expected(reference::RawBytes(target, kWidth, kHeight)), actual(expected.size());
    reference::MakeRaw(target, expected.data(), src.data(), 3, kWidth, kHeight, false);
    EXPECT_EQ(ToRaw(actual.data(), src.data(), target, PRISMO_BGR8, kWidth, kHeight, 0), 0u);
    EXPECT_TRUE(SameBytes(expected, actual, {expected.size() / kHeight, 1}));
  }
}

TEST_F(ToRawTest, Samples) {
  const std::vector<uint8_t> white{255, 255, 255}, blue{255, 0, 0}, grey{23, 23, 23};
  uint8_t byte = 0;
  uint16_t word = 0;
  EXPECT_EQ(ToRaw(&byte, white.data(), PRISMO_MONO8, PRISMO_BGR8, 1, 1, 0), 0u);
  EXPECT_EQ(byte, 255);
  EXPECT_EQ(ToRaw(&word, white.data(), PRISMO_MONO16, PRISMO_BGR8, 1, 1, 0), 0u);
  EXPECT_EQ(word, 65280);
  EXPECT_EQ(ToRaw(&word, white.data(), PRISMO_MONO10, PRISMO_BGR8, 1, 1, 0), 0u);
  EXPECT_EQ(word, 1020);
  EXPECT_EQ(ToRaw(&byte, grey.data(), PRISMO_MONO8, PRISMO_BGR8, 1, 1, 0), 0u);
  EXPECT_EQ(byte, 22);
  std::vector<uint8_t> yuv(3);
  EXPECT_EQ(ToRaw(yuv.data(), blue.data(), PRISMO_YUV444, PRISMO_BGR8, 1, 1, 0), 0u);
  EXPECT_EQ(yuv, (std::vector<uint8_t>{255, 29, 107}));
}

TEST_F(ToRawTest, RefusalsComeInOrder) {
  std::vector<uint8_t> src(256, 3), dst(256, 9);
  const std::vector<uint8_t> before = dst;
  const auto status = [&](uint32_t target, uint32_t source, uint32_t width, uint32_t height) {
    return ToRaw(dst.data(), src.data(), target, source, width, height, 1);
  };
  std::vector<uint32_t> targets(std::begin(kRawTargets), std::end(kRawTargets));
  targets.insert(targets.end(), std::begin(kBayerTargets), std::end(kBayerTargets));
  for (const uint32_t target : targets) {
    SCOPED_TRACE(testing::Message() << std::hex << target);
    EXPECT_EQ(ToRaw(nullptr, src.data(), target, PRISMO_BGR8, 4, 4, 0), 13u);
    EXPECT_EQ(ToRaw(dst.data(), nullptr, target, PRISMO_BGR8, 4, 4, 0), 13u);
    EXPECT_EQ(status(target, PRISMO_BGR8, 0, 4), 13u);
    EXPECT_EQ(status(target, PRISMO_BGR8, 4, 0), 13u);
    EXPECT_EQ(status(target, PRISMO_BGR8, 65536, 65536), 13u);
    for (const uint32_t source : {PRISMO_RGB8, PRISMO_BGR8_PADDED, PRISMO_MONO8, 0u}) {
      EXPECT_EQ(status(target, source, 4, 4), 13u);
    }
  }
  for (const uint32_t target : kBayerTargets) EXPECT_EQ(status(target, PRISMO_BGRA8, 3, 3), 0u);
  for (const uint32_t target : {PRISMO_BGRA8, PRISMO_BGRA10, PRISMO_BGR8_PADDED, PRISMO_MONO8_PADDED, 0u}) {
    EXPECT_EQ(status(target, PRISMO_BGR8, 4, 4), 13u);
  }
  EXPECT_EQ(status(PRISMO_YUV422, PRISMO_BGR8, 3, 4), 13u);
  EXPECT_EQ(status(PRISMO_YUV411, PRISMO_BGR8, 6, 4), 13u);
  EXPECT_EQ(status(PRISMO_YUV411, PRISMO_BGRA8, 2, 2), 13u);
  EXPECT_EQ(dst, before);
  EXPECT_TRUE(IsMPMngrNULL());
}

}  // namespace
}  // namespace prismo::test

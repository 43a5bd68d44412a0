// Camera frames made of colour pictures, on every instruction set.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

#include "PrismoUtl.h"
#include "reference/synthesis.h"
#include "support/compare.h"
#include "support/conversion_check.h"
#include "support/generators.h"
#include "support/targets.h"

namespace prismo::test {
namespace {

constexpr uint32_t kBgr = 0x02180015, kBgra = 0x02200017;
constexpr uint32_t kMono8 = 0x01080001, kMono10 = 0x01100003, kMono12 = 0x01100005, kMono16 = 0x01100007;
constexpr uint32_t kRgb12 = 0x0230001A;
constexpr uint32_t kYuv444 = 0x02180020, kYuv422 = 0x0210001F, kYuv411 = 0x020C001E;
constexpr uint32_t kTargets[] = {kMono8, kMono10,    kMono12,    kMono16, 0x02180014, 0x02180015, 0x02300018,
                                 kRgb12, 0x02300019, 0x0230001B, kYuv444, kYuv422,    kYuv411};

uint32_t GroupPixels(uint32_t target) { return target == kYuv422 ? 2 : target == kYuv411 ? 4 : 1; }

void CheckFrame(uint32_t target, uint32_t source, uint32_t width, uint32_t height, bool pad, Pattern pattern,
                Random& random) {
  SCOPED_TRACE(testing::Message() << std::hex << source << " to " << target << std::dec << ", " << width
                                  << " x " << height << (pad ? " padded, " : ", ") << NameOf(pattern));
  const uint32_t pixel_bytes = source == kBgra ? 4 : 3;
  const size_t row = size_t{width} * pixel_bytes, pitch = pad ? (row + 3) / 4 * 4 : row;
  std::vector<uint8_t> picture = MakeSamples(pattern, pitch, height, 8, random);
  picture.resize(pitch * (height - 1) + row);  // nothing is read behind the last pixel
  const size_t out_bytes = reference::RawBytes(target, width, height);
  ConversionCheck check(picture, 1, out_bytes, {out_bytes / height, 1}, random);
  check.Expect([&](void* dst, const void* src) {
    reference::MakeRaw(target, dst, src, pixel_bytes, width, height, pad);
    return UTL_STS_SUCCESS;
  });
  check.Run([&](void* dst, const void* src) {
    return ToRaw(dst, src, target, source, width, height, pad ? 0x10 : 0);
  });
}

TEST(ToRaw, EveryWidthOnEveryTarget) {
  PRISMO_TRACE_SEED();
  Random random(Seed());
  ForEachTarget([&] {
    for (const uint32_t target : kTargets) {
      for (const uint32_t source : {kBgr, kBgra}) {
        size_t i = 0;
        for (uint32_t width = GroupPixels(target); width <= 150; width += GroupPixels(target), ++i) {
          CheckFrame(target, source, width, static_cast<uint32_t>(1 + i % 3), i % 2 == 0,
                     kPatterns[i % std::size(kPatterns)], random);
        }
        CheckFrame(target, source, 1236, 3, true, Pattern::kRandom, random);
        CheckFrame(target, source, 1028, 3, false, Pattern::kFine, random);
        CheckFrame(target, source, 2048, 9, false, Pattern::kFine, random);  // at several places by turns
        // Long runs, whose blocks may be larger, end anywhere in one.
        for (const uint32_t rest : {0, 4, 60, 64, 68, 124, 128, 132, 188, 252, 256, 260}) {
          const uint32_t width = 4096 + rest + GroupPixels(target) % 4;
          CheckFrame(target, source, width, 1, false, kPatterns[i++ % std::size(kPatterns)], random);
        }
        CheckFrame(target, source, 4100 + GroupPixels(target) % 4, 2, true, Pattern::kRandom, random);
        if (target == kRgb12) CheckFrame(target, source, 2048, 65, false, Pattern::kRandom, random);
        if (HasFailure()) return;
      }
    }
  });
}

struct Pixel {
  uint8_t b, g, r;
};

// What doubles give, from left to right.
double Luma(const Pixel& p) { return 0.114 * p.b + 0.587 * p.g + 0.299 * p.r; }

uint32_t Limited(double value, uint32_t maximum) {
  return value > maximum ? maximum : static_cast<uint32_t>(value);
}

uint8_t U(const Pixel& p) {
  return static_cast<uint8_t>(Limited(0.5 * p.b - 0.331 * p.g - 0.169 * p.r + 128, 255));
}
uint8_t V(const Pixel& p) {
  return static_cast<uint8_t>(Limited(0.5 * p.r - 0.419 * p.g - 0.081 * p.b + 128, 255));
}

// Frames of pictures whose pixels come one after the other, for all targets.
class Frames {
 public:
  void Add(const Pixel& p) {
    bgr_.insert(bgr_.end(), {p.b, p.g, p.r});
    const double y = Luma(p);
    mono8_.push_back(static_cast<uint8_t>(Limited(y, 255)));
    const uint32_t deep[3] = {Limited(y * 4, 1023), Limited(y * 16, 4095), Limited(y * 256, 65535)};
    for (size_t i = 0; i < 3; ++i) {
      mono_n_[i].push_back(static_cast<uint8_t>(deep[i]));
      mono_n_[i].push_back(static_cast<uint8_t>(deep[i] >> 8));
    }
    yuv444_.insert(yuv444_.end(), {U(p), mono8_.back(), V(p)});
  }

  void Check() const {
    ForEachTarget([&] {
      CheckOne(kMono8, mono8_);
      CheckOne(kMono10, mono_n_[0]);
      CheckOne(kMono12, mono_n_[1]);
      CheckOne(kMono16, mono_n_[2]);
      CheckOne(kYuv444, yuv444_);
    });
  }

 private:
  void CheckOne(uint32_t target, const std::vector<uint8_t>& expected) const {
    std::vector<uint8_t> actual(expected.size());
    EXPECT_EQ(ToRaw(actual.data(), bgr_.data(), target, kBgr, static_cast<uint32_t>(bgr_.size() / 3), 1, 0),
              0u);
    EXPECT_TRUE(SameBytes(expected, actual)) << std::hex << target;
  }

  std::vector<uint8_t> bgr_, mono8_, mono_n_[3], yuv444_;
};

class EveryColour : public testing::TestWithParam<uint32_t> {};

TEST_P(EveryColour, GivesWhatDoublesGive) {
  for (uint32_t blue = GetParam(); blue < 256; blue += 16) {
    Frames frames;
    for (uint32_t green = 0; green < 256; ++green) {
      for (uint32_t red = 0; red < 256; ++red) {
        frames.Add({static_cast<uint8_t>(blue), static_cast<uint8_t>(green), static_cast<uint8_t>(red)});
      }
    }
    frames.Check();
    if (HasFailure()) return;
  }
}

INSTANTIATE_TEST_SUITE_P(ToRaw, EveryColour, testing::Range(0u, 16u));

// Greys come alone, so that all of a vector's lumas are integers.
TEST(ToRaw, GreysGiveWhatDoublesGive) {
  Frames frames;
  for (uint32_t i = 0; i < 16 * 256; ++i) {
    const auto v = static_cast<uint8_t>(i / 7);
    frames.Add({v, v, v});
  }
  frames.Check();
}

using Sums = std::array<int, 3>;  // blue, green, red

// All sums of groups of `pixels` pixels whose exact chroma U or V may be an integer: with these differences
// between the two channels that are not in even thousandths.
std::vector<Sums> CriticalSums(int pixels, bool u) {
  std::vector<Sums> all;
  const int maximum = 255 * pixels;
  for (int green = 0; green <= maximum; ++green) {
    for (int other = green % 500; other <= maximum; other += 500) {
      for (int third = 0; third <= maximum; ++third) {
        all.push_back(u ? Sums{third, green, other} : Sums{other, green, third});
      }
    }
  }
  return all;
}

void CheckChroma(uint32_t target, int pixels, const std::vector<Sums>& all) {
  std::vector<uint8_t> bgr;
  std::vector<uint8_t> expected;
  for (const Sums& sums : all) {
    Sums left = sums;
    for (int i = 0; i < pixels; ++i) {
      for (int& channel : left) {
        const int part = std::min(channel, 255);
        channel -= part;
        bgr.push_back(static_cast<uint8_t>(part));
      }
    }
    const int b = sums[0], g = sums[1], r = sums[2];
    const double u =
        pixels == 2 ? 0.25 * b - 0.1655 * g - 0.0845 * r + 128 : 0.125 * b - 0.08275 * g - 0.04225 * r + 128;
    const double v =
        pixels == 2 ? 0.25 * r - 0.2095 * g - 0.0405 * b + 128 : 0.125 * r - 0.10475 * g - 0.02025 * b + 128;
    expected.push_back(static_cast<uint8_t>(Limited(u, 255)));
    expected.push_back(static_cast<uint8_t>(Limited(v, 255)));
  }
  const size_t group_bytes = pixels == 2 ? 4 : 6, v_at = pixels == 2 ? 2 : 3;
  ForEachTarget([&] {
    std::vector<uint8_t> frame(all.size() * group_bytes);
    const auto width = static_cast<uint32_t>(all.size()) * static_cast<uint32_t>(pixels);
    ASSERT_EQ(ToRaw(frame.data(), bgr.data(), target, kBgr, width, 1, 0), 0u);
    size_t wrong = 0;
    for (size_t i = 0; i < all.size(); ++i) {
      wrong +=
          frame[i * group_bytes] != expected[2 * i] || frame[i * group_bytes + v_at] != expected[2 * i + 1];
    }
    EXPECT_EQ(wrong, 0u) << "of " << all.size() << " groups";
  });
}

TEST(ToRaw, ChromaOfPairsGivesWhatDoublesGive) {
  CheckChroma(kYuv422, 2, CriticalSums(2, true));
  CheckChroma(kYuv422, 2, CriticalSums(2, false));
}

TEST(ToRaw, ChromaOfFourGivesWhatDoublesGive) {
  CheckChroma(kYuv411, 4, CriticalSums(4, true));
  CheckChroma(kYuv411, 4, CriticalSums(4, false));
}

TEST(ToRaw, KnownValues) {
  const uint8_t white[3] = {255, 255, 255}, blue[3] = {255, 0, 0}, grey[3] = {23, 23, 23};
  uint8_t byte = 0, yuv[3] = {};
  uint16_t word = 0;
  EXPECT_EQ(ToRaw(&byte, white, kMono8, kBgr, 1, 1, 0), 0u);
  EXPECT_EQ(byte, 255);
  EXPECT_EQ(ToRaw(&word, white, kMono16, kBgr, 1, 1, 0), 0u);
  EXPECT_EQ(word, 65280);
  EXPECT_EQ(ToRaw(&word, white, kMono10, kBgr, 1, 1, 0), 0u);
  EXPECT_EQ(word, 1020);
  EXPECT_EQ(ToRaw(yuv, blue, kYuv444, kBgr, 1, 1, 0), 0u);
  EXPECT_EQ((std::vector<uint8_t>{yuv[0], yuv[1], yuv[2]}), (std::vector<uint8_t>{255, 29, 107}));
  EXPECT_EQ(ToRaw(&byte, grey, kMono8, kBgr, 1, 1, 0), 0u);
  EXPECT_EQ(byte, 22);  // the sum of the rounded products lies just below 23
}

TEST(ToRaw, ChecksInOrder) {
  const uint8_t src[64] = {};
  uint8_t dst[64] = {7};
  const auto run = [&](void* to, const void* from, uint32_t target, uint32_t source, uint32_t width,
                       uint32_t height) { return ToRaw(to, from, target, source, width, height, 1); };
  constexpr uint32_t kBayer = 0x01080009;
  EXPECT_EQ(run(nullptr, src, kBayer, kBgr, 2, 2), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(run(dst, nullptr, kBayer, kBgr, 2, 2), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(run(dst, src, kBayer, kBgr, 0, 2), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(run(dst, src, kBayer, kBgr, 2, 0), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(run(dst, src, kBayer, kBgr, 65536, 65536), UTL_STS_INVALID_PARAMETER);
  for (const uint32_t source : {0x02180014u, 0x021800FFu, 0x02300019u, kMono8, 0u}) {
    EXPECT_EQ(run(dst, src, kBayer, source, 2, 2), UTL_STS_INVALID_PARAMETER);
  }
  for (const uint32_t bayer :
       {0x01080008u, 0x01080009u, 0x0108000Au, 0x0108000Bu, 0x0110000Cu, 0x0110000Du, 0x0110000Eu,
        0x0110000Fu, 0x01100010u, 0x01100011u, 0x01100012u, 0x01100013u}) {
    EXPECT_EQ(run(dst, src, bayer, kBgr, 3, 1), UTL_STS_SUCCESS);
    EXPECT_EQ(run(dst, src, bayer, kBgra, 3, 1), UTL_STS_SUCCESS);
  }
  for (const uint32_t target : {0x02200017u, 0x0240004Cu, 0x021800FFu, 0x010800FFu, 0u, 0x01080002u}) {
    EXPECT_EQ(run(dst, src, target, kBgr, 2, 2), UTL_STS_INVALID_PARAMETER) << std::hex << target;
  }
  EXPECT_EQ(run(dst, src, kYuv422, kBgr, 3, 2), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(run(dst, src, kYuv411, kBgr, 2, 4), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(run(dst, src, kYuv411, kBgr, 6, 2), UTL_STS_INVALID_PARAMETER);
  EXPECT_EQ(dst[0], 7);
}

}  // namespace
}  // namespace prismo::test

// The C++ layer gives what the C functions give.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "cpp/buffers.h"
#include "support/pool.h"

namespace prismo::test {
namespace {

using namespace prismoutl;
using Picture8 = std::vector<uint8_t>;

class CppConvert : public PoolTest {
 protected:
  Random random_{Seed()};
};

uint32_t OutputType(Layout layout) { return layout == Layout::kBgra ? 0 : layout == Layout::kBgr ? 1 : 2; }

TEST_F(CppConvert, EveryFormatAndLayoutAsTheCFunction) {
  constexpr uint32_t kWidth = 36, kHeight = 50;
  for (const auto& info : detail::kFormats) {
    const Format format{info.code};
    if (format == kBgra8 || format == kBgra10) continue;
    const auto frame = RandomFrame(format, kWidth, kHeight, random_);
    for (const Layout layout : {Layout::kBgra, Layout::kBgr, Layout::kBgrPadded}) {
      for (const Demosaic demosaic : {Demosaic::kBilinear, Demosaic::kAdaptive, Demosaic::kNone}) {
        if (demosaic == Demosaic::kAdaptive && format.Depth() != 8) continue;
        Picture8 expected = PictureOf(layout, kWidth, kHeight);
        const uint32_t method = demosaic == Demosaic::kAdaptive ? 1 : demosaic == Demosaic::kNone ? 8 : 0;
        ASSERT_EQ(ConvImageEx(OutputType(layout), format.code, expected.data(), frame.data(), kWidth, kHeight,
                              method, 0),
                  0u);
        for (const Threads threads : {Threads::kAuto, Threads::kCaller, Threads::kPool}) {
          Picture8 picture = PictureOf(layout, kWidth, kHeight);
          const Result result = Convert({format, kWidth, kHeight, frame}, layout, picture, demosaic, threads);
          ASSERT_TRUE(result) << format.Name() << ": " << result.Message();
          EXPECT_EQ(picture, expected) << format.Name();
        }
      }
    }
  }
}

TEST_F(CppConvert, BgraFramesToEveryLayout) {
  const auto frame = RandomFrame(kBgra8, 5, 3, random_);
  Picture8 bgra = PictureOf(Layout::kBgra, 5, 3), bgr = PictureOf(Layout::kBgr, 5, 3),
           padded = PictureOf(Layout::kBgrPadded, 5, 3);
  Convert({kBgra8, 5, 3, frame}, Layout::kBgra, bgra).OrThrow();
  Convert({kBgra8, 5, 3, frame}, Layout::kBgr, bgr).OrThrow();
  Convert({kBgra8, 5, 3, frame}, Layout::kBgrPadded, padded).OrThrow();
  for (size_t i = 0; i < 15; ++i) {
    EXPECT_EQ(std::memcmp(&bgra[4 * i], &frame[4 * i], 3), 0);
    EXPECT_EQ(std::memcmp(&bgr[3 * i], &frame[4 * i], 3), 0);
    EXPECT_EQ(std::memcmp(&padded[16 * (i / 5) + 3 * (i % 5)], &frame[4 * i], 3), 0);
  }
  EXPECT_EQ(padded[15], 0);
}

// On a pool of many threads such frames would wait for a time-out.
TEST_F(CppConvert, SmallAndOddFramesRunOnTheCallersThread) {
  SetMPCount(16);
  SetMPTimeout_msec(0xFFFFFFFF);
  for (const uint32_t height : {1u, 2u, 3u, 8u, 31u, 38u, 41u}) {
    const Format format = height % 2 ? kMono12 : kBayerGR12;
    const auto frame = RandomFrame(format, 8, height, random_);
    Picture8 picture = PictureOf(Layout::kBgr, 8, height), expected = picture;
    ASSERT_TRUE(Convert({format, 8, height, frame}, Layout::kBgr, picture));
    ASSERT_EQ(ConvImageEx(1, format.code, expected.data(), frame.data(), 8, height, 0, 0), 0u);
    EXPECT_EQ(picture, expected);
    EXPECT_EQ(Convert({format, 8, height, frame}, Layout::kBgr, picture, {}, Threads::kPool),
              Errc::kUnsafeOnPool);
  }
}

TEST_F(CppConvert, PooledYuvFindsItsTables) {
  SetLUTReady(0);
  const auto frame = RandomFrame(kYuv422, 8, 40, random_);
  Picture8 pooled = PictureOf(Layout::kBgr, 8, 40), called = pooled;
  ASSERT_TRUE(Convert({kYuv422, 8, 40, frame}, Layout::kBgr, pooled, {}, Threads::kPool));
  ASSERT_TRUE(Convert({kYuv422, 8, 40, frame}, Layout::kBgr, called, {}, Threads::kCaller));
  EXPECT_EQ(pooled, called);
}

TEST_F(CppConvert, GreyReducesDepthAndDropsPadding) {
  const std::vector<uint16_t> words{0x0FFF, 0x0010, 0x000F, 0x0100};
  std::vector<uint8_t> grey(4);
  ASSERT_TRUE(Convert({kBayerRG12, 2, 2, words}, Layout::kGrey, grey));
  EXPECT_EQ(grey, (std::vector<uint8_t>{0xFF, 0x01, 0x00, 0x10}));

  const std::vector<uint8_t> padded{1, 2, 3, 0, 4, 5, 6, 0};
  std::vector<uint8_t> packed(6);
  ASSERT_TRUE(Convert({kMono8Padded, 3, 2, padded}, Layout::kGrey, packed));
  EXPECT_EQ(packed, (std::vector<uint8_t>{1, 2, 3, 4, 5, 6}));
}

TEST_F(CppConvert, TypedConversionsTakeTheirOwnTypes) {
  const std::vector<uint16_t> words(8 * 8, 0x0800);
  std::vector<Bgra> bgra(8 * 8);
  ASSERT_TRUE((ConvertTyped<kBayerRG12, Layout::kBgra>(words, bgra, 8, 8)));
  EXPECT_EQ(bgra[9].green, 0x80);
  EXPECT_EQ(bgra[9].alpha, 255);

  std::vector<Bgr> too_few(63);
  EXPECT_EQ((ConvertTyped<kBayerRG12, Layout::kBgr>(words, too_few, 8, 8)), Errc::kDestinationTooSmall);
}

TEST_F(CppConvert, Planes) {
  const auto frame = RandomFrame(kBayerGB8, 16, 44, random_);
  std::vector<std::vector<uint8_t>> planes(3, std::vector<uint8_t>(16 * 44)), expected = planes;
  ASSERT_TRUE(ConvertToPlanes({kBayerGB8, 16, 44, frame}, planes[0], planes[1], planes[2]));
  ConvImagePlanarEx(PRISMO_BAYER_GB8, expected[0].data(), expected[1].data(), expected[2].data(),
                    frame.data(), 16, 44, 0, 0);
  EXPECT_EQ(planes, expected);
  // One buffer for all three, cut where each plane begins.
  std::vector<uint8_t> all(3 * 16 * 44);
  const std::span<uint8_t> cut(all);
  ASSERT_TRUE(
      ConvertToPlanes({kBayerGB8, 16, 44, frame}, cut, cut.subspan(16 * 44), cut.subspan(2 * 16 * 44)));
  EXPECT_TRUE(std::ranges::equal(cut.subspan(16 * 44, 16 * 44), planes[1]));
  EXPECT_EQ(ConvertToPlanes({kBayerGB8, 16, 44, frame}, planes[0], planes[1], planes[0]),
            Errc::kBuffersOverlap);
  EXPECT_EQ(ConvertToPlanes({kMono8, 16, 44, frame}, planes[0], planes[1], planes[2]), Errc::kNoConversion);
}

TEST_F(CppConvert, Rectangles) {
  const auto frame = RandomFrame(kBayerBG8, 64, 64, random_);
  std::vector<uint8_t> whole(64 * 64 * 3), part(20 * 10 * 3);
  const Frame view{kBayerBG8, 64, 64, frame};
  Convert(view, Layout::kBgr, whole, Demosaic::kAdaptive).OrThrow();
  ASSERT_TRUE(ConvertRectangle(view, {6, 8, 20, 10}, Layout::kBgr, part));
  for (size_t y = 1; y < 9; ++y)  // the outermost pixels differ
    EXPECT_EQ(std::memcmp(&part[y * 60 + 3], &whole[((y + 8) * 64 + 7) * 3], 54), 0) << y;
  EXPECT_EQ(ConvertRectangle(view, {1, 8, 20, 10}, Layout::kBgr, part), Errc::kRectangleOutside);
  EXPECT_EQ(ConvertRectangle(view, {44, 8, 20, 10}, Layout::kBgr, part), Errc::kRectangleOutside);
  EXPECT_EQ(ConvertRectangle(view, {4, 8, 19, 10}, Layout::kBgr, part), Errc::kRectangleOutside);
  EXPECT_EQ(ConvertRectangle(view, {4, 8, 20, 12}, Layout::kBgr, part), Errc::kDestinationTooSmall);
}

// The colours of a frame that is mirrored, then demosaiced, are those of the picture that is mirrored.
TEST_F(CppConvert, MirroredFramesHaveAMirroredPhase) {
  const auto frame = RandomFrame(kBayerRG8, 16, 16, random_);
  std::vector<uint8_t> mirrored(16 * 16), picture(16 * 16 * 3), expected(16 * 16 * 3),
      from_mirrored(16 * 16 * 3);
  Convert({kBayerRG8, 16, 16, frame}, Layout::kBgr, picture).OrThrow();
  for (const Directions directions :
       {Directions{true, false}, Directions{false, true}, Directions{true, true}}) {
    Mirror({kBayerRG8, 16, 16, frame}, directions, mirrored).OrThrow();
    Mirror({kBgr8, 16, 16, picture}, directions, expected).OrThrow();
    const Format format = MirroredFormat(kBayerRG8, directions);
    Convert({format, 16, 16, mirrored}, Layout::kBgr, from_mirrored).OrThrow();
    EXPECT_EQ(from_mirrored, expected) << format.Name();
  }
  EXPECT_EQ(MirroredFormat(kBayerGB12, {true, false}), kBayerBG12);
  EXPECT_EQ(MirroredFormat(kBayerGB10, {false, true}), kBayerRG10);
  EXPECT_EQ(MirroredFormat(kMono8, {true, true}), kMono8);
  EXPECT_EQ(Mirror({kMono8Padded, 16, 16, frame}, {true, false}, mirrored), Errc::kNoConversion);
}

// A mosaic of one colour, demosaiced, is that colour again.
TEST_F(CppConvert, MadeFramesShowTheirPicture) {
  const std::vector<Bgr> picture(8 * 8, Bgr{200, 100, 48});
  for (const auto& info : detail::kFormats) {
    const Format format{info.code};
    std::vector<uint8_t> frame(FrameBytes(format, 8, 8));
    const Result made = MakeFrame({Layout::kBgr, 8, 8, picture}, format, frame);
    if (format.HasPaddedRows() || format == kBgra8 || format == kBgra10) {
      EXPECT_EQ(made, Errc::kNoConversion) << format.Name();
      continue;
    }
    ASSERT_TRUE(made) << format.Name();
    if (!format.IsBayer()) continue;
    std::vector<Bgr> shown(8 * 8);
    Convert({format, 8, 8, frame}, Layout::kBgr, shown).OrThrow();
    for (const Bgr& pixel : shown) {
      ASSERT_EQ(pixel.blue, 200) << format.Name();
      ASSERT_EQ(pixel.green, 100) << format.Name();
      ASSERT_EQ(pixel.red, 48) << format.Name();
    }
  }
}

}  // namespace
}  // namespace prismo::test

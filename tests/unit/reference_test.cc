// The references themselves, on small frames worked out by hand.
#include <gtest/gtest.h>

#include <vector>

#include "reference/bayer.h"
#include "reference/colour.h"
#include "reference/mirror.h"
#include "reference/row_split.h"
#include "reference/synthesis.h"
#include "reference/yuv.h"

namespace prismo::reference {

static void PrintTo(const Pixel& p, std::ostream* out) {
  *out << int{p.b} << ' ' << int{p.g} << ' ' << int{p.r};
}

namespace {

using Bytes = std::vector<uint8_t>;
using Words = std::vector<uint16_t>;

std::vector<int32_t> Counts(const RowSplit& split) {
  std::vector<int32_t> counts;
  for (const Rows& rows : split.blocks) counts.push_back(rows.count);
  return counts;
}

TEST(ReferenceRowSplit, EqualBlocksPutTheRemainderInTheFirst) {
  EXPECT_EQ(Counts(SplitRows(0, 10, 2, 0, 3)), (std::vector<int32_t>{5, 3, 3}));
  EXPECT_EQ(Counts(SplitRows(0, 0, 1, 0)), (std::vector<int32_t>{1}));
  EXPECT_FALSE(SplitRows(0, 3, 1, 0, 5).finishes);
  EXPECT_FALSE(SplitRows(0, 3, 1, 3).finishes);
}

TEST(ReferenceRowSplit, ShrinkingBlocks) {
  const RowSplit split = SplitRows(0, 999, 4, 1);
  EXPECT_EQ(Counts(split), (std::vector<int32_t>{157, 157, 157, 157, 62, 62, 62, 62, 31, 31, 31, 31}));
  EXPECT_TRUE(split.finishes);
  EXPECT_EQ(split.blocks[1].first, 157);
  EXPECT_EQ(split.Covered().count, 1000);
}

TEST(ReferenceRowSplit, EvenBlocksLeaveAnOddLastRow) {
  const RowSplit split = SplitRows(0, 1000, 4, 2);
  EXPECT_EQ(Counts(split), (std::vector<int32_t>{158, 158, 158, 158, 62, 62, 62, 62, 30, 30, 30, 30}));
  EXPECT_TRUE(split.finishes);
  EXPECT_EQ(split.Covered().count, 1000);
}

TEST(ReferenceRowSplit, AnEmptyBlockNeverFinishes) {
  EXPECT_EQ(SplitRows(1, 0, 1, 2).Status(), 18u);
  EXPECT_EQ(SplitRows(2, -1, 2, 2).Status(), 18u);
  const RowSplit split = SplitRows(2, 3, 2, 2);
  EXPECT_EQ(split.Status(), 18u);
  EXPECT_EQ(split.Covered().count, 2);
  EXPECT_EQ(SplitRows(2, 5, 2, 2).Status(), 0u);
}

TEST(ReferenceBayer, TwoByTwoIsFourCorners) {
  const Bytes raw{10, 20, 30, 40};
  const Mosaic mosaic{raw.data(), 2, 2, Phase::kBg};
  EXPECT_EQ(BilinearPixel(mosaic, 0, 0), (Pixel{10, 25, 40}));
  EXPECT_EQ(BilinearPixel(mosaic, 1, 0), (Pixel{10, 20, 40}));
  EXPECT_EQ(BilinearPixel(mosaic, 0, 1), (Pixel{10, 30, 40}));
  EXPECT_EQ(BilinearPixel(mosaic, 1, 1), (Pixel{10, 25, 40}));
}

TEST(ReferenceBayer, PhasesNameTheFirstTwoColours) {
  const Bytes raw{10, 20, 30, 40};
  EXPECT_EQ(BilinearPixel({raw.data(), 2, 2, Phase::kRg}, 0, 0), (Pixel{40, 25, 10}));
  EXPECT_EQ(BilinearPixel({raw.data(), 2, 2, Phase::kGr}, 0, 0), (Pixel{30, 10, 20}));
  EXPECT_EQ(BilinearPixel({raw.data(), 2, 2, Phase::kGb}, 0, 0), (Pixel{20, 10, 30}));
  EXPECT_EQ(PhaseFrom(Phase::kBg, 3, 2), Phase::kGb);
  EXPECT_EQ(PhaseFrom(Phase::kGb, 1, 1), Phase::kGr);
  EXPECT_EQ(PhaseFrom(Phase::kRg, 2, 5), Phase::kGb);
}

// B  G  B  G      1   2   3   4
// G  R  G  R      5   6   7   8
// B  G  B  G      9  10  11  12
// G  R  G  R     13  14  15  16
TEST(ReferenceBayer, FourByFour) {
  Bytes raw(16);
  for (size_t i = 0; i < raw.size(); ++i) raw[i] = static_cast<uint8_t>(i + 1);
  raw[10] = 90;
  const Mosaic mosaic{raw.data(), 4, 4, Phase::kBg};
  EXPECT_EQ(BilinearPixel(mosaic, 2, 0), (Pixel{3, 3, 7}));  // green (2 + 4) / 2 without the 7 below
  EXPECT_EQ(BilinearPixel(mosaic, 1, 0), (Pixel{2, 2, 6}));
  EXPECT_EQ(BilinearPixel(mosaic, 0, 2), (Pixel{9, 9, 10}));    // green (5 + 13) / 2
  EXPECT_EQ(BilinearPixel(mosaic, 3, 1), (Pixel{46, 8, 8}));    // blue (3 + 90) / 2, green (4 + 12) / 2
  EXPECT_EQ(BilinearPixel(mosaic, 1, 1), (Pixel{25, 6, 6}));    // blue (1 + 3 + 9 + 90) / 4 = 25.75
  EXPECT_EQ(BilinearPixel(mosaic, 2, 2), (Pixel{90, 11, 11}));  // green (7 + 15 + 10 + 12) / 4
  EXPECT_EQ(BilinearPixel(mosaic, 2, 1), (Pixel{46, 7, 7}));    // blue above and below, red beside
}

TEST(ReferenceBayer, WordsAreShiftedAndCutToAByte) {
  const Words raw{1023, 1024, 1023, 1023};
  const Mosaic mosaic{raw.data(), 2, 2, Phase::kBg, true, 2};
  EXPECT_EQ(BilinearPixel(mosaic, 0, 0), (Pixel{255, 255, 255}));  // green (1024 + 1023) >> 3
  EXPECT_EQ(BilinearPixel(mosaic, 1, 0), (Pixel{255, 0, 255}));
}

TEST(ReferenceBayer, EachShiftCountIsTakenModulo32) {
  const Words raw{100, 50, 70, 200};
  const Mosaic mosaic{raw.data(), 2, 2, Phase::kBg, true, 31};
  // Own samples are shifted by 31, the average of two by 0.
  EXPECT_EQ(BilinearPixel(mosaic, 0, 0), (Pixel{0, 120, 0}));
}

// A 6 x 6 frame of zeros but for the samples given, seen from its blue pixel (2, 2).
struct Cross {
  uint8_t own, n, s, w, e, n2, s2, w2, e2;
  Bytes Frame() const {
    Bytes raw(36, 0);
    const auto at = [&](int x, int y) -> uint8_t& { return raw[static_cast<size_t>(y * 6 + x)]; };
    at(2, 2) = own;
    at(2, 1) = n, at(2, 3) = s, at(1, 2) = w, at(3, 2) = e;
    at(2, 0) = n2, at(2, 4) = s2, at(0, 2) = w2, at(4, 2) = e2;
    return raw;
  }
};

uint8_t GreenOf(const Cross& cross, AdaptiveCounts* counts = nullptr) {
  const Bytes raw = cross.Frame();
  return AdaptiveGreen({raw.data(), 6, 6, Phase::kBg}, 2, 2, counts);
}

TEST(ReferenceAdaptive, GreenFollowsTheSmallerGradient) {
  AdaptiveCounts counts;
  // V = 510 < H = 765: (2 * 510 + 510) / 4 = 382
  EXPECT_EQ(GreenOf({255, 255, 255, 0, 255, 0, 0, 0, 0}, &counts), 255);
  EXPECT_EQ(counts.along_column, 1u);
  EXPECT_EQ(counts.green_above_255, 1u);
  // V = 60 > H = 0: (2 * 40 + 0) / 4
  EXPECT_EQ(GreenOf({50, 80, 20, 20, 20, 50, 50, 50, 50}, &counts), 20);
  EXPECT_EQ(counts.along_row, 1u);
  // V = 2 + 0, H = 0 + 2: (2 * (10 + 12 + 11 + 11) + 0 + 2) / 8 = 11.25
  EXPECT_EQ(GreenOf({5, 10, 12, 11, 11, 5, 5, 4, 4}, &counts), 11);
  EXPECT_EQ(counts.green_tie, 1u);
  // V = 510 < H = 530: (2 * 0 - 510) / 4
  EXPECT_EQ(GreenOf({0, 0, 0, 0, 20, 255, 255, 255, 255}, &counts), 0);
  EXPECT_EQ(counts.green_below_0, 1u);
}

TEST(ReferenceAdaptive, SumsBelowZeroRoundDown) {
  // V = 1 < H = 5: (0 - 1) >> 2 = -1
  AdaptiveCounts counts;
  EXPECT_EQ(GreenOf({0, 0, 0, 0, 5, 1, 0, 0, 0}, &counts), 0);
  EXPECT_EQ(counts.green_below_0, 1u);
}

TEST(ReferenceAdaptive, FlatFramesStayFlat) {
  const Bytes raw(8 * 10, 77);
  for (const Phase phase : kPhases) {
    Bytes picture(8 * 10 * 4);
    AdaptiveCounts counts;
    Adaptive({raw.data(), 8, 10, phase}, Output::kBgra, picture.data(), &counts);
    for (size_t i = 0; i < picture.size(); ++i) ASSERT_EQ(picture[i], i % 4 == 3 ? 255 : 77);
    EXPECT_EQ(counts.green_tie, 12u);  // half of the 4 x 6 pixels in the region are not green
    EXPECT_EQ(counts.diagonal_tie, 12u);
  }
}

// Columns that alternate between two levels tie: every Laplacian and every difference is 0.
TEST(ReferenceAdaptive, AlternatingColumnsTie) {
  Bytes raw(8 * 8);
  for (size_t i = 0; i < raw.size(); ++i) raw[i] = i % 2 ? 200 : 100;
  Bytes picture(8 * 8 * 3);
  AdaptiveCounts counts;
  Adaptive({raw.data(), 8, 8, Phase::kBg}, Output::kBgr, picture.data(), &counts);
  EXPECT_EQ(counts.green_tie, 8u);
  EXPECT_EQ(counts.along_column + counts.along_row, 0u);
  EXPECT_EQ(picture[(2 * 8 + 2) * 3 + 1], 150);  // the mean of N, S = 100 and W, E = 200
}

// Row 3 of an 8 x 8 BG frame is G R G R; its greens are (own) 10 at column 2 and 30 at column 4.
TEST(ReferenceAdaptive, ColoursAreDifferencesToGreen) {
  Bytes raw(8 * 8, 20);
  const auto at = [&](int x, int y) -> uint8_t& { return raw[static_cast<size_t>(y * 8 + x)]; };
  at(3, 2) = 40;  // a green pixel in a blue row, between the blue pixels (2, 2) and (4, 2)
  const Mosaic mosaic{raw.data(), 8, 8, Phase::kBg};
  // (2, 2): V = 0 < H = |20 - 40| + 0, green (2 * 40 + 0) / 4 = 20; the same at (4, 2).
  EXPECT_EQ(AdaptiveGreen(mosaic, 2, 2), 20);
  EXPECT_EQ(AdaptiveGreen(mosaic, 4, 2), 20);
  // (3, 3), red: V = |40 - 20|, H = 0, green 20. (3, 1) lies outside the region: (40 + 20 + 20 + 20) / 4
  // = 25.
  EXPECT_EQ(AdaptiveGreen(mosaic, 3, 3), 20);
  EXPECT_EQ(BilinearPixel(mosaic, 3, 1).g, 25);
  Bytes picture(8 * 8 * 3);
  Adaptive(mosaic, Output::kBgr, picture.data());
  const uint8_t* pixel = &picture[(2 * 8 + 3) * 3];
  EXPECT_EQ(pixel[0], 30);  // (2 * (20 + 20 + 40) - 20 - 20) / 4
  EXPECT_EQ(pixel[1], 40);
  EXPECT_EQ(pixel[2], 28);  // (2 * (20 + 20 + 40) - 25 - 20) / 4 = 28.75
}

TEST(ReferenceRectangle, TwoByTwoIsAllRing) {
  Bytes raw(36);
  for (size_t i = 0; i < raw.size(); ++i) raw[i] = static_cast<uint8_t>(i * i % 251);
  const Mosaic mosaic{raw.data(), 6, 6, Phase::kGr};
  Bytes picture(5 * 4 * 3, 99);
  AdaptiveRectangle(mosaic, {2, 2, 2, 2, 5, 4, 1, 2}, Output::kBgr, picture.data());
  const Picture view(picture.data(), Output::kBgr, 5);
  for (uint32_t y = 0; y < 4; ++y) {
    for (uint32_t x = 0; x < 5; ++x) {
      const uint8_t* at = view.At(x, y);
      Pixel expected{99, 99, 99};
      if (x >= 1 && x < 3 && y >= 2) {
        expected = BilinearPixel(mosaic, x + 1, y);
        expected.g = AdaptiveGreen(mosaic, x + 1, y);
      }
      EXPECT_EQ((Pixel{at[0], at[1], at[2]}), expected);
    }
  }
}

TEST(ReferencePlanes, TwoByTwoAndPadding) {
  const Bytes raw{10, 20, 30, 40};
  Bytes b(8, 9), g(8, 9), r(8, 9);
  BayerPlanes({raw.data(), 2, 2, Phase::kBg}, true, {b.data(), g.data(), r.data()});
  EXPECT_EQ(b, (Bytes{10, 10, 0, 0, 10, 10, 0, 0}));
  EXPECT_EQ(g, (Bytes{25, 20, 0, 0, 30, 25, 0, 0}));
  EXPECT_EQ(r, (Bytes{40, 40, 0, 0, 40, 40, 0, 0}));
}

TEST(ReferencePlanes, ThePoolPadsOnlyTheOuterRows) {
  const Bytes raw(6 * 6, 50);
  Bytes b(8 * 6, 9), g(8 * 6, 9), r(8 * 6, 9);
  EXPECT_EQ(PooledBayerPlanes({raw.data(), 6, 6, Phase::kRg}, true, {b.data(), g.data(), r.data()}, 1), 0u);
  for (size_t i = 0; i < g.size(); ++i) {
    const uint8_t pad = i / 8 == 0 || i / 8 == 5 ? 0 : 9;
    EXPECT_EQ(g[i], i % 8 < 6 ? 50 : pad);
  }
}

TEST(ReferenceColour, GreyAndPackedWords) {
  EXPECT_EQ(GreyWord(0), 0xFF000000u);
  EXPECT_EQ(GreyWord(128), 0xFF808080u);
  EXPECT_EQ(GreyWord(255), 0xFFFFFFFFu);
  EXPECT_EQ(GreyWord(256), 0x00010100u);  // 0xFF000000 + 0x01010100 in 32 bits

  const Bytes rgb{0x10, 0x20, 0x30};
  Bytes out(4);
  Convert({rgb.data(), 1, false, 0, PackedFrame::Order::kRgb}, Output::kBgra, out.data(), 1);
  EXPECT_EQ(out, (Bytes{0x30, 0x20, 0x10, 0xFF}));
  Convert({rgb.data(), 1, false, 0, PackedFrame::Order::kRgb}, Output::kPad, out.data(), 1);
  EXPECT_EQ(out, (Bytes{0x30, 0x20, 0x10, 0}));

  const Words words{1023, 512, 4};
  Bytes bgr(3);
  Convert({words.data(), 1, true, 2, PackedFrame::Order::kRgb}, Output::kBgr, bgr.data(), 1);
  EXPECT_EQ(bgr, (Bytes{1, 128, 255}));
}

TEST(ReferenceColour, ExcessBitsSpill) {
  const Words words{0x3FC, 0x400, 0x800};  // B = 255, G = 256, R = 512 after a shift of 2
  const PackedFrame frame{words.data(), 1, true, 2, PackedFrame::Order::kBgr};
  Bytes out(4);
  ConvertRows(frame, Output::kBgra, Excess::kKept, out.data(), {0, 1});
  EXPECT_EQ(out, (Bytes{255, 0, 1, 0xFF}));  // G spills into R, R into A
  ConvertRows(frame, Output::kBgra, Excess::kDropped, out.data(), {0, 1});
  EXPECT_EQ(out, (Bytes{255, 0, 0, 0xFF}));
}

TEST(ReferenceYuv, GreenOffsets) {
  EXPECT_EQ(GreenOffset(0, 0), 256);
  EXPECT_EQ(GreenOffset(-128, -128), 121);
  EXPECT_EQ(GreenOffset(127, 127), 390);
  EXPECT_EQ(GreenOffset(127, -128), 208);
  EXPECT_EQ(GreenOffset(-121, 66), 262);
}

TEST(ReferenceYuv, Pixels) {
  EXPECT_EQ(YuvPixel(200, 128, 128), (Pixel{200, 200, 200}));
  EXPECT_EQ(YuvPixel(0, 128, 255), (Pixel{0, 0, 178}));
  EXPECT_EQ(YuvPixel(255, 128, 255), (Pixel{255, 164, 255}));
}

TEST(ReferenceYuv, PaddedRowsOfTwoPixels) {
  const Bytes yuv{128, 10, 128, 20, 128, 30, 128, 40};
  Bytes out(16, 9);
  ConvertYuv(YuvLayout::k422, Output::kPad, out.data(), yuv.data(), 2, 2);
  EXPECT_EQ(out, (Bytes{10, 10, 10, 20, 20, 20, 0, 0, 30, 30, 30, 40, 40, 40, 0, 0}));
}

TEST(ReferenceMirror, YuvKeepsItsChromaInPlace) {
  const Bytes yuv422{1, 2, 3, 4, 5, 6, 7, 8};
  Bytes out(8);
  Mirror(*MirrorUnitOf(0x0210001F), out.data(), yuv422.data(), 4, 1, true, false);
  EXPECT_EQ(out, (Bytes{5, 8, 7, 6, 1, 4, 3, 2}));
  const Bytes yuv411{0, 1, 2, 3, 4, 5};
  out.resize(6);
  Mirror(*MirrorUnitOf(0x020C001E), out.data(), yuv411.data(), 4, 1, true, true);
  EXPECT_EQ(out, (Bytes{0, 5, 4, 3, 2, 1}));
}

TEST(ReferenceSynthesis, Samples) {
  const Bytes white{255, 255, 255};
  uint16_t word = 0;
  MakeRaw(0x01100007, &word, white.data(), 3, 1, 1, false);
  EXPECT_EQ(word, 65280);
  MakeRaw(0x01100003, &word, white.data(), 3, 1, 1, false);
  EXPECT_EQ(word, 1020);
  const Bytes grey{23, 23, 23};
  uint8_t byte = 0;
  MakeRaw(0x01080001, &byte, grey.data(), 3, 1, 1, false);
  EXPECT_EQ(byte, 22);
  const Bytes blue{255, 0, 0};
  Bytes yuv(3);
  MakeRaw(0x02180020, yuv.data(), blue.data(), 3, 1, 1, false);
  EXPECT_EQ(yuv, (Bytes{255, 29, 107}));
}

TEST(ReferenceSynthesis, SitesAreGivenColumnByColumn) {
  const Bytes bgr{1, 2, 3, 11, 12, 13, 0, 0, 21, 22, 23, 31, 32, 33, 0, 0};  // 2 x 2, rows padded
  Bytes raw(4);
  MakeBayer({8, 8}, raw.data(), bgr.data(), {1, 0, 2, 1}, 2, 2, 3, true);
  EXPECT_EQ(raw, (Bytes{2, 13, 21, 32}));  // G R B G
}

}  // namespace
}  // namespace prismo::reference

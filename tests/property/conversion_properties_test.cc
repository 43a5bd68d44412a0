// What holds between the conversions, through the library as users get it.
#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <vector>

#include "reference/bayer.h"
#include "support/compare.h"
#include "support/generators.h"
#include "support/pool.h"
#include "support/rectangle_routines.h"
#include "support/routines.h"
#include "support/sweeps.h"

namespace prismo::test {
namespace {

using reference::Output;
using reference::Phase;
using reference::Picture;

class Properties : public PoolTest {
 protected:
  Properties() : random_(Seed()) { PrepareLUT(); }

  // A random width for which rows are padded where the layout allows it, and an even height.
  struct Size {
    uint32_t width, height;
  };
  Size AnySize() { return {4 * (2 + random_.Below(30)), 2 * (20 + random_.Below(20))}; }
  Size AnyUnevenSize() { return {4 * (2 + random_.Below(30)) + 2, 2 * (20 + random_.Below(20))}; }

  static std::vector<uint8_t> Convert(const RoutineCall& call, const std::vector<uint8_t>& src, Size size,
                                      Output output, uint8_t shift) {
    std::vector<uint8_t> dst(Picture::Bytes(output, size.width, size.height), 0x5A);
    EXPECT_EQ(call(dst.data(), src.data(), size.width, size.height, shift, output == Output::kPad), 0u);
    return dst;
  }

  // Enough random bytes for a frame of any format.
  std::vector<uint8_t> AnySource(Size size) {
    return RandomBytes(size_t{6} * size.width * size.height, random_);
  }

  // Words of 12 bits, for which the forms that mask and those that do not agree.
  static void LimitWords(std::vector<uint8_t>& words) {
    for (size_t i = 1; i < words.size(); i += 2) words[i] &= 0x0F;
  }

  template <class Routine>
  void PoolEqualsCaller(const std::vector<Routine>& routines) {
    for (const int32_t threads : ThreadCounts()) {
      ASSERT_TRUE(StartPool(threads));
      for (size_t i = 0; i < routines.size(); ++i) {
        const Routine& pooled = routines[i];
        if (pooled.on != On::kPool) continue;
        const auto& caller = *std::find_if(routines.begin(), routines.end(), [&](const Routine& other) {
          return other.on == On::kCaller && other.source == pooled.source && other.words == pooled.words &&
                 other.bgra == pooled.bgra;
        });
        for (const Output output : OutputsOf(pooled.bgra)) {
          const Size size = AnySize();
          std::vector<uint8_t> src = AnySource(size);
          LimitWords(src);
          SCOPED_TRACE(testing::Message() << pooled.name << ' ' << size.width << " x " << size.height);
          EXPECT_TRUE(SameBytes(Convert(caller.call, src, size, output, 4),
                                Convert(pooled.call, src, size, output, 4), GridOf(output, size.width)));
        }
      }
    }
  }

  template <class Routine>
  void PaddedEqualsUnpaddedAndZeros(const std::vector<Routine>& routines, bool uneven) {
    for (const Routine& routine : routines) {
      if (routine.bgra) continue;
      const Size size = uneven ? AnyUnevenSize() : AnySize();
      const std::vector<uint8_t> src = AnySource(size);
      SCOPED_TRACE(testing::Message() << routine.name << ' ' << size.width << " x " << size.height);
      std::vector<uint8_t> expected;
      const std::vector<uint8_t> packed = Convert(routine.call, src, size, Output::kBgr, 2);
      for (uint32_t y = 0; y < size.height; ++y) {
        const auto row = packed.begin() + y * size.width * 3;
        expected.insert(expected.end(), row, row + size.width * 3);
        expected.resize(expected.size() + reference::PadBytes(3 * size.width), 0);
      }
      EXPECT_TRUE(SameBytes(expected, Convert(routine.call, src, size, Output::kPad, 2),
                            GridOf(Output::kPad, size.width)));
    }
  }

  Random random_;
};

TEST_F(Properties, PoolEqualsCaller) {
  PRISMO_TRACE_SEED();
  PoolEqualsCaller(BilinearRoutines());
  PoolEqualsCaller(AdaptiveRoutines());
  PoolEqualsCaller(MonoRoutines());
  PoolEqualsCaller(PackedRoutines());
  PoolEqualsCaller(YuvRoutines());
}

TEST_F(Properties, PaddedEqualsUnpaddedAndZeros) {
  PRISMO_TRACE_SEED();
  for (const bool uneven : {true, false}) {
    PaddedEqualsUnpaddedAndZeros(BilinearRoutines(), uneven);
    PaddedEqualsUnpaddedAndZeros(AdaptiveRoutines(), uneven);
    PaddedEqualsUnpaddedAndZeros(MonoRoutines(), uneven);
    PaddedEqualsUnpaddedAndZeros(PackedRoutines(), uneven);
  }
  PaddedEqualsUnpaddedAndZeros(YuvRoutines(), false);
}

// Without its first columns and rows a mosaic is one of another phase; away from the borders nothing else
// changes.
TEST_F(Properties, CroppingPermutesThePhase) {
  PRISMO_TRACE_SEED();
  constexpr uint32_t kWidth = 60, kHeight = 44, kBorder = 4;
  const std::vector<uint8_t> frame = MakeSamples(Pattern::kRandom, kWidth, kHeight, 8, random_);
  for (const auto* routines : {&BilinearRoutines(), &AdaptiveRoutines()}) {
    for (const BayerRoutine& whole : *routines) {
      if (whole.words || whole.bgra || whole.on == On::kPool) continue;
      const std::vector<uint8_t> picture = Convert(whole.call, frame, {kWidth, kHeight}, Output::kBgr, 0);
      for (const uint32_t left : {0u, 1u}) {
        for (const uint32_t top : {0u, 1u}) {
          const Size size{kWidth - 2, kHeight - 2};
          std::vector<uint8_t> crop;
          for (uint32_t y = 0; y < size.height; ++y) {
            const auto row = frame.begin() + (top + y) * kWidth + left;
            crop.insert(crop.end(), row, row + size.width);
          }
          const Phase phase = reference::PhaseFrom(whole.source, left, top);
          for (const BayerRoutine& part : *routines) {
            if (part.source != phase || part.words || part.bgra || part.on == On::kPool) continue;
            const std::vector<uint8_t> cropped = Convert(part.call, crop, size, Output::kBgr, 0);
            for (uint32_t y = kBorder; y + kBorder < size.height; ++y) {
              const std::span<const uint8_t> expected(&picture[((top + y) * kWidth + left + kBorder) * 3],
                                                      (size.width - 2 * kBorder) * 3);
              const std::span<const uint8_t> actual(&cropped[(y * size.width + kBorder) * 3],
                                                    expected.size());
              ASSERT_TRUE(SameBytes(expected, actual, {0, 3}))
                  << whole.name << ", " << part.name << ", row " << y;
            }
          }
        }
      }
    }
  }
}

// The demosaics have no favourite direction: mirrored frames give mirrored pictures.
TEST_F(Properties, DemosaicsCommuteWithMirrors) {
  PRISMO_TRACE_SEED();
  constexpr Size kSize{46, 38};
  const std::vector<uint8_t> frame = MakeSamples(Pattern::kRandom, kSize.width, kSize.height, 8, random_);
  for (const auto* routines : {&BilinearRoutines(), &AdaptiveRoutines()}) {
    for (const BayerRoutine& straight : *routines) {
      if (straight.words || straight.bgra || straight.on == On::kPool) continue;
      for (const uint8_t horizontal : kOffOn) {
        for (const uint8_t vertical : kOffOn) {
          std::vector<uint8_t> mirrored_frame(frame.size());
          ASSERT_EQ(RvrsImg_SP(mirrored_frame.data(), frame.data(), PRISMO_BAYER_BG8, kSize.width,
                               kSize.height, horizontal, vertical),
                    0u);
          const std::vector<uint8_t> picture = Convert(straight.call, frame, kSize, Output::kBgr, 0);
          std::vector<uint8_t> expected(picture.size());
          ASSERT_EQ(RvrsImg_SP(expected.data(), picture.data(), PRISMO_BGR8, kSize.width, kSize.height,
                               horizontal, vertical),
                    0u);
          const Phase phase = reference::PhaseFrom(straight.source, horizontal, vertical);
          for (const BayerRoutine& mirrored : *routines) {
            if (mirrored.source != phase || mirrored.words || mirrored.bgra || mirrored.on == On::kPool)
              continue;
            EXPECT_TRUE(SameBytes(expected, Convert(mirrored.call, mirrored_frame, kSize, Output::kBgr, 0),
                                  GridOf(Output::kBgr, kSize.width)))
                << straight.name << ", " << mirrored.name;
          }
        }
      }
    }
  }
}

// Words that hold bytes shifted up give what the bytes give.
TEST_F(Properties, ShiftedWordsEqualBytes) {
  PRISMO_TRACE_SEED();
  const auto check = [&](const auto& routines) {
    for (const auto& words : routines) {
      if (!words.words) continue;
      for (const auto& bytes : routines) {
        if (bytes.words || bytes.source != words.source || bytes.bgra != words.bgra || bytes.on != words.on)
          continue;
        const Size size{34, 80};
        const Output output = OutputsOf(words.bgra).back();
        const std::vector<uint8_t> src = RandomBytes(size_t{3} * size.width * size.height, random_);
        const std::vector<uint8_t> expected = Convert(bytes.call, src, size, output, 0);
        for (uint8_t shift = 0; shift <= 8; ++shift) {
          std::vector<uint8_t> wide;
          for (const uint8_t byte : src) {
            wide.push_back(static_cast<uint8_t>(byte << shift));
            wide.push_back(static_cast<uint8_t>(byte << shift >> 8));
          }
          EXPECT_TRUE(
              SameBytes(expected, Convert(words.call, wide, size, output, shift), GridOf(output, size.width)))
              << words.name << ", shift " << int{shift};
        }
      }
    }
  };
  check(BilinearRoutines());
  check(MonoRoutines());
  check(PackedRoutines());
}

// A demosaic keeps each pixel's own sample, so taking the samples again gives the mosaic.
TEST_F(Properties, DemosaicAndMosaicIsTheFrameAgain) {
  PRISMO_TRACE_SEED();
  constexpr Size kSize{46, 38};
  constexpr int32_t kSites[4][4] = {{0, 1, 1, 2}, {1, 2, 0, 1}, {1, 0, 2, 1}, {2, 1, 1, 0}};  // BG GB GR RG
  const std::vector<uint8_t> frame = MakeSamples(Pattern::kRandom, kSize.width, kSize.height, 8, random_);
  for (const auto* routines : {&BilinearRoutines(), &AdaptiveRoutines()}) {
    for (const BayerRoutine& routine : *routines) {
      if (routine.words) continue;
      const Output output = OutputsOf(routine.bgra).back();
      const std::vector<uint8_t> picture = Convert(routine.call, frame, kSize, output, 0);
      std::vector<uint8_t> again(frame.size());
      EXPECT_EQ(ToBayer8to8(again.data(), picture.data(), kSites[static_cast<size_t>(routine.source)],
                            kSize.width, kSize.height, routine.bgra ? 4 : 3, 1),
                0u);
      EXPECT_EQ(again, frame) << routine.name;
    }
  }
}

// A rectangle equals that part of the whole frame, but for its outermost pixels.
TEST_F(Properties, RectanglesAreParts) {
  PRISMO_TRACE_SEED();
  constexpr Size kSize{50, 48};
  const std::vector<uint8_t> frame = MakeSamples(Pattern::kRandom, kSize.width, kSize.height, 8, random_);
  for (const RectangleConverter& converter : RectangleConverters()) {
    if (converter.bgra) continue;
    const auto whole = std::find_if(
        AdaptiveRoutines().begin(), AdaptiveRoutines().end(),
        [&](const BayerRoutine& r) { return r.source == converter.phase && !r.bgra && r.on == On::kCaller; });
    const std::vector<uint8_t> picture = Convert(whole->call, frame, kSize, Output::kBgr, 0);
    for (const uint32_t left : {2u, 3u}) {
      for (const uint32_t top : {2u, 3u}) {
        constexpr uint32_t kWidth = 44, kHeight = 42;
        std::vector<uint8_t> part(kWidth * kHeight * 3);
        ASSERT_EQ(converter.call(
                      part.data(), frame.data(),
                      {kSize.width, kSize.height, {left, top, kWidth, kHeight, kWidth, kHeight, 0, 0}}, 0, 1),
                  0u);
        for (uint32_t y = 1; y + 1 < kHeight; ++y) {
          const std::span<const uint8_t> expected(&picture[((top + y) * kSize.width + left + 1) * 3],
                                                  (kWidth - 2) * 3);
          ASSERT_TRUE(SameBytes(expected, {&part[(y * kWidth + 1) * 3], expected.size()}, {0, 3}))
              << converter.name << ", row " << y;
        }
      }
    }
  }
}

TEST_F(Properties, PlanesAreTheChannelsOfTheBilinearPicture) {
  PRISMO_TRACE_SEED();
  constexpr Size kSize{46, 38};
  const std::vector<uint8_t> frame = MakeSamples(Pattern::kRandom, kSize.width, kSize.height, 8, random_);
  for (const uint32_t format : {PRISMO_BAYER_BG8, PRISMO_BAYER_GB8, PRISMO_BAYER_GR8, PRISMO_BAYER_RG8}) {
    for (const uint8_t pool : kOffOn) {
      std::vector<uint8_t> picture(frame.size() * 3), b(frame.size()), g(frame.size()), r(frame.size()),
          planes;
      ASSERT_EQ(ConvImageEx(1, format, picture.data(), frame.data(), kSize.width, kSize.height, 0, pool), 0u);
      ASSERT_EQ(ConvImagePlanarEx(format, b.data(), g.data(), r.data(), frame.data(), kSize.width,
                                  kSize.height, pool, 0),
                0u);
      for (size_t i = 0; i < frame.size(); ++i) planes.insert(planes.end(), {b[i], g[i], r[i]});
      EXPECT_TRUE(SameBytes(picture, planes, GridOf(Output::kBgr, kSize.width)));
    }
  }
}

TEST_F(Properties, MirrorsUndoThemselvesOnThePool) {
  PRISMO_TRACE_SEED();
  for (const uint32_t format :
       {PRISMO_MONO8, PRISMO_MONO16, PRISMO_RGB8, PRISMO_BGR12, PRISMO_YUV422, PRISMO_YUV411}) {
    const Size size = AnySize();
    const size_t bytes = size_t{size.width} * BitPerPixel(format) / 8 * size.height;
    const std::vector<uint8_t> image = RandomBytes(bytes, random_);
    for (const uint8_t horizontal : kOffOn) {
      for (const uint8_t vertical : kOffOn) {
        std::vector<uint8_t> once(bytes), twice(bytes);
        EXPECT_EQ(
            RvrsImg_MP(once.data(), image.data(), format, size.width, size.height, horizontal, vertical), 0u);
        EXPECT_EQ(
            RvrsImg_MP(twice.data(), once.data(), format, size.width, size.height, horizontal, vertical), 0u);
        EXPECT_EQ(once == image, !horizontal && !vertical);
        EXPECT_EQ(twice, image);
      }
    }
  }
}

}  // namespace
}  // namespace prismo::test

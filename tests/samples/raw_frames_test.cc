// Real raw frames: the library equals the reference on all of their pixels.
#include <gtest/gtest.h>

#include <vector>

#include "reference/bayer.h"
#include "samples/sample_files.h"
#include "support/compare.h"
#include "support/pool.h"
#include "support/routines.h"
#include "support/sweeps.h"

namespace prismo::test {
namespace {

using reference::Mosaic;
using reference::Output;
using reference::Phase;

class RawFrames : public PoolTest {
 protected:
  // Every routine of the frame's phase and kind of samples, against one picture of the reference for each
  // output.
  template <class Reference>
  static void Check(const std::vector<BayerRoutine>& routines, const Mosaic& mosaic, Reference&& reference) {
    StartPool(static_cast<int32_t>(ThreadCounts().back()));
    for (const Output output : reference::kOutputs) {
      std::vector<uint8_t> expected(reference::Picture::Bytes(output, mosaic.width, mosaic.height));
      reference(mosaic, output, expected.data());
      for (const BayerRoutine& routine : routines) {
        if (routine.source != mosaic.phase || routine.words != mosaic.words) continue;
        if (routine.bgra != (output == Output::kBgra)) continue;
        SCOPED_TRACE(routine.name);
        std::vector<uint8_t> actual(expected.size(), 1);
        EXPECT_EQ(routine.call(actual.data(), mosaic.samples, mosaic.width, mosaic.height, mosaic.shift,
                               output == Output::kPad),
                  0u);
        EXPECT_TRUE(SameBytes(expected, actual, GridOf(output, mosaic.width)));
      }
    }
  }

  static void CheckBilinear(const Mosaic& mosaic) {
    Check(BilinearRoutines(), mosaic,
          [](const Mosaic& m, Output output, void* dst) { reference::Bilinear(m, output, dst); });
  }

  static void CheckAdaptive(const Mosaic& mosaic) {
    Check(AdaptiveRoutines(), mosaic,
          [](const Mosaic& m, Output output, void* dst) { reference::Adaptive(m, output, dst); });
  }
};

TEST_F(RawFrames, ColourCheckerOfTwelveBits) {
  PRISMO_NEEDS_SAMPLE("raw/colorchecker_bayerbg12_1920x1076.raw");
  const std::vector<uint8_t> samples = ReadSample("raw/colorchecker_bayerbg12_1920x1076.raw");
  ASSERT_EQ(samples.size(), 1920u * 1076 * 2);
  CheckBilinear({samples.data(), 1920, 1076, Phase::kBg, true, 4});

  std::vector<uint8_t> direct(1920 * 1076 * 4), generic(direct.size());
  EXPECT_EQ(ByrBGNToBGRA_SP(direct.data(), samples.data(), 1920, 1076, 4), 0u);
  EXPECT_EQ(ConvImage(0, PRISMO_BAYER_BG12, 1, generic.data(), samples.data(), 1920, 1076), 0u);
  EXPECT_EQ(direct, generic);
}

TEST_F(RawFrames, SwingOfEightBits) {
  PRISMO_NEEDS_SAMPLE("raw/swing_bayergr8_2592x1536.raw");
  const std::vector<uint8_t> samples = ReadSample("raw/swing_bayergr8_2592x1536.raw");
  ASSERT_EQ(samples.size(), 2592u * 1536);
  CheckBilinear({samples.data(), 2592, 1536, Phase::kGr});
  CheckAdaptive({samples.data(), 2592, 1536, Phase::kGr});
}

// 14 bits: by the routines that take the caller's shift, or brought to 12 bits first.
TEST_F(RawFrames, RoseOfFourteenBits) {
  PRISMO_NEEDS_SAMPLE("raw/rose_bayerrg14_768x512.raw");
  std::vector<uint8_t> samples = ReadSample("raw/rose_bayerrg14_768x512.raw");
  ASSERT_EQ(samples.size(), 768u * 512 * 2);
  CheckBilinear({samples.data(), 768, 512, Phase::kRg, true, 6});
  for (size_t i = 0; i < samples.size(); i += 2) {
    const int word = (samples[i] | samples[i + 1] << 8) >> 2;
    samples[i] = static_cast<uint8_t>(word);
    samples[i + 1] = static_cast<uint8_t>(word >> 8);
  }
  CheckBilinear({samples.data(), 768, 512, Phase::kRg, true, 4});
}

}  // namespace
}  // namespace prismo::test

// Real photographs, made into mosaics: the library equals the reference, and the adaptive demosaic is the
// better one.
#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "reference/bayer.h"
#include "samples/png_image.h"
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
using reference::Site;

const char* const kColourPhotographs[] = {"kodim08", "kodim19", "kodim23", "astronaut", "coffee"};

uint32_t Shift(uint32_t bits) { return bits - 8; }

// Keeps the sample of each pixel's site; more than 8 bits repeat the high bits below.
std::vector<uint8_t> MakeMosaic(const BgrImage& image, Phase phase, uint32_t bits) {
  const Mosaic sites{nullptr, image.width, image.height, phase};
  std::vector<uint8_t> samples;
  for (uint32_t y = 0; y < image.height; ++y) {
    for (uint32_t x = 0; x < image.width; ++x) {
      const Site site = sites.SiteAt(x, y);
      const size_t channel = site == Site::kBlue ? 0 : site == Site::kRed ? 2 : 1;
      const uint32_t value = image.pixels[(size_t{y} * image.width + x) * 3 + channel];
      const uint32_t sample = value << Shift(bits) | value >> (8 - Shift(bits));
      samples.push_back(static_cast<uint8_t>(sample));
      if (bits > 8) samples.push_back(static_cast<uint8_t>(sample >> 8));
    }
  }
  return samples;
}

// The middle of a photograph, where all of it would take too long.
BgrImage Crop(const BgrImage& image) {
  if (!kSanitized) return image;
  BgrImage crop{128, 96, {}};
  for (uint32_t y = 0; y < crop.height; ++y) {
    const auto row = image.pixels.begin() + ((image.height / 2 + y) * image.width + image.width / 2) * 3;
    crop.pixels.insert(crop.pixels.end(), row, row + crop.width * 3);
  }
  return crop;
}

// Peak signal to noise ratio over all channels, without the outermost 8 pixels.
double Cpsnr(const BgrImage& image, const std::vector<uint8_t>& bgr) {
  double sum = 0;
  size_t count = 0;
  for (uint32_t y = 8; y + 8 < image.height; ++y) {
    for (uint32_t x = 8; x + 8 < image.width; ++x) {
      for (size_t channel = 0; channel < 3; ++channel, ++count) {
        const size_t at = (size_t{y} * image.width + x) * 3 + channel;
        const double difference = double{1} * image.pixels[at] - bgr[at];
        sum += difference * difference;
      }
    }
  }
  return 10 * std::log10(255.0 * 255.0 * static_cast<double>(count) / sum);
}

class Photographs : public PoolTest {};

TEST_F(Photographs, EqualTheReferenceInEveryPhaseAndDepth) {
  PRISMO_NEEDS_SAMPLE("photos/coffee.png");
  StartPool(ThreadCounts().back());
  for (const char* name : kColourPhotographs) {
    const BgrImage image = Crop(ReadPng(SampleFile(std::string("photos/") + name + ".png").string()));
    for (const Phase phase : reference::kPhases) {
      for (const uint32_t bits : {8u, 10u, 12u}) {
        const std::vector<uint8_t> samples = MakeMosaic(image, phase, bits);
        const Mosaic mosaic{samples.data(), image.width, image.height,
                            phase,          bits > 8,    static_cast<uint8_t>(Shift(bits))};
        const auto check = [&](const std::vector<BayerRoutine>& routines, auto&& reference) {
          std::vector<uint8_t> expected(image.pixels.size()), actual(image.pixels.size());
          reference(mosaic, Output::kBgr, expected.data());
          for (const BayerRoutine& routine : routines) {
            if (routine.source != phase || routine.words != mosaic.words || routine.bgra) continue;
            SCOPED_TRACE(testing::Message() << name << ", " << routine.name << ", " << bits << " bits");
            EXPECT_EQ(routine.call(actual.data(), samples.data(), image.width, image.height, mosaic.shift, 0),
                      0u);
            EXPECT_TRUE(SameBytes(expected, actual, GridOf(Output::kBgr, image.width)));
          }
        };
        check(BilinearRoutines(), [](auto&&... arguments) { reference::Bilinear(arguments...); });
        if (bits == 8)
          check(AdaptiveRoutines(), [](auto&&... arguments) { reference::Adaptive(arguments...); });
      }
    }
  }
}

TEST_F(Photographs, TheAdaptiveDemosaicBeatsTheBilinearOne) {
  PRISMO_NEEDS_SAMPLE("photos/coffee.png");
  for (const char* name : kColourPhotographs) {
    const BgrImage image = ReadPng(SampleFile(std::string("photos/") + name + ".png").string());
    const std::vector<uint8_t> samples = MakeMosaic(image, Phase::kRg, 8);
    std::vector<uint8_t> bilinear(image.pixels.size()), adaptive(image.pixels.size());
    ASSERT_EQ(ByrRG8ToBGR_SP(bilinear.data(), samples.data(), image.width, image.height, 0), 0u);
    ASSERT_EQ(ByrRG8ToBGR_SP_ACPI(adaptive.data(), samples.data(), image.width, image.height, 0), 0u);
    const double bilinear_db = Cpsnr(image, bilinear), adaptive_db = Cpsnr(image, adaptive);
    std::cout << name << ": bilinear " << bilinear_db << " dB, adaptive " << adaptive_db << " dB\n";
    EXPECT_GT(bilinear_db, 20);
    EXPECT_GT(adaptive_db, bilinear_db) << name;
  }
}

TEST_F(Photographs, GreyPhotograph) {
  PRISMO_NEEDS_SAMPLE("photos/camera.png");
  const BgrImage image = ReadPng(SampleFile("photos/camera.png").string());
  std::vector<uint8_t> grey;
  for (size_t i = 0; i < image.pixels.size(); i += 3) grey.push_back(image.pixels[i]);
  std::vector<uint8_t> bgr(image.pixels.size());
  EXPECT_EQ(ConvMono8ToBGR(bgr.data(), grey.data(), image.width, image.height), 0u);
  EXPECT_TRUE(SameBytes(image.pixels, bgr, GridOf(Output::kBgr, image.width)));
}

}  // namespace
}  // namespace prismo::test

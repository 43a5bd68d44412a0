#include "scene.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <string_view>

#include "PrismoUtl.h"
#include "lettering.h"

namespace prismo::tool {
namespace {

using Colour = std::array<double, 3>;  // red, green, blue; linear, 0 to 1

constexpr Colour kBackground{0.16, 0.16, 0.16};
constexpr Colour kInk{0.02, 0.02, 0.02};
constexpr Colour kPaper{0.8, 0.8, 0.8};

Colour Mix(const Colour& a, const Colour& b, double share_of_b) {
  Colour mixed;
  for (size_t i = 0; i < mixed.size(); ++i) mixed[i] = a[i] + (b[i] - a[i]) * share_of_b;
  return mixed;
}

struct Area {
  double left, top, width, height;
  bool Holds(double x, double y) const {
    return x >= left && x < left + width && y >= top && y < top + height;
  }
};

constexpr Area kPatches{40, 40, 608, 408};
constexpr double kPlateX = 960, kPlateY = 240, kPlateRadius = 200;
constexpr double kStarX = 260, kStarY = 700, kStarRadius = 210;
constexpr Area kLines{520, 500, 300, 400};
constexpr Area kText{860, 500, 380, 400};

// Six columns of hues (full, pale, dark) over a row of greys.
Colour Patch(double x, double y) {
  constexpr double kGap = 8, kCell = 100;
  const double u = x - kPatches.left, v = y - kPatches.top;
  const int column = static_cast<int>(u / kCell), row = static_cast<int>(v / kCell);
  if (u - column * kCell < kGap || v - row * kCell < kGap) return kInk;
  if (row == 3) {
    const double grey = 0.9 * std::pow(0.5, column);
    return {grey, grey, grey};
  }
  // Hue runs around the corners of the colour cube.
  Colour hue;
  for (int i = 0; i < 3; ++i) {
    const double distance = std::abs(std::remainder(column - 2.0 * i, 6.0));
    hue[static_cast<size_t>(i)] = std::clamp(2.0 - distance, 0.04, 0.85);
  }
  if (row == 1) return Mix(hue, kPaper, 0.6);
  if (row == 2) return Mix(hue, kInk, 0.75);
  return hue;
}

// Rings that get finer outwards, two pixels to a ring at the rim.
Colour ZonePlate(double radius) {
  const double wave = std::cos(std::numbers::pi * radius * radius / (2 * kPlateRadius));
  return Mix(kInk, kPaper, 0.5 + 0.5 * wave);
}

Colour Star(double x, double y) {
  constexpr double kSpokes = 36;
  constexpr Colour kRed{0.7, 0.05, 0.06};
  const double angle = std::atan2(y - kStarY, x - kStarX);
  const Colour spoke = y < kStarY ? kInk : kRed;
  return std::sin(kSpokes * angle) > 0 ? spoke : kPaper;
}

// Line pairs of 8 to 2 pixels, upright on the left and lying on the right, over a slanted edge of two
// colours.
Colour Lines(double x, double y) {
  constexpr Colour kTeal{0.03, 0.35, 0.4}, kOrange{0.8, 0.3, 0.04};
  const double u = x - kLines.left, v = y - kLines.top;
  if (v >= 260) return (u - 150) * 0.97 + (v - 330) * 0.26 < 0 ? kTeal : kOrange;
  const int group = static_cast<int>(v / 65);
  if (v - group * 65 > 55) return kPaper;
  const double period = 8 - 2 * group;
  const double along = u < 150 ? u : v;
  return along - period * std::floor(along / period) < period / 2 ? kInk : kPaper;
}

constexpr std::string_view kWord = "PRISMOUTL";

// The same word in sizes down to one pixel a dot.
Colour Writing(double x, double y) {
  double top = kText.top + 20;
  for (const double scale : {6.0, 4.0, 3.0, 2.0, 1.5, 1.0}) {
    const double u = (x - kText.left - 20) / scale, v = (y - top) / scale;
    if (u >= 0 && v >= 0 && v < kLetterHeight) {
      return Inked(kWord, static_cast<int>(u), static_cast<int>(v)) ? kInk : kPaper;
    }
    top += kLetterHeight * scale + 22;
  }
  return kPaper;
}

Colour Light(double x, double y) {
  if (kPatches.Holds(x, y)) return Patch(x, y);
  const double plate = std::hypot(x - kPlateX, y - kPlateY);
  if (plate < kPlateRadius) return ZonePlate(plate);
  if (std::hypot(x - kStarX, y - kStarY) < kStarRadius) return Star(x, y);
  if (kLines.Holds(x, y)) return Lines(x, y);
  if (kText.Holds(x, y)) return Writing(x, y);
  return Mix(kBackground, kPaper, 0.3 * x / kSceneWidth);
}

// Noise that is the same on every machine: a counter through a mixing function.
class Noise {
 public:
  // Close to a normal distribution with variance 1: the sum of twelve uniform numbers.
  double Next() {
    double sum = -6;
    for (int i = 0; i < 3; ++i) {
      const uint64_t bits = NextBits();
      for (int part = 0; part < 4; ++part) sum += static_cast<double>(bits >> 16 * part & 0xFFFF) / 65536;
    }
    return sum;
  }

 private:
  uint64_t NextBits() {
    uint64_t z = state_ += 0x9E3779B97F4A7C15u;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9u;
    z = (z ^ z >> 27) * 0x94D049BB133111EBu;
    return z ^ z >> 31;
  }
  uint64_t state_ = 2024;
};

// The mean over a square a little larger than a pixel, as behind a lens.
Colour LightOnSite(uint32_t x, uint32_t y) {
  constexpr int kSteps = 3;
  constexpr double kSpread = 1.3;
  Colour sum{};
  for (int i = 0; i < kSteps; ++i) {
    for (int j = 0; j < kSteps; ++j) {
      const Colour light = Light(x + 0.5 + kSpread * ((i + 0.5) / kSteps - 0.5),
                                 y + 0.5 + kSpread * ((j + 0.5) / kSteps - 0.5));
      for (size_t channel = 0; channel < sum.size(); ++channel) sum[channel] += light[channel];
    }
  }
  for (double& channel : sum) channel /= kSteps * kSteps;
  return sum;
}

uint8_t OnScreen(double light) {
  return static_cast<uint8_t>(std::lround(255 * std::pow(std::clamp(light, 0.0, 1.0), 1 / 2.2)));
}

}  // namespace

Scene RenderScene() {
  constexpr Colour kResponse{0.55, 1.0, 0.68};  // of the sensor to the lamp
  constexpr double kElectronsOfFullScale = 10000, kReadNoiseElectrons = 5;
  const Format& format = *FormatByCode(PRISMO_BAYER_RG12);
  Scene scene{{&format, kSceneWidth, kSceneHeight,
               std::vector<uint8_t>(RowBytes(format, kSceneWidth) * kSceneHeight)},
              MakePicture(kSceneWidth, kSceneHeight, 3)};
  const double maximum = MaxSample(format), white = maximum - kSceneBlackLevel;
  Noise noise;
  auto* at = scene.frame.bytes.data();
  for (uint32_t y = 0; y < kSceneHeight; ++y) {
    const RowPattern pattern = PatternOfRow(format, y);
    for (uint32_t x = 0; x < kSceneWidth; ++x, at += 2) {
      const Colour light = LightOnSite(x, y);
      for (size_t i = 0; i < light.size(); ++i) scene.picture.At(x, y)[2 - i] = OnScreen(light[i]);

      const auto channel = static_cast<size_t>(pattern.channels[x % 2]);
      const double electrons = kElectronsOfFullScale * light[channel] * kResponse[channel];
      const double noisy =
          electrons + noise.Next() * std::sqrt(electrons + kReadNoiseElectrons * kReadNoiseElectrons);
      const double level = kSceneBlackLevel + noisy * white / kElectronsOfFullScale;
      const auto sample = static_cast<unsigned>(std::clamp(level + 0.5, 0.0, maximum));
      at[0] = static_cast<uint8_t>(sample);
      at[1] = static_cast<uint8_t>(sample >> 8);
    }
  }
  return scene;
}

}  // namespace prismo::tool

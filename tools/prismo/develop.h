// What makes a linear camera frame look right on a screen: black level and gains on the raw samples, and a
// gamma curve on the picture.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "frame.h"

namespace prismo::tool {

struct Gain {
  bool automatic = false;                  // grey world: the means of the channels become equal
  std::array<double, 3> factors{1, 1, 1};  // red, green, blue
};

// "auto", "R,G,B" or one number for all channels.
Gain ParseGain(const std::string& text);

struct Development {
  uint32_t shift = 0;  // right shift of every sample first, for sensors of more bits than the format
  uint32_t black = 0;
  std::optional<Gain> gain;
  double gamma = 1;

  bool TouchesFrame() const { return shift || black || gain; }
};

void DevelopFrame(Frame& frame, const Development& development);
void ApplyGamma(Picture& picture, double gamma);

struct ChannelStatistics {
  uint64_t count = 0;
  uint64_t clipped = 0;  // samples at the format's maximum or beyond
  unsigned min = 0xFFFF, max = 0;
  double sum = 0;
};

// Of the red, green and blue samples; monochrome samples count as green. Not for YUV.
std::array<ChannelStatistics, 3> StatisticsOf(const Frame& frame);

}  // namespace prismo::tool

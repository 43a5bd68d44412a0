#include "develop.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>

#include "error.h"

namespace prismo::tool {
namespace {

// Calls visit(channel, address) for every sample that has a channel.
template <class Byte, class Visit>
void ForEachSample(const Format& format, uint32_t width, uint32_t height, Byte* bytes, Visit&& visit) {
  const std::array patterns{PatternOfRow(format, 0), PatternOfRow(format, 1)};
  const unsigned step = SampleBytes(format);
  for (uint32_t y = 0; y < height; ++y) {
    const RowPattern& pattern = patterns[y % 2];
    Byte* at = bytes + RowBytes(format, width) * y;
    const uint64_t samples = uint64_t{width} * pattern.samples_per_pixel;
    for (uint64_t i = 0; i < samples; ++i, at += step) {
      const Channel channel = pattern.channels[i % pattern.period];
      if (channel != kNoChannel) visit(channel, at);
    }
  }
}

unsigned Load(const uint8_t* at, unsigned bytes) { return bytes == 1 ? *at : *at | unsigned{at[1]} << 8; }

std::array<double, 3> GreyWorldGains(const Frame& frame, uint32_t black) {
  std::array<double, 3> sums{}, counts{};
  const unsigned bytes = SampleBytes(*frame.format), max = MaxSample(*frame.format);
  ForEachSample(*frame.format, frame.width, frame.height, frame.bytes.data(),
                [&](Channel channel, const uint8_t* at) {
                  const unsigned sample = Load(at, bytes);
                  if (sample >= max) return;  // a clipped sample says nothing about its colour
                  sums[channel] += sample > black ? sample - black : 0;
                  counts[channel] += 1;
                });
  std::array<double, 3> gains{1, 1, 1};
  for (const Channel channel : {kRed, kBlue}) {
    if (sums[channel] > 0 && sums[kGreen] > 0) {
      gains[channel] = sums[kGreen] / counts[kGreen] / (sums[channel] / counts[channel]);
    }
  }
  return gains;
}

}  // namespace

Gain ParseGain(const std::string& text) {
  if (text == "auto") return {true, {1, 1, 1}};
  Gain gain;
  const char* at = text.data();
  const char* end = at + text.size();
  size_t count = 0;
  for (bool more = true; more && count < 3; ++count) {
    const auto [next, error] = std::from_chars(at, end, gain.factors[count]);
    if (error != std::errc() || !(gain.factors[count] >= 0) || gain.factors[count] > 1000) break;
    more = next != end && *next == ',';
    at = next + (more ? 1 : 0);
  }
  if (at != end || (count != 1 && count != 3)) {
    throw Error("--gain takes 'auto', one number or R,G,B, for example 1.5,1,1.2, not '", text, "'");
  }
  if (count == 1) gain.factors.fill(gain.factors[0]);
  return gain;
}

void DevelopFrame(Frame& frame, const Development& development) {
  if (!development.TouchesFrame()) return;
  const Format& format = *frame.format;
  if (format.kind == FormatClass::kYuv)
    throw Error("--black, --gain and --shift are not for ", format.name, " frames");
  const unsigned bytes = SampleBytes(format), max = MaxSample(format);

  if (development.shift) {
    if (bytes == 1) throw Error("--shift is for formats of more than 8 bits, not for ", format.name);
    ForEachSample(format, frame.width, frame.height, frame.bytes.data(), [&](Channel, uint8_t* at) {
      const unsigned sample = Load(at, bytes) >> development.shift;
      at[0] = static_cast<uint8_t>(sample);
      at[1] = static_cast<uint8_t>(sample >> 8);
    });
  }
  const Gain gain = development.gain.value_or(Gain{});
  const auto factors = gain.automatic ? GreyWorldGains(frame, development.black) : gain.factors;
  std::array<std::vector<uint16_t>, 3> curves;
  for (size_t channel = 0; channel < curves.size(); ++channel) {
    curves[channel].resize(bytes == 1 ? 256 : 65536);
    for (size_t i = 0; i < curves[channel].size(); ++i) {
      const double level = std::max(0.0, static_cast<double>(std::min<size_t>(i, max)) - development.black);
      curves[channel][i] = static_cast<uint16_t>(std::min<double>(max, std::round(level * factors[channel])));
    }
  }
  ForEachSample(format, frame.width, frame.height, frame.bytes.data(), [&](Channel channel, uint8_t* at) {
    const unsigned sample = curves[channel][Load(at, bytes)];
    at[0] = static_cast<uint8_t>(sample);
    if (bytes == 2) at[1] = static_cast<uint8_t>(sample >> 8);
  });
}

void ApplyGamma(Picture& picture, double gamma) {
  if (gamma == 1) return;
  std::array<uint8_t, 256> curve;
  for (size_t i = 0; i < curve.size(); ++i) {
    curve[i] = static_cast<uint8_t>(std::lround(255 * std::pow(static_cast<double>(i) / 255, 1 / gamma)));
  }
  for (size_t i = 0; i < picture.bytes.size(); ++i) {
    if (picture.channels != 4 || i % 4 != 3) picture.bytes[i] = curve[picture.bytes[i]];
  }
}

std::array<ChannelStatistics, 3> StatisticsOf(const Frame& frame) {
  std::array<ChannelStatistics, 3> statistics;
  const unsigned bytes = SampleBytes(*frame.format), max = MaxSample(*frame.format);
  ForEachSample(*frame.format, frame.width, frame.height, frame.bytes.data(),
                [&](Channel channel, const uint8_t* at) {
                  const unsigned sample = Load(at, bytes);
                  ChannelStatistics& s = statistics[channel];
                  s.count += 1;
                  s.clipped += sample >= max;
                  s.min = std::min(s.min, sample);
                  s.max = std::max(s.max, sample);
                  s.sum += sample;
                });
  return statistics;
}

}  // namespace prismo::tool

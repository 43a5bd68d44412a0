#include "synth/to_bayer.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "core/frame.h"

namespace prismo {
namespace {

struct BayerFrame {
  uint8_t* dst;
  const uint8_t* src;
  int64_t width, height;
  int64_t samples_per_pixel;
  int64_t pitch_bytes;
  SiteChannels channels;
};

// For pixels of any size, with channels anywhere.
template <BayerDepths kDepths>
void MakePlainly(const BayerFrame& frame) {
  constexpr DepthRule kRule = kDepthRules[static_cast<size_t>(kDepths)];
  constexpr int64_t kFromBytes = kRule.from_bytes;
  uint8_t* to = frame.dst;
  const auto row = [&](int64_t y, int64_t even_channel, int64_t odd_channel) {
    const uint8_t* from = frame.src + y * frame.pitch_bytes;
    for (int64_t x = 0; x < frame.width; ++x, to += kRule.to_bytes) {
      const int64_t place = x * frame.samples_per_pixel + (x % 2 == 0 ? even_channel : odd_channel);
      uint16_t sample = 0;
      std::memcpy(&sample, from + place * kFromBytes, kFromBytes);
      sample = static_cast<uint16_t>(kRule.shift < 0 ? sample >> -kRule.shift : sample << kRule.shift);
      std::memcpy(to, &sample, kRule.to_bytes);
    }
  };
  const SiteChannels& channels = frame.channels;
  for (int64_t y = 0; y < frame.height; y += 2) {
    row(y, channels.top_left, channels.top_right);
    row(y + 1, channels.bottom_left, channels.bottom_right);
  }
}

constexpr void (*kMakePlainly[kBayerDepthsCount])(const BayerFrame&) = {
    &MakePlainly<BayerDepths::k8to8>,   &MakePlainly<BayerDepths::k8to10>,
    &MakePlainly<BayerDepths::k8to12>,  &MakePlainly<BayerDepths::k10to8>,
    &MakePlainly<BayerDepths::k10to10>, &MakePlainly<BayerDepths::k10to12>};

bool WithinPixel(const SiteChannels& channels, int64_t samples_per_pixel) {
  const auto [lowest, highest] =
      std::minmax({channels.top_left, channels.bottom_left, channels.top_right, channels.bottom_right});
  return lowest >= 0 && highest < samples_per_pixel;
}

void Make(BayerDepths depths, const BayerFrame& frame) {
  const auto index = static_cast<size_t>(depths);
  const bool usual_pixels = frame.samples_per_pixel == 3 || frame.samples_per_pixel == 4;
  if (usual_pixels && WithinPixel(frame.channels, frame.samples_per_pixel)) {
    const auto pitch = static_cast<size_t>(frame.pitch_bytes);
    const auto width = static_cast<size_t>(frame.width), height = static_cast<size_t>(frame.height);
    const size_t out_pitch = width * kDepthRules[index].to_bytes;
    const simd::StorePlan stores = simd::PlanStores({pitch * height, out_pitch * height});
    const auto& makers = CurrentBayerKernels().make[index][frame.samples_per_pixel == 4];
    if (makers[0]) {
      simd::ForEachPiece(stores, 0, height / 2, 2 * width,
                         [&](simd::StoreKind kind, size_t first, size_t pairs) {
                           makers[static_cast<size_t>(kind)](frame.dst + out_pitch * 2 * first,
                                                             frame.src + pitch * 2 * first, pitch,
                                                             frame.channels, width, 2 * pairs);
                         });
      return simd::FinishStores(stores);
    }
  }
  kMakePlainly[index](frame);
}

}  // namespace

Status MakeBayer(BayerDepths depths, void* dst, const void* src, const int32_t* site_channels,
                 const BayerSource& source) noexcept {
  return NoThrow(Status::kFailure, [&] {
    const FrameSize size{static_cast<uint32_t>(source.width), source.height};
    if (!dst || !src || !size.Even() || size.Empty()) return Status::kInvalidParameter;
    if (source.width < 0) return Status::kSuccess;  // no columns at all

    const size_t sample_bytes = kDepthRules[static_cast<size_t>(depths)].from_bytes;
    const int64_t row_bytes =
        int64_t{source.width} * source.samples_per_pixel * static_cast<int64_t>(sample_bytes);
    Make(depths, {.dst = static_cast<uint8_t*>(dst),
                  .src = static_cast<const uint8_t*>(src),
                  .width = source.width,
                  .height = source.height,
                  .samples_per_pixel = source.samples_per_pixel,
                  .pitch_bytes = source.padded ? (row_bytes + 3) & ~int64_t{3} : row_bytes,
                  .channels = {site_channels[0], site_channels[1], site_channels[2], site_channels[3]}});
    return Status::kSuccess;
  });
}

}  // namespace prismo

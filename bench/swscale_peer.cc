extern "C" {
#include <libavutil/log.h>
#include <libavutil/pixfmt.h>
#include <libswscale/swscale.h>
}

#include <array>
#include <map>
#include <memory>

#include "peers.h"

namespace prismo::bench {
namespace {

struct Formats {
  AVPixelFormat from, to;
};

// Its YUV is of video range: the same work, other numbers.
const std::map<std::string_view, Formats>& FormatsOf() {
  static const std::map<std::string_view, Formats> formats = {
      {"mono/Mono8/BGRA", {AV_PIX_FMT_GRAY8, AV_PIX_FMT_BGRA}},
      {"mono/Mono8/BGR", {AV_PIX_FMT_GRAY8, AV_PIX_FMT_BGR24}},
      {"mono/Mono8/Pad", {AV_PIX_FMT_GRAY8, AV_PIX_FMT_BGR24}},
      {"mono/Mono10/BGRA", {AV_PIX_FMT_GRAY10LE, AV_PIX_FMT_BGRA}},
      {"mono/Mono10/BGR", {AV_PIX_FMT_GRAY10LE, AV_PIX_FMT_BGR24}},
      {"mono/Mono12/BGRA", {AV_PIX_FMT_GRAY12LE, AV_PIX_FMT_BGRA}},
      {"mono/Mono12/BGR", {AV_PIX_FMT_GRAY12LE, AV_PIX_FMT_BGR24}},
      {"mono/Mono16/BGRA", {AV_PIX_FMT_GRAY16LE, AV_PIX_FMT_BGRA}},
      {"mono/Mono16/BGR", {AV_PIX_FMT_GRAY16LE, AV_PIX_FMT_BGR24}},
      {"bilinear/RG8/BGRA", {AV_PIX_FMT_BAYER_RGGB8, AV_PIX_FMT_BGRA}},
      {"bilinear/RG8/BGR", {AV_PIX_FMT_BAYER_RGGB8, AV_PIX_FMT_BGR24}},
      {"bilinear/RG8/Pad", {AV_PIX_FMT_BAYER_RGGB8, AV_PIX_FMT_BGR24}},
      {"planes/RGB8/planes", {AV_PIX_FMT_RGB24, AV_PIX_FMT_GBRP}},
      {"planes/BGR8/planes", {AV_PIX_FMT_BGR24, AV_PIX_FMT_GBRP}},
      {"packed/RGB8/BGRA", {AV_PIX_FMT_RGB24, AV_PIX_FMT_BGRA}},
      {"packed/RGB8/BGR", {AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR24}},
      {"packed/RGB8/Pad", {AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR24}},
      {"packed/BGR8/BGRA", {AV_PIX_FMT_BGR24, AV_PIX_FMT_BGRA}},
      {"packed/BGRA8/BGR", {AV_PIX_FMT_BGRA, AV_PIX_FMT_BGR24}},
      {"packed/BGRA8/Pad", {AV_PIX_FMT_BGRA, AV_PIX_FMT_BGR24}},
      {"yuv/YUV422/BGRA", {AV_PIX_FMT_UYVY422, AV_PIX_FMT_BGRA}},
      {"yuv/YUV422/BGR", {AV_PIX_FMT_UYVY422, AV_PIX_FMT_BGR24}},
      {"yuv/YUV422/Pad", {AV_PIX_FMT_UYVY422, AV_PIX_FMT_BGR24}},
      {"raw/BGRA8/Mono8", {AV_PIX_FMT_BGRA, AV_PIX_FMT_GRAY8}},
      {"raw/BGR8/Mono8", {AV_PIX_FMT_BGR24, AV_PIX_FMT_GRAY8}},
      {"raw/BGRA8/YUV422", {AV_PIX_FMT_BGRA, AV_PIX_FMT_UYVY422}},
      {"raw/BGR8/YUV422", {AV_PIX_FMT_BGR24, AV_PIX_FMT_UYVY422}},
  };
  return formats;
}

using Planes = std::array<uint8_t*, 4>;
using Pitches = std::array<int, 4>;

// Everything here runs on the calling thread.
Step Make(std::string_view conversion, const Job& job, int threads) {
  const auto found = FormatsOf().find(conversion);
  if (found == FormatsOf().end() || threads > 1) return {};
  const Formats formats = found->second;

  av_log_set_level(AV_LOG_ERROR);
  const auto width = static_cast<int>(job.size.width);
  const auto height = static_cast<int>(job.size.height);
  const std::shared_ptr<SwsContext> scaler(
      sws_isSupportedInput(formats.from) && sws_isSupportedOutput(formats.to)
          ? sws_getContext(width, height, formats.from, width, height, formats.to, SWS_POINT, nullptr,
                           nullptr, nullptr)
          : nullptr,
      sws_freeContext);
  if (!scaler) return {};

  const Planes source{const_cast<uint8_t*>(job.source)};
  const Pitches source_pitch{static_cast<int>(job.source_bytes / job.size.height)};
  Planes target{job.target};
  Pitches target_pitch{static_cast<int>(job.target_pitch)};
  if (formats.to == AV_PIX_FMT_GBRP) {
    target = {job.target + job.size.Pixels(), job.target, job.target + 2 * job.size.Pixels()};
    target_pitch = {width, width, width};
  }
  return [=] {
    sws_scale(scaler.get(), source.data(), source_pitch.data(), 0, height, target.data(),
              target_pitch.data());
  };
}

}  // namespace

PeerLibrary SwscalePeer() {
  const unsigned version = swscale_version();
  PeerLibrary library{
      "swscale",
      std::to_string(AV_VERSION_MAJOR(version)) + '.' + std::to_string(AV_VERSION_MINOR(version)),
      Make,
      {}};
  for (const auto& [conversion, formats] : FormatsOf()) library.conversions.push_back(conversion);
  return library;
}

}  // namespace prismo::bench

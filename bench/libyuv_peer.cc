#include <libyuv.h>

#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "PrismoUtl.h"
#include "peers.h"

namespace prismo::bench {
namespace {

using Maker = std::function<Step(const Job&)>;
using Pass = int (*)(const uint8_t*, int, uint8_t*, int, int, int);
using Plane = void (*)(const uint8_t*, int, uint8_t*, int, int, int);

int Width(const Job& job) { return static_cast<int>(job.size.width); }
int Height(const Job& job) { return static_cast<int>(job.size.height); }
int Pitch(uint32_t format, const Job& job) { return static_cast<int>(RowBytes(format, job.size.width)); }
int TargetPitch(const Job& job) { return static_cast<int>(job.target_pitch); }

// A negative height reads the rows from the last one upwards.
enum class Rows : int { kDown = 1, kUp = -1 };

template <class Function>
Maker One(uint32_t from, Function function, Rows rows = Rows::kDown) {
  return [=](const Job& job) -> Step {
    return [=] {
      function(job.source, Pitch(from, job), job.target, TargetPitch(job), Width(job),
               static_cast<int>(rows) * Height(job));
    };
  };
}

Maker Two(uint32_t from, Pass first, uint32_t between, Pass second) {
  return [=](const Job& job) -> Step {
    const auto buffer =
        std::make_shared<std::vector<uint8_t>>(RowBytes(between, job.size.width) * job.size.height);
    return [=] {
      first(job.source, Pitch(from, job), buffer->data(), Pitch(between, job), Width(job), Height(job));
      second(buffer->data(), Pitch(between, job), job.target, TargetPitch(job), Width(job), Height(job));
    };
  };
}

void Reduce(const Job& job, int depth, uint8_t* bytes) {
  libyuv::Convert16To8Plane(reinterpret_cast<const uint16_t*>(job.source), Width(job), bytes, Width(job),
                            1 << (24 - depth), Width(job), Height(job));
}

Maker ReduceTo8(int depth) {
  return [=](const Job& job) -> Step { return [=] { Reduce(job, depth, job.target); }; };
}

Maker ReduceThenArgb(int depth) {
  return [=](const Job& job) -> Step {
    const auto grey = std::make_shared<std::vector<uint8_t>>(job.size.Pixels());
    return [=] {
      Reduce(job, depth, grey->data());
      libyuv::J400ToARGB(grey->data(), Width(job), job.target, TargetPitch(job), Width(job), Height(job));
    };
  };
}

Maker Split(bool red_first) {
  return [=](const Job& job) -> Step {
    uint8_t* const b = job.target;
    uint8_t* const g = b + job.size.Pixels();
    uint8_t* const r = g + job.size.Pixels();
    return [=, first = red_first ? r : b, last = red_first ? b : r] {
      libyuv::SplitRGBPlane(job.source, 3 * Width(job), first, Width(job), g, Width(job), last, Width(job),
                            Width(job), Height(job));
    };
  };
}

template <uint32_t kBytesPerPixel>
void CopyRows(const uint8_t* source, int source_pitch, uint8_t* target, int target_pitch, int width,
              int height) {
  libyuv::CopyPlane(source, source_pitch, target, target_pitch, width * static_cast<int>(kBytesPerPixel),
                    height);
}

// libyuv's ARGB is our BGRA, its RGB24 our BGR, its RAW our RGB, its J400 grey of full range. Its UYVY is of
// video range: the same work, other numbers.
const std::map<std::string_view, Maker>& Makers() {
  static const std::map<std::string_view, Maker> makers = {
      {"mono/Mono8/BGRA", One(PRISMO_MONO8, libyuv::J400ToARGB)},
      {"mono/Mono10/BGRA", ReduceThenArgb(10)},
      {"mono/Mono12/BGRA", ReduceThenArgb(12)},
      {"mono/Mono16/BGRA", ReduceThenArgb(16)},
      {"reduce/Mono10/Mono8", ReduceTo8(10)},
      {"reduce/Mono12/Mono8", ReduceTo8(12)},
      {"reduce/Mono16/Mono8", ReduceTo8(16)},
      {"packed/RGB8/BGRA", One(PRISMO_RGB8, libyuv::RAWToARGB)},
      {"packed/RGB8/BGR", One(PRISMO_RGB8, libyuv::RAWToRGB24)},
      {"packed/RGB8/Pad", One(PRISMO_RGB8, libyuv::RAWToRGB24)},
      {"packed/BGR8/BGRA", One(PRISMO_BGR8, libyuv::RGB24ToARGB)},
      {"packed/BGR8/Pad", One(PRISMO_BGR8, CopyRows<3>)},
      {"packed/BGRA8/BGR", One(PRISMO_BGRA8, libyuv::ARGBToRGB24)},
      {"packed/BGRA8/Pad", One(PRISMO_BGRA8, libyuv::ARGBToRGB24)},
      {"planes/RGB8/planes", Split(true)},
      {"planes/BGR8/planes", Split(false)},
      {"yuv/YUV422/BGRA", One(PRISMO_YUV422, libyuv::UYVYToARGB)},
      {"yuv/YUV422/BGR", Two(PRISMO_YUV422, libyuv::UYVYToARGB, PRISMO_BGRA8, libyuv::ARGBToRGB24)},
      {"yuv/YUV422/Pad", Two(PRISMO_YUV422, libyuv::UYVYToARGB, PRISMO_BGRA8, libyuv::ARGBToRGB24)},
      {"mirror/Mono8/left-right", One(PRISMO_MONO8, libyuv::MirrorPlane)},
      {"mirror/Mono8/top-bottom", One(PRISMO_MONO8, libyuv::CopyPlane, Rows::kUp)},
      {"mirror/Mono8/both", One(PRISMO_MONO8, libyuv::MirrorPlane, Rows::kUp)},
      {"mirror/Mono12/left-right", One(PRISMO_MONO12, libyuv::MirrorUVPlane)},
      {"mirror/Mono12/top-bottom", One(PRISMO_MONO12, CopyRows<2>, Rows::kUp)},
      {"mirror/Mono12/both", One(PRISMO_MONO12, libyuv::MirrorUVPlane, Rows::kUp)},
      {"mirror/RGB8/left-right", One(PRISMO_RGB8, libyuv::RGB24Mirror)},
      {"mirror/RGB8/top-bottom", One(PRISMO_RGB8, CopyRows<3>, Rows::kUp)},
      {"mirror/RGB8/both", One(PRISMO_RGB8, libyuv::RGB24Mirror, Rows::kUp)},
      {"mirror/RGB12/top-bottom", One(PRISMO_RGB12, CopyRows<6>, Rows::kUp)},
      {"mirror/YUV422/top-bottom", One(PRISMO_YUV422, CopyRows<2>, Rows::kUp)},
      {"raw/BGRA8/Mono8", One(PRISMO_BGRA8, libyuv::ARGBToJ400)},
      {"raw/BGR8/Mono8", One(PRISMO_BGR8, libyuv::RGB24ToJ400)},
      {"raw/BGRA8/RGB8", One(PRISMO_BGRA8, libyuv::ARGBToRAW)},
      {"raw/BGR8/RGB8", One(PRISMO_BGR8, libyuv::RAWToRGB24)},
      {"raw/BGRA8/YUV422", One(PRISMO_BGRA8, libyuv::ARGBToUYVY)},
      {"raw/BGR8/YUV422", Two(PRISMO_BGR8, libyuv::RGB24ToARGB, PRISMO_BGRA8, libyuv::ARGBToUYVY)},
  };
  return makers;
}

// Everything here runs on the calling thread.
Step Make(std::string_view conversion, const Job& job, int threads) {
  const auto maker = Makers().find(conversion);
  return maker == Makers().end() || threads > 1 ? Step() : maker->second(job);
}

}  // namespace

PeerLibrary LibyuvPeer() {
  PeerLibrary library{"libyuv", std::to_string(LIBYUV_VERSION), Make, {}};
  for (const auto& [conversion, maker] : Makers()) library.conversions.push_back(conversion);
  return library;
}

}  // namespace prismo::bench

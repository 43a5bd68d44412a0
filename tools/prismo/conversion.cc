#include "conversion.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <thread>

#include "PrismoUtl.h"
#include "error.h"

namespace prismo::tool {
namespace {

constexpr uint32_t kOutputBgra = 0;
constexpr uint32_t kOutputBgr = 1;
constexpr uint32_t kMethodAdaptive = 1;
constexpr uint32_t kMethodNone = 8;
constexpr uint32_t kMethodBilinear = 0;
constexpr int kMaxPoolThreads = 16;
// Long enough for the slowest machine and the largest frame; the library's own default is one second.
constexpr uint32_t kPoolTimeoutMs = 10 * 60 * 1000;

uint32_t Method(Demosaic demosaic) {
  switch (demosaic) {
    case Demosaic::kBilinear:
      return kMethodBilinear;
    case Demosaic::kAdaptive:
      return kMethodAdaptive;
    case Demosaic::kNone:
      break;
  }
  return kMethodNone;
}

Demosaic DemosaicOf(const Conversion& conversion) {
  return conversion.demosaic.value_or(conversion.rectangle ? Demosaic::kAdaptive : Demosaic::kBilinear);
}

std::string Operation(const Frame& frame) {
  return Text("converting ", frame.format->name, " ", frame.width, "x", frame.height);
}

void CheckRectangle(const Frame& frame, const Rectangle& r) {
  const bool inside = r.left >= 2 && r.top >= 2 && uint64_t{r.left} + r.width + 2 <= frame.width &&
                      uint64_t{r.top} + r.height + 2 <= frame.height;
  if (!inside || r.width == 0 || r.height == 0 || r.width % 2 || r.height % 2) {
    throw Error("a rectangle has an even size and keeps two pixels from every edge of the ", frame.width, "x",
                frame.height, " frame; ", r.left, ",", r.top, ",", r.width, ",", r.height, " does not");
  }
}

uint32_t MonoCodeOfDepth(unsigned depth) {
  return depth == 8    ? PRISMO_MONO8
         : depth == 10 ? PRISMO_MONO10
         : depth == 12 ? PRISMO_MONO12
                       : PRISMO_MONO16;
}

// The samples of a monochrome or Bayer frame, 8 bits each, rows packed.
void ReduceTo8Bits(const Frame& frame, uint8_t* samples) {
  const unsigned depth = SampleDepth(*frame.format);
  if (depth > 8) {
    Check(MonoNToMono8(samples, frame.bytes.data(), MonoCodeOfDepth(depth), static_cast<int32_t>(frame.width),
                       static_cast<int32_t>(frame.height), 0),
          Operation(frame));
  } else {
    const size_t width = frame.width, pitch = RowBytes(*frame.format, frame.width);
    for (size_t y = 0; y < frame.height; ++y)
      std::memcpy(&samples[y * width], &frame.bytes[y * pitch], width);
  }
}

void CheckPooled(uint32_t status, const Frame& frame) {
  // Workers of a call that timed out go on writing to the buffers: end them before the buffers go.
  if (status == UTL_STS_TIMEOUT) TerminateMPThreads();
  Check(status, Operation(frame));
}

uint32_t OutputType(const Picture& picture) { return picture.channels == 4 ? kOutputBgra : kOutputBgr; }

void ConvertRectangle(Picture& picture, const Frame& frame, const Conversion& conversion) {
  const Rectangle& r = *conversion.rectangle;
  CheckPooled(
      ConvBayerRectEx_ACPI(OutputType(picture), frame.format->code, picture.bytes.data(), frame.bytes.data(),
                           frame.width, frame.height, r.left, r.top, r.width, r.height, r.width, r.height, 0,
                           0, conversion.threads.UsesPoolFor(r.height)),
      frame);
}

void CheckRequest(const Frame& frame, const Conversion& conversion) {
  CheckConvertible(frame);
  const bool bayer = frame.format->kind == FormatClass::kBayer;
  if (conversion.demosaic && !bayer)
    throw Error("--demosaic is for Bayer frames, not for ", frame.format->name);
  if (!conversion.rectangle) return;
  if (!bayer) throw Error("--rect is for Bayer frames, not for ", frame.format->name);
  if (DemosaicOf(conversion) != Demosaic::kAdaptive) throw Error("--rect needs --demosaic adaptive");
  CheckRectangle(frame, *conversion.rectangle);
}

}  // namespace

Rectangle ParseRectangle(const std::string& text) {
  std::array<uint32_t, 4> numbers{};
  const char* at = text.data();
  const char* end = at + text.size();
  for (size_t i = 0; i < numbers.size(); ++i) {
    const auto [next, error] = std::from_chars(at, end, numbers[i]);
    const bool last = i + 1 == numbers.size();
    if (error != std::errc() || (last ? next != end : next == end || *next != ',')) {
      throw Error("a rectangle is LEFT,TOP,WIDTH,HEIGHT, for example 100,80,640,480, not '", text, "'");
    }
    at = next + 1;
  }
  return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

ThreadChoice ThreadChoice::Parse(const std::string& text) {
  if (text.empty()) return ThreadChoice(static_cast<int>(std::max(1u, std::thread::hardware_concurrency())));
  if (text == "caller") return Caller();
  int count = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), count);
  if (error != std::errc() || end != text.data() + text.size() || count < 1) {
    throw Error("--threads takes 'caller' or a number from 1, not '", text, "'");
  }
  return ThreadChoice(std::min(count, kMaxPoolThreads));
}

void ThreadChoice::Prepare() const {
  PrepareLUT();  // some pooled conversions trust that the tables are there
  if (!UsesPool()) return;
  SetMPCount(count_);
  SetMPTimeout_msec(kPoolTimeoutMs);
}

bool ThreadChoice::UsesPoolFor(uint32_t height) const {
  // Eight rows on top of two per thread: some works leave out rows at the borders.
  return UsesPool() && height % 2 == 0 && height >= 2 * static_cast<uint32_t>(count_) + 8;
}

std::string ThreadChoice::Description(uint32_t height) const {
  if (!UsesPoolFor(height)) return "the caller's thread";
  return Text("a pool of ", GetMPCount(), GetMPCount() == 1 ? " thread" : " threads");
}

bool IsGrey(const Frame& frame, const Conversion& conversion) {
  return frame.format->kind == FormatClass::kMono ||
         (frame.format->kind == FormatClass::kBayer && DemosaicOf(conversion) == Demosaic::kNone);
}

void CheckConvertible(const Frame& frame) {
  const Format& format = *frame.format;
  if (format.code == PRISMO_BGRA10) throw Error("there is no conversion of BGRA10 frames");
  const uint32_t width_unit = WidthUnit(format), height_unit = HeightUnit(format);
  if (frame.width % width_unit || frame.height % height_unit) {
    throw Error(format.name, " frames have a width that is a multiple of ", width_unit,
                height_unit > 1 ? Text(" and a height that is a multiple of ", height_unit) : "",
                "; this one is ", frame.width, "x", frame.height);
  }
}

Frame BayerFrameOf8Bits(const Frame& frame) {
  Frame reduced{&BayerFormat8(*frame.format), frame.width, frame.height,
                std::vector<uint8_t>(size_t{frame.width} * frame.height)};
  ReduceTo8Bits(frame, reduced.bytes.data());
  return reduced;
}

Picture PictureFor(const Frame& frame, const Conversion& conversion, uint32_t channels) {
  CheckRequest(frame, conversion);
  if (!conversion.rectangle) return MakePicture(frame.width, frame.height, channels);
  return MakePicture(conversion.rectangle->width, conversion.rectangle->height, channels);
}

void ConvertInto(Picture& picture, const Frame& frame, const Conversion& conversion) {
  const Demosaic demosaic = DemosaicOf(conversion);
  const bool adaptive = frame.format->kind == FormatClass::kBayer && demosaic == Demosaic::kAdaptive;
  if (picture.channels == 1) {
    ReduceTo8Bits(frame, picture.bytes.data());
  } else if (adaptive && SampleDepth(*frame.format) > 8) {
    ConvertInto(picture, BayerFrameOf8Bits(frame), conversion);
  } else if (conversion.rectangle) {
    ConvertRectangle(picture, frame, conversion);
  } else if (frame.format->code == PRISMO_BGRA8) {
    // The one format that only the converter table knows.
    Check(ConvImage(OutputType(picture), frame.format->code, 1, picture.bytes.data(), frame.bytes.data(),
                    frame.width, frame.height),
          Operation(frame));
  } else {
    CheckPooled(ConvImageEx(OutputType(picture), frame.format->code, picture.bytes.data(), frame.bytes.data(),
                            frame.width, frame.height, Method(demosaic),
                            conversion.threads.UsesPoolFor(frame.height)),
                frame);
  }
}

Picture Convert(const Frame& frame, const Conversion& conversion, uint32_t channels) {
  Picture picture = PictureFor(frame, conversion, channels);
  ConvertInto(picture, frame, conversion);
  return picture;
}

std::array<Picture, 3> ConvertToPlanes(const Frame& frame, const Conversion& conversion) {
  const uint32_t code = frame.format->code;
  const bool bayer8 = code >= PRISMO_BAYER_GR8 && code <= PRISMO_BAYER_BG8;
  const bool direct =
      !conversion.rectangle && ((bayer8 && DemosaicOf(conversion) == Demosaic::kBilinear) ||
                                ((code == PRISMO_RGB8 || code == PRISMO_BGR8) && !conversion.demosaic));
  if (!direct) {
    const Picture picture = Convert(frame, conversion, 3);
    const Frame bgr{FormatByCode(PRISMO_BGR8), picture.width, picture.height, picture.bytes};
    return ConvertToPlanes(bgr, {{}, {}, conversion.threads});
  }
  CheckConvertible(frame);
  const Picture empty = MakePicture(frame.width, frame.height, 1);
  std::array<Picture, 3> planes{empty, empty, empty};
  CheckPooled(ConvImagePlanarEx(code, planes[0].bytes.data(), planes[1].bytes.data(), planes[2].bytes.data(),
                                frame.bytes.data(), frame.width, frame.height,
                                conversion.threads.UsesPoolFor(frame.height), 0),
              frame);
  return planes;
}

}  // namespace prismo::tool

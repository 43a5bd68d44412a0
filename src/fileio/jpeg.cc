#include "fileio/jpeg.h"

#include <cstring>
#include <memory>

#include "core/converter_table.h"
#include "core/dispatch.h"
#include "core/routine_arguments.h"
#include "core/settings.h"
#include "mp/engine.h"
#include "platform/jpeg_encoder.h"

namespace prismo {
namespace {

// Converters may leave out an odd last row, and pixels that are no whole group of a YUV format: those are
// black.
void ClearWhatMayBeLeftOut(void* bgra, FrameSize size) {
  if (size.width % 4 != 0 || size.height % 2 != 0) {
    std::memset(bgra, 0, size.Pixels() * PixelBytes(Layout::kBgra));
  }
}

Status Convert(void* bgra, const void* frame, PixelFormat format, FrameSize size) {
  if (format == PixelFormat::kBgr8Padded || format == PixelFormat::kMono8Padded) {
    const RouteChoice choice = {static_cast<uint32_t>(BayerMode()), PoolWhenModeIsNotZero()};
    return Status{ConvertToBgra(format, choice, bgra, frame, size, kReserved)};
  }
  const bool demosaic = true;
  const PrismoConverter converter = BgraConverter(format, demosaic);
  if (converter == nullptr) return Status::kInvalidParameter;
  ClearWhatMayBeLeftOut(bgra, size);
  return Status{converter(bgra, frame, size.width, size.height)};
}

}  // namespace

Status SaveJpegPicture(const void* pixels, Layout layout, JpegQuality quality, FrameSize size,
                       const char* path) noexcept {
  if (path == nullptr || pixels == nullptr || size.Empty()) return Status::kInvalidParameter;

  return NoThrow(Status::kFailure, [&] {
    platform::JpegEncoder encoder(pixels, layout, size);
    return encoder.Save(path, quality);
  });
}

Status SaveJpegFrame(const void* frame, PixelFormat format, JpegQuality quality, FrameSize size,
                     const char* path) noexcept {
  // Already what the encoder takes.
  if (format == PixelFormat::kBgra8) return SaveJpegPicture(frame, Layout::kBgra, quality, size, path);

  if (path == nullptr || frame == nullptr || size.Empty()) return Status::kInvalidParameter;

  return NoThrow(Status::kFailure, [&] {
    platform::JpegEncoder encoder(size);
    const std::shared_ptr<void> bgra = encoder.Lock();
    if (bgra == nullptr) return Status::kFailure;
    const Status converted = [&] {
      const mp::SharedWithWorks shared(bgra);
      return Convert(bgra.get(), frame, format, size);
    }();
    encoder.Unlock();
    if (converted != Status::kSuccess) {
      encoder.Abandon();
      return converted;
    }
    return encoder.Save(path, quality);
  });
}

}  // namespace prismo

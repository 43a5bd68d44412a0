#include "fileio/jpeg.h"

#include "platform/jpeg_encoder.h"

namespace prismo {

Status SaveJpegPicture(const void* pixels, Layout layout, JpegQuality quality, FrameSize size,
                       const char* path) noexcept {
  if (path == nullptr || pixels == nullptr || size.Empty()) return Status::kInvalidParameter;

  return NoThrow(Status::kFailure, [&] {
    platform::JpegEncoder encoder(pixels, layout, size);
    return encoder.Save(path, quality);
  });
}

}  // namespace prismo

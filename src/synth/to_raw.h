// Camera frames made of colour pictures.
#pragma once

#include <cstdint>

#include "core/frame.h"
#include "core/pixel_format.h"
#include "core/status.h"

namespace prismo {

struct RawSource {
  PixelFormat format;  // kBgr8 or kBgra8
  FrameSize size;
  bool padded;  // rows occupy a multiple of 4 bytes
};

// Turns a picture into a monochrome, packed colour or YUV frame. Bayer formats are accepted, but nothing is
// written. kInvalidParameter for null buffers, empty frames, other formats, and widths that YUV cannot hold.
Status MakeRaw(void* dst, const void* src, PixelFormat target, const RawSource& source) noexcept;

}  // namespace prismo

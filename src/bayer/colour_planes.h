// Bilinear demosaic of 8-bit frames into separate colour planes.
#pragma once

#include <cstdint>

#include "bayer/phase.h"
#include "core/frame.h"
#include "core/pixel_format.h"
#include "core/status.h"

namespace prismo {

struct ColourPlanes {
  void* blue;
  void* green;
  void* red;
};

// kInvalidParameter for null pointers; kSuccess for an empty frame; kInvalidParameter for a side below 2.
// With `pad` the rows of each plane are followed by zero bytes up to a multiple of 4.
Status PlanesOnCaller(Phase phase, const ColourPlanes& planes, const void* src, FrameSize size, bool pad);

// The pool leaves the pad bytes of all rows but the first and the last as they were; callers rely on it.
Status PlanesOnPool(Phase phase, const ColourPlanes& planes, const void* src, FrameSize size, bool pad);

// Unpadded planes of a frame in one of the 8-bit Bayer formats; kInvalidParameter for any other.
Status PlanesOfFormat(PixelFormat format, const ColourPlanes& planes, const void* src, FrameSize size,
                      bool pool);

}  // namespace prismo

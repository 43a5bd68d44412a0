// Packed RGB8 and BGR8 split into separate planes.
#pragma once

#include <cstdint>

#include "core/frame.h"
#include "core/status.h"

namespace prismo {

// Planes in the order of a source pixel's bytes: red, green, blue for RGB8.
struct SourceOrderPlanes {
  void* plane[3];
};

// Sides and area of the frame are signed numbers here: nothing is written when they are below 1. With `pad`
// the rows of each plane occupy a multiple of 4 bytes.
Status SplitOnCaller(const SourceOrderPlanes& planes, const void* src, FrameSize size, bool pad);

Status SplitOnPool(const SourceOrderPlanes& planes, const void* src, FrameSize size, bool pad);

}  // namespace prismo

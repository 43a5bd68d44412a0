// Mirrors of frames in their own pixel format.
#pragma once

#include "core/frame.h"
#include "core/pixel_format.h"
#include "core/status.h"

namespace prismo {

struct Mirror {
  bool horizontal;  // left-right
  bool vertical;    // top-bottom
};

// kFailure for a format without a mirror. Rows are packed; widths that do not fill whole groups of YUV pixels
// give pictures without meaning, but nothing outside the frame is touched.
Status MirrorOnCaller(void* dst, const void* src, PixelFormat format, FrameSize size, Mirror mirror);

// kSuccess whatever the pool reports, a time-out included.
Status MirrorOnPool(void* dst, const void* src, PixelFormat format, FrameSize size, Mirror mirror);

// On the pool in processing mode 1, but only with a left-right mirror.
Status MirrorByMode(void* dst, const void* src, PixelFormat format, FrameSize size, Mirror mirror);

}  // namespace prismo

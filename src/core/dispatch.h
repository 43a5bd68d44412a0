// The generic conversions: from a pixel format and a few choices to the routine that does the work. They
// return what that routine returns.
#pragma once

#include <cstdint>

#include "core/frame.h"
#include "core/pixel_format.h"

namespace prismo {

// Demosaic methods; any other value is bilinear.
inline constexpr uint32_t kMethodAdaptive = 1;
inline constexpr uint32_t kMethodNone = 8;

// How a Bayer frame is demosaiced, and where a conversion runs.
struct RouteChoice {
  uint32_t method;
  bool pool;
};

// `reserved` is handed on to routines that ignore it.
uint32_t ConvertToBgra(PixelFormat format, RouteChoice choice, void* dst, const void* src, FrameSize size,
                       uint8_t reserved);
uint32_t ConvertToBgr(PixelFormat format, RouteChoice choice, void* dst, const void* src, FrameSize size,
                      uint8_t pad);

// By output type: 1 BGR, 2 padded BGR, 8 to 15 refused, any other BGRA.
uint32_t ConvertToType(uint32_t output_type, PixelFormat format, RouteChoice choice, void* dst,
                       const void* src, FrameSize size);

// The same through the converter table, except where that has no place for padded rows, and with method and
// threads by the settings.
uint32_t ConvertBySettings(uint32_t output_type, PixelFormat format, bool demosaic, void* dst,
                           const void* src, FrameSize size);

struct OutputPlanes {
  void* blue;
  void* green;
  void* red;
};

uint32_t ConvertToPlanes(PixelFormat format, bool pool, const OutputPlanes& planes, const void* src,
                         FrameSize size, uint8_t pad);

}  // namespace prismo

// Adaptive demosaic of a rectangle of an 8-bit frame into a place of another image.
#pragma once

#include <cstdint>
#include <optional>

#include "bayer/acpi.h"
#include "core/pixel_format.h"

namespace prismo {

struct Rectangle {
  void* dst;
  const void* src;
  FrameSize frame;
  uint32_t left, top;
  FrameSize size;
  FrameSize picture;  // the destination
  uint32_t dst_left, dst_top;
};

enum class Threads : uint8_t { kCaller, kPool };

constexpr Threads ThreadsFor(bool pool) { return pool ? Threads::kPool : Threads::kCaller; }

// `form.phase` is that of the rectangle's own top-left pixel. kInvalidParameter for a null pointer, odd
// sizes, a rectangle nearer than two pixels to the frame's edges or one that does not fit into the
// destination.
Status DemosaicRectangle(const AcpiForm& form, const Rectangle& rectangle, Threads threads);

// The same with the phase of the frame.
Status DemosaicRectangleOfFrame(const AcpiForm& frame_form, const Rectangle& rectangle, Threads threads);

// The same with the phase of a pixel format; kInvalidParameter for any but the 8-bit Bayer formats. Output
// kind 1 is BGR, 2 BGR with padded rows, any other BGRA.
Status DemosaicRectangleOfFormat(uint32_t output_kind, PixelFormat format, const Rectangle& rectangle,
                                 Threads threads);

}  // namespace prismo

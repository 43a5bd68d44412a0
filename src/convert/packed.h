// Packed colour: RGB and BGR of 8 or N bits a channel, and BGRA.
#pragma once

#include <cstdint>

#include "convert/convert_rows.h"
#include "core/frame.h"
#include "core/status.h"

namespace prismo {

// Sources kRgb8, kBgr8, kRgbN, kBgrN.
Status PackedOnCaller(Source source, Layout layout, uint32_t shift, void* dst, const void* src,
                      FrameSize size);

// To BGRA the shifted channels are not cut to 8 bits: what a channel has beyond them spills into the next.
// BGR8 to BGR goes to the pool only where rows are padded; otherwise it is copied on the caller's thread.
Status PackedOnPool(Source source, Layout layout, uint32_t shift, void* dst, const void* src, FrameSize size);

// BGRA8, on the caller's thread; to BGRA it is a copy, alpha included. To BGR the area is a signed number.
Status BgraOnCaller(Layout layout, void* dst, const void* src, FrameSize size);

}  // namespace prismo

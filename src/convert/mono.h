// Monochrome frames, and Bayer frames that are to be seen as grey.
#pragma once

#include <cstdint>

#include "core/frame.h"
#include "core/pixel_format.h"
#include "core/status.h"

namespace prismo {

// On the caller's thread the area of a frame is a signed number: nothing is written when it is below 1.
Status Mono8OnCaller(Layout layout, void* dst, const void* src, FrameSize size);
Status MonoNOnCaller(Layout layout, uint32_t shift, void* dst, const void* src, FrameSize size);

Status Mono8OnPool(Layout layout, void* dst, const void* src, FrameSize size);

// To BGRA the shifted words are not cut to 8 bits: one beyond the format's depth gives the word that the grey
// table would hold if it went on.
Status MonoNOnPool(Layout layout, uint32_t shift, void* dst, const void* src, FrameSize size);

// Mono10, Mono12 or Mono16 to 8 bits; other formats are refused. With `pad` rows occupy a multiple of 4
// bytes.
Status ReduceToMono8(PixelFormat format, void* dst, const void* src, FrameSize size, bool pad);

}  // namespace prismo

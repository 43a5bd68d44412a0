// Raw frame files: a header of four words and the frame as the camera gave it.
#pragma once

#include <cstdint>

#include "core/frame.h"
#include "core/pixel_format.h"
#include "core/status.h"

namespace prismo {

Status SaveRawFrame(const void* image, PixelFormat format, FrameSize size, const char* path) noexcept;

// Where the words of the header go; each may be null.
struct RawFrameHeaderOut {
  uint32_t* format;
  uint32_t* width;
  uint32_t* height;
  uint32_t* row_bytes;
};

// Reads the frame to *buffer or, when that is null, to memory allocated for it, which the caller then owns.
Status LoadRawFrame(const char* path, uint8_t** buffer, const RawFrameHeaderOut& header) noexcept;

void FreeRawFrame(void* buffer) noexcept;

}  // namespace prismo

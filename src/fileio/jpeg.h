// JPEG files of pictures and of camera frames.
#pragma once

#include <cstdint>
#include <optional>

#include "core/frame.h"
#include "core/pixel_format.h"
#include "core/status.h"

namespace prismo {

// Without a value: the encoder's default.
using JpegQuality = std::optional<uint32_t>;

constexpr Layout JpegLayout(uint32_t code) { return code == 1 ? Layout::kBgr : Layout::kBgra; }

Status SaveJpegPicture(const void* pixels, Layout layout, JpegQuality quality, FrameSize size,
                       const char* path) noexcept;

// Converts the frame to BGRA first, on the pool where the processing mode says so. The file is not touched
// when the conversion fails, whose status is the result then.
Status SaveJpegFrame(const void* frame, PixelFormat format, JpegQuality quality, FrameSize size,
                     const char* path) noexcept;

}  // namespace prismo

// YUV frames to pictures, by the formulas of the lookup tables.
#pragma once

#include <cstdint>

#include "reference/pictures.h"

namespace prismo::reference {

enum class YuvLayout : uint8_t { k411, k422, k444 };

inline constexpr YuvLayout kYuvLayouts[] = {YuvLayout::k411, YuvLayout::k422, YuvLayout::k444};

uint32_t GroupPixels(YuvLayout layout);  // pixels that share a U and a V
uint32_t GroupBytes(YuvLayout layout);
uint32_t YuvRowBytes(YuvLayout layout, uint32_t width);

// The entry of the green offset table for U - 128 = a, V - 128 = b.
int32_t GreenOffset(int32_t a, int32_t b);

Pixel YuvPixel(uint8_t y, uint8_t u, uint8_t v);

// Tables that were never built look up zeros everywhere, alpha included.
enum class Tables : uint8_t { kBuilt, kNeverBuilt };

// On the caller's thread the image is one stream of groups, except where rows have to be padded. Widths that
// the layout cannot hold are not noticed.
void ConvertYuv(YuvLayout layout, Output output, void* dst, const void* src, uint32_t width, uint32_t height,
                Tables tables = Tables::kBuilt);

// On the pool, for widths that the layout can hold.
uint32_t PooledConvertYuv(YuvLayout layout, Output output, void* dst, const void* src, uint32_t width,
                          uint32_t height, int32_t threads, Tables tables = Tables::kBuilt);

}  // namespace prismo::reference

// Camera frames made of colour pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace prismo::reference {

// Samples are 8 bits wide, or words of 10 or 12 bits.
struct BayerDepths {
  uint32_t from, to;
};

// Keeps one sample of each pixel. `channels`: those of the top left, bottom left, top right, bottom right
// pixel.
void MakeBayer(BayerDepths depths, void* dst, const void* src, const int32_t (&channels)[4], uint32_t width,
               uint32_t height, uint32_t samples_per_pixel, bool pad);

// Bytes of the raw frame that the next function writes; 0 for a Bayer target.
size_t RawBytes(uint32_t target, uint32_t width, uint32_t height);

// A picture of 3 (BGR) or 4 (BGRA) bytes a pixel to a raw frame. False for targets that are not supported.
bool MakeRaw(uint32_t target, void* dst, const void* src, uint32_t pixel_bytes, uint32_t width,
             uint32_t height, bool pad);

}  // namespace prismo::reference

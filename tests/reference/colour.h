// Monochrome and packed colour frames to pictures, and into planes.
#pragma once

#include <cstdint>

#include "reference/bayer.h"
#include "reference/pictures.h"

namespace prismo::reference {

// What becomes of the bits of a shifted word above its low 8: the BGRA forms on the pool keep them.
enum class Excess : uint8_t { kDropped, kKept };

// A frame whose pixels hold one sample or three.
struct PackedFrame {
  const void* samples;
  uint32_t width;
  bool words = false;  // samples of 16 bits, reduced by `shift`
  uint8_t shift = 0;
  enum class Order : uint8_t { kGrey, kBgr, kRgb, kBgra } order = Order::kGrey;

  // The samples of a pixel, shifted.
  struct Samples {
    uint32_t b, g, r;
  };
  Samples At(uint32_t x, uint32_t y) const;
};

// Entry i of the grey table, and what the same formula gives beyond it.
constexpr uint32_t GreyWord(uint32_t i) { return 0xFF000000u + i * 0x010101u; }

// The given rows of a frame, pad bytes included. kKept is for BGRA output only.
void ConvertRows(const PackedFrame& frame, Output output, Excess excess, void* dst, Rows rows);

// All rows on the caller's thread; the rows that the pool converts, and its status.
void Convert(const PackedFrame& frame, Output output, void* dst, uint32_t height);
uint32_t PooledConvert(const PackedFrame& frame, Output output, void* dst, uint32_t height, int32_t threads);

// 8 bits from 10, 12 or 16; rows padded with zeros to a multiple of 4 bytes when `pad` is set.
void ReduceToMono8(const PackedFrame& frame, bool pad, void* dst, uint32_t height);

// The three channels of a packed frame of bytes.
void Split(const PackedFrame& frame, bool pad, const Planes& planes, uint32_t height);
uint32_t PooledSplit(const PackedFrame& frame, bool pad, const Planes& planes, uint32_t height,
                     int32_t threads);

}  // namespace prismo::reference

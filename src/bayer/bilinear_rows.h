// Bilinear demosaic of one row.
#pragma once

#include <cstddef>
#include <cstdint>

#include "bayer/bayer_row.h"
#include "core/frame.h"
#include "simd/stores.h"

namespace prismo {

enum class Samples : uint8_t {
  k8,      // bytes
  kN,      // 16-bit words, shifts of up to 6: sums that wrap at 16 bits are exact then
  kNWide,  // 16-bit words, any shift
};

constexpr Samples SamplesForShift(uint32_t shift) { return shift % 32 <= 6 ? Samples::kN : Samples::kNWide; }

struct BilinearLines {
  const void* up;  // samples, from column 0; the mirrored row at the frame's top and bottom
  const void* mid;
  const void* down;
  bool edge;       // the frame's top or bottom row
  uint32_t shift;  // reduces a sample to 8 bits
};

using BilinearRow = void (*)(const BilinearLines& lines, const BayerRow& row, const RowTarget& target);

struct BilinearKernels {
  BilinearRow bgra[3][2];  // [samples][plain stores, streaming stores]
  BilinearRow bgr[3][2];
  BilinearRow planar[2];  // bytes only
};

const BilinearKernels& CurrentBilinearKernels();

}  // namespace prismo

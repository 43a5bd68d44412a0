// Kernels that mirror rows and turn their order round.
#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/stores.h"

namespace prismo {

// What a left-right mirror moves as one, and the order of its bytes in the mirrored picture.
enum class MirrorUnit : uint8_t {
  kByte,
  kWord,
  kBytes3,  // a pixel of three bytes
  kYuv422,  // two pixels: U Y0 V Y1 becomes U Y1 V Y0
  kYuv411,  // four pixels: U Y0 Y1 V Y2 Y3 becomes U Y3 Y2 V Y1 Y0
  kWords3,  // a pixel of three 16-bit words
};
inline constexpr size_t kMirrorUnitCount = 6;

struct MirrorKernels {
  // Mirrors each of `rows` rows left-right. A row is whole units, and the next one follows it.
  using MirrorRows = void (*)(uint8_t* dst, const uint8_t* src, size_t row_bytes, size_t rows);
  MirrorRows mirror[kMirrorUnitCount][2];  // [unit][plain stores, streaming stores]

  // Copies `rows` rows in reverse order.
  using FlipRows = void (*)(uint8_t* dst, const uint8_t* src, size_t row_bytes, size_t rows);
  FlipRows flip[2];
};

const MirrorKernels& CurrentMirrorKernels();

}  // namespace prismo

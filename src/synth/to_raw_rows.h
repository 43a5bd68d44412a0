// Kernels that turn colour pictures into camera frames.
#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/stores.h"

namespace prismo {

enum class RawTarget : uint8_t {
  kMono8,
  kMonoN,  // words of 8 bits and the extra ones
  kRgb8,
  kBgr8,
  kRgbN,
  kBgrN,
  kYuv444,  // U Y V
  kYuv422,  // U Y0 V Y1
  kYuv411,  // U Y0 Y1 V Y2 Y3
};
inline constexpr size_t kRawTargetCount = 9;

struct RawKernels {
  // Turns a run of pixels, whole groups of the target's, into the samples that follow each other in the
  // frame.
  using Make = void (*)(uint8_t* dst, const uint8_t* src, size_t pixels, uint32_t extra_bits);
  Make make[kRawTargetCount][2][2];  // [target][BGR, BGRA][plain stores, streaming stores]
};

const RawKernels& CurrentRawKernels();

}  // namespace prismo

// Kernels that convert runs of pixels one by one: monochrome, packed colour, YUV.
#pragma once

#include <cstddef>
#include <cstdint>

#include "core/frame.h"
#include "simd/targets.h"

namespace prismo {

enum class Source : uint8_t {
  kMono8,
  kMonoN,  // 16-bit words; the low 8 bits of the shifted word
};
inline constexpr size_t kSourceCount = 2;

// Converts a run of pixels. `shift` reduces N-bit samples to 8 bits.
using ConvertRun = void (*)(uint8_t* dst, const uint8_t* src, size_t pixels, uint32_t shift);

struct ConvertKernels {
  ConvertRun run[kSourceCount][2][2];  // [source][BGRA, BGR][plain stores, streaming stores]
};

const ConvertKernels& CurrentConvertKernels();

inline ConvertRun ConvertRunFor(Source source, Layout layout, simd::StoreKind stores) {
  return CurrentConvertKernels().run[static_cast<size_t>(source)][layout != Layout::kBgra]
                                    [static_cast<size_t>(stores)];
}

}  // namespace prismo

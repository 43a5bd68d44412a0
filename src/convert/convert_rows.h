// Kernels that convert runs of pixels one by one: monochrome, packed colour, YUV.
#pragma once

#include <cstddef>
#include <cstdint>

#include "simd/stores.h"

namespace prismo {

// What a run of pixels is read from. N-bit samples are 16-bit words, of which the low 8 bits count after a
// shift.
enum class Source : uint8_t {
  kMono8,
  kMonoN,
  kMonoNSpill,  // to BGRA only: the BGRA word of a grey value, computed for values beyond 255 too
  kRgb8,
  kBgr8,
  kBgra8,  // to BGRA: alpha comes along
  kRgbN,
  kBgrN,
  kRgbNSpill,  // to BGRA only: the bits of a channel beyond the low 8 spill into the next
  kBgrNSpill,
  kYuv411,
  kYuv422,
  kYuv444,
};
inline constexpr size_t kSourceCount = 13;

// Pixels that share bytes of a source, and those bytes. A run holds whole groups.
struct PixelGroup {
  uint32_t pixels;
  uint32_t bytes;

  constexpr size_t Bytes(size_t run_pixels) const { return run_pixels / pixels * bytes; }
};

constexpr PixelGroup GroupOf(Source source) {
  constexpr PixelGroup kGroups[kSourceCount] = {{1, 1}, {1, 2}, {1, 2}, {1, 3}, {1, 3}, {1, 4}, {1, 6},
                                                {1, 6}, {1, 6}, {1, 6}, {4, 6}, {2, 4}, {1, 3}};
  return kGroups[static_cast<size_t>(source)];
}

enum class Pixels : uint8_t { kBgra, kBgr, kGrey };  // kGrey: of monochrome sources only
inline constexpr size_t kPixelsCount = 3;

// Converts a run of pixels. `shift` reduces N-bit samples to 8 bits; its low 5 bits count.
using ConvertRun = void (*)(uint8_t* dst, const uint8_t* src, size_t pixels, uint32_t shift);

// Splits a run of 3-byte pixels: byte i of each goes to planes[i].
using SplitRun = void (*)(uint8_t* const planes[3], const uint8_t* src, size_t pixels);

struct ConvertKernels {
  ConvertRun run[kSourceCount][kPixelsCount][2];  // [...][...][plain stores, streaming stores]
  SplitRun split[2];
};

const ConvertKernels& CurrentConvertKernels();

// [plain stores, streaming stores]
inline const ConvertRun* ConvertRunsFor(Source source, Pixels pixels) {
  return CurrentConvertKernels().run[static_cast<size_t>(source)][static_cast<size_t>(pixels)];
}

}  // namespace prismo

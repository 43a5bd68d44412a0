// Demosaics of Bayer frames, one pixel at a time.
#pragma once

#include <cstdint>
#include <vector>

#include "reference/pictures.h"

namespace prismo::reference {

// The colours of the first two samples of the top row.
enum class Phase : uint8_t { kBg, kGb, kGr, kRg };

inline constexpr Phase kPhases[] = {Phase::kBg, Phase::kGb, Phase::kGr, Phase::kRg};

const char* NameOf(Phase phase);  // "BG" and so on

// The phase of the same mosaic seen from column x and row y.
Phase PhaseFrom(Phase phase, uint32_t x, uint32_t y);

enum class Site : uint8_t { kBlue, kRed, kGreenInBlueRow, kGreenInRedRow };

// A frame with one sample a pixel. Reading outside of it throws.
struct Mosaic {
  const void* samples;
  uint32_t width;
  uint32_t height;
  Phase phase;
  bool words = false;  // samples of 16 bits, reduced to 8 by `shift`
  uint8_t shift = 0;

  bool Holds(int64_t x, int64_t y) const;
  int32_t Sample(int64_t x, int64_t y) const;
  Site SiteAt(int64_t x, int64_t y) const;
};

// The bilinear rules, those of the frame's edges and corners included.
Pixel BilinearPixel(const Mosaic& mosaic, uint32_t x, uint32_t y);

// How often the adaptive rules met each of their cases.
struct AdaptiveCounts {
  uint64_t along_column = 0, along_row = 0, green_tie = 0;
  uint64_t green_below_0 = 0, green_above_255 = 0;
  uint64_t anti_diagonal = 0, main_diagonal = 0, diagonal_tie = 0;
  uint64_t colour_below_0 = 0, colour_above_255 = 0;
};

// The adaptive green of a pixel that has two neighbours in each direction.
uint8_t AdaptiveGreen(const Mosaic& mosaic, uint32_t x, uint32_t y, AdaptiveCounts* counts = nullptr);

// Whole frames on the caller's thread.
void Bilinear(const Mosaic& mosaic, Output output, void* dst);
void Adaptive(const Mosaic& mosaic, Output output, void* dst, AdaptiveCounts* counts = nullptr);

// Whole frames on the pool: the same pixels, the pool's status, and in the adaptive form what a work that was
// given up leaves undone.
uint32_t PooledBilinear(const Mosaic& mosaic, Output output, void* dst, int32_t threads);
uint32_t PooledAdaptive(const Mosaic& mosaic, Output output, void* dst, int32_t threads);

struct Rectangle {
  uint32_t left, top, width, height;
  uint32_t dst_width, dst_height, dst_left, dst_top;
};

// A rectangle that keeps two pixels from every edge of the frame. `mosaic.phase` is the frame's phase.
void AdaptiveRectangle(const Mosaic& mosaic, const Rectangle& rectangle, Output output, void* dst);
uint32_t PooledAdaptiveRectangle(const Mosaic& mosaic, const Rectangle& rectangle, Output output, void* dst,
                                 int32_t threads);

// Three planes, rows padded to a multiple of 4 bytes when `pad` is set.
struct Planes {
  uint8_t* b;
  uint8_t* g;
  uint8_t* r;
};

size_t PlanePitch(uint32_t width, bool pad);
void BayerPlanes(const Mosaic& mosaic, bool pad, const Planes& planes);
uint32_t PooledBayerPlanes(const Mosaic& mosaic, bool pad, const Planes& planes, int32_t threads);

}  // namespace prismo::reference

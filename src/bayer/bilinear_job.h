// A bilinear demosaic as a row job, for packed pictures and for planes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "bayer/bilinear.h"
#include "bayer/bilinear_rows.h"
#include "core/rows.h"
#include "simd/stores.h"

namespace prismo {

struct BilinearJob {
  const uint8_t* src;
  size_t src_pitch;
  uint8_t* plane[3];  // plane[0] alone for packed pictures
  uint32_t planes;
  uint32_t pad_bytes;  // zero bytes behind each row of a plane
  size_t dst_pitch;
  FrameSize size;
  ColumnRange columns;
  Phase phase;
  simd::StorePlan stores;
  uint32_t shift;
  const BilinearRow* convert;  // [plain stores, streaming stores]

  void Rows(RowRange range) const;
};

// The job of a whole frame into a packed picture.
BilinearJob MakeBilinearJob(const BilinearForm& form, void* dst, const void* src, FrameSize size,
                            uint32_t shift, simd::TimeGoesTo time);

// What takes the time of the caller's thread, and of the pool: before there is one, that of one thread.
inline constexpr simd::TimeGoesTo kTimeOnCaller = simd::TimeGoesTo::kBoth;
simd::TimeGoesTo TimeOnPool();

// GR and RG frames run on the pool as BG and GB ones whose row pairs are swapped: the flag that works carry.
constexpr bool RowPairsSwapped(Phase phase) { return phase == Phase::kGR || phase == Phase::kRG; }
constexpr bool IsBGFamily(Phase phase) { return phase == Phase::kBG || phase == Phase::kGR; }

}  // namespace prismo

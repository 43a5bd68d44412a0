// The adaptive demosaic as row jobs, for whole frames and for rectangles.
#pragma once

#include <cstddef>
#include <cstdint>

#include "bayer/acpi.h"
#include "bayer/acpi_rows.h"
#include "bayer/bilinear_job.h"
#include "core/rows.h"
#include "mp/engine.h"

namespace prismo {

// A frame and the picture that it, or a rectangle of it, goes to.
struct AcpiImages {
  const uint8_t* src;
  FrameSize frame;
  Phase phase;
  uint8_t* dst;  // the pixel of (first_column, first_row) of the frame
  size_t dst_pitch;
  uint32_t first_column;
  uint32_t first_row;
  Layout layout;

  const uint8_t* Line(uint32_t y) const { return src + size_t{frame.width} * y; }
  RowTarget Target(uint32_t y) const {
    return {{dst + dst_pitch * (y - first_row), nullptr, nullptr}, first_column};
  }
};

struct AcpiRegion {
  ColumnRange columns;           // to be written
  ColumnRange adaptive_columns;  // red and blue are bilinear in the others
  uint32_t adaptive_first_row;   // likewise
  uint32_t adaptive_last_row;
};

// Complete pixels in one pass: greens are computed again from the samples, one row ahead of the pixels, so
// that they never leave the cache.
struct AcpiJob {
  AcpiImages images;
  AcpiRegion region;
  uint32_t pad_bytes;  // zero bytes behind each row
  simd::StoreKind stores;

  void Rows(RowRange range) const;

 private:
  uint32_t StripBorder(uint32_t y, uint32_t column) const;
};

// The first work on the pool: greens only.
struct GreenJob {
  AcpiImages images;
  ColumnRange columns;

  void Rows(RowRange range) const;
};

}  // namespace prismo

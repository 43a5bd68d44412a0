// The adaptive demosaic as row jobs, for whole frames and for rectangles.
#pragma once

#include <cstddef>
#include <cstdint>

#include "bayer/acpi.h"
#include "bayer/acpi_rows.h"
#include "bayer/bilinear_job.h"
#include "bayer/green_plane.h"
#include "core/rows.h"
#include "core/status.h"
#include "mp/engine.h"
#include "platform/kept_pages.h"

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

// Complete pixels in one pass: greens come one row ahead of them and stay in the cache.
struct AcpiJob {
  AcpiImages images;
  AcpiRegion region;
  uint32_t pad_bytes;  // zero bytes behind each row
  simd::StoreKind stores;
  GreenPlane greens{};  // of a first work; none: they are computed, too

  void Rows(RowRange range) const;

 private:
  uint32_t StripBorder(uint32_t y, uint32_t column) const;
};

// The first work on the pool: greens, and the frame's two outermost columns on each side completely. They
// wait in the plane until the second work writes whole pixels; the picture gets them from here only if that
// does not happen.
struct GreenJob {
  AcpiImages images;
  ColumnRange columns;
  GreenPlane greens;

  void Rows(RowRange range) const;

  // Greens of rows that are in no work.
  void ComputeRows(RowRange range) const;

  // After either work has failed. Rows that are under way are their workers' to end; for each of the others
  // whose greens are there, also(y) follows them.
  template <class Also>
  void GiveUp(RowRange range, const Also& also) const {
    for (int32_t i = 0; i < range.count; ++i) {
      const auto y = static_cast<uint32_t>(range.first + i);
      if (!greens.GiveUp(y)) continue;
      Put(y);
      also(y);
    }
  }
  void GiveUp(RowRange range) const {
    GiveUp(range, [](uint32_t) {});
  }

 private:
  void Put(uint32_t y) const;
};

// Runs both(plane): the two works, which share in the plane's memory. kFailure when there is none.
template <class Both>
Status WithGreenPlane(GreenPlane plane, const Both& both) noexcept {
  return NoThrow(Status::kFailure, [&] {
    const std::shared_ptr<void> memory = platform::TakePages(platform::KeptFor::kGreens, plane.Bytes());
    if (!memory) return Status::kFailure;
    plane.Use(memory.get());
    const mp::SharedWithWorks shared(memory);
    return both(plane);
  });
}

}  // namespace prismo

// The adaptive demosaic as row jobs, for whole frames and for rectangles.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "bayer/acpi.h"
#include "bayer/acpi_rows.h"
#include "bayer/bilinear_job.h"
#include "bayer/green_rows.h"
#include "core/rows.h"
#include "core/status.h"
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

// Complete pixels in one pass: greens come one row ahead of them and stay in the cache.
struct AcpiJob {
  AcpiImages images;
  AcpiRegion region;
  uint32_t pad_bytes;  // zero bytes behind each row
  simd::StoreKind stores;
  GreenRows greens{};  // for the second work on the pool

  void Rows(RowRange range) const;

 private:
  uint32_t StripBorder(uint32_t y, uint32_t column) const;
  void PrepareRow(uint32_t y) const;
};

// The first work on the pool: sees to greens, and to the frame's two outermost columns on each side, should
// the second one not come. See GreenRows.
struct GreenJob {
  AcpiImages images;
  ColumnRange columns;
  GreenRows greens;

  void Rows(RowRange range) const;

  // After either work has failed. Rows that are under way are their workers' to end; the others that the
  // first work has reached get their greens, and then also(rows) whatever else they are due.
  template <class Also>
  void GiveUp(RowRange range, const Also& also) const {
    ForEachRun(
        range, [this](uint32_t y) { return greens.GiveUp(y); },
        [&](RowRange rows) {
          Put(rows);
          also(rows);
        });
  }
  void GiveUp(RowRange range) const {
    GiveUp(range, [](RowRange) {});
  }

 private:
  // Calls use(rows) for each run of rows y in `range` of which is(y) is true.
  template <class Is, class Use>
  static void ForEachRun(RowRange range, const Is& is, const Use& use) {
    RowRange run{range.first, 0};
    for (int32_t y = range.first; y < range.first + range.count; ++y) {
      if (is(static_cast<uint32_t>(y))) {
        if (run.count++ == 0) run.first = y;
      } else if (run.count > 0) {
        use(run);
        run.count = 0;
      }
    }
    if (run.count > 0) use(run);
  }

  // Greens, and the frame's outermost columns, into the picture.
  void Put(RowRange rows) const;
};

// Runs both(greens): the two works, of rows from the first one on. kFailure when there is no memory.
template <class Both>
Status WithGreenRows(uint32_t first_row, uint32_t rows, const Both& both) noexcept {
  return NoThrow(Status::kFailure, [&] {
    const auto states = std::make_shared<uint8_t[]>(rows);
    const mp::SharedWithWorks shared(states);
    return both(GreenRows(first_row, states.get()));
  });
}

}  // namespace prismo

// What all demosaic kernels are told about a row.
#pragma once

#include <cstdint>

#include "bayer/phase.h"

namespace prismo {

struct ColumnRange {
  uint32_t begin;
  uint32_t end;
};

struct BayerRow {
  uint32_t width;       // of the frame: samples from column 0 to width - 1 exist
  ColumnRange columns;  // to be converted
  RowRole role;
  bool inside;  // no line is the frame's first or last: a row before and a row behind them can be read
};

// Columns that a kernel may read before the first and behind the last column of a block.
inline constexpr uint32_t kReadBefore = 2;
inline constexpr uint32_t kReadAfter = 3;

// Where the pixels of a row go: plane[0] alone for packed layouts; blue, green and red plane otherwise. The
// first byte belongs to column `first_column`.
struct RowTarget {
  uint8_t* plane[3];
  uint32_t first_column;
};

}  // namespace prismo

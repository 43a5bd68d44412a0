// Adaptive colour plane demosaic of one row: first greens, then red and blue as differences to green.
#pragma once

#include <cstdint>

#include "bayer/bayer_row.h"

namespace prismo {

struct GreenLines {
  const uint8_t* raw[5];  // rows y - 2 to y + 2, from column 0
};

// Greens of the row's columns, to greens[column]. In the frame's two outermost columns on each side they are
// bilinear.
using GreenRow = void (*)(const GreenLines& lines, const BayerRow& row, uint8_t* greens);

struct ColourLines {
  const uint8_t* raw[3];     // rows y - 1 to y + 1, from column 0
  const uint8_t* greens[3];  // of the same rows; greens[i][column]
  ColumnRange adaptive;      // red and blue are bilinear in the other columns
};

using ColourRow = void (*)(const ColourLines& lines, const BayerRow& row, const RowTarget& target);

// Stores greens[column] as the green bytes of packed pixels.
using PutGreens = void (*)(const uint8_t* greens, ColumnRange columns, const RowTarget& target);

struct AcpiKernels {
  GreenRow green;
  ColourRow bgra[2];  // [plain stores, streaming stores]
  ColourRow bgr[2];
  PutGreens put_bgra;
  PutGreens put_bgr;
};

const AcpiKernels& CurrentAcpiKernels();

// Lines that a ColourRow reads must be readable this many bytes before and behind the columns that it
// converts.
inline constexpr uint32_t kGreenMargin = 4;

}  // namespace prismo

// Adaptive colour plane demosaic of one row: first greens, then red and blue as differences to green.
#pragma once

#include <cstdint>

#include "bayer/bayer_row.h"

namespace prismo {

// Rows are converted in strips of up to this many columns, so that those under way, 34 KB, fit a first-level
// cache of 48 KB.
inline constexpr uint32_t kStripColumns = 2560;
inline constexpr uint32_t kBlockColumns = 64;  // of the widest vectors

constexpr uint32_t UpToBlock(uint32_t column) {
  return (column + kBlockColumns - 1) / kBlockColumns * kBlockColumns;
}

// Words that are there before and behind those of a strip: kernels read and write whole vectors.
inline constexpr uint32_t kSplitMargin = 64;

// Rows of split samples come in pairs, the second one this many words behind the first: one pointer leads to
// both.
inline constexpr uint32_t kSplitPitch = (kStripColumns + 3 * kBlockColumns) / 2 + 2 * kSplitMargin;

// Samples of a row as 16-bit words, those of the even columns and, kSplitPitch words further, those of the
// odd ones: column x is [x / 2] of its words. A vector then holds sites of one kind, and their neighbours are
// vectors, too. Greens of a row's sites are kept in a single row, those of site x at [x / 2].

// A row of a frame that is to be split: an even range of columns. A word in front of the odd ones and one
// behind the even ones repeat the outermost. What lies `next_row` bytes further is read ahead.
struct RowToSplit {
  const uint8_t* line;  // from column 0
  ColumnRange columns;
  size_t next_row;
  int16_t* words;
};

using SplitColumns = void (*)(const RowToSplit& row);

// What the greens of row y are computed from.
struct GreenLines {
  const int16_t* raw[4];  // samples of rows y - 2 to y + 1
  bool bilinear;          // the frame's second or second last row: rows y - 2 and y + 2 do not count
  RowToSplit ahead;       // row y + 2; without columns where it is split already, or not there
};

// Greens of the row's sites. In the frame's two outermost columns on each side they are bilinear. What lies
// behind the row's columns is written, too: up to kSplitMargin sites.
using GreenRow = void (*)(const GreenLines& lines, const BayerRow& row, int16_t* words);

struct ColourLines {
  int16_t* greens[3];    // of rows y - 1 to y + 1
  ColumnRange adaptive;  // red and blue are bilinear in the other columns
};

// Colours of row y, whose samples are among those that `below_lines` has for row y + 1. The greens of row
// y + 1 come first, or on the way.
using ColourRow = void (*)(const ColourLines& lines, const GreenLines& below_lines, const BayerRow& below,
                           const BayerRow& row, const RowTarget& target);

struct AcpiKernels {
  SplitColumns split;
  GreenRow green;
  ColourRow bgra[2];  // [plain stores, streaming stores]
  ColourRow bgr[2];
};

const AcpiKernels& CurrentAcpiKernels();

}  // namespace prismo

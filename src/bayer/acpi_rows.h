// Adaptive colour plane demosaic of one row: first greens, then red and blue as differences to green.
#pragma once

#include <cstdint>

#include "bayer/bayer_row.h"

namespace prismo {

// Rows are converted in strips of up to this many columns, so that those under way fit the first-level cache.
inline constexpr uint32_t kStripColumns = 2176;
inline constexpr uint32_t kBlockColumns = 64;  // of the widest vectors

constexpr uint32_t DownToBlock(uint32_t column) { return column & ~(kBlockColumns - 1); }
constexpr uint32_t UpToBlock(uint32_t column) { return DownToBlock(column + kBlockColumns - 1); }

// Words that are there before and behind those of a strip: kernels read and write whole vectors.
inline constexpr uint32_t kSplitMargin = 64;

// Rows of words come in pairs, the second one this many words behind the first: one pointer leads to both.
inline constexpr uint32_t kSplitPitch = (kStripColumns + 3 * kBlockColumns) / 2 + 2 * kSplitMargin;

// Samples of a row as 16-bit words, those of the even and those of the odd columns side by side: column x is
// [x / 2] of its row of words. A vector then holds sites of one kind, and their neighbours are vectors, too.
struct SplitRow {
  const int16_t* even;

  const int16_t* odd() const { return even + kSplitPitch; }
};

// What colours are interpolated from, for the red and blue sites of a row: site x is [x / 2].
struct SiteGreens {
  const int16_t* green;

  // Twice the sample less the green.
  const int16_t* difference() const { return green + kSplitPitch; }
};

// A row of a frame that is to be split: an even range of columns, of at least one pair. What lies `next_row`
// bytes further is read ahead.
struct RowToSplit {
  const uint8_t* line;  // from column 0
  ColumnRange columns;
  size_t next_row;
  int16_t* words;  // a SplitRow
};

using SplitColumns = void (*)(const RowToSplit& row);

struct GreenLines {
  SplitRow raw[5];  // rows y - 2 to y + 2
  bool bilinear;  // the whole row, for the frame's second and second last; rows y - 2 and y + 2 do not count
  RowToSplit ahead;  // row y + 2; no columns where it is split already
};

// Greens that were made before, as bytes: site x is [x / 2].
struct GreenBytes {
  static constexpr bool bilinear = false;  // their bytes are right as they are
  SplitRow raw[3];                         // rows y - 2 to y
  RowToSplit split;                        // row y
  const uint8_t* bytes;
  size_t next;  // what lies so many bytes further is read ahead
};

// Greens of the row's sites from an even column on, with their differences or, as bytes, alone: site x is
// [x / 2]. In the frame's two outermost columns on each side they are bilinear. What lies behind the row's
// columns is written, too: up to kSplitMargin sites.
template <class From, typename T>
using GreenRow = void (*)(const From& from, const BayerRow& row, T* to);

struct ColourLines {
  SiteGreens greens[3];  // rows y - 1 to y + 1
  ColumnRange adaptive;  // red and blue are bilinear in the other columns
};

// Also makes the greens of the row below.
template <class From>
using ColourRow = void (*)(const ColourLines& lines, const From& from, const BayerRow& below, int16_t* words,
                           const BayerRow& row, const RowTarget& target);

template <class From>
struct AcpiRows {
  GreenRow<From, int16_t> green;
  ColourRow<From> bgra[2];  // [plain stores, streaming stores]
  ColourRow<From> bgr[2];
};

struct AcpiKernels {
  SplitColumns split;
  GreenRow<GreenLines, uint8_t> green_bytes;
  AcpiRows<GreenLines> computed;
  AcpiRows<GreenBytes> kept;
};

const AcpiKernels& CurrentAcpiKernels();

}  // namespace prismo

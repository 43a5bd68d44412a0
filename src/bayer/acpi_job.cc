#include "bayer/acpi_job.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "simd/cache_line.h"

namespace prismo {
namespace {

// Rows of words that are used in turn: those of the present row and of a few above, or below, it.
template <uint32_t kRows, uint32_t kWords>
class Slots {
 public:
  explicit Slots(uint32_t first_column) {
    for (uint32_t i = 0; i < kRows; ++i) {
      // Each slot stands in the table twice, so that neighbours need no wrapping.
      slots_[i] = slots_[i + kRows] =
          words_[i].at + kSplitMargin - static_cast<std::ptrdiff_t>(first_column / 2);
    }
  }

  void Next() {
    if (++present_ == kRows) present_ = 0;
  }

  int16_t* At(int32_t dy) const {
    return slots_[static_cast<uint32_t>(static_cast<int32_t>(present_ + (dy < 0 ? kRows : 0)) + dy)];
  }

 private:
  struct alignas(64) Words {
    int16_t at[kWords];
  };

  uint32_t present_ = 0;
  std::array<int16_t*, 2 * kRows> slots_;
  std::array<Words, kRows> words_;
};

// The rows under way of a strip of columns, from top to bottom: split samples of five, greens of three.
class Ring {
 public:
  // For colours of the columns given. The first row whose greens come next is none of the frame's outermost.
  Ring(const AcpiImages& images, ColumnRange columns, uint32_t first_row)
      : images_(images),
        kernels_(CurrentAcpiKernels()),
        columns_{(columns.begin - std::min(columns.begin, 3u)) & ~1u,
                 std::min((columns.end + 4) & ~1u, images.frame.width)},
        green_columns_{columns.begin - std::min(columns.begin, 1u),
                       std::min(columns.end + 1, images.frame.width)},
        row_(first_row - 1),
        samples_(FirstWord(columns)),
        greens_(FirstWord(columns)) {
    for (int32_t dy = first_row == 1 ? 0 : -1; dy <= 2; ++dy) kernels_.split(ToSplit(dy));
  }

  // The next row, whose greens use(kernels, lines, row) makes, to Greens(0).
  template <class Use>
  void Next(const Use& use) {
    ++row_;
    samples_.Next();
    greens_.Next();
    use(kernels_, Lines(), Row(row_, green_columns_));
  }

  void NextGreens() {
    Next([this](const AcpiKernels& kernels, const GreenLines& lines, const BayerRow& row) {
      kernels.green(lines, row, Greens(0));
    });
  }

  // Of the row whose greens came last, or of one up to two rows above.
  int16_t* Greens(int32_t dy) const { return greens_.At(dy); }

  BayerRow Row(uint32_t y, ColumnRange columns) const {
    return {images_.frame.width, columns, RoleOf(images_.phase, y), true};
  }

 private:
  // Of the columns' first words: in front of them there is room for the neighbours on the left, and words are
  // aligned as the columns are.
  static uint32_t FirstWord(ColumnRange columns) {
    return columns.begin < kBlockColumns ? 0 : (columns.begin - (kBlockColumns - 1)) & ~1u;
  }

  // What the present row's greens are computed from. The frame's second and second last row have but one row
  // above or below.
  GreenLines Lines() {
    const bool second_last = row_ + 2 == images_.frame.height;
    const bool bilinear = row_ == 1 || second_last;
    if (row_ == 1 && !second_last) kernels_.split(ToSplit(2));
    return {{samples_.At(-2), samples_.At(-1), samples_.At(0), samples_.At(1)},
            bilinear,
            bilinear ? RowToSplit{nullptr, {}, 0, samples_.At(2)} : ToSplit(2)};
  }

  RowToSplit ToSplit(int32_t dy) const {
    const auto y = static_cast<uint32_t>(static_cast<int32_t>(row_) + dy);
    return {images_.Line(y), columns_, images_.frame.width, samples_.At(dy)};
  }

  const AcpiImages& images_;
  const AcpiKernels& kernels_;
  const ColumnRange columns_;        // of samples
  const ColumnRange green_columns_;  // of greens for colours
  uint32_t row_;                     // whose greens came last
  Slots<5, 2 * kSplitPitch> samples_;
  Slots<3, kSplitPitch> greens_;
};

// Rows of a tile, whose source stays in the second-level cache from one strip to the next.
constexpr int32_t kTileRows = 256;

// Calls use(strip, rows) for tiles of the picture: columns in strips of about the same width, one after the
// other for some rows at a time. Strips of the whole height would leave to each other what the processor
// reads ahead in a row (measured at 26 megapixels: 5 to 10 % more time).
template <class Use>
void ForEachTile(ColumnRange columns, RowRange rows, const Use& use) {
  const uint32_t count = columns.end - columns.begin;
  const uint32_t strips = (count + kStripColumns - 1) / kStripColumns;
  if (strips == 0) return;
  const uint32_t width = UpToBlock((count + strips - 1) / strips);
  const int32_t height = strips == 1 ? rows.count : kTileRows;
  for (int32_t y = 0; y < rows.count; y += height) {
    for (uint32_t x = columns.begin; x < columns.end; x += std::min(width, columns.end - x)) {
      use(ColumnRange{x, x + std::min(width, columns.end - x)},
          RowRange{rows.first + y, std::min(height, rows.count - y)});
    }
  }
}

// How many of the rows, from the first on, the submitter has not given up.
int32_t Taken(const GreenRows& greens, RowRange rows) {
  int32_t count = 0;
  while (count < rows.count && greens.Take(static_cast<uint32_t>(rows.first + count))) ++count;
  return count;
}

}  // namespace

// Strips meet where a row's streaming stores are aligned: no line of memory is written by two of them.
uint32_t AcpiJob::StripBorder(uint32_t y, uint32_t column) const {
  if (column == region.columns.begin || column == region.columns.end) return column;
  const RowTarget target = images.Target(y);
  const size_t pixel_bytes = PixelBytes(images.layout);
  const size_t pixels =
      simd::PixelsToLine(target.plane[0] + pixel_bytes * (column - target.first_column), pixel_bytes);
  if (pixels == simd::kCacheLine) return column;
  return std::min(column + static_cast<uint32_t>(pixels), region.columns.end);
}

// Fetches the line that row y begins in, unless it begins with it: a plain store to come.
void AcpiJob::PrepareRow(uint32_t y) const {
  const uint8_t* const begin =
      images.Target(y).plane[0] + PixelBytes(images.layout) * (region.columns.begin - images.first_column);
  if (reinterpret_cast<uintptr_t>(begin) % simd::kCacheLine != 0) __builtin_prefetch(begin, 1);
}

void AcpiJob::Rows(RowRange range) const {
  if (greens) range.count = Taken(greens, range);
  ForEachTile(region.columns, range, [&](ColumnRange strip, RowRange rows) {
    const auto first_row = static_cast<uint32_t>(rows.first);
    const uint32_t end_row = first_row + static_cast<uint32_t>(rows.count);
    // Rows that begin at the same place of a line of memory all end there, too.
    const uint32_t end = images.dst_pitch % simd::kCacheLine == 0
                             ? StripBorder(first_row, strip.end)
                             : std::min(strip.end + kBlockColumns, region.columns.end);
    Ring ring(images, {strip.begin, end}, first_row - 1);
    ring.NextGreens();
    ring.NextGreens();
    for (uint32_t y = first_row; y < end_row; ++y) {
      const bool adaptive = y >= region.adaptive_first_row && y <= region.adaptive_last_row;
      ring.Next([&](const AcpiKernels& kernels, const GreenLines& below_lines, const BayerRow& below) {
        const ColourLines lines{{ring.Greens(-2), ring.Greens(-1), ring.Greens(0)},
                                adaptive ? region.adaptive_columns : ColumnRange{0, 0}};
        const BayerRow row = ring.Row(y, {StripBorder(y, strip.begin), StripBorder(y, strip.end)});
        if (strip.begin == region.columns.begin && y + 1 < end_row) PrepareRow(y + 1);
        const auto& convert = images.layout == Layout::kBgra ? kernels.bgra : kernels.bgr;
        convert[static_cast<size_t>(stores)](lines, below_lines, below, row, images.Target(y));
      });
    }
  });
  if (pad_bytes != 0) {
    for (int32_t i = 0; i < range.count; ++i) {
      const auto y = static_cast<uint32_t>(range.first + i);
      std::memset(images.Target(y).plane[0] + images.dst_pitch - pad_bytes, 0, pad_bytes);
    }
  }
  simd::FinishStores(stores);
}

void GreenJob::Rows(RowRange range) const {
  ForEachRun(
      range, [this](uint32_t y) { return greens.Reach(y); }, [this](RowRange rows) { Put(rows); });
}

void GreenJob::Put(RowRange rows) const {
  const size_t pixel_bytes = PixelBytes(images.layout);
  ForEachTile(columns, rows, [&](ColumnRange strip, RowRange tile) {
    const auto first_row = static_cast<uint32_t>(tile.first);
    Ring ring(images, strip, first_row);
    for (uint32_t y = first_row; y < first_row + static_cast<uint32_t>(tile.count); ++y) {
      ring.NextGreens();
      const RowTarget target = images.Target(y);
      const int16_t* const sites = ring.Greens(0);
      const uint32_t first_site = RoleOf(images.phase, y).green_first ? 1 : 0;
      for (uint32_t x = strip.begin; x < strip.end; ++x) {
        target.plane[0][pixel_bytes * (x - target.first_column) + 1] =
            x % 2 == first_site ? static_cast<uint8_t>(sites[x / 2]) : images.Line(y)[x];
      }
    }
  });
  if (columns.begin > 0) return;  // a rectangle
  BilinearJob border = MakeBilinearJob({images.phase, BayerDepth::k8, images.layout}, images.dst, images.src,
                                       images.frame, 0, simd::TimeGoesTo::kArithmetic);
  for (const uint32_t x : {0u, images.frame.width - 2}) {
    border.columns = {x, x + 2};
    border.Rows(rows);
  }
}

}  // namespace prismo

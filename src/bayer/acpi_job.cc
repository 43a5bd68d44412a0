#include "bayer/acpi_job.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace prismo {
namespace {

// Frames are converted in strips of columns, so that a few rows of greens fit the stack and the first-level
// cache.
constexpr uint32_t kStripColumns = 8192;

// Greens of one row of a strip and of the column on each side of it.
class GreenRowBuffer {
 public:
  // The row's buffer as if it began at column 0; `first` is the first column of the strip.
  uint8_t* FromColumnZero(uint32_t first) { return bytes_.data() + kGreenMargin - std::ptrdiff_t{first}; }

 private:
  std::array<uint8_t, kStripColumns + 2 * kGreenMargin> bytes_{};
};

void ComputeGreens(const AcpiImages& images, uint32_t y, ColumnRange columns, uint8_t* greens) {
  const uint32_t height = images.frame.height;
  const BayerRow row{images.frame.width, columns, RoleOf(images.phase, y), y >= 3 && y + 3 < height};
  if (y < 2 || y + 2 >= height) {
    const BilinearLines lines{.up = images.Line(y == 0 ? 1 : y - 1),
                              .mid = images.Line(y),
                              .down = images.Line(y + 1 == height ? y - 1 : y + 1),
                              .edge = y == 0 || y + 1 == height,
                              .shift = 0};
    CurrentBilinearKernels().green(lines, row, {{greens + columns.begin, nullptr, nullptr}, columns.begin});
  } else {
    CurrentAcpiKernels().green(
        {{images.Line(y - 2), images.Line(y - 1), images.Line(y), images.Line(y + 1), images.Line(y + 2)}},
        row, greens);
  }
}

// Calls use(strip) for the columns in strips.
template <class Use>
void ForEachStrip(ColumnRange columns, const Use& use) {
  for (uint32_t x = columns.begin; x < columns.end; x += std::min(kStripColumns, columns.end - x)) {
    use(ColumnRange{x, x + std::min(kStripColumns, columns.end - x)});
  }
}

}  // namespace

void AcpiJob::Rows(RowRange range) const {
  const AcpiKernels& kernels = CurrentAcpiKernels();
  const ColourRow convert =
      (images.layout == Layout::kBgra ? kernels.bgra : kernels.bgr)[static_cast<size_t>(stores)];
  const auto first_row = static_cast<uint32_t>(range.first);
  const uint32_t end_row = first_row + static_cast<uint32_t>(range.count);

  ForEachStrip(region.columns, [&](ColumnRange strip) {
    const ColumnRange green_columns{strip.begin - std::min(strip.begin, 1u),
                                    std::min(strip.end + 1, images.frame.width)};
    std::array<GreenRowBuffer, 3> ring;
    std::array<uint32_t, 3> row_in_ring;
    row_in_ring.fill(images.frame.height);  // none
    const auto greens_of = [&](uint32_t y) {
      uint8_t* const greens = ring[y % 3].FromColumnZero(strip.begin);
      if (row_in_ring[y % 3] != y) {
        ComputeGreens(images, y, green_columns, greens);
        row_in_ring[y % 3] = y;
      }
      return greens;
    };
    for (uint32_t y = first_row; y < end_row; ++y) {
      const bool adaptive = y >= region.adaptive_first_row && y <= region.adaptive_last_row;
      const uint8_t* const own = greens_of(y);
      ColourLines lines{{images.Line(y - 1), images.Line(y), images.Line(y + 1)}, {own, own, own}, {0, 0}};
      if (adaptive) {
        lines.greens[0] = greens_of(y - 1);
        lines.greens[2] = greens_of(y + 1);
        lines.adaptive = region.adaptive_columns;
      }
      convert(lines, {images.frame.width, strip, RoleOf(images.phase, y), true}, images.Target(y));
    }
  });
  if (pad_bytes != 0) {
    for (uint32_t y = first_row; y < end_row; ++y) {
      std::memset(images.Target(y).plane[0] + images.dst_pitch - pad_bytes, 0, pad_bytes);
    }
  }
  simd::FinishStores(stores);
}

void GreenJob::Rows(RowRange range) const {
  const AcpiKernels& kernels = CurrentAcpiKernels();
  const PutGreens put = images.layout == Layout::kBgra ? kernels.put_bgra : kernels.put_bgr;
  const auto first_row = static_cast<uint32_t>(range.first);
  ForEachStrip(columns, [&](ColumnRange strip) {
    GreenRowBuffer buffer;
    uint8_t* const greens = buffer.FromColumnZero(strip.begin);
    for (uint32_t y = first_row; y < first_row + static_cast<uint32_t>(range.count); ++y) {
      ComputeGreens(images, y, strip, greens);
      put(greens, strip, images.Target(y));
    }
  });
}

}  // namespace prismo

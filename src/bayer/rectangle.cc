#include "bayer/rectangle.h"

#include "bayer/acpi_job.h"

namespace prismo {
namespace {

using mp::LogFunction;

// A margin of two pixels on each side, so that every neighbour of the adaptive rules exists.
constexpr uint32_t kMargin = 2;

// Differences wrap by contract (a frame without pixels passes here and is found empty afterwards); sums do
// not.
bool Valid(const Rectangle& r) {
  const auto fits = [](uint32_t first, uint32_t count, uint32_t room) {
    return uint64_t{first} + count <= room;
  };
  return r.dst && r.src && r.frame.Even() && r.size.Even() && r.left >= kMargin && r.top >= kMargin &&
         fits(r.left, r.size.width, r.frame.width - kMargin) &&
         fits(r.top, r.size.height, r.frame.height - kMargin) &&
         fits(r.dst_left, r.size.width, r.picture.width) && fits(r.dst_top, r.size.height, r.picture.height);
}

// All of the rectangle: red and blue are bilinear on its outermost ring.
AcpiJob MakeJob(const AcpiForm& form, const Rectangle& r) {
  const size_t dst_pitch = RowBytes(form.layout, r.picture.width);
  return {.images = {.src = static_cast<const uint8_t*>(r.src),
                     .frame = r.frame,
                     .phase = PhaseAt(form.phase, r.left, r.top),  // shifting the pattern back
                     .dst = static_cast<uint8_t*>(r.dst) + dst_pitch * r.dst_top +
                            PixelBytes(form.layout) * r.dst_left,
                     .dst_pitch = dst_pitch,
                     .first_column = r.left,
                     .first_row = r.top,
                     .layout = form.layout},
          .region = {.columns = {r.left, r.left + r.size.width},
                     .adaptive_columns = {r.left + 1, r.left + r.size.width - 1},
                     .adaptive_first_row = r.top + 1,
                     .adaptive_last_row = r.top + r.size.height - 2},
          .pad_bytes = 0,
          .stores = simd::StoreKindFor({r.size.Pixels(), PixelBytes(form.layout) * r.size.Pixels()})};
}

// The outermost columns of some rows.
void ConvertSides(const AcpiJob& whole, RowRange rows) {
  if (whole.region.columns.begin == whole.region.columns.end) return;
  AcpiJob side = whole;
  for (const uint32_t x : {whole.region.columns.begin, whole.region.columns.end - 1}) {
    side.region.columns = {x, x + 1};
    side.Rows(rows);
  }
}

LogFunction EntryName(const AcpiForm& form) {
  const bool bgra = form.layout == Layout::kBgra;
  switch (form.phase) {
    case Phase::kBG:
      return bgra ? LogFunction::kRectBG8ToBGRA_MP_ACPI : LogFunction::kRectBG8ToBGR_MP_ACPI;
    case Phase::kGB:
      return bgra ? LogFunction::kRectBG8ToGBRA_MP_ACPI : LogFunction::kRectBG8ToGBR_MP_ACPI;
    case Phase::kGR:
      return bgra ? LogFunction::kRectBG8ToGRRA_MP_ACPI : LogFunction::kRectBG8ToGRR_MP_ACPI;
    case Phase::kRG:
      break;
  }
  return bgra ? LogFunction::kRectBG8ToRGRA_MP_ACPI : LogFunction::kRectBG8ToRGR_MP_ACPI;
}

Status OnPool(const AcpiForm& form, const Rectangle& r) {
  const AcpiJob whole = MakeJob(form, r);
  const bool bgra = form.layout == Layout::kBgra;
  const bool bg_family = IsBGFamily(form.phase);
  mp::WorkGeometry geometry{.first_x = r.left,
                            .last_x = r.left + r.size.width - 1,
                            .first_y = r.top,
                            .last_y = r.top + r.size.height - 1,
                            .dst_x = r.dst_left,
                            .dst_y = r.dst_top,
                            .src = r.src,
                            .src_width = r.frame.width,
                            .src_height = r.frame.height,
                            .src_bytes_per_pixel = 0,
                            .src_stride = r.frame.width,
                            .dst = r.dst,
                            .dst_width = r.picture.width,
                            .dst_height = r.picture.height,
                            .dst_bytes_per_pixel = static_cast<uint32_t>(PixelBytes(form.layout)),
                            .dst_stride = static_cast<uint32_t>(whole.images.dst_pitch),
                            .param = 0,
                            .block_rows = 0,
                            .type = 2};
  mp::LogStarted(EntryName(form));
  const ColumnRange columns = whole.region.columns;
  const RowRange rows{static_cast<int32_t>(r.top), static_cast<int32_t>(r.size.height)};
  return WithGreenRows(r.top, r.size.height, [&](const GreenRows& greens) {
    const GreenJob green{whole.images, columns, greens};
    const Status green_status = mp::RunOnPool(
        geometry, green,
        bgra ? (bg_family ? LogFunction::kBGGR8ToBGRA_ACPI_G_WK : LogFunction::kGBRG8ToBGRA_ACPI_G_WK)
             : (bg_family ? LogFunction::kBGGR8ToBGR_ACPI_G_WK : LogFunction::kGBRG8ToBGR_ACPI_G_WK));
    if (green_status != Status::kSuccess) {
      green.GiveUp(rows);
      return green_status;
    }
    mp::LogStep(EntryName(form), mp::LogKind::kStep1);
    if (columns.begin < columns.end && rows.count > 0) {
      whole.Rows({rows.first, 1});
      whole.Rows({rows.first + rows.count - 1, 1});
    }
    mp::LogStep(EntryName(form), mp::LogKind::kStep2);

    // The interior starts one row and one column later: in the other family, with its row pairs swapped. Its
    // outermost columns come with it, which leaves no row without them: the caller does what is given up.
    geometry.first_x += 1;
    geometry.last_x -= 1;
    geometry.first_y += 1;
    geometry.last_y -= 1;
    geometry.dst_x += 1;
    geometry.dst_y += 1;
    geometry.src_bytes_per_pixel = 1;
    AcpiJob job = whole;
    job.greens = greens;
    const Status status = mp::RunOnPool(
        geometry, job,
        bgra ? (bg_family ? LogFunction::kGBRG8ToBGRA_ACPI_BR_WK : LogFunction::kBGGR8ToBGRA_ACPI_BR_WK)
             : (bg_family ? LogFunction::kGBRG8ToBGR_ACPI_BR_WK : LogFunction::kBGGR8ToBGR_ACPI_BR_WK));
    if (status != Status::kSuccess) {
      green.GiveUp({rows.first + 1, rows.count - 2}, [&](RowRange inner) { ConvertSides(whole, inner); });
    }
    return status;
  });
}

}  // namespace

Status DemosaicRectangle(const AcpiForm& form, const Rectangle& rectangle, Threads threads) {
  if (!Valid(rectangle)) return Status::kInvalidParameter;
  if (rectangle.frame.Empty()) {
    if (threads == Threads::kPool) mp::LogSkipped(EntryName(form), rectangle.frame);
    return Status::kSuccess;
  }
  if (threads == Threads::kPool) return OnPool(form, rectangle);
  MakeJob(form, rectangle)
      .Rows({static_cast<int32_t>(rectangle.top), static_cast<int32_t>(rectangle.size.height)});
  return Status::kSuccess;
}

Status DemosaicRectangleOfFrame(const AcpiForm& frame_form, const Rectangle& rectangle, Threads threads) {
  return DemosaicRectangle({PhaseAt(frame_form.phase, rectangle.left, rectangle.top), frame_form.layout},
                           rectangle, threads);
}

Status DemosaicRectangleOfFormat(uint32_t output_kind, PixelFormat format, const Rectangle& rectangle,
                                 Threads threads) {
  const std::optional<Phase> phase = PhaseOfBayer8(format);
  if (!phase) return Status::kInvalidParameter;
  const Layout layout = output_kind == 1 ? Layout::kBgr : output_kind == 2 ? Layout::kBgrPad : Layout::kBgra;
  return DemosaicRectangleOfFrame({*phase, layout}, rectangle, threads);
}

}  // namespace prismo

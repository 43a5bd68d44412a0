#include "bayer/acpi.h"

#include <algorithm>

#include "bayer/acpi_job.h"

namespace prismo {
namespace {

using mp::LogFunction;

// Rows and columns of the frame on each side that are bilinear.
constexpr uint32_t kBorder = 2;

BilinearForm BilinearFormOf(const AcpiForm& form) { return {form.phase, BayerDepth::k8, form.layout}; }

AcpiJob MakeJob(const AcpiForm& form, void* dst, const void* src, FrameSize size) {
  const size_t dst_pitch = RowBytes(form.layout, size.width);
  return {.images = {.src = static_cast<const uint8_t*>(src),
                     .frame = size,
                     .phase = form.phase,
                     .dst = static_cast<uint8_t*>(dst),
                     .dst_pitch = dst_pitch,
                     .first_column = 0,
                     .first_row = 0,
                     .layout = form.layout},
          .region = {.columns = {0, size.width},
                     .adaptive_columns = {kBorder, size.width - kBorder},
                     .adaptive_first_row = kBorder,
                     .adaptive_last_row = size.height - kBorder - 1},
          .pad_bytes = static_cast<uint32_t>(dst_pitch - PixelBytes(form.layout) * size.width),
          .stores = simd::StoreKindFor({size.Pixels(), dst_pitch * size.height})};
}

// The two outermost rows on each side.
void ConvertBorderRows(const BilinearJob& job) {
  const auto height = static_cast<int32_t>(job.size.height);
  const int32_t top = std::min<int32_t>(kBorder, height);
  const int32_t bottom = std::min<int32_t>(kBorder, height - top);
  job.Rows({0, top});
  job.Rows({height - bottom, bottom});
}

LogFunction EntryName(const AcpiForm& form) {
  const LogFunction first =
      form.layout == Layout::kBgra ? LogFunction::kByrGR8ToBGRA_MP_ACPI : LogFunction::kByrGR8ToBGR_MP_ACPI;
  return static_cast<LogFunction>(static_cast<uint32_t>(first) + static_cast<uint32_t>(form.phase));
}

LogFunction GreenWorkerName(const AcpiForm& form) {
  if (form.layout == Layout::kBgra) {
    return IsBGFamily(form.phase) ? LogFunction::kBGGR8ToBGRA_ACPI_G_WK : LogFunction::kGBRG8ToBGRA_ACPI_G_WK;
  }
  return IsBGFamily(form.phase) ? LogFunction::kBGGR8ToBGR_ACPI_G_WK : LogFunction::kGBRG8ToBGR_ACPI_G_WK;
}

LogFunction ColourWorkerName(const AcpiForm& form) {
  if (form.layout == Layout::kBgra) {
    return IsBGFamily(form.phase) ? LogFunction::kBGGR8ToBGRA_ACPI_BR_WK
                                  : LogFunction::kGBRG8ToBGRA_ACPI_BR_WK;
  }
  return IsBGFamily(form.phase) ? LogFunction::kBGGR8ToBGR_ACPI_BR_WK : LogFunction::kGBRG8ToBGR_ACPI_BR_WK;
}

}  // namespace

Status AcpiOnCaller(const AcpiForm& form, void* dst, const void* src, FrameSize size) {
  if (!dst || !src) return Status::kInvalidParameter;
  if (size.Empty()) return Status::kSuccess;
  if (!size.Even()) return Status::kInvalidParameter;
  ConvertBorderRows(MakeBilinearJob(BilinearFormOf(form), dst, src, size, 0, simd::TimeGoesTo::kArithmetic));
  if (size.height > 2 * kBorder) {
    MakeJob(form, dst, src, size).Rows({kBorder, static_cast<int32_t>(size.height - 2 * kBorder)});
  }
  return Status::kSuccess;
}

Status AcpiOnPool(const AcpiForm& form, void* dst, const void* src, FrameSize size) {
  if (!dst || !src) return Status::kInvalidParameter;
  if (size.Empty()) {
    mp::LogSkipped(EntryName(form), size);
    return Status::kSuccess;
  }
  if (!size.Even()) return Status::kInvalidParameter;
  const uint32_t width = size.width, height = size.height;
  mp::LogStarted(EntryName(form));
  ConvertBorderRows(MakeBilinearJob(BilinearFormOf(form), dst, src, size, 0, simd::TimeGoesTo::kArithmetic));
  mp::LogStep(EntryName(form), mp::LogKind::kStep1);

  mp::WorkGeometry geometry{.first_x = 0,
                            .last_x = width - 1,
                            .first_y = kBorder,
                            .last_y = height - kBorder - 1,
                            .dst_x = 0,
                            .dst_y = kBorder,
                            .src = src,
                            .src_width = width,
                            .src_height = height,
                            .src_bytes_per_pixel = RowPairsSwapped(form.phase),
                            .src_stride = width,
                            .dst = dst,
                            .dst_width = width,
                            .dst_height = height,
                            .dst_bytes_per_pixel = static_cast<uint32_t>(PixelBytes(form.layout)),
                            .dst_stride = static_cast<uint32_t>(RowBytes(form.layout, width)),
                            .param = 0,
                            .block_rows = 0,
                            .type = 2};
  const RowRange middle{kBorder, static_cast<int32_t>(height - 2 * kBorder)};
  return WithGreenRows(kBorder, height, [&](const GreenRows& greens) {
    AcpiJob job = MakeJob(form, dst, src, size);
    job.greens = greens;
    const GreenJob green{job.images, {0, width}, greens};
    Status status = mp::RunOnPool(geometry, green, GreenWorkerName(form));
    if (status == Status::kSuccess) {
      mp::LogStep(EntryName(form), mp::LogKind::kStep2);
      geometry.first_x = kBorder;
      geometry.last_x = width - kBorder - 1;
      geometry.dst_x = kBorder;
      status = mp::RunOnPool(geometry, job, ColourWorkerName(form));
    }
    if (status != Status::kSuccess) green.GiveUp(middle);
    return status;
  });
}

}  // namespace prismo

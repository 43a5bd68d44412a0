#include "convert/planar.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "convert/convert_rows.h"
#include "core/rows.h"
#include "mp/engine.h"

namespace prismo {
namespace {

struct SplitJob {
  std::array<uint8_t*, 3> planes;
  const uint8_t* src;
  size_t width;
  size_t plane_pitch;
  simd::StorePlan stores;

  void Rows(RowRange range) const;
};

void SplitJob::Rows(RowRange range) const {
  if (range.count <= 0) return;
  const size_t pad_bytes = plane_pitch - width;
  const auto first_row = static_cast<size_t>(range.first);
  const size_t end_row = first_row + static_cast<size_t>(range.count);
  const auto split = [&](simd::StoreKind kind, size_t to, size_t from_pixel, size_t pixels) {
    uint8_t* const at[3] = {planes[0] + to, planes[1] + to, planes[2] + to};
    CurrentConvertKernels().split[static_cast<size_t>(kind)](at, src + 3 * from_pixel, pixels);
  };
  if (pad_bytes == 0) {
    simd::ForEachPiece(
        stores, width * first_row, width * end_row, 1,
        [&](simd::StoreKind kind, size_t first, size_t pixels) { split(kind, first, first, pixels); });
  } else {
    for (size_t y = first_row; y < end_row; ++y) {
      split(stores.OfRow(y, width), plane_pitch * y, width * y, width);
      for (uint8_t* plane : planes) std::memset(plane + plane_pitch * y + width, 0, pad_bytes);
    }
  }
  simd::FinishStores(stores);
}

SplitJob MakeSplitJob(const SourceOrderPlanes& planes, const void* src, FrameSize size, bool pad) {
  const size_t plane_pitch = pad ? PadTo4(size.width) : size.width;
  SplitJob job{.planes = {},
               .src = static_cast<const uint8_t*>(src),
               .width = size.width,
               .plane_pitch = plane_pitch,
               .stores = simd::PlanStores({3 * size.Pixels(), 3 * plane_pitch * size.height})};
  std::ranges::transform(planes.plane, job.planes.begin(), [](void* p) { return static_cast<uint8_t*>(p); });
  return job;
}

bool AnyNull(const SourceOrderPlanes& planes, const void* src) {
  return !src || std::ranges::find(planes.plane, nullptr) != std::end(planes.plane);
}

}  // namespace

Status SplitOnCaller(const SourceOrderPlanes& planes, const void* src, FrameSize size, bool pad) {
  if (AnyNull(planes, src)) return Status::kInvalidParameter;
  const bool padded = pad && size.width % 4 != 0;
  const FrameSize rows = padded ? size : FrameSize{size.Area(), 1};
  if (static_cast<int32_t>(rows.width) < 1) return Status::kSuccess;
  MakeSplitJob(planes, src, rows, padded).Rows({0, static_cast<int32_t>(rows.height)});
  return Status::kSuccess;
}

Status SplitOnPool(const SourceOrderPlanes& planes, const void* src, FrameSize size, bool pad) {
  if (AnyNull(planes, src)) return Status::kInvalidParameter;
  if (size.Empty()) return Status::kSuccess;
  const SplitJob job = MakeSplitJob(planes, src, size, pad);
  return mp::RunOnPool(mp::WholeWidth(0, size.height - 1, src, size.width, size.height, 3, 3 * size.width,
                                      planes.plane[0], 0, static_cast<uint32_t>(job.plane_pitch), 0, 0, 2),
                       job, mp::LogFunction::kBGR8ToBGRFS_WK);
}

}  // namespace prismo

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
  simd::StoreKind stores;
  SplitRun run;

  void Rows(RowRange range) const;
};

void SplitJob::Rows(RowRange range) const {
  if (range.count <= 0) return;
  const size_t pad_bytes = plane_pitch - width;
  const auto first = static_cast<size_t>(range.first);
  const auto count = static_cast<size_t>(range.count);
  std::array<uint8_t*, 3> to = planes;
  for (uint8_t*& plane : to) plane += plane_pitch * first;
  const uint8_t* from = src + 3 * width * first;
  if (pad_bytes == 0) {
    run(to.data(), from, width * count);
  } else {
    for (size_t i = 0; i < count; ++i, from += 3 * width) {
      run(to.data(), from, width);
      for (uint8_t*& plane : to) {
        std::memset(plane + width, 0, pad_bytes);
        plane += plane_pitch;
      }
    }
  }
  simd::FinishStores(stores);
}

SplitJob MakeSplitJob(const SourceOrderPlanes& planes, const void* src, FrameSize size, bool pad) {
  const size_t plane_pitch = pad ? PadTo4(size.width) : size.width;
  const simd::StoreKind stores = simd::StoreKindFor(3 * (size.width + plane_pitch) * size.height);
  SplitJob job{.planes = {},
               .src = static_cast<const uint8_t*>(src),
               .width = size.width,
               .plane_pitch = plane_pitch,
               .stores = stores,
               .run = SplitRunFor(stores)};
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

#include "bayer/colour_planes.h"

#include "bayer/bilinear_job.h"
#include "mp/engine.h"

namespace prismo {
namespace {

// Rows of three planes. Pixels are converted in pairs between the outermost columns: with an odd width the
// last but one column of all rows but the first and the last stays as it was.
struct PlanesJob {
  BilinearJob rows;

  void Rows(RowRange range) const {
    rows.Rows(range);
    if (rows.columns.end == rows.size.width) return;
    BilinearJob right_column = rows;
    right_column.columns = {rows.size.width - 1, rows.size.width};
    right_column.Rows(range);
  }
};

struct PlanesJobs {
  BilinearJob outer;  // first and last row
  PlanesJob middle;

  PlanesJobs(Phase phase, const ColourPlanes& planes, const void* src, FrameSize size, bool pad,
             simd::TimeGoesTo time) {
    const size_t pitch = pad ? PadTo4(size.width) : size.width;
    outer = {.src = static_cast<const uint8_t*>(src),
             .src_pitch = size.width,
             .plane = {static_cast<uint8_t*>(planes.blue), static_cast<uint8_t*>(planes.green),
                       static_cast<uint8_t*>(planes.red)},
             .planes = 3,
             .pad_bytes = static_cast<uint32_t>(pitch - size.width),
             .dst_pitch = pitch,
             .size = size,
             .columns = {0, size.width},
             .phase = phase,
             .stores = simd::PlanStores({size.Pixels(), 3 * pitch * size.height}, 1, time),
             .shift = 0,
             .convert = CurrentBilinearKernels().planar};
    middle.rows = outer;
    if (size.width % 2 != 0) middle.rows.columns.end = size.width - 2;
  }

  void ConvertOuterRows() const {
    outer.Rows({0, 1});
    outer.Rows({static_cast<int32_t>(outer.size.height - 1), 1});
  }
};

// kSuccess when there is something to convert.
Status Check(const ColourPlanes& planes, const void* src, FrameSize size) {
  if (!planes.blue || !planes.green || !planes.red || !src) return Status::kInvalidParameter;
  if (!size.Empty() && (size.width < 2 || size.height < 2)) return Status::kInvalidParameter;
  return Status::kSuccess;
}

}  // namespace

Status PlanesOnCaller(Phase phase, const ColourPlanes& planes, const void* src, FrameSize size, bool pad) {
  const Status status = Check(planes, src, size);
  if (status != Status::kSuccess || size.Empty()) return status;
  const PlanesJobs jobs(phase, planes, src, size, pad, kTimeOnCaller);
  jobs.ConvertOuterRows();
  jobs.middle.Rows({1, static_cast<int32_t>(size.height - 2)});
  return Status::kSuccess;
}

Status PlanesOnPool(Phase phase, const ColourPlanes& planes, const void* src, FrameSize size, bool pad) {
  const Status status = Check(planes, src, size);
  if (status != Status::kSuccess || size.Empty()) return status;
  PlanesJobs jobs(phase, planes, src, size, pad, TimeOnPool());
  jobs.ConvertOuterRows();
  jobs.middle.rows.pad_bytes = 0;
  return mp::RunOnPool(
      mp::WholeWidth(1, size.height - 2, src, size.width, size.height, RowPairsSwapped(phase), size.width,
                     planes.blue, 0, static_cast<uint32_t>(jobs.outer.dst_pitch), 0, 0, 2),
      jobs.middle, IsBGFamily(phase) ? mp::LogFunction::kBGGR8ToBGRFS_WK : mp::LogFunction::kGBRG8ToBGRFS_WK);
}

Status PlanesOfFormat(PixelFormat format, const ColourPlanes& planes, const void* src, FrameSize size,
                      bool pool) {
  const std::optional<Phase> phase = PhaseOfBayer8(format);
  if (!phase) return Status::kInvalidParameter;
  return (pool ? PlanesOnPool : PlanesOnCaller)(*phase, planes, src, size, false);
}

}  // namespace prismo

#include "convert/mono.h"

#include <optional>

#include "convert/convert_job.h"

namespace prismo {
namespace {

using mp::LogFunction;

// Only the BGRA forms go through the grey table.
TableUse TablesFor(Layout layout) { return layout == Layout::kBgra ? TableUse::kBuild : TableUse::kNone; }

bool HasSignedArea(FrameSize size) { return static_cast<int32_t>(size.Area()) >= 1; }

Status OnCaller(const Conversion& conversion, void* dst, const void* src, FrameSize size) {
  return ConvertOnCaller(conversion, dst, src, HasSignedArea(size) ? size : FrameSize{0, 0});
}

// Works declare N-bit sources as bytes too.
PoolForm OnPool(const Conversion& conversion, LogFunction entry, LogFunction worker, FrameSize size) {
  return {conversion, entry, worker, 1, size.width};
}

std::optional<uint32_t> ReductionOf(PixelFormat format) {
  switch (format) {
    case PixelFormat::kMono10:
      return 2;
    case PixelFormat::kMono12:
      return 4;
    case PixelFormat::kMono16:
      return 8;
    default:
      return std::nullopt;
  }
}

}  // namespace

Status Mono8OnCaller(Layout layout, void* dst, const void* src, FrameSize size) {
  return OnCaller({Source::kMono8, layout, 0, TablesFor(layout)}, dst, src, size);
}

Status MonoNOnCaller(Layout layout, uint32_t shift, void* dst, const void* src, FrameSize size) {
  return OnCaller({Source::kMonoN, layout, shift, TablesFor(layout)}, dst, src, size);
}

Status Mono8OnPool(Layout layout, void* dst, const void* src, FrameSize size) {
  const Conversion conversion{Source::kMono8, layout, 0, TablesFor(layout)};
  const PoolForm form =
      layout == Layout::kBgra
          ? OnPool(conversion, LogFunction::kMono8ToBGRA_MP, LogFunction::kMono8ToBGRA_WK, size)
          : OnPool(conversion, LogFunction::kMono8ToBGR_MP, LogFunction::kMono8ToBGR_WK, size);
  return ConvertOnPool(form, dst, src, size);
}

Status MonoNOnPool(Layout layout, uint32_t shift, void* dst, const void* src, FrameSize size) {
  const bool bgra = layout == Layout::kBgra;
  const Conversion conversion{bgra ? Source::kMonoNSpill : Source::kMonoN, layout, shift, TablesFor(layout)};
  const PoolForm form =
      bgra ? OnPool(conversion, LogFunction::kMonoNToBGRA_MP, LogFunction::kMonoNToBGRA_WK, size)
           : OnPool(conversion, LogFunction::kMonoNToBGR_MP, LogFunction::kMonoNToBGR_WK, size);
  return ConvertOnPool(form, dst, src, size);
}

Status ReduceToMono8(PixelFormat format, void* dst, const void* src, FrameSize size, bool pad) {
  const std::optional<uint32_t> shift = ReductionOf(format);
  if (!shift || !dst || !src) return Status::kInvalidParameter;
  if (!HasSignedArea(size)) return Status::kSuccess;
  const bool one_run = !pad || size.width % 4 == 0;
  const FrameSize rows = one_run ? FrameSize{size.Area(), 1} : size;
  const size_t pitch = one_run ? rows.width : PadTo4(rows.width);
  const ConvertJob job{.dst = static_cast<uint8_t*>(dst),
                       .src = static_cast<const uint8_t*>(src),
                       .dst_pitch = pitch,
                       .src_pitch = 2 * size_t{rows.width},
                       .row_pixels = rows.width,
                       .group = GroupOf(Source::kMonoN),
                       .pixel_bytes = 1,
                       .pad_bytes = static_cast<uint32_t>(pitch - rows.width),
                       .one_run = one_run,
                       .stores = simd::PlanStores({2 * rows.Pixels(), pitch * rows.height}),
                       .shift = *shift,
                       .runs = ConvertRunsFor(Source::kMonoN, Pixels::kGrey)};
  job.Rows({0, static_cast<int32_t>(rows.height)});
  return Status::kSuccess;
}

}  // namespace prismo

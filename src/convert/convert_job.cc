#include "convert/convert_job.h"

#include <cstring>

#include "convert/tables.h"
#include "mp/engine.h"

namespace prismo {
namespace {

// What tables that were never built give.
template <size_t kPixelBytes>
void ZeroRun(uint8_t* dst, const uint8_t*, size_t pixels, uint32_t) {
  std::memset(dst, 0, kPixelBytes * pixels);
}

constexpr ConvertRun kZeroRuns[2][2] = {{&ZeroRun<3>, &ZeroRun<3>}, {&ZeroRun<4>, &ZeroRun<4>}};

const ConvertRun* RunsFor(const Conversion& conversion) {
  const bool bgra = conversion.layout == Layout::kBgra;
  if (conversion.tables != TableUse::kNone && !TablesBuilt()) return kZeroRuns[bgra];
  return ConvertRunsFor(conversion.source, bgra ? Pixels::kBgra : Pixels::kBgr);
}

// Of rows that begin anywhere, the two partly filled lines are not streamed. For grey bytes, which take no
// time to convert, streaming therefore pays later (measured at 5 megapixels: 5 %; not so for words).
size_t StoreReach(Source source, bool rows_apart) { return source == Source::kMono8 && rows_apart ? 2 : 1; }

}  // namespace

simd::TimeGoesTo TimeOf(Source source) {
  return source < Source::kYuv411 ? simd::TimeGoesTo::kMemory : simd::TimeGoesTo::kBoth;
}

size_t SourceRowBytes(Source source, uint32_t width) {
  const PixelGroup group = GroupOf(source);
  return size_t{width} * group.bytes / group.pixels;
}

void ConvertJob::Rows(RowRange range) const {
  if (range.count <= 0) return;
  uint8_t* to = dst + dst_pitch * static_cast<size_t>(range.first);
  const uint8_t* from = src + src_pitch * static_cast<size_t>(range.first);
  const auto run = [&](simd::StoreKind kind, uint8_t* pixels_to, const uint8_t* pixels_from, size_t pixels) {
    runs[static_cast<size_t>(kind)](pixels_to, pixels_from, pixels, shift);
  };
  if (one_run) {
    const size_t begin = row_pixels * static_cast<size_t>(range.first);
    const size_t end = begin + row_pixels * static_cast<size_t>(range.count);
    simd::ForEachPiece(stores, begin, end, 1, [&](simd::StoreKind kind, size_t first, size_t pixels) {
      const size_t done = first - begin;
      run(kind, to + pixel_bytes * done, from + group.Bytes(done), pixels);
    });
  } else {
    for (int32_t i = 0; i < range.count; ++i, to += dst_pitch, from += src_pitch) {
      run(stores.OfRow(static_cast<size_t>(range.first + i), row_pixels), to, from, row_pixels);
      std::memset(to + pixel_bytes * row_pixels, 0, pad_bytes);
    }
  }
  simd::FinishStores(stores);
}

ConvertJob RunJob(const Conversion& conversion, void* dst, const void* src, size_t pixels) {
  const PixelGroup group = GroupOf(conversion.source);
  const size_t run_pixels = pixels / group.pixels * group.pixels;
  const size_t dst_bytes = PixelBytes(conversion.layout) * run_pixels;
  return {.dst = static_cast<uint8_t*>(dst),
          .src = static_cast<const uint8_t*>(src),
          .dst_pitch = dst_bytes,
          .src_pitch = group.Bytes(run_pixels),
          .row_pixels = run_pixels,
          .group = group,
          .pixel_bytes = PixelBytes(conversion.layout),
          .pad_bytes = 0,
          .one_run = true,
          .stores = simd::PlanStores({group.Bytes(run_pixels), dst_bytes}, 1, TimeOf(conversion.source)),
          .shift = conversion.shift,
          .runs = RunsFor(conversion)};
}

ConvertJob RowsJob(const Conversion& conversion, void* dst, const void* src, FrameSize size,
                   simd::TimeGoesTo time) {
  const PixelGroup group = GroupOf(conversion.source);
  const size_t src_pitch = SourceRowBytes(conversion.source, size.width);
  const size_t dst_pitch = RowBytes(conversion.layout, size.width);
  const size_t pixel_bytes = PixelBytes(conversion.layout);
  const auto pad_bytes = static_cast<uint32_t>(dst_pitch - pixel_bytes * size.width);
  const size_t row_pixels = size.width / group.pixels * group.pixels;
  const simd::StorePlan stores = simd::PlanStores({src_pitch * size.height, dst_pitch * size.height},
                                                  StoreReach(conversion.source, pad_bytes > 0), time);
  return {.dst = static_cast<uint8_t*>(dst),
          .src = static_cast<const uint8_t*>(src),
          .dst_pitch = dst_pitch,
          .src_pitch = src_pitch,
          .row_pixels = row_pixels,
          .group = group,
          .pixel_bytes = pixel_bytes,
          .pad_bytes = pad_bytes,
          .one_run = pad_bytes == 0,
          .stores = stores,
          .shift = conversion.shift,
          .runs = RunsFor(conversion)};
}

Status ConvertOnCaller(const Conversion& conversion, void* dst, const void* src, FrameSize size) {
  if (!dst || !src) return Status::kInvalidParameter;
  if (conversion.tables == TableUse::kBuild) EnsureTables();
  if (size.Empty()) return Status::kSuccess;
  if (PixelBytes(conversion.layout) * size.width == RowBytes(conversion.layout, size.width)) {
    RunJob(conversion, dst, src, size.Area()).Rows({0, 1});
  } else {
    ConvertJob job = RowsJob(conversion, dst, src, size, TimeOf(conversion.source));
    // Seen only where a row is no whole number of groups: here rows move up, on the pool they stay apart.
    job.dst_pitch = job.pixel_bytes * job.row_pixels + job.pad_bytes;
    job.Rows({0, static_cast<int32_t>(size.height)});
  }
  return Status::kSuccess;
}

Status ConvertOnPool(const PoolForm& form, void* dst, const void* src, FrameSize size) {
  const Conversion& conversion = form.conversion;
  if (!dst || !src) return Status::kInvalidParameter;
  if (size.Empty()) {
    mp::LogSkipped(form.entry, size);
    return Status::kSuccess;
  }
  mp::LogStarted(form.entry);
  if (conversion.tables == TableUse::kBuild) EnsureTables();
  const auto dst_stride = static_cast<uint32_t>(RowBytes(conversion.layout, size.width));
  return mp::RunOnPool(
      mp::WholeWidth(0, size.height - 1, src, size.width, size.height, form.src_bytes_per_pixel,
                     form.src_stride, dst, static_cast<uint32_t>(PixelBytes(conversion.layout)), dst_stride,
                     conversion.shift, 0, 2),
      RowsJob(conversion, dst, src, size,
              mp::HasSeveralThreads() ? simd::TimeGoesTo::kMemory : TimeOf(conversion.source)),
      form.worker);
}

}  // namespace prismo

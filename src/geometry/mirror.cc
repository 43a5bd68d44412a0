#include "geometry/mirror.h"

#include <algorithm>
#include <cstddef>

#include "core/settings.h"
#include "geometry/mirror_rows.h"
#include "mp/engine.h"

namespace prismo {
namespace {

using mp::LogFunction;

struct MirrorFormat {
  MirrorUnit unit;
  uint32_t unit_pixels;
  uint32_t unit_bytes;
  uint32_t engine_pixel_bytes;  // what the works of the pool show as the size of a pixel
  LogFunction horizontal_rows;  // then those of the vertical and of the double mirror
};

constexpr MirrorFormat kBytes{MirrorUnit::kByte, 1, 1, 1, LogFunction::kRevMono8_YNWK};
constexpr MirrorFormat kWords{MirrorUnit::kWord, 1, 2, 2, LogFunction::kRevMonoN_YNWK};
constexpr MirrorFormat kPixels3{MirrorUnit::kBytes3, 1, 3, 3, LogFunction::kRev3CMP8_YNWK};
constexpr MirrorFormat kPixels3N{MirrorUnit::kWords3, 1, 6, 3, LogFunction::kRev3CMPN_YNWK};
constexpr MirrorFormat kPairs{MirrorUnit::kYuv422, 2, 4, 2, LogFunction::kRevYUV422_YNWK};
constexpr MirrorFormat kQuads{MirrorUnit::kYuv411, 4, 6, 1, LogFunction::kRevYUV411_YNWK};

const MirrorFormat* FindMirror(PixelFormat format) {
  switch (format) {
    using enum PixelFormat;
    case kMono8:
    case kBayerGR8:
    case kBayerRG8:
    case kBayerGB8:
    case kBayerBG8:
      return &kBytes;
    case kMono10:
    case kMono12:
    case kMono16:
    case kBayerGR10:
    case kBayerRG10:
    case kBayerGB10:
    case kBayerBG10:
    case kBayerGR12:
    case kBayerRG12:
    case kBayerGB12:
    case kBayerBG12:
      return &kWords;
    case kRgb8:
    case kBgr8:
    case kYuv444:
      return &kPixels3;
    case kRgb10:
    case kBgr10:
    case kRgb12:
    case kBgr12:
      return &kPixels3N;
    case kYuv422:
      return &kPairs;
    case kYuv411:
      return &kQuads;
    default:
      return nullptr;
  }
}

// Rows of YUV 4:1:1 hold 6 bytes for 4 pixels; in all formats the bytes that a width comes to are cut down.
constexpr size_t RowBytes(const MirrorFormat& format, uint32_t width) {
  return size_t{width} * format.unit_bytes / format.unit_pixels;
}

struct MirrorJob {
  uint8_t* dst;
  const uint8_t* src;
  MirrorFormat format;
  Mirror mirror;
  simd::StorePlan stores;
  size_t width, height;
  size_t row_bytes;

  MirrorJob(void* to, const void* from, const MirrorFormat& f, FrameSize size, Mirror m)
      : dst(static_cast<uint8_t*>(to)),
        src(static_cast<const uint8_t*>(from)),
        format(f),
        mirror(m),
        stores(
            simd::PlanStores({size.height * RowBytes(f, size.width), size.height * RowBytes(f, size.width)})),
        width(size.width),
        height(size.height),
        row_bytes(RowBytes(f, size.width)) {}

  void Rows(RowRange range) const {
    Rows(static_cast<size_t>(range.first), static_cast<size_t>(range.count));
  }

  void AllRows() const {
    if (mirror.horizontal && mirror.vertical) {
      MirrorRun(dst, src, 0, UnitBytesIn(height));
      simd::FinishStores(stores);
    } else {
      Rows(0, height);
    }
  }

  void CopyFrame() const {
    simd::ForEachPiece(stores, 0, height, width, [&](simd::StoreKind kind, size_t first, size_t rows) {
      const size_t place = first * row_bytes;
      Flip(kind, dst + place, src + place, rows * row_bytes, 1);  // a single row keeps its place
    });
    simd::FinishStores(stores);
  }

 private:
  void Rows(size_t first, size_t count) const {
    if (count == 0) return;
    if (mirror.horizontal && mirror.vertical) {
      const size_t bytes = UnitBytesIn(count);
      MirrorRun(dst + (height - first) * row_bytes - bytes, src + first * row_bytes,
                first * width / format.unit_pixels, bytes);
    } else if (mirror.horizontal) {
      MirrorEach(first, count);
    } else {
      FlipAll(first, count);
    }
    simd::FinishStores(stores);
  }

  // Bytes of the whole units in `rows` rows taken as one run. With a width that does not fill units, fewer
  // may fit than the pixels come to.
  size_t UnitBytesIn(size_t rows) const {
    return std::min(rows * width / format.unit_pixels, rows * row_bytes / format.unit_bytes) *
           format.unit_bytes;
  }

  // A run of units, of which the first is number `unit` of the frame.
  void MirrorRun(uint8_t* to, const uint8_t* from, size_t unit, size_t bytes) const {
    const size_t unit_bytes = format.unit_bytes;
    simd::ForEachPiece(stores, unit, unit + bytes / unit_bytes, format.unit_pixels,
                       [&](simd::StoreKind kind, size_t first, size_t units) {
                         const size_t place = (first - unit) * unit_bytes, piece = units * unit_bytes;
                         MirrorRows(kind, to + bytes - place - piece, from + place, piece, 1);
                       });
  }

  void MirrorEach(size_t first_row, size_t count) const {
    const size_t bytes = UnitBytesIn(1);
    simd::ForEachPiece(stores, first_row, first_row + count, width,
                       [&](simd::StoreKind kind, size_t first, size_t rows) {
                         const size_t place = first * row_bytes;
                         if (bytes == row_bytes)
                           return MirrorRows(kind, dst + place, src + place, bytes, rows);
                         for (size_t y = first; y < first + rows; ++y) {
                           MirrorRows(kind, dst + y * row_bytes, src + y * row_bytes, bytes, 1);
                         }
                       });
  }

  void FlipAll(size_t first_row, size_t count) const {
    simd::ForEachPiece(
        stores, first_row, first_row + count, width, [&](simd::StoreKind kind, size_t first, size_t rows) {
          Flip(kind, dst + (height - first - rows) * row_bytes, src + first * row_bytes, row_bytes, rows);
        });
  }

  void MirrorRows(simd::StoreKind kind, uint8_t* to, const uint8_t* from, size_t bytes, size_t rows) const {
    const auto& kernels = CurrentMirrorKernels().mirror[static_cast<size_t>(format.unit)];
    kernels[static_cast<size_t>(kind)](to, from, bytes, rows);
  }

  static void Flip(simd::StoreKind kind, uint8_t* to, const uint8_t* from, size_t bytes, size_t rows) {
    CurrentMirrorKernels().flip[static_cast<size_t>(kind)](to, from, bytes, rows);
  }
};

LogFunction WorkerName(const MirrorJob& job) {
  const uint32_t direction = !job.mirror.horizontal ? 1 : job.mirror.vertical ? 2 : 0;
  return static_cast<LogFunction>(static_cast<uint32_t>(job.format.horizontal_rows) + direction);
}

// Null pointers come before unsupported formats.
template <class Work>
Status WithJob(void* dst, const void* src, PixelFormat format, FrameSize size, Mirror mirror, Work&& work) {
  if (!dst || !src) return Status::kInvalidParameter;
  const MirrorFormat* found = FindMirror(format);
  if (!found) return Status::kFailure;
  work(MirrorJob(dst, src, *found, size, mirror));
  return Status::kSuccess;
}

}  // namespace

Status MirrorOnCaller(void* dst, const void* src, PixelFormat format, FrameSize size, Mirror mirror) {
  return WithJob(dst, src, format, size, mirror, [&](const MirrorJob& job) {
    if (mirror.horizontal || mirror.vertical) {
      job.AllRows();
    } else {
      job.CopyFrame();
    }
  });
}

Status MirrorOnPool(void* dst, const void* src, PixelFormat format, FrameSize size, Mirror mirror) {
  return WithJob(dst, src, format, size, mirror, [&](const MirrorJob& job) {
    if (!mirror.horizontal && !mirror.vertical) return job.CopyFrame();
    const auto stride = static_cast<uint32_t>(job.row_bytes);
    const uint32_t pixel_bytes = job.format.engine_pixel_bytes;
    mp::RunOnPool(mp::WholeWidth(0, size.height - 1, src, size.width, size.height, pixel_bytes, stride, dst,
                                 pixel_bytes, stride, 0, 0, 1),
                  job, WorkerName(job));
  });
}

Status MirrorByMode(void* dst, const void* src, PixelFormat format, FrameSize size, Mirror mirror) {
  const bool pool = PoolWhenModeIsOne() && mirror.horizontal;
  return (pool ? MirrorOnPool : MirrorOnCaller)(dst, src, format, size, mirror);
}

}  // namespace prismo

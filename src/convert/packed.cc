#include "convert/packed.h"

#include "convert/convert_job.h"
#include "mp/engine.h"

namespace prismo {
namespace {

using enum mp::LogFunction;

struct PoolNames {
  mp::LogFunction entry, worker;
};

PoolNames NamesOf(Source source, bool bgra) {
  switch (source) {
    case Source::kRgb8:
      return bgra ? PoolNames{kRGB8PToBGRA_MP, kRGB8ToBGRA_WK} : PoolNames{kRGB8PToBGR_MP, kRGB8ToBGR_WK};
    case Source::kBgr8:
      return bgra ? PoolNames{kBGR8PToBGRA_MP, kBGR8ToBGRA_WK} : PoolNames{kBGR8PToBGR_MP, kBGR8ToBGR_WK};
    case Source::kRgbN:
      return bgra ? PoolNames{kRGBNToBGRA_MP, kRGBNToBGRA_WK} : PoolNames{kRGBNToBGR_MP, kRGBNToBGR_W};
    default:
      return bgra ? PoolNames{kBGRNToBGRA_MP, kBGRNToBGRA_WK} : PoolNames{kBGRNToBGR_MP, kBGRNToBGR_WK};
  }
}

Source SpillOf(Source source) {
  switch (source) {
    case Source::kRgbN:
      return Source::kRgbNSpill;
    case Source::kBgrN:
      return Source::kBgrNSpill;
    default:
      return source;
  }
}

bool HasPadBytes(Layout layout, uint32_t width) {
  return RowBytes(layout, width) != PixelBytes(layout) * width;
}

Status CopyInsteadOfPool(mp::LogFunction entry, void* dst, const void* src, FrameSize size) {
  if (!dst || !src) return Status::kInvalidParameter;
  if (size.Empty()) {
    mp::LogSkipped(entry, size);
    return Status::kSuccess;
  }
  mp::LogStartedWithoutPool(entry);
  const Status status = ConvertOnCaller({Source::kBgr8, Layout::kBgr}, dst, src, size);
  mp::LogStep(entry, mp::LogKind::kStep1);
  return status;
}

}  // namespace

Status PackedOnCaller(Source source, Layout layout, uint32_t shift, void* dst, const void* src,
                      FrameSize size) {
  return ConvertOnCaller({source, layout, shift}, dst, src, size);
}

Status PackedOnPool(Source source, Layout layout, uint32_t shift, void* dst, const void* src,
                    FrameSize size) {
  const bool bgra = layout == Layout::kBgra;
  const PoolNames names = NamesOf(source, bgra);
  const bool copy = source == Source::kBgr8 && !bgra && !HasPadBytes(layout, size.width);
  if (copy && !size.Empty()) return CopyInsteadOfPool(names.entry, dst, src, size);
  const uint32_t pixel_bytes = GroupOf(source).bytes;
  const Conversion conversion{bgra ? SpillOf(source) : source, layout, shift};
  return ConvertOnPool({conversion, names.entry, names.worker, pixel_bytes, pixel_bytes * size.width}, dst,
                       src, size);
}

Status BgraOnCaller(Layout layout, void* dst, const void* src, FrameSize size) {
  const bool signed_size = layout != Layout::kBgra;
  const bool negative = signed_size && static_cast<int32_t>(size.Area()) < 0;
  return ConvertOnCaller({Source::kBgra8, layout}, dst, src, negative ? FrameSize{0, 0} : size);
}

}  // namespace prismo

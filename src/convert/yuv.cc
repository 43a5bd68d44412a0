#include "convert/yuv.h"

#include "convert/convert_job.h"

namespace prismo {
namespace {

using enum mp::LogFunction;

struct PoolNames {
  mp::LogFunction entry, worker;
};

PoolNames NamesOf(Source source, bool bgra) {
  switch (source) {
    case Source::kYuv411:
      return bgra ? PoolNames{kYUV411PToBGRA_MP, kYUV411ToBGRA_WK}
                  : PoolNames{kYUV411PToBGR_MP, kYUV411ToBGR_WK};
    case Source::kYuv422:
      return bgra ? PoolNames{kYUV422PToBGRA_MP, kYUV422ToBGRA_WK}
                  : PoolNames{kYUV422PToBGR_MP, kYUV422ToBGR_WK};
    default:
      return bgra ? PoolNames{kYUV444PToBGRA_MP, kYUV444ToBGRA_WK}
                  : PoolNames{kYUV444PToBGR_MP, kYUV444ToBGR_WK};
  }
}

}  // namespace

Status YuvOnCaller(Source source, Layout layout, void* dst, const void* src, FrameSize size) {
  return ConvertOnCaller({source, layout, 0, TableUse::kBuild}, dst, src, size);
}

Status YuvOnPool(Source source, Layout layout, void* dst, const void* src, FrameSize size) {
  const bool bgra = layout == Layout::kBgra;
  const PoolNames names = NamesOf(source, bgra);
  const Conversion conversion{source, layout, 0, bgra ? TableUse::kBuild : TableUse::kTrust};
  const auto src_stride = static_cast<uint32_t>(SourceRowBytes(source, size.width));
  return ConvertOnPool({conversion, names.entry, names.worker, 1, src_stride}, dst, src, size);
}

}  // namespace prismo

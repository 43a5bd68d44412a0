#include "convert/padded.h"

#include "convert/convert_job.h"

namespace prismo {
namespace {

Status ConvertPaddedRows(const Conversion& conversion, void* dst, const void* src, FrameSize size) {
  if (size.Empty()) return Status::kSuccess;
  if (!dst || !src) return Status::kInvalidParameter;
  ConvertJob job = RowsJob(conversion, dst, src, size, TimeOf(conversion.source));
  job.src_pitch = PadTo4(job.src_pitch);
  job.pad_bytes = 0;
  job.one_run = false;
  job.Rows({0, static_cast<int32_t>(size.height)});
  return Status::kSuccess;
}

}  // namespace

Status PaddedMono8ToBgra(void* dst, const void* src, FrameSize size) {
  return ConvertPaddedRows({Source::kMono8, Layout::kBgra}, dst, src, size);
}

Status PaddedBgr8ToBgra(void* dst, const void* src, FrameSize size) {
  return ConvertPaddedRows({Source::kBgr8, Layout::kBgra}, dst, src, size);
}

Status PaddedMono8ToBgr(Layout layout, void* dst, const void* src, FrameSize size) {
  return ConvertPaddedRows({Source::kMono8, layout}, dst, src, size);
}

Status PaddedBgr8ToBgr(Layout layout, void* dst, const void* src, FrameSize size) {
  if (size.Empty() || !dst || !src) return Status::kSuccess;
  if (layout != Layout::kBgrPad) return ConvertPaddedRows({Source::kBgr8, layout}, dst, src, size);
  // The output is laid out as the input: words of 4 bytes, as many as there are.
  const size_t words = RowBytes(layout, size.width) / 4 * size.height;
  RunJob({Source::kBgra8, Layout::kBgra}, dst, src, words).Rows({0, 1});
  return Status::kSuccess;
}

}  // namespace prismo

// Conversions whose pixels come one by one out of their source: the job that caller and workers run, and the
// two forms that every family has.
#pragma once

#include <cstddef>
#include <cstdint>

#include "convert/convert_rows.h"
#include "core/frame.h"
#include "core/rows.h"
#include "core/status.h"
#include "mp/log_functions.h"
#include "simd/stores.h"

namespace prismo {

struct ConvertJob {
  uint8_t* dst;
  const uint8_t* src;
  size_t dst_pitch;  // bytes from row to row
  size_t src_pitch;
  size_t row_pixels;   // converted in each row
  PixelGroup group;    // of the source
  size_t pixel_bytes;  // in dst
  uint32_t pad_bytes;  // zeros that follow them
  bool one_run;        // rows follow each other without gaps: a block of rows is one run of pixels
  simd::StorePlan stores;
  uint32_t shift;
  const ConvertRun* runs;  // [plain stores, streaming stores]

  void Rows(RowRange range) const;
};

enum class TableUse : uint8_t {
  kNone,   // computes
  kBuild,  // looks up; builds the tables first while the LUT-ready flag is 0
  kTrust,  // looks up what is there: zeros if nobody has built the tables
};

struct Conversion {
  Source source;
  Layout layout;
  uint32_t shift = 0;
  TableUse tables = TableUse::kNone;
};

size_t SourceRowBytes(Source source, uint32_t width);

// What takes the time of one thread.
simd::TimeGoesTo TimeOf(Source source);

// A frame as one run of pixels.
ConvertJob RunJob(const Conversion& conversion, void* dst, const void* src, size_t pixels);

// A frame row by row.
ConvertJob RowsJob(const Conversion& conversion, void* dst, const void* src, FrameSize size,
                   simd::TimeGoesTo time);

// How a conversion appears on the pool.
struct PoolForm {
  Conversion conversion;
  mp::LogFunction entry;
  mp::LogFunction worker;
  uint32_t src_bytes_per_pixel;  // as the work record declares the source, which need not be what it is
  uint32_t src_stride;
};

// Null buffers are refused, then tables are built, then an empty frame is done.
Status ConvertOnCaller(const Conversion& conversion, void* dst, const void* src, FrameSize size);

// Null buffers are refused, then an empty frame is done, then tables are built.
Status ConvertOnPool(const PoolForm& form, void* dst, const void* src, FrameSize size);

}  // namespace prismo

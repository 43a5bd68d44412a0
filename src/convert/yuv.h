// Packed YUV, BT.601 full range.
#pragma once

#include "convert/convert_rows.h"
#include "core/frame.h"
#include "core/status.h"

namespace prismo {

// Sources kYuv411, kYuv422, kYuv444. Without padding the frame is one stream of pixel groups, whatever the
// width.
Status YuvOnCaller(Source source, Layout layout, void* dst, const void* src, FrameSize size);

// To BGR the tables are not built: zeros come out if nobody has built them before.
Status YuvOnPool(Source source, Layout layout, void* dst, const void* src, FrameSize size);

}  // namespace prismo

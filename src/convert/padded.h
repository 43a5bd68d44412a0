// The two padded input formats, whose rows occupy a multiple of 4 bytes.
#pragma once

#include "core/frame.h"
#include "core/status.h"

namespace prismo {

// On the caller's thread. An empty frame is looked at before null buffers.
Status PaddedMono8ToBgra(void* dst, const void* src, FrameSize size);
Status PaddedBgr8ToBgra(void* dst, const void* src, FrameSize size);

// Leaves the pad bytes of padded output as they were.
Status PaddedMono8ToBgr(Layout layout, void* dst, const void* src, FrameSize size);

// Copies the pad bytes to padded output. Succeeds with null buffers, too: there is nothing to copy then.
Status PaddedBgr8ToBgr(Layout layout, void* dst, const void* src, FrameSize size);

}  // namespace prismo

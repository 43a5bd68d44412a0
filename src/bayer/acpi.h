// Adaptive colour plane demosaic of whole 8-bit frames.
#pragma once

#include "bayer/phase.h"
#include "core/frame.h"
#include "core/status.h"

namespace prismo {

struct AcpiForm {
  Phase phase;
  Layout layout;
};

// Statuses as for the bilinear demosaic.
Status AcpiOnCaller(const AcpiForm& form, void* dst, const void* src, FrameSize size);

// The two outermost rows on each side on the caller's thread; then two works, one after the other, for the
// other rows: see GreenRows.
Status AcpiOnPool(const AcpiForm& form, void* dst, const void* src, FrameSize size);

}  // namespace prismo

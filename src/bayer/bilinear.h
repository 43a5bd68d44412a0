// Bilinear demosaic of whole frames into packed pictures.
#pragma once

#include <cstdint>

#include "bayer/phase.h"
#include "core/frame.h"
#include "core/status.h"
#include "mp/log_functions.h"

namespace prismo {

enum class BayerDepth : uint8_t { k8, kN };  // bytes, or 16-bit words with a shift

struct BilinearForm {
  Phase phase;
  BayerDepth depth;
  Layout layout;
};

// kInvalidParameter for null pointers; kSuccess and nothing written for an empty frame; kInvalidParameter for
// odd sizes. `shift` reduces an N-bit sample to 8 bits, modulo 32.
Status BilinearOnCaller(const BilinearForm& form, void* dst, const void* src, FrameSize size,
                        uint32_t shift = 0);

// The top and bottom rows on the caller's thread, the others on the pool. The pixels are the same.
Status BilinearOnPool(const BilinearForm& form, void* dst, const void* src, FrameSize size,
                      uint32_t shift = 0);

}  // namespace prismo
